// Adding to the selection: stages what is selected in the browser at once and lists it, so that parts can be
// collected from several folders and servers before a Load.

#include "resources/resource_ids.h"
#include "selection/event_guards.h"
#include "selection/partkeep_read_dlg.h"
#include "selection/quantity_keypad_dlg.h"

namespace partkeep {

namespace {

// Add takes no second press while it runs, nor does Load from where parts are being added.
class CButtonsDisabled {
public:
    explicit CButtonsDisabled(IDialogFields& fields) : fields_(fields) { fields_.Enable(RES_ADD, false); }
    ~CButtonsDisabled()
    {
        Quietly([this] { fields_.Enable(RES_ADD, true); });
        if (load_too_) {
            Quietly([this] { fields_.Enable(RES_LOAD, true); });
        }
    }
    CButtonsDisabled(const CButtonsDisabled&) = delete;
    CButtonsDisabled& operator=(const CButtonsDisabled&) = delete;

    void DisableLoad()
    {
        load_too_ = true;
        fields_.Enable(RES_LOAD, false);
    }

private:
    IDialogFields& fields_;
    bool load_too_ = false;
};

} // namespace

void CPartkeepReadDlg::OnAdd()
{
    CButtonsDisabled buttons(window_->Fields());
    const std::int32_t count = browser_.GetSelectedPartCount();
    if (count == 0 || count > max_selected_parts) {
        Tell(count == 0 ? LocalString::SelectParts : LocalString::TooManyParts);
        return;
    }
    const std::u16string staging_path = StagingFolderOf(state_.currentServer, state_.lastFolder);
    MakeFolder(staging_path);
    buttons.DisableLoad();
    std::u16string quantity;
    if (AskQuantity(quantity)) {
        OpenSelectedParts();
        AddSelectedParts(count, staging_path, quantity);
        browser_.SelectAllParts(0);
    }
}

// Shown on every Add that gets this far, also when the user closed it in between, and before the first part is
// staged, so that it fills while the run goes on.
void CPartkeepReadDlg::OpenSelectedParts()
{
    if (!selectedPartsDlg_->WindowExists() && selectedPartsDlg_->Create(*entrance_)) {
        selectedPartsDlg_->InitColumns();
        selectedPartsDlg_->AddAllRows();
    }
    selectedPartsDlg_->Show();
}

void CPartkeepReadDlg::AddSelectedParts(std::int32_t count, const std::u16string& staging_path,
                                        const std::u16string& quantity)
{
    browser_.SetDataKind(part_data_kind);
    browser_.SetTargetFolder(staging_path + u"\\");
    for (std::int32_t entry = 0; entry < count; ++entry) {
        const auto index = static_cast<std::int16_t>(entry);
        if (lookup_->IsPartListed(index, selectedPartsDlg_->selectedParts, CPartLookup::WhenListed::TellUser)) {
            continue;
        }
        PartRecord record;
        if (!lookup_->StagePart(index, staging_path, quantity, record)) {
            continue;
        }
        selectedPartsDlg_->selectedParts.push_back(record);
        selectedPartsDlg_->AddLastPartRow();
    }
}

// False when the user cancelled; the browser's selection is then cleared.
bool CPartkeepReadDlg::AskQuantity(std::u16string& quantity)
{
    quantity = u"1";
    if (window_->Fields().Check(RES_ASK_QUANTITY) == 0) {
        return true;
    }
    CQuantityKeypadDlg keypad(door_, dialogIcon_);
    if (keypad.DoModal() == id_ok) {
        quantity = keypad.Quantity();
        return true;
    }
    browser_.SelectAllParts(0);
    return false;
}

} // namespace partkeep
