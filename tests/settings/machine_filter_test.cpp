#include "settings/machine_filter.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

TEST(MachineFilter, StateCommandAndMaskLeadToEachOther)
{
    const std::tuple<std::int16_t, int, int> rows[] = {{-1, 32772, 0},   {0, 32773, 0x18}, {1, 32774, 0x14},
                                                       {2, 32775, 0x0A}, {3, 32776, 0x0F}, {4, 32777, 0}};
    for (const auto& [state, command, mask] : rows) { // mask 0: no such row
        const MachineFilter* by_state = FindFilterByState(state);
        EXPECT_EQ(by_state, FindFilterByCommand(command)) << state;
        EXPECT_EQ(by_state != nullptr ? by_state->dataKind : 0, mask) << state;
    }
}

} // namespace
} // namespace partkeep
