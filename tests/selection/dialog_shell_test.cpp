// Keys, Tab through the browser, unit box and filter tools.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

using DialogShell = SelectionRun;

TEST_F(DialogShell, KeysComeBeforeTheControlThatHasTheFocus)
{
    const KeyPress tab{key_tab, false, false};
    const KeyPress back{key_tab, false, true};
    const KeyPress enter{key_return, false, false};
    const std::string load = "101: BeginWait; GetSelectedPartCount(); message " + select_parts + "; 101: EndWait";
    const struct {
        const char* label;
        int focused;
        KeyPress press;
        std::int16_t answer; // of MoveFocus
        std::string lines;
        int focus_behind;
        bool multi = true;
    } rows[] = {
        {"inside", RES_BROWSER, tab, 1, "MoveFocus(1)", RES_BROWSER},
        {"inside, back", RES_BROWSER, back, 7, "MoveFocus(0)", RES_BROWSER},
        {"off the end", RES_BROWSER, tab, 0, "MoveFocus(1); 101: Focus 202", RES_UNIT},
        {"off the start", RES_BROWSER, back, 0, "MoveFocus(0); 101: Focus 2", id_cancel},
        {"from Cancel into it", id_cancel, tab, 1, "MoveFocus(1)", RES_PART_NAME},
        {"from the unit box into it", RES_UNIT, back, 1, "MoveFocus(0)", RES_ADD},
        {"Cancel, back", id_cancel, back, 1, "", RES_LOAD},
        {"unit box, on, past the picture that is not shown", RES_UNIT, tab, 1, "", RES_LOAD},
        {"elsewhere", RES_PART_NAME, tab, 1, "", RES_COMMENT},
        {"all parts", RES_BROWSER, {key_a, true, false}, 1, "SelectAllParts(1)", RES_BROWSER},
        {"a letter", RES_BROWSER, {key_a, false, false}, 1, "101: key 65 to 215", RES_BROWSER},
        {"one part alone", RES_BROWSER, {key_a, true, false}, 1, "101: key 65 to 215", RES_BROWSER, false},
        {"another key", RES_BROWSER, {66, true, false}, 1, "101: key 66 to 215", RES_BROWSER},
        {"Enter on Cancel", id_cancel, enter, 1, load, id_cancel},
        {"Enter on Add", RES_ADD, enter, 1, load, RES_ADD},
        {"Enter on Load", RES_LOAD, enter, 1, load, RES_LOAD},
        {"Enter in the browser", RES_BROWSER, enter, 1, load, RES_BROWSER},
        {"Enter in the unit box", RES_UNIT, enter, 1, load, RES_UNIT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        multiSelection = row.multi;
        browser.On(BrowserOperation::MoveFocus, ControlResult(row.answer));
        const auto press = [&](CScriptedWindow& window) {
            window.focused = row.focused;
            window.PressKey(row.press);
            EXPECT_EQ(window.focused, row.focus_behind);
        };
        EXPECT_EQ(LinesOf(press), Steps(row.lines));
    }
}

TEST_F(DialogShell, UnitBoxRefreshesAlways)
{
    StartIn("-9999");
    for (const auto& [entry, unit] : std::initializer_list<std::pair<int, const char*>>{
             {1, "1"}, {1, "1"}, {0, "0"}, {-1, "1"}}) { // from inch to inch too
        EXPECT_EQ(LinesOf([entry = entry](CScriptedWindow& window) { window.ChooseEntry(RES_UNIT, entry); }),
                  Steps("SetDisplayUnit(" + std::string(unit) + "); RefreshPartList()"));
        EXPECT_EQ(ReadBytes(folder.Path("Install/kpdservers.ini")),
                  "SRV1\r\n-9999\r\n" + std::string(*unit == '1' ? "inch" : "metric") + "\r\nSRV1\r\n-9999\r\n0\r\n");
    }
    EXPECT_EQ(LinesOf([](CScriptedWindow& window) { window.Events().OnSelectionChange(RES_PART_LIST); }), Lines{})
        << "another list";
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
