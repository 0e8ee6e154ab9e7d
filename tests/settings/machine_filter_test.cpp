#include "settings/machine_filter.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

TEST(MachineFilter, StateCommandAndMaskLeadToEachOther)
{
    const struct {
        std::int16_t state;
        int command;
        int mask; // 0: no row
    } rows[] = {{-1, 32772, 0}, {0, 32773, 0x18}, {1, 32774, 0x14}, {2, 32775, 0x0A}, {3, 32776, 0x0F}, {4, 32777, 0}};
    for (const auto& row : rows) {
        const MachineFilter* by_state = FindFilterByState(row.state);
        EXPECT_EQ(by_state, FindFilterByCommand(row.command)) << row.state;
        EXPECT_EQ(by_state != nullptr ? by_state->dataKind : 0, row.mask) << row.state;
    }
}

} // namespace
} // namespace partkeep
