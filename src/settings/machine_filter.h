// The machine filter: one choice, known as a small index that is kept and handed to the host, as a toolbar command,
// and as a mask that the part browser understands.
#pragma once

#include <array>
#include <cstdint>

namespace partkeep {

struct MachineFilter {
    std::int16_t FilterState;
    int command; // also the number of the tool tip's text
    std::int16_t dataKind;
};

inline constexpr std::array<MachineFilter, 4> machine_filters{{
    {0, 32773, 24}, // PART
    {1, 32774, 20}, // NCT
    {2, 32775, 10}, // LASER
    {3, 32776, 15}, // MARVEN
}};

// The choice as a dialog holds it. The mask stays -1 as long as FilterState is none of the table's.
struct MachineFilterState {
    std::int16_t FilterState = 0;
    std::int16_t dataKind = -1;
};

// Null for a number outside the table.
[[nodiscard]] const MachineFilter* FindFilterByState(std::int16_t filter_state);
[[nodiscard]] const MachineFilter* FindFilterByCommand(int command);

} // namespace partkeep
