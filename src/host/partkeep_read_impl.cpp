#include "host/partkeep_read_impl.h"

#include "host/cad_data_reader.h"
#include "host/install_location.h"
#include "platform/dialog_window.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/process_values.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace partkeep {

namespace {

// Values are moved, which cannot fail: a record is copied as a whole before the first output is written, so that
// outputs are written all or not at all.
template <typename T>
void Put(T* output, T& value)
{
    if (output != nullptr) {
        *output = std::move(value);
    }
}

// Nothing of ours may end the host: what is thrown below, exhausted memory above all, becomes the operation's
// own result for trouble.
template <typename Operation>
HostResult Guarded(HostResult trouble, Operation operation) noexcept
{
    try {
        return operation();
    } catch (...) {
        return trouble;
    }
}

} // namespace

PartkeepReadImpl::RunOutcome PartkeepReadImpl::RunDialog(bool multi_selection)
{
    const std::u16string working_folder = TheProcessValues().workingFolder;
    // Before the look-up on purpose: making the dialog makes the unpack folder, also where nothing is installed.
    CPartkeepReadDlg dialog(services_.windows);
    const std::u16string install_folder = FindInstallFolder(services_.registry);
    if (install_folder.empty()) {
        return RunOutcome::NotInstalled;
    }
    dialog.installFolder = install_folder;
    dialog.workingFolder = working_folder;
    dialog.multiSelection = multi_selection;
    if (dialog.DoModal() != id_ok) {
        return RunOutcome::Cancelled;
    }
    parts_.splice(parts_.end(), dialog.resultParts); // which cannot fail: what was decided stands
    return RunOutcome::Confirmed;
}

HostResult PartkeepReadImpl::InvokePartkeep()
{
    return Guarded(HostResult::False,
                   [this] { return RunDialog(false) == RunOutcome::Confirmed ? HostResult::Ok : HostResult::False; });
}

HostResult PartkeepReadImpl::InvokePartkeepMultiSelection(std::int32_t i_MultipleSelectionAllowed)
{
    return Guarded(HostResult::Ok, [this, i_MultipleSelectionAllowed] {
        const RunOutcome outcome = RunDialog(i_MultipleSelectionAllowed == 1);
        return outcome == RunOutcome::NotInstalled ? HostResult::False : HostResult::Ok;
    });
}

HostResult PartkeepReadImpl::GetFilePath(std::u16string* o_PartFileName)
{
    return GetSelectedPartInfo(o_PartFileName, nullptr, nullptr, nullptr, nullptr, nullptr);
}

HostResult PartkeepReadImpl::GetSelectedPartInfo(std::u16string* o_PartFileName, std::u16string* o_PartName,
                                                 std::u16string* o_PartComment, std::u16string* o_MaterialType,
                                                 double* o_Thickness, std::u16string* o_Qty)
{
    if (parts_.empty()) {
        return HostResult::False;
    }
    return Guarded(HostResult::False, [&] {
        PartRecord part = parts_.front();
        Put(o_PartFileName, part.FilePathName);
        Put(o_PartName, part.PartName);
        Put(o_PartComment, part.PartComment);
        Put(o_MaterialType, part.MaterialType);
        Put(o_Thickness, part.Thickness);
        Put(o_Qty, part.Qty);
        return HostResult::Ok;
    });
}

HostResult PartkeepReadImpl::NumberOfPartsSelected(std::int32_t* o_NoOfParts)
{
    auto number = static_cast<std::int32_t>(parts_.size());
    Put(o_NoOfParts, number);
    return HostResult::Ok;
}

HostResult PartkeepReadImpl::GetPartInfo(std::int32_t i_index, std::u16string* o_serverName,
                                         std::u16string* o_folderName, std::u16string* o_FilePathName,
                                         std::u16string* o_SYFileName, std::u16string* o_NCFileName,
                                         std::u16string* o_PartName, std::u16string* o_PartComment,
                                         std::u16string* o_MaterialType, std::u16string* o_MachineName,
                                         std::int32_t* o_MachineType, double* o_Thickness, std::u16string* o_Qty)
{
    const auto put_record = [&](PartRecord part) {
        Put(o_serverName, part.serverName);
        Put(o_folderName, part.folderName);
        Put(o_FilePathName, part.FilePathName);
        Put(o_SYFileName, part.SYFileName);
        Put(o_NCFileName, part.NCFileName);
        Put(o_PartName, part.PartName);
        Put(o_PartComment, part.PartComment);
        Put(o_MaterialType, part.MaterialType);
        Put(o_MachineName, part.MachineName);
        Put(o_MachineType, part.MachineType);
        Put(o_Thickness, part.Thickness);
        Put(o_Qty, part.Qty);
    };
    return Guarded(HostResult::Ok, [&] {
        put_record(PartRecord()); // what stays where memory has run out
        // Compared as unsigned numbers, so that a negative index is out of range too.
        const auto index = static_cast<std::uint32_t>(i_index);
        if (index < parts_.size()) {
            put_record(*std::next(parts_.begin(), static_cast<std::ptrdiff_t>(index)));
        }
        return HostResult::Ok;
    });
}

HostResult PartkeepReadImpl::SetWorkingFolder(std::u16string_view i_WorkingFolderName)
{
    return Guarded(HostResult::Ok, [&] {
        TheProcessValues().workingFolder = i_WorkingFolderName;
        return HostResult::Ok;
    });
}

HostResult PartkeepReadImpl::SetLanguageID(std::int32_t i_languageID)
{
    TheProcessValues().languageId = i_languageID;
    return HostResult::Ok;
}

HostResult PartkeepReadImpl::ReadCADDataForTessara(std::u16string_view i_serverName, std::u16string_view i_folderName,
                                                   std::u16string_view i_partName, std::u16string_view i_dataType,
                                                   std::u16string* o_FilePathName, std::u16string* o_PartName,
                                                   std::u16string* o_PartComment, std::u16string* o_MaterialType,
                                                   double* o_Thickness, std::u16string* o_Qty)
{
    const auto put_record = [&](PartRecord part) {
        Put(o_FilePathName, part.FilePathName);
        Put(o_PartName, part.PartName);
        Put(o_PartComment, part.PartComment);
        Put(o_MaterialType, part.MaterialType);
        Put(o_Thickness, part.Thickness);
        Put(o_Qty, part.Qty);
    };
    return Guarded(HostResult::False, [&] {
        put_record(PartRecord());
        PartRecord part;
        CCADDataReader reader(TheProcessValues().workingFolder, services_.controls, services_.messages);
        if (!reader.ReadCADData(i_serverName, i_folderName, i_partName, i_dataType, part)) {
            return HostResult::False;
        }
        put_record(std::move(part));
        return HostResult::Ok;
    });
}

} // namespace partkeep
