// What a user does in the dialogs, and what comes of it; the container by itself.

#include "tests/support/dialog_window_suite.h"
#include "tests/windows/windows_dialogs_fixture.h"

#include <commctrl.h>

#include <thread>

namespace partkeep {
namespace {

TEST_F(WindowsDialogs, DoWhatEveryFrontEndDoes)
{
    CheckDialogWindows(windows);
}

TEST_F(WindowsDialogs, KeysMeanTheSameOnEveryControl)
{
    // Behind each row, what has been loaded until then.
    const std::tuple<const char*, int, WORD, std::int32_t> rows[]{
        {"Enter on Cancel", RES_CANCEL, WORD{VK_RETURN}, 1},
        {"Enter on Add", RES_ADD, WORD{VK_RETURN}, 2},
        {"Enter in the browser", RES_BROWSER, WORD{VK_RETURN}, 3},
        {"Escape on Load", RES_LOAD, WORD{VK_ESCAPE}, 3},
        {"Escape in the browser", RES_BROWSER, WORD{VK_ESCAPE}, 3}};
    for (const auto& [label, focus, key, loaded] : rows) {
        Run(false, [focus = focus, key = key](DialogDriver& driver, HWND dialog) {
            driver.Focus(dialog, focus);
            driver.Leave(dialog, key);
        });
        EXPECT_EQ(CountOf(object), loaded) << label;
    }
}

TEST_F(WindowsDialogs, CtrlASelectsAllInMultiSelectionOnlyAndTabWalksThroughTheBrowser)
{
    for (const bool multi : {true, false}) {
        stand_in.recorder.lines.clear();
        Run(multi, [&](DialogDriver& driver, HWND dialog) {
            driver.WaitForFocus(dialog, RES_BROWSER);
            driver.KeyWithControl('A', [&] { return Called(multi ? "SelectAllParts(1)" : "takes key 65"); });
            const auto answer = [this](std::int16_t number) {
                Between([=, this] { stand_in.script.On(BrowserOperation::MoveFocus, ControlResult(number)); });
            };
            answer(1);
            driver.Key(VK_TAB); // the browser keeps it
            driver.Until("the first answer", [&] { return Called("MoveFocus(1)"); });
            driver.WaitForFocus(dialog, RES_BROWSER);
            answer(0);
            driver.Key(VK_TAB);
            driver.WaitForFocus(dialog, RES_UNIT);
            driver.Key(VK_TAB);
            driver.WaitForFocus(dialog, RES_LOAD); // the dialog's own order, past the browser
            driver.Key(VK_TAB);
            driver.WaitForFocus(dialog, RES_CANCEL);
            driver.Leave(dialog, VK_ESCAPE);
        });
        EXPECT_EQ(Called("SelectAllParts(1)"), multi);
    }
}

TEST_F(WindowsDialogs, AddListsPartsWhoseQuantitiesChangeAndLoadTakesThem)
{
    Run(true, [&](DialogDriver& driver, HWND dialog) {
        driver.Press(dialog, RES_ASK_QUANTITY);
        driver.Press(dialog, RES_ADD);
        HWND first_keypad = driver.Window(L"Input Quantity");
        driver.Click(GetDlgItem(first_keypad, RES_DIGIT_5), 5, 5);
        driver.Leave(first_keypad, VK_RETURN);
        HWND list_window = driver.Window(L"Selected Parts");
        HWND list = GetDlgItem(list_window, RES_PART_LIST);
        driver.Until("three rows", [&] { return SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 3; });
        driver.WaitForFocus(dialog, RES_ADD); // the button that was pressed, and not Cancel
        driver.Press(dialog, RES_ASK_QUANTITY);
        for (const int id : {RES_BROWSER, RES_ADD, RES_LOAD, RES_CANCEL}) {
            RECT places[3];
            GetWindowRect(GetDlgItem(dialog, id), &places[0]);
            GetWindowRect(list_window, &places[1]);
            EXPECT_FALSE(IntersectRect(&places[2], &places[0], &places[1])) << id;
        }
        SetFocus(list);
        driver.Click(list, 20, 30);
        driver.Until("a selected row", [&] { return SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0) == 1; });
        driver.Press(list_window, RES_CHANGE_QUANTITY);
        HWND keypad = driver.Window(L"Input Quantity");
        EXPECT_FALSE(IsWindowEnabled(dialog));
        const auto shows = [&](const wchar_t* digits) {
            driver.Until("digits", [=] { return TextOf(keypad, RES_QUANTITY) == digits; });
        };
        driver.Focus(keypad, RES_QUANTITY);
        driver.Click(GetDlgItem(keypad, RES_DIGIT_1), 5, 5);
        shows(L"1");
        for (const WORD digit : {'2', '3', '4', '5', '6'}) { // into the field, behind what stands there
            driver.Key(digit);
        }
        shows(L"12345"); // keys stop at the limit, buttons do not
        driver.Press(keypad, RES_DIGIT_0);
        shows(L"123450");
        driver.Press(keypad, RES_OK);
        EXPECT_EQ(driver.AnswerMessage(message_title), L"Please enter value within the range [1-99999]");
        SendMessageW(GetDlgItem(keypad, RES_QUANTITY), EM_SETSEL, 0, -1);
        driver.Press(keypad, RES_DIGIT_00);
        shows(L"00");
        driver.Press(keypad, RES_DIGIT_7);
        shows(L"007");
        driver.SavePicture(keypad, "keypad");
        driver.Focus(keypad, RES_QUANTITY);
        driver.Leave(keypad, VK_RETURN);
        driver.Until("the owner again", [&] { return IsWindowEnabled(dialog) != 0; });
        driver.SavePicture(list_window, "selected_parts");
        PostMessageW(list_window, WM_CLOSE, 0, 0);
        driver.Until("the list hidden", [&] { return !IsWindowVisible(list_window); });
        driver.Press(dialog, RES_LOAD);
    });
    ASSERT_EQ(CountOf(object), 3);
    const std::string file = NarrowText(folder.Core(u"Work\\\\ALPHA.iga"), utf8_code_page);
    EXPECT_EQ(Told(RecordOf(object, 0)), "SERVER1|FOLDER1|" + file + "|||ALPHA|made of steel|SPCC|M1|007|1.5|0");
}

TEST_F(WindowsDialogs, FilterButtonsAndUnitReachTheBrowser)
{
    Run(false, [&](DialogDriver& driver, HWND dialog) {
        HWND bar = FindWindowExW(dialog, nullptr, TOOLBARCLASSNAMEW, nullptr);
        const auto pressed = [bar](int tool) { return SendMessageW(bar, TB_ISBUTTONPRESSED, tool, 0) != 0; };
        EXPECT_TRUE(pressed(RES_FILTER_PART));
        RECT button;
        SendMessageW(bar, TB_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&button));
        driver.Click(bar, button.left + 3, button.top + 3);
        driver.Until("the filter", [&] { return Called("SetPartFilter(10)"); });
        driver.Until("its button", [&] { return pressed(RES_FILTER_LASER) && !pressed(RES_FILTER_PART); });
        driver.Click(bar, button.left + 3, button.top + 3, {0, 300});
        std::array<wchar_t, 80> tip{};
        TOOLINFOW tool{TTTOOLINFOW_V1_SIZE, 0, bar, RES_FILTER_NCT, {}, nullptr, tip.data(), 0, nullptr};
        HWND tips = reinterpret_cast<HWND>(SendMessageW(bar, TB_GETTOOLTIPS, 0, 0));
        SendMessageW(tips, TTM_GETTEXTW, tip.size(), reinterpret_cast<LPARAM>(&tool));
        EXPECT_STREQ(tip.data(), L"NCT");
        driver.Focus(dialog, RES_LOAD);
        for (const auto& [letter, field] : {std::pair('p', RES_PART_NAME), {'m', RES_COMMENT}, {'u', RES_UNIT}}) {
            driver.KeyWithAlt(letter);
            driver.WaitForFocus(dialog, field);
        }
        EXPECT_TRUE(pressed(RES_FILTER_LASER)) << "let go beside it";
        driver.Key(VK_DOWN);
        driver.Until("the unit", [&] { return Called("SetDisplayUnit(1)"); });
        driver.Leave(dialog, VK_ESCAPE);
    });
}

TEST_F(WindowsDialogs, NoBrowserGivesAMessageAndADialogThatCloses)
{
    stand_in.Withdraw(StandIn::Browser);
    const DialogDriver driver([&](DialogDriver& played) {
        EXPECT_EQ(played.AnswerMessage(L"Kolvyn"), L"Partkeep cannot be started");
        HWND dialog = played.Window(selection_title);
        EXPECT_FALSE(IsWindowEnabled(host)) << "a message must not enable what the dialog has disabled";
        EXPECT_EQ(GetDlgItem(dialog, RES_BROWSER), nullptr);
        played.Press(dialog, RES_ADD);
        EXPECT_TRUE(played.Window(message_title) != nullptr && !IsWindowEnabled(dialog)) << "behind its message";
        EXPECT_EQ(played.AnswerMessage(message_title), L"Please select one or more part.");
        played.WaitForFocus(dialog, RES_ADD);
        played.Press(dialog, RES_CANCEL);
    });
    EXPECT_EQ(object.InvokePartkeep(), HostResult::False);
}

TEST_F(WindowsDialogs, AHiddenControlReadsAPartWithoutADialog)
{
    stand_in.script.selection = {{u"部品", u"", u"", 15000, u"SPCC", u"M1", u"note"}};
    std::u16string file, name, comment, material, quantity;
    double thickness = 0;
    CRecordingMessages noted(stand_in.recorder); // nobody is there to answer one
    PartkeepReadImpl reader{HostServices{registry, noted, controls, windows}};
    EXPECT_EQ(reader.ReadCADDataForTessara(u"SERVER1", u"FOLDER1", u"部品", u"", &file, &name, &comment, &material,
                                           &thickness, &quantity),
              HostResult::Ok);
    EXPECT_EQ(file, folder.Core(u"Work\\部品.iga"));
    EXPECT_EQ(comment + u"|" + material + u"|" + quantity, u"note|SPCC|1");
    EXPECT_EQ(thickness, 15000);
    EXPECT_EQ(stand_in.recorder.lines.back(), "CopyPartFiles('SERVER1', 'FOLDER1\\部品')");
}

TEST_F(WindowsDialogs, NoControlIsMadeWhereItsPointersWouldBeMarshalled)
{
    stand_in.Withdraw(StandIn::Browser);
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        stand_in.Offer(StandIn::Browser);
        EXPECT_EQ(controls.CreateHidden(part_browser_class_id, 1, 10, 10), nullptr);
        stand_in.Withdraw(StandIn::Browser);
        CoUninitialize();
    }).join();
}

} // namespace
} // namespace partkeep
