// Tab through the browser, and filter tools.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

using DialogShell = SelectionRun;

TEST_F(DialogShell, TabGoesThroughTheBrowserInBothDirections)
{
    const struct {
        const char* label;
        int focused;
        bool shift;
        std::int16_t answer; // of MoveFocus
        const char* lines;
        int focus_behind;
    } rows[] = {
        {"inside", RES_BROWSER, false, 1, "MoveFocus(1)", RES_BROWSER},
        {"inside, back", RES_BROWSER, true, 7, "MoveFocus(0)", RES_BROWSER},
        {"off the end", RES_BROWSER, false, 0, "MoveFocus(1); 101: Focus 202", RES_UNIT},
        {"off the start", RES_BROWSER, true, 0, "MoveFocus(0); 101: Focus 2", id_cancel},
        {"from Cancel into it", id_cancel, false, 1, "MoveFocus(1)", RES_PART_NAME},
        {"from the unit box into it", RES_UNIT, true, 1, "MoveFocus(0)", RES_ADD},
        {"Cancel, back", id_cancel, true, 1, "", RES_LOAD},
        {"unit box, on, past the picture that is not shown", RES_UNIT, false, 1, "", RES_LOAD},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        browser.On(BrowserOperation::MoveFocus, ControlResult(row.answer));
        const auto press = [&](CScriptedWindow& window) {
            window.focused = row.focused;
            EXPECT_EQ(LinesIn(window, user::Key(key_tab, false, row.shift)), Steps(row.lines));
            EXPECT_EQ(window.focused, row.focus_behind);
        };
        EXPECT_EQ(Run({press, user::Press(id_cancel)}), id_cancel);
    }
}

TEST_F(DialogShell, FilterToolsAreExclusiveAndFilterAtOnce)
{
    for (const auto& [command, mask] :
         std::initializer_list<std::pair<int, int>>{{32773, 24}, {32774, 20}, {32775, 10}, {32776, 15}}) {
        std::string expected;
        for (int other = 32773; other <= 32776; ++other) {
            expected += other == command ? "" : "101: PressTool " + std::to_string(other) + " off; ";
        }
        expected += "101: PressTool " + std::to_string(command) + " on; SetPartFilter(" + std::to_string(mask) + ")";
        EXPECT_EQ(LinesOf(user::Press(command)), Steps(expected));
    }
    EXPECT_EQ(NamesIn(folder.Path("Install")), Lines{"kpdservers.ini"}); // no options file
}

} // namespace
} // namespace partkeep
