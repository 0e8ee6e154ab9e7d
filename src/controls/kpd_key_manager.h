// The one way to the part browser: a member per operation of its contract, and nothing else. Each member holds
// only dispatch id, argument types and result type; the control does the work. What an operation writes
// through a pointer is told in part_browser_contract.h.
#pragma once

#include "controls/control_wrapper.h"
#include "controls/part_browser_contract.h"

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
    std::array<char, long_text_bytes> material{}; // 7
    std::array<char, long_text_bytes> argument8{};
    std::array<char, long_text_bytes> machine{}; // 9
    std::int32_t argument10 = 0;
    std::int32_t argument11 = 0;
    std::array<char, long_text_bytes> comment{}; // 12
    std::int16_t argument13 = 0;
    std::int16_t argument14 = 0;
};

class CKPDKeyManager : public CControlWrapper {
public:
    bool ConnectServer(std::u16string_view server);
    void DisconnectServer();
    bool SetTargetFolder(std::u16string_view folder);
    std::u16string GetPreviewFileTitle();
    bool SetDataKind(std::int16_t kind_mask);
    std::int32_t GetLastStatus();
    std::u16string GetCurrentServer();
    void SetCurrentServer(std::u16string_view server);
    void SetDisplayUnit(std::int16_t unit); // 1 inch, 0 metric
    void SelectNextServer();
    void OpenFolderSelection();
    bool SetCurrentFolder(std::u16string_view folder);
    std::u16string GetCurrentFolder();
    bool RefreshPartList();
    bool GetServerList(ServerTable& table);
    bool SetServerList(const ServerTable& table);
    bool GetViewState(std::int16_t* values); // room for GetViewStateCount values
    std::int16_t GetViewStateCount();        // never negative
    // The control may read max_view_state_values values whatever the file gave.
    void SetViewState(const std::int16_t* values);
    bool SetPartFilter(std::int16_t kind_mask);
    // `image`: image_block_bytes that begin with the request tag. `scratch`: scratch_block_bytes.
    bool ReadPartImage(std::u16string_view working_folder, void* image, void* scratch);
    std::int16_t MoveFocus(std::int16_t code);
    bool CopyPartFiles(std::u16string_view server, std::u16string_view part_path);
    // Material, machine name and comment end in a NUL afterwards, whatever the control wrote.
    bool ReadPartAttributes(std::u16string_view server, std::u16string_view part_path, PartAttributeBlocks& blocks);
    std::int32_t GetSelectedPartCount(); // never negative
    // Buffers of at least short_text_bytes, zeroed by the caller.
    std::int32_t GetSelectedPart(std::int16_t index, char* server, char* folder, char* part_name);
    std::int16_t SelectAllParts(std::int16_t select); // 1 selects all, 0 clears
};

} // namespace partkeep
