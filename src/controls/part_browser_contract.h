// The contract between the component and its part browser: identity, dispatch ids, argument types and the
// values exchanged. Shared by the side that calls (CKPDKeyManager) and by every implementation.
#pragma once

#include "platform/control.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace partkeep {

inline constexpr ClassId part_browser_class_id{
    0x4C1CDCBC, 0x4146, 0x4EFC, {0x96, 0x93, 0xAE, 0x68, 0x00, 0x75, 0x2C, 0x57}};

enum class BrowserOperation : std::int32_t {
    ConnectServer = 2,
    DisconnectServer = 3,
    SetTargetFolder = 10,
    GetPreviewFileTitle = 12,
    SetDataKind = 13,
    GetLastStatus = 14,
    GetCurrentServer = 15,
    SetCurrentServer = 16,
    SetDisplayUnit = 17,
    SelectNextServer = 27,
    OpenFolderSelection = 29,
    SetCurrentFolder = 30,
    GetCurrentFolder = 31,
    RefreshPartList = 36,
    GetServerList = 38,
    SetServerList = 39,
    GetViewState = 40,
    GetViewStateCount = 41,
    SetViewState = 43,
    SetPartFilter = 44,
    ReadPartImage = 47,
    MoveFocus = 49,
    CopyPartFiles = 56,
    ReadPartAttributes = 57,
    GetSelectedPartCount = 79,
    GetSelectedPart = 80,
    SelectAllParts = 100,
};

enum class BrowserEvent : std::int32_t {
    Click = -600, // without parameters: the user clicked or changed the selection
    Second = 1,   // without parameters; nothing listens to it
};

// One row of the contract's table.
struct OperationSignature {
    BrowserOperation operation;
    const char* name;
    ControlType result;
    std::span<const ControlType> arguments;
};

// Every operation once, by rising dispatch id.
[[nodiscard]] std::span<const OperationSignature> BrowserSignatures();

// Null for an id that is not in the contract.
[[nodiscard]] const OperationSignature* FindBrowserSignature(std::int32_t dispatch_id);

// The server table: ten slots of narrow text in the system code page; the first empty slot ends the list.
inline constexpr std::size_t server_slots = 10;
inline constexpr std::size_t server_slot_bytes = 260;

struct ServerTable {
    std::array<std::array<char, server_slot_bytes>, server_slots> slots{};

    friend bool operator==(const ServerTable&, const ServerTable&) = default;
};
static_assert(sizeof(ServerTable) == 2600);

// Narrow text outputs. The smallest buffer a caller gives for server, folder and part name is 100 bytes; part
// name alone may come with 256. Material, machine name and comment have 256 bytes.
inline constexpr std::size_t short_text_bytes = 100;
inline constexpr std::size_t long_text_bytes = 256;
inline constexpr std::size_t part_name_units = 256; // the 512-byte block of ReadPartAttributes

inline constexpr std::size_t image_block_bytes = 24000;
inline constexpr std::size_t scratch_block_bytes = 256;
inline constexpr std::size_t max_view_state_values = 32767;

// Kind masks in use.
inline constexpr std::int16_t part_data_kind = 24;
inline constexpr std::int16_t nct_data_kind = 20; // also the PNG preview's
inline constexpr std::int16_t laser_data_kind = 10;
inline constexpr std::int16_t marven_data_kind = 15;
inline constexpr std::int16_t all_data_kinds = -1;

// Codes of MoveFocus.
inline constexpr std::int16_t focus_backward = 0;
inline constexpr std::int16_t focus_forward = 1;
inline constexpr std::int16_t focus_at_start = -1;
inline constexpr std::int16_t focus_at_paint = 15;

inline constexpr std::int32_t status_list_outdated = -2; // of GetLastStatus: rebuild the list

} // namespace partkeep
