// Load: turns what is listed and what is selected at this moment into the dialog's result and closes it.

#include "platform/files.h"
#include "resources/resource_ids.h"
#include "selection/event_guards.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/options_file.h"

#include <algorithm>

namespace partkeep {

void CPartkeepReadDlg::OnLoad()
{
    const CWaitIndication wait(*window_);
    MakeDirectory(workingFolder);
    std::list<PartRecord> load_list = selectedPartsDlg_->selectedParts;
    const std::int32_t count = browser_.GetSelectedPartCount();
    std::u16string quantity = u"1";
    if (!MayLoad(count, !load_list.empty(), quantity)) {
        return;
    }
    StageSelection(count, quantity, load_list);
    FillResultParts(load_list);
    if (!entrance_->EndModal(id_ok)) {
        return; // the window has gone meanwhile, which is a cancel
    }
    // The window still stands until this handler returns, so the check box can be read behind the end of the run.
    const auto prompt = static_cast<std::int16_t>(window_->Fields().Check(RES_ASK_QUANTITY) & 3);
    WriteOptionsFile(OptionsFilePath(), {.quantityPrompt = prompt, .filterState = filter_.FilterState}, options_file_);
    RemoveTempFolders(folders_);
}

// The prompt comes before the limit: too large a selection is refused after a quantity was typed.
bool CPartkeepReadDlg::MayLoad(std::int32_t count, bool parts_listed, std::u16string& quantity)
{
    if (count == 0 && !parts_listed) {
        Tell(LocalString::SelectParts);
        return false;
    }
    if (count != 0 && !AskQuantity(quantity)) {
        return false;
    }
    if (count > max_selected_parts) {
        Tell(LocalString::TooManyParts);
        return false;
    }
    return true;
}

// In single selection the last entry is the part, whatever else is selected.
void CPartkeepReadDlg::StageSelection(std::int32_t count, const std::u16string& quantity,
                                      std::list<PartRecord>& load_list)
{
    const std::u16string staging_path = StagingFolderOf(state_.currentServer, state_.lastFolder);
    MakeFolder(staging_path);
    browser_.SetDataKind(part_data_kind);
    browser_.SetTargetFolder(staging_path + u"\\");
    const std::int32_t first = multiSelection ? 0 : std::max(count - 1, 0);
    for (std::int32_t entry = first; entry < count; ++entry) {
        const auto index = static_cast<std::int16_t>(entry);
        PartRecord record;
        if (!lookup_->IsPartListed(index, load_list, CPartLookup::WhenListed::BeSilent) &&
            lookup_->StagePart(index, staging_path, quantity, record)) {
            load_list.push_back(record);
        }
    }
    for (std::int32_t entry = 0; entry < first; ++entry) {
        lookup_->DeleteSelectedPartFiles(static_cast<std::int16_t>(entry));
    }
}

// Whole records, so that no field is forgotten, apart from what the disk has to tell. A part without files is dropped.
void CPartkeepReadDlg::FillResultParts(const std::list<PartRecord>& load_list)
{
    CFileSearch search; // nothing is copied any more
    for (const PartRecord& source : load_list) {
        PartRecord part = source;
        for (std::u16string* of_the_disk :
             {&part.stagingFolder, &part.FilePathName, &part.SYFileName, &part.NCFileName}) {
            of_the_disk->clear();
        }
        if (FindStagedFiles(source.stagingFolder + u"\\", part, folders_, entrance_->OwnerMessages(), search)) {
            resultParts.push_back(part);
        }
    }
}

} // namespace partkeep
