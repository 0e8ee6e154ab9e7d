// Start-up, Cancel and close-down.

#include "tests/selection/selection_run.h"

#include "controls/zan_pic_ctrl.h"

namespace partkeep {
namespace {

const std::string title = " 'Kolvyn PartkeepRead'";

class StartUp : public SelectionRun {
protected:
    // The lines from the run's start to the first action of the user.
    Lines StartLines()
    {
        Lines lines;
        Run({[&](CScriptedWindow&) { lines = recorder.Take(); }, user::Press(id_cancel)});
        return lines;
    }

    void WriteServerList(const std::string& text) { WriteBytes(folder.Path("Install/kpdservers.ini"), text); }

    void WriteOptions(const std::string& leaves)
    {
        WriteBytes(folder.Path("Install/ZanPartkeepConfig.xml"),
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<R>" + leaves + "</R>");
    }
};

TEST_F(StartUp, TakesItsStepsInTheirOrder)
{
    int icon = 0;
    windows.parentIcon = &icon;
    WriteServerList("SRV2\r\nX\\Y\r\ninch\r\nSRV1\r\nSRV2\r\n-9999\r\n2\r\n120\r\n-80\r\n");
    WriteOptions("<InputNoFlag>true</InputNoFlag><FilterState>2</FilterState>");
    const Lines expected = {
        "101: RunModal",
        "101: SetSmallIcon parent's",
        "101: CreateHostedControl 215 4C1CDCBC 5,10,808,338",
        "101: CreatePanel 65535 5,378,155,528",
        "101: CreatePanel 65535 175,378,325,528",
        "101: panel 2 Move 175,378,324,527",
        "101: panel 1 Move 5,378,154,527",
        "101: ShowControl 211 off",
        "101: SetReadOnly 203",
        "101: SetReadOnly 204",
        "101: SetText 213 '3D Image'",
        "101: SetText 212 '2D Image'",
        "101: SetText 206 'Display Unit (&U)'",
        "101: SetText 208 'Parts Name (&P)'",
        "101: SetText 207 'Comment (&M)'",
        "101: SetText 201 'OK'",
        "101: SetText 2 'Cancel'",
        "101: SetText 210 'Add'",
        "101: SetText 217 'Input Quantity'",
        "101: ResetEntries 202",
        "101: InsertEntry 202 0 'Metric'",
        "101: InsertEntry 202 1 'Inch'",
        "SetCurrentFolder('X\\Y')",
        "SetDisplayUnit(1)",
        "RefreshPartList()",
        "101: SetCheck 217 1",
        "101: CreateToolbar 212",
        "101: MoveAllControls 0,20",
        "101: PlaceToolbar",
        "101: EnableToolTips",
        "101: PressTool 32775 on",
        "101: SelectEntry 202 1",
        "101: SetText 203 ''",
        "101: SetText 204 ''",
        "SetPartFilter(10)",
        "SetServerList('SRV1', 'SRV2')",
        "SetViewState()",
        "101: UpdateNow",
        "MoveFocus(-1)",
        "101: Focus 215",
        "ConnectServer('SRV2')",
        "SetCurrentServer('SRV2')",
        "SelectNextServer()",
        "OpenFolderSelection()",
        "SetCurrentFolder('X\\Y')",
    };
    EXPECT_EQ(StartLines(), expected);
    ASSERT_EQ(browser.givenViewState.size(), max_view_state_values);
    EXPECT_EQ(browser.givenViewState[0], 120);
    EXPECT_EQ(browser.givenViewState[1], -80);
    EXPECT_TRUE(std::all_of(browser.givenViewState.begin() + 2, browser.givenViewState.end(),
                            [](std::int16_t value) { return value == 0; }));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("Work/UnZipFolder")));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("Work/Lumora_ForPNG")));
}

TEST_F(StartUp, TakesFromTheSettingsFilesWhatTheyHold)
{
    struct Row {
        const char* label;
        const char* servers;
        const char* options;
        Lines browser_calls; // behind the creation, MoveFocus left out
        std::set<int> tools;
        int prompt;
    };
    const auto connect = [](const std::string& server, int steps, const std::string& restored) {
        Lines lines = {"ConnectServer('" + server + "')", "SetCurrentServer('" + server + "')"};
        lines.insert(lines.end(), static_cast<std::size_t>(steps), "SelectNextServer()");
        if (!restored.empty()) {
            lines.insert(lines.end(), {"OpenFolderSelection()", "SetCurrentFolder('" + restored + "')"});
        }
        return lines;
    };
    const auto calls = [](Lines first, const std::string& filter, const std::string& servers, const Lines& last) {
        first.insert(first.end(), {"SetPartFilter(" + filter + ")", "SetServerList(" + servers + ")"});
        first.insert(first.end(), last.begin(), last.end());
        return first;
    };
    const Row rows[] = {
        {"no files", "", "", calls({"SetDisplayUnit(0)"}, "24", "", connect("", 0, "")), {32773}, 0},
        {"filter outside the table",
         "",
         "<FilterState>7</FilterState>",
         calls({"SetDisplayUnit(0)"}, "-1", "", connect("", 0, "")),
         {},
         0},
        {"prompt alone",
         "",
         "<InputNoFlag>true</InputNoFlag>",
         calls({"SetDisplayUnit(0)"}, "24", "", connect("", 0, "")),
         {32773},
         1},
        {"no current server, three known",
         "-9999\n-9999\nmetric\nA\nB\nC\n-9999\n0\n",
         "",
         calls({"SetDisplayUnit(0)"}, "24", "'A', 'B', 'C'", connect("", 3, "")),
         {32773},
         0},
        {"current server first",
         "A\nF\nmetric\nA\nB\n-9999\n0\n",
         "",
         calls({"SetCurrentFolder('F')", "SetDisplayUnit(0)"}, "24", "'A', 'B'", connect("A", 0, "F")),
         {32773},
         0},
        {"ten others",
         "X\n-9999\nmetric\n0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n-9999\n0\n",
         "",
         calls({"SetDisplayUnit(0)"}, "24", "'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'", connect("X", 10, "")),
         {32773},
         0},
        {"folder line empty",
         "A\n\nmetric\nA\n-9999\n0\n",
         "",
         calls({"SetCurrentFolder('')", "SetDisplayUnit(0)"}, "24", "'A'", connect("A", 0, "")),
         {32773},
         0},
        {"case of a server counts",
         "a\n-9999\nmetric\nA\n-9999\n0\n",
         "",
         calls({"SetDisplayUnit(0)"}, "24", "'A', 'a'", connect("a", 1, "")),
         {32773},
         0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        std::filesystem::remove(folder.Path("Install/kpdservers.ini"));
        std::filesystem::remove(folder.Path("Install/ZanPartkeepConfig.xml"));
        if (*row.servers != '\0') {
            WriteServerList(row.servers);
        }
        if (*row.options != '\0') {
            WriteOptions(row.options);
        }
        recorder.lines.clear();
        Lines lines;
        std::set<int> tools;
        int prompt = -1;
        Run({[&](CScriptedWindow& window) {
                 lines = recorder.Take();
                 tools = window.pressedTools;
                 prompt = window.controls[RES_ASK_QUANTITY].check;
             },
             user::Press(id_cancel)});
        std::erase_if(lines, [](const std::string& line) {
            return line.starts_with("101:") || line.starts_with("MoveFocus") || line.starts_with("put ");
        });
        EXPECT_EQ(lines, row.browser_calls);
        EXPECT_EQ(tools, row.tools);
        EXPECT_EQ(prompt, row.prompt);
    }
}

TEST_F(StartUp, ShowsItsCaptionsInTheLanguageOfTheRun)
{
    for (const std::int32_t language : {1, 2, 3}) {
        TheProcessValues().languageId = language;
        Run({[&](CScriptedWindow& window) {
                 EXPECT_EQ(window.controls[RES_PART_NAME_CAPTION].text, LoadLocalString(113) + u" (&P)");
                 EXPECT_EQ(window.controls[RES_LOAD].text, LoadLocalString(123));
                 EXPECT_EQ(window.controls[RES_UNIT].entries,
                           (std::vector{LoadLocalString(118), LoadLocalString(119)}));
                 EXPECT_EQ(dialog->ToolTipText(32776), u"MARVEN");
             },
             user::Press(id_cancel)});
    }
}

TEST_F(StartUp, OpensWithoutABrowserAndAnswersEverything)
{
    windows.makeControl = nullptr;
    const UserAction work = [&](CScriptedWindow& window) {
        EXPECT_EQ(Messages(recorder.Take()), "'Partkeep cannot be started' 'Kolvyn' exclamation");
        for (const int id : {RES_ADD, RES_LOAD, RES_FILTER_NCT, RES_ASK_QUANTITY}) {
            window.PressButton(id);
        }
        for (const int key : {key_return, key_tab, key_a}) {
            window.PressKey({key, true, false});
        }
        window.ChooseEntry(RES_UNIT, 1);
        window.Paint();
        EXPECT_EQ(Messages(recorder.Take()), "'Please select one or more part.'" + title +
                                                 "|'Please select one or more part.'" + title +
                                                 "|'Please select one or more part.'" + title);
    };
    EXPECT_EQ(Run({work, user::Key(key_escape)}), id_cancel);
    EXPECT_TRUE(NamesIn(folder.Path("Install")).empty());
}

TEST_F(StartUp, FailsWithoutAWindow)
{
    windows.canMakeWindows = false;
    dialog = std::make_unique<CPartkeepReadDlg>(windows);
    EXPECT_NE(dialog->DoModal(), id_ok);
}

TEST_F(StartUp, PaintTellsTheBrowser)
{
    EXPECT_EQ(LinesOf([](CScriptedWindow& window) { window.Paint(); }), Lines{"MoveFocus(15)"});
}

TEST_F(StartUp, SecondBrowserEventDoesNothing)
{
    EXPECT_EQ(LinesOf([this](CScriptedWindow&) { browser.Fire(BrowserEvent::Second); }), Lines{});
}

TEST_F(StartUp, CancelSavesTheServerListAndNothingElse)
{
    browser.viewState = {1, -2};
    std::string file_at_disconnect;
    browser.On(BrowserOperation::DisconnectServer, [&](ControlScript::Arguments) {
        file_at_disconnect = ReadBytes(folder.Path("Install/kpdservers.ini"));
        return ControlResult();
    });
    for (const UserAction& way_out : {user::Press(id_cancel), user::Key(key_escape), user::CloseBox()}) {
        std::filesystem::remove(folder.Path("Install/kpdservers.ini"));
        EXPECT_EQ(Run({[&](CScriptedWindow&) { recorder.lines.clear(); }, way_out}), id_cancel);
        const Lines expected = {"101: EndModal 2", "GetServerList()",    "GetCurrentServer()", "GetViewStateCount()",
                                "GetViewState()",  "DisconnectServer()", "101: result 2"};
        EXPECT_EQ(recorder.Take(), expected);
        EXPECT_EQ(file_at_disconnect, "SRV1\r\n-9999\r\nmetric\r\n-9999\r\n2\r\n1\r\n-2\r\n");
    }
    EXPECT_TRUE(dialog->resultParts.empty());
    EXPECT_EQ(browser.controls, 0);
    EXPECT_EQ(NamesIn(folder.Path("Install")), Lines{"kpdservers.ini"});
    EXPECT_EQ(NamesIn(folder.Path("Work")), (Lines{"Lumora_ForPNG", "UnZipFolder"}));
}

TEST_F(StartUp, AThousandRunsLeaveNoBlockAndNoControl)
{
    const std::size_t room = RoomForBlocks();
    Select({u"P1"});
    browser.images = {{"2D", "BM"}, {"3D", "BM"}, {"PNG", "x"}};
    for (int run = 0; run < 1000; ++run) {
        Run({[this](CScriptedWindow&) { browser.FireClick(); }, user::Press(id_cancel)});
        recorder.lines.clear();
    }
    EXPECT_EQ(browser.controls, 0);
    EXPECT_EQ(picture.controls, 0);
    EXPECT_EQ(RoomForBlocks(), room);
}

} // namespace
} // namespace partkeep
