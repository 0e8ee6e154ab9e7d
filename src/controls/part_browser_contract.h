// The contract between the component and its part browser: identity, dispatch ids, argument types and the
// values exchanged. Shared by the side that calls (CKPDKeyManager) and by every implementation.
#pragma once

#include "controls/typed_contract.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

namespace partkeep {

inline constexpr ClassId part_browser_class_id{
    0x4C1CDCBC, 0x4146, 0x4EFC, {0x96, 0x93, 0xAE, 0x68, 0x00, 0x75, 0x2C, 0x57}};

enum class BrowserEvent : std::int32_t {
    Click = -600, // without parameters: the user clicked or changed the selection
    Second = 1,   // without parameters; nothing listens to it
};

// The server table: ten slots of narrow text in the system code page; the first empty slot ends the list.
inline constexpr std::size_t server_slots = 10;
inline constexpr std::size_t server_slot_bytes = 260;

struct ServerTable {
    std::array<std::array<char, server_slot_bytes>, server_slots> slots{};

    friend bool operator==(const ServerTable&, const ServerTable&) = default;
};
static_assert(sizeof(ServerTable) == 2600);

inline void EndTexts(ServerTable* table)
{
    for (auto& slot : table->slots) {
        slot.back() = '\0';
    }
}

// Narrow text outputs. The smallest buffer a caller gives for server, folder and part name is 100 bytes; part
// name alone may come with 256. Material, machine name and comment have 256 bytes.
inline constexpr std::size_t short_text_bytes = 100;
inline constexpr std::size_t long_text_bytes = 256;
inline constexpr std::size_t part_name_units = 256; // the 512-byte block of ReadPartAttributes
using LongText = std::array<char, long_text_bytes>;

inline constexpr std::size_t image_block_bytes = 24000;
inline constexpr std::size_t scratch_block_bytes = 256;
inline constexpr std::size_t max_view_state_values = 32767;
inline constexpr std::int32_t thickness_units = 10000; // in a millimetre

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

// Every operation once, by rising dispatch id.
// clang-format off
#define PARTKEEP_BROWSER_OPERATIONS(ROW)                                                                               \
    ROW(2, Method, ConnectServer, bool(ControlText server))                                                            \
    ROW(3, Method, DisconnectServer, void())                                                                           \
    ROW(10, Method, SetTargetFolder, bool(ControlText folder))                                                         \
    ROW(12, Method, GetPreviewFileTitle, std::u16string())                                                             \
    ROW(13, Method, SetDataKind, bool(std::int16_t kind_mask))                                                         \
    ROW(14, Method, GetLastStatus, std::int32_t())                                                                     \
    ROW(15, Method, GetCurrentServer, std::u16string())                                                                \
    ROW(16, Method, SetCurrentServer, void(ControlText server))                                                        \
    ROW(17, Method, SetDisplayUnit, void(std::int16_t unit))                                                           \
    ROW(27, Method, SelectNextServer, void())                                                                          \
    ROW(29, Method, OpenFolderSelection, void())                                                                       \
    ROW(30, Method, SetCurrentFolder, bool(ControlText folder))                                                        \
    ROW(31, Method, GetCurrentFolder, std::u16string())                                                                \
    ROW(36, Method, RefreshPartList, bool())                                                                           \
    ROW(38, Method, GetServerList, bool(ServerTable* table))                                                           \
    ROW(39, Method, SetServerList, bool(ServerTable* table))                                                           \
    ROW(40, Method, GetViewState, bool(std::int16_t* values))                                                          \
    ROW(41, Method, GetViewStateCount, std::int16_t())                                                                 \
    ROW(43, Method, SetViewState, void(const std::int16_t* values))                                                    \
    ROW(44, Method, SetPartFilter, bool(std::int16_t kind_mask))                                                       \
    ROW(47, Method, ReadPartImage, bool(ControlText working_folder, void* image, void* scratch))                       \
    ROW(49, Method, MoveFocus, std::int16_t(std::int16_t code))                                                        \
    ROW(56, Method, CopyPartFiles, bool(ControlText server, ControlText part_path))                                    \
    ROW(57, Method, ReadPartAttributes,                                                                                \
        bool(ControlText server, ControlText part_path, char16_t* part_name, std::int32_t* thickness, std::int32_t*,   \
             std::int16_t*, LongText* material, LongText*, LongText* machine, std::int32_t*, std::int32_t*,            \
             LongText* comment, std::int16_t*, std::int16_t*))                                                         \
    ROW(79, Method, GetSelectedPartCount, std::int32_t())                                                              \
    ROW(80, Method, GetSelectedPart, std::int32_t(std::int16_t index, char* server, char* folder, char* part_name))    \
    ROW(100, Method, SelectAllParts, std::int16_t(std::int16_t select))
// clang-format on

enum class BrowserOperation : std::int32_t { PARTKEEP_BROWSER_OPERATIONS(PARTKEEP_ROW_ID) };

namespace browser {
PARTKEEP_BROWSER_OPERATIONS(PARTKEEP_ROW_TYPE)
inline constexpr std::tuple contract{PARTKEEP_BROWSER_OPERATIONS(PARTKEEP_ROW_ELEMENT)};
} // namespace browser

} // namespace partkeep
