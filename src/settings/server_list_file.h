// The file in the installation folder that keeps what the user was working with from one run to the next: server,
// folder, display unit, known servers and the part browser's view state. Lines by position; docs/settings-files.md
// describes them. The dialog owns the state.
#pragma once

#include "controls/kpd_key_manager.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

struct ServerListState {
    std::u16string currentServer;
    std::u16string lastFolder;
    std::int32_t displayUnit = 0; // 0 metric, 1 inch
    ServerTable serverTable;
    std::vector<std::int16_t> viewState;
    bool fileUnread = false; // the system could not read it, so what it holds must not be lost
};

// Reads the text of the file, lines ending in LF, bytes in the system's code page. What the text does not hold stays
// as it was in `state`. True when it names a folder, the empty one included, to which the browser is to go.
bool ParseServerList(std::string_view text, ServerListState& state);

[[nodiscard]] std::string FormatServerList(const ServerListState& state);

// Without a readable file nothing changes but `fileUnread`. Sends the browser to the folder that the file names.
void LoadServerList(ServerListState& state, std::u16string_view install_folder, CKPDKeyManager& browser);

// Takes servers, current server and view state from the browser, whose control must exist, and replaces the file.
// A file that cannot be written stays as it is. One that could not be read is kept beside the new one.
void SaveServerList(ServerListState& state, std::u16string_view install_folder, CKPDKeyManager& browser);

// The stored values as the browser takes them: with no count passed along it may read as many as there can be, so
// zeros follow up to max_view_state_values.
[[nodiscard]] std::vector<std::int16_t> PaddedViewState(const std::vector<std::int16_t>& view_state);

} // namespace partkeep
