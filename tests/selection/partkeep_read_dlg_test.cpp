// Start-up, Cancel and close-down.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

using StartUp = SelectionRun;

TEST_F(StartUp, TakesItsStepsInTheirOrder)
{
    int icon = 0;
    windows.parentIcon = &icon;
    WriteServers("SRV2\r\nX\\Y\r\ninch\r\nSRV1\r\nSRV2\r\n-9999\r\n2\r\n120\r\n-80\r\n");
    WriteOptions("<InputNoFlag>true</InputNoFlag><FilterState>2</FilterState>");
    Lines lines;
    Run({[&](CScriptedWindow& window) {
             lines = recorder.Take();
             EXPECT_EQ(window.Events().ToolTipText(32776), u"MARVEN");
         },
         user::Press(id_cancel)});
    EXPECT_EQ(
        lines,
        Steps("101: RunModal; 101: SetSmallIcon parent's; 101: CreateHostedControl 215 browser 5,10,808,338; "
              "101: CreatePanel 65535 5,378,155,528; 101: CreatePanel 65535 175,378,325,528; "
              "101: panel 2 Move 175,378,324,527; 101: panel 1 Move 5,378,154,527; 101: ShowControl 211 off; "
              "101: SetReadOnly 203; 101: SetReadOnly 204; 101: SetText 213 '3D Image'; 101: SetText 212 '2D Image'; "
              "101: SetText 206 'Display Unit (&U)'; 101: SetText 208 'Parts Name (&P)'; "
              "101: SetText 207 'Comment (&M)'; 101: SetText 201 'OK'; 101: SetText 2 'Cancel'; "
              "101: SetText 210 'Add'; 101: SetText 217 'Input Quantity'; 101: ResetEntries 202; "
              "101: InsertEntry 202 0 'Metric'; 101: InsertEntry 202 1 'Inch'; SetCurrentFolder('X\\Y'); "
              "SetDisplayUnit(1); RefreshPartList(); 101: SetCheck 217 1; 101: CreateToolbar 212; "
              "101: MoveAllControls 3 20; 101: PlaceToolbar; 101: EnableToolTips; 101: PressTool 32775 on; "
              "101: SelectEntry 202 1; 101: SetText 203 ''; 101: SetText 204 ''; SetPartFilter(10); "
              "SetServerList('SRV1', 'SRV2'); SetViewState(); 101: UpdateNow; MoveFocus(-1); 101: Focus 215; "
              "ConnectServer('SRV2'); SetCurrentServer('SRV2'); SelectNextServer(); OpenFolderSelection(); "
              "SetCurrentFolder('X\\Y')"));
    std::vector<std::int16_t> given(max_view_state_values);
    given[0] = 120;
    given[1] = -80;
    EXPECT_EQ(browser.givenViewState, given);
    EXPECT_EQ(windows.panelsLeft, 0);
    EXPECT_EQ(NamesIn(folder.Path("Work")), (Lines{"Lumora_ForPNG", "UnZipFolder"}));
}

TEST_F(StartUp, TakesFromTheSettingsFilesWhatTheyHold)
{
    const std::string nowhere = "ConnectServer(''); SetCurrentServer('')";
    const struct {
        const char* label;
        const char* servers;
        const char* options;
        std::string calls; // "/" stands for the usual unit and filter, "+" for a step to the next server
        int tool = 32773;  // 0: none is pressed
        int prompt = 0;
    } rows[] = {
        {"no files", nullptr, nullptr, "/SetServerList(); " + nowhere},
        {"filter outside the table", "", "<FilterState>7</FilterState>",
         "SetDisplayUnit(0); SetPartFilter(-1); SetServerList(); " + nowhere, 0},
        {"prompt alone", "", "<InputNoFlag>true</InputNoFlag>", "/SetServerList(); " + nowhere, 32773, 1},
        {"no current server, three known", "-9999\n-9999\nmetric\nA\nB\nC\n-9999\n0\n", "",
         "/SetServerList('A', 'B', 'C'); " + nowhere + "+++"},
        {"current server first", "A\nF\nmetric\nA\nB\n-9999\n0\n", "",
         "SetCurrentFolder('F'); /SetServerList('A', 'B'); ConnectServer('A'); SetCurrentServer('A'); "
         "OpenFolderSelection(); SetCurrentFolder('F')"},
        {"ten others", "X\n-9999\nmetric\n0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n-9999\n0\n", "",
         "/SetServerList('0', '1', '2', '3', '4', '5', '6', '7', '8', '9'); ConnectServer('X'); "
         "SetCurrentServer('X')++++++++++"},
        {"folder line empty", "A\n\nmetric\nA\n-9999\n0\n", "",
         "SetCurrentFolder(''); /SetServerList('A'); ConnectServer('A'); SetCurrentServer('A')"},
        {"case of a server counts", "a\n-9999\nmetric\nA\n-9999\n0\n", "",
         "/SetServerList('A', 'a'); ConnectServer('a'); SetCurrentServer('a')+"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        if (row.servers != nullptr) {
            WriteServers(row.servers);
            WriteOptions(row.options);
        }
        std::string expected;
        for (const char sign : row.calls) {
            expected += sign == '/'   ? "SetDisplayUnit(0); SetPartFilter(24); "
                        : sign == '+' ? "; SelectNextServer()"
                                      : std::string(1, sign);
        }
        recorder.lines.clear();
        Run({[&](CScriptedWindow& window) {
                 Lines lines = recorder.Take();
                 std::erase_if(lines, [](const auto& line) { return line[0] == '1' || line.starts_with("MoveFocus"); });
                 EXPECT_EQ(lines, Steps(expected));
                 EXPECT_EQ(window.pressedTools, row.tool != 0 ? std::set{row.tool} : std::set<int>());
                 EXPECT_EQ(window.Check(RES_ASK_QUANTITY), row.prompt);
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
        window.Events().OnPaint();
        EXPECT_EQ(Messages(recorder.Take()), select_parts + "|" + select_parts + "|" + select_parts);
    };
    EXPECT_EQ(Run({work, user::Key(key_escape)}), id_cancel);
    EXPECT_TRUE(NamesIn(folder.Path("Install")).empty());

    windows.canMakeWindows = false;
    EXPECT_NE(CPartkeepReadDlg(windows).DoModal(), id_ok);
}

TEST_F(StartUp, PaintTellsTheBrowserAndItsSecondEventDoesNothing)
{
    EXPECT_EQ(LinesOf([](CScriptedWindow& window) { window.Events().OnPaint(); }), Lines{"MoveFocus(15)"});
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
    for (const UserAction& way_out : {user::Press(id_cancel), user::Key(key_escape), user::close_box}) {
        WriteServers("");
        EXPECT_EQ(Run({[&](CScriptedWindow&) { recorder.lines.clear(); }, way_out}), id_cancel);
        EXPECT_EQ(recorder.Take(), Steps("101: EndModal 2; GetServerList(); GetCurrentServer(); GetViewStateCount(); "
                                         "GetViewState(); DisconnectServer(); 101: result 2"));
        EXPECT_EQ(file_at_disconnect, "SRV1\r\n-9999\r\nmetric\r\n-9999\r\n2\r\n1\r\n-2\r\n");
    }
    EXPECT_TRUE(dialog->resultParts.empty());
    EXPECT_EQ(NamesIn(folder.Path("Install")), Lines{"kpdservers.ini"});
    EXPECT_EQ(NamesIn(folder.Path("Work")), (Lines{"Lumora_ForPNG", "UnZipFolder"}));
}

} // namespace
} // namespace partkeep
