// The object that a host application creates: nine operations over the list of parts that its confirmed
// selections brought. All user interaction lives in the dialog; the object holds only the list.
#pragma once

#include "host/host_services.h"
#include "partdata/part_record.h"

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

namespace partkeep {

// The two results that a host operation can have, with the component model's values.
enum class HostResult : std::int32_t { Ok = 0, False = 1 };

// Dispatch ids 1 to 9 in this order. Inputs are taken unchanged; empty text stands for a null one. A null output
// is skipped. Texts handed out are the caller's. No operation throws: trouble becomes the result it has for that.
class IPartkeepReadImpl {
public:
    virtual ~IPartkeepReadImpl() = default;

    // Ok after a confirmed dialog; False when it was cancelled, failed, or no install location was found.
    virtual HostResult InvokePartkeep() = 0;

    // First record. False when there is none; the outputs are then untouched.
    virtual HostResult GetFilePath(std::u16string* o_PartFileName) = 0;
    virtual HostResult GetSelectedPartInfo(std::u16string* o_PartFileName, std::u16string* o_PartName,
                                           std::u16string* o_PartComment, std::u16string* o_MaterialType,
                                           double* o_Thickness, std::u16string* o_Qty) = 0;

    // 1 allows several parts, any other value one. False only when no install location was found: a cancelled
    // dialog is Ok, and the host looks at NumberOfPartsSelected.
    virtual HostResult InvokePartkeepMultiSelection(std::int32_t i_MultipleSelectionAllowed) = 0;

    // Always Ok.
    virtual HostResult NumberOfPartsSelected(std::int32_t* o_NoOfParts) = 0;

    // Record i_index, counted from 0. Always Ok; out of range gives empty text and 0.
    virtual HostResult GetPartInfo(std::int32_t i_index, std::u16string* o_serverName, std::u16string* o_folderName,
                                   std::u16string* o_FilePathName, std::u16string* o_SYFileName,
                                   std::u16string* o_NCFileName, std::u16string* o_PartName,
                                   std::u16string* o_PartComment, std::u16string* o_MaterialType,
                                   std::u16string* o_MachineName, std::int32_t* o_MachineType, double* o_Thickness,
                                   std::u16string* o_Qty) = 0;

    // Root under which files are staged, ended with a separator by the host; process-wide. Always Ok.
    virtual HostResult SetWorkingFolder(std::u16string_view i_WorkingFolderName) = 0;

    // Reads a named part into the working folder without a dialog. False: not read, outputs empty and 0.0.
    // o_Thickness is the database's integer, in 1/10000. The list of parts does not change.
    virtual HostResult ReadCADDataForTessara(std::u16string_view i_serverName, std::u16string_view i_folderName,
                                             std::u16string_view i_partName, std::u16string_view i_dataType,
                                             std::u16string* o_FilePathName, std::u16string* o_PartName,
                                             std::u16string* o_PartComment, std::u16string* o_MaterialType,
                                             double* o_Thickness, std::u16string* o_Qty) = 0;

    // 1 English, 2 Japanese, 3 simplified Chinese, anything else neutral; process-wide. Always Ok.
    virtual HostResult SetLanguageID(std::int32_t i_languageID) = 0;
};

class PartkeepReadImpl : public IPartkeepReadImpl {
public:
    // The services must outlive the object.
    explicit PartkeepReadImpl(const HostServices& services) : services_(services) {}

    HostResult InvokePartkeep() override;
    HostResult GetFilePath(std::u16string* o_PartFileName) override;
    HostResult GetSelectedPartInfo(std::u16string* o_PartFileName, std::u16string* o_PartName,
                                   std::u16string* o_PartComment, std::u16string* o_MaterialType, double* o_Thickness,
                                   std::u16string* o_Qty) override;
    HostResult InvokePartkeepMultiSelection(std::int32_t i_MultipleSelectionAllowed) override;
    HostResult NumberOfPartsSelected(std::int32_t* o_NoOfParts) override;
    HostResult GetPartInfo(std::int32_t i_index, std::u16string* o_serverName, std::u16string* o_folderName,
                           std::u16string* o_FilePathName, std::u16string* o_SYFileName, std::u16string* o_NCFileName,
                           std::u16string* o_PartName, std::u16string* o_PartComment, std::u16string* o_MaterialType,
                           std::u16string* o_MachineName, std::int32_t* o_MachineType, double* o_Thickness,
                           std::u16string* o_Qty) override;
    HostResult SetWorkingFolder(std::u16string_view i_WorkingFolderName) override;
    HostResult ReadCADDataForTessara(std::u16string_view i_serverName, std::u16string_view i_folderName,
                                     std::u16string_view i_partName, std::u16string_view i_dataType,
                                     std::u16string* o_FilePathName, std::u16string* o_PartName,
                                     std::u16string* o_PartComment, std::u16string* o_MaterialType, double* o_Thickness,
                                     std::u16string* o_Qty) override;
    HostResult SetLanguageID(std::int32_t i_languageID) override;

private:
    enum class RunOutcome { NotInstalled, Cancelled, Confirmed };

    RunOutcome RunDialog(bool multi_selection);

    HostServices services_;
    std::list<PartRecord> parts_; // oldest first; only ever appended
};

} // namespace partkeep
