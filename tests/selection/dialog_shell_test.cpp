// Keys, Tab through the browser, unit box and filter tools.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

class DialogShell : public SelectionRun {
protected:
    // The lines of a key pressed with the focus on a control.
    Lines KeyAt(int focused, KeyPress press)
    {
        return LinesOf([this, focused, press](CScriptedWindow& window) {
            window.focused = focused;
            window.PressKey(press);
            focus_behind_ = window.focused;
        });
    }

    int focus_behind_ = 0;
};

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
        {"elsewhere", RES_PART_NAME, false, 1, "", RES_COMMENT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        browser.On(BrowserOperation::MoveFocus, ControlResult(row.answer));
        EXPECT_EQ(KeyAt(row.focused, {key_tab, false, row.shift}), Steps(row.lines));
        EXPECT_EQ(focus_behind_, row.focus_behind);
    }
}

TEST_F(DialogShell, ControlASelectsAllInMultiSelectionAlone)
{
    const struct {
        bool multi;
        KeyPress press;
        const char* line;
    } rows[] = {
        {true, {key_a, true, false}, "SelectAllParts(1)"},
        {true, {key_a, false, false}, "101: key 65 to 215"},
        {false, {key_a, true, false}, "101: key 65 to 215"},
        {true, {66, true, false}, "101: key 66 to 215"},
    };
    for (const auto& row : rows) {
        multiSelection = row.multi;
        EXPECT_EQ(KeyAt(RES_BROWSER, row.press), Lines{row.line});
    }
}

TEST_F(DialogShell, EnterLoadsWhateverHasTheFocus)
{
    for (const int focused : {id_cancel, RES_ADD, RES_BROWSER, RES_LOAD, RES_UNIT}) {
        Select("P1");
        EXPECT_EQ(Run({[&](CScriptedWindow& window) {
                      window.focused = focused;
                      window.controls[RES_LOAD].enabled = false;
                      window.PressKey({key_return, false, false});
                  }}),
                  id_ok);
        EXPECT_EQ(dialog->resultParts.size(), 1U);
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
