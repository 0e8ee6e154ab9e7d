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
    struct Row {
        const char* label;
        int focused;
        bool shift;
        std::int16_t answer; // of MoveFocus
        Lines lines;
        int focus_behind;
    };
    const Row rows[] = {
        {"inside", RES_BROWSER, false, 1, {"MoveFocus(1)"}, RES_BROWSER},
        {"inside, back", RES_BROWSER, true, 7, {"MoveFocus(0)"}, RES_BROWSER},
        {"off the end", RES_BROWSER, false, 0, {"MoveFocus(1)", "101: Focus 202"}, RES_UNIT},
        {"off the start", RES_BROWSER, true, 0, {"MoveFocus(0)", "101: Focus 2"}, id_cancel},
        {"from Cancel into it", id_cancel, false, 1, {"MoveFocus(1)"}, RES_PART_NAME},
        {"from the unit box into it", RES_UNIT, true, 1, {"MoveFocus(0)"}, RES_ADD},
        {"Cancel, back", id_cancel, true, 1, {}, RES_LOAD},
        {"unit box, on, past the picture that is not shown", RES_UNIT, false, 1, {}, RES_LOAD},
        {"elsewhere", RES_PART_NAME, false, 1, {}, RES_COMMENT},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        browser.On(BrowserOperation::MoveFocus, ControlResult(row.answer));
        EXPECT_EQ(KeyAt(row.focused, {key_tab, false, row.shift}), row.lines);
        EXPECT_EQ(focus_behind_, row.focus_behind);
    }
}

TEST_F(DialogShell, ControlASelectsAllInMultiSelectionAlone)
{
    struct Row {
        bool multi;
        KeyPress press;
        Lines lines;
    };
    const Row rows[] = {
        {true, {key_a, true, false}, {"SelectAllParts(1)"}},
        {true, {key_a, false, false}, {"101: key 65 to 215"}},
        {false, {key_a, true, false}, {"101: key 65 to 215"}},
        {true, {66, true, false}, {"101: key 66 to 215"}},
    };
    for (const Row& row : rows) {
        multiSelection = row.multi;
        EXPECT_EQ(KeyAt(RES_BROWSER, row.press), row.lines);
    }
}

TEST_F(DialogShell, EnterLoadsWhateverHasTheFocus)
{
    for (const int focused : {id_cancel, RES_ADD, RES_BROWSER, RES_LOAD, RES_UNIT}) {
        Select({u"P1"});
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
    const auto choose = [](int entry) {
        return [entry](CScriptedWindow& window) { window.ChooseEntry(RES_UNIT, entry); };
    };
    EXPECT_EQ(LinesOf(choose(1)), (Lines{"SetDisplayUnit(1)", "RefreshPartList()"}));
    EXPECT_EQ(LinesOf(choose(1)), (Lines{"SetDisplayUnit(1)", "RefreshPartList()"}));
    EXPECT_EQ(ReadBytes(folder.Path("Install/kpdservers.ini")), "SRV1\r\n-9999\r\ninch\r\nSRV1\r\n-9999\r\n0\r\n");
    EXPECT_EQ(LinesOf(choose(0)), (Lines{"SetDisplayUnit(0)", "RefreshPartList()"}));
    EXPECT_EQ(LinesOf(choose(-1)), (Lines{"SetDisplayUnit(1)", "RefreshPartList()"}));
}

TEST_F(DialogShell, FilterToolsAreExclusiveAndFilterAtOnce)
{
    struct Row {
        int command;
        Lines lines;
    };
    const Row rows[] = {
        {32773,
         {"101: PressTool 32774 off", "101: PressTool 32775 off", "101: PressTool 32776 off", "101: PressTool 32773 on",
          "SetPartFilter(24)"}},
        {32774,
         {"101: PressTool 32773 off", "101: PressTool 32775 off", "101: PressTool 32776 off", "101: PressTool 32774 on",
          "SetPartFilter(20)"}},
        {32775,
         {"101: PressTool 32773 off", "101: PressTool 32774 off", "101: PressTool 32776 off", "101: PressTool 32775 on",
          "SetPartFilter(10)"}},
        {32776,
         {"101: PressTool 32773 off", "101: PressTool 32774 off", "101: PressTool 32775 off", "101: PressTool 32776 on",
          "SetPartFilter(15)"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(LinesOf(user::Press(row.command)), row.lines);
    }
    EXPECT_EQ(NamesIn(folder.Path("Install")), Lines{"kpdservers.ini"}); // no options file
}

} // namespace
} // namespace partkeep
