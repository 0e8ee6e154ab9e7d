// The one way to the part browser: a member per operation of its contract, and nothing else. Each member
// calls the row of its name; the control does the work.
#pragma once

#include "controls/control_wrapper.h"
#include "controls/part_browser_contract.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace partkeep {

// Where ReadPartAttributes puts what it knows of a part: blocks of the contract's sizes, zeroed to begin with.
// Members are numbered by the argument they serve; only those with a name are ever read.
struct PartAttributeBlocks {
    // Puts the name in its block, cut to what fits with a terminator.
    explicit PartAttributeBlocks(std::u16string_view name);

    std::array<char16_t, part_name_units> part_name{}; // 3, in
    std::int32_t thickness = 0;                        // 4, in 1/10000
    std::int32_t argument5 = 0;
    std::int16_t argument6 = 0;
    LongText material{}; // 7
    LongText argument8{};
    LongText machine{}; // 9
    std::int32_t argument10 = 0;
    std::int32_t argument11 = 0;
    LongText comment{}; // 12
    std::int16_t argument13 = 0;
    std::int16_t argument14 = 0;
};

class CKPDKeyManager : public CControlWrapper {
public:
    bool ConnectServer(std::u16string_view server) { return InvokeHelper<browser::ConnectServer>(server); }
    void DisconnectServer() { InvokeHelper<browser::DisconnectServer>(); }
    bool SetTargetFolder(std::u16string_view folder) { return InvokeHelper<browser::SetTargetFolder>(folder); }
    std::u16string GetPreviewFileTitle() { return InvokeHelper<browser::GetPreviewFileTitle>(); }
    bool SetDataKind(std::int16_t kind_mask) { return InvokeHelper<browser::SetDataKind>(kind_mask); }
    std::int32_t GetLastStatus() { return InvokeHelper<browser::GetLastStatus>(); }
    std::u16string GetCurrentServer() { return InvokeHelper<browser::GetCurrentServer>(); }
    void SetCurrentServer(std::u16string_view server) { InvokeHelper<browser::SetCurrentServer>(server); }
    // 1 inch, 0 metric
    void SetDisplayUnit(std::int16_t unit) { InvokeHelper<browser::SetDisplayUnit>(unit); }
    void SelectNextServer() { InvokeHelper<browser::SelectNextServer>(); }
    void OpenFolderSelection() { InvokeHelper<browser::OpenFolderSelection>(); }
    bool SetCurrentFolder(std::u16string_view folder) { return InvokeHelper<browser::SetCurrentFolder>(folder); }
    std::u16string GetCurrentFolder() { return InvokeHelper<browser::GetCurrentFolder>(); }
    bool RefreshPartList() { return InvokeHelper<browser::RefreshPartList>(); }
    bool GetServerList(ServerTable& table) { return InvokeHelper<browser::GetServerList>(&table); }
    // A copy, so that the control cannot write to the caller's.
    bool SetServerList(ServerTable table) { return InvokeHelper<browser::SetServerList>(&table); }
    // Room for GetViewStateCount values.
    bool GetViewState(std::int16_t* values) { return InvokeHelper<browser::GetViewState>(values); }
    // Never negative.
    std::int16_t GetViewStateCount() { return std::max<std::int16_t>(0, InvokeHelper<browser::GetViewStateCount>()); }
    // The control may read max_view_state_values values whatever the file gave.
    void SetViewState(const std::int16_t* values) { InvokeHelper<browser::SetViewState>(values); }
    bool SetPartFilter(std::int16_t kind_mask) { return InvokeHelper<browser::SetPartFilter>(kind_mask); }
    // `image`: image_block_bytes that begin with the request tag. `scratch`: scratch_block_bytes.
    bool ReadPartImage(std::u16string_view working_folder, void* image, void* scratch)
    {
        return InvokeHelper<browser::ReadPartImage>(working_folder, image, scratch);
    }
    std::int16_t MoveFocus(std::int16_t code) { return InvokeHelper<browser::MoveFocus>(code); }
    bool CopyPartFiles(std::u16string_view server, std::u16string_view part_path)
    {
        return InvokeHelper<browser::CopyPartFiles>(server, part_path);
    }
    // Material, machine name and comment end in a NUL afterwards, whatever the control wrote.
    bool ReadPartAttributes(std::u16string_view server, std::u16string_view part_path, PartAttributeBlocks& blocks);
    // Never negative.
    std::int32_t GetSelectedPartCount()
    {
        return std::max<std::int32_t>(0, InvokeHelper<browser::GetSelectedPartCount>());
    }
    // Buffers of at least short_text_bytes, zeroed by the caller.
    std::int32_t GetSelectedPart(std::int16_t index, char* server, char* folder, char* part_name)
    {
        return InvokeHelper<browser::GetSelectedPart>(index, server, folder, part_name);
    }
    // 1 selects all, 0 clears.
    std::int16_t SelectAllParts(std::int16_t select) { return InvokeHelper<browser::SelectAllParts>(select); }
};

} // namespace partkeep
