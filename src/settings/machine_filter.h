// The machine filter: one choice, known as a small index that is kept and handed to the host, as a toolbar command,
// and as a mask that the part browser understands.
#pragma once

#include "controls/part_browser_contract.h"
#include "resources/resource_ids.h"

#include <array>
#include <cstdint>

namespace partkeep {

struct MachineFilter {
    std::int16_t FilterState;
    int command; // also the number of the tool tip's text
    std::int16_t dataKind;
};

inline constexpr std::array<MachineFilter, 4> machine_filters{{
    {0, RES_FILTER_PART, part_data_kind},
    {1, RES_FILTER_NCT, nct_data_kind},
    {2, RES_FILTER_LASER, laser_data_kind},
    {3, RES_FILTER_MARVEN, marven_data_kind},
}};

// The choice as a dialog holds it. The mask stays all_data_kinds as long as FilterState is none of the table's.
struct MachineFilterState {
    std::int16_t FilterState = 0;
    std::int16_t dataKind = all_data_kinds;
};

// Null for a number outside the table.
[[nodiscard]] const MachineFilter* FindFilterByState(std::int16_t filter_state);
[[nodiscard]] const MachineFilter* FindFilterByCommand(int command);

} // namespace partkeep
