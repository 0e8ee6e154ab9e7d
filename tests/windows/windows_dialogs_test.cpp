// The three dialogs with real windows and real input, over the stand-in controls, and the container by itself.

#include "controls/kpd_key_manager.h"
#include "controls/zan_pic_ctrl.h"
#include "host/partkeep_read_impl.h"
#include "platform/windows/hosted_control.h"
#include "platform/windows/live_counts.h"
#include "platform/windows/site_window.h"
#include "platform/windows/wide.h"
#include "platform/windows/win_dialog_window.h"
#include "platform/windows/win_messages.h"
#include "resources/dialog_templates.h"
#include "selection/quantity_keypad_dlg.h"
#include "settings/process_values.h"
#include "tests/support/memory_registry.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/dialog_driver.h"
#include "tests/windows/loaded_function.h"
#include "tests/windows/stand_in.h"

#include <gtest/gtest.h>

#include <commctrl.h>
#include <ole2.h>

#include <algorithm>
#include <cstring>

namespace partkeep {
namespace {

constexpr wchar_t selection_title[] = L"Partkeep Read"; // the same in every language
constexpr wchar_t message_title[] = L"Kolvyn PartkeepRead";

// The host: a window that is active on the thread, the stand-in as a registered server, a folder for everything.
class WindowsDialogs : public testing::Test {
protected:
    WindowsDialogs()
    {
        OleInitialize(nullptr);
        RegisterSiteWindows(GetModuleHandleW(nullptr));
        SetStandIn(true);
        stand_in = LoadedFunction<StandInFunction>(library, "FreshStandIn")();
        std::filesystem::create_directories(folder.Path("Work"));
        registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core());
        object.SetWorkingFolder(folder.Core(u"Work") + u"\\");
        object.SetLanguageID(1);
        SetActiveWindow(host);
    }
    ~WindowsDialogs() override
    {
        SetStandIn(false);
        DestroyWindow(host);
        UnregisterSiteWindows(GetModuleHandleW(nullptr));
        OleUninitialize();
        TheProcessValues() = {};
        EXPECT_EQ(TheLiveCounts().windows, 0);
        EXPECT_EQ(TheLiveCounts().com_objects, 0);
        EXPECT_EQ(TheLiveCounts().gdi_objects, 0);
        EXPECT_EQ(stand_in->controls, 0);
    }

    void SetStandIn(bool present)
    {
        const char* name = present ? "DllRegisterServer" : "DllUnregisterServer";
        LoadedFunction<HRESULT(STDAPICALLTYPE*)()>(library, name)();
    }
    void ClickRow(int row) const
    {
        PostMessageW(stand_in->browserWindow, WM_LBUTTONDOWN, 0, MAKELPARAM(5, row * stand_in_row_height + 2));
    }
    [[nodiscard]] bool Called(const std::string& line) const
    {
        return std::ranges::find(stand_in->recorder.lines, line) != stand_in->recorder.lines.end();
    }
    HostResult Run(bool multi, std::function<void(DialogDriver&, HWND)> user)
    {
        const DialogDriver driver([&](DialogDriver& played) { user(played, played.Window(selection_title)); });
        return object.InvokePartkeepMultiSelection(multi ? 1 : 0);
    }
    std::int32_t Count()
    {
        std::int32_t count = -1;
        object.NumberOfPartsSelected(&count);
        return count;
    }

    CTemporaryFolder folder;
    HMODULE library = LoadLibraryA(STAND_IN_FILE);
    StandIn* stand_in = nullptr;
    HWND host = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200, nullptr,
                                nullptr, nullptr, nullptr);
    CMemoryRegistry registry;
    ThreadMessages messages;
    HiddenControls controls{GetModuleHandleW(nullptr)};
    WinDialogs windows{GetModuleHandleW(nullptr)};
    PartkeepReadImpl object{HostServices{registry, messages, controls, windows}};
};

TEST_F(WindowsDialogs, StartUpLaysOutTheSelectionDialog)
{
    Run(false, [&](DialogDriver& driver, HWND dialog) {
        DialogDriver::SavePicture(dialog, "selection");
        RECT client;
        GetClientRect(dialog, &client);
        const RECT browser = PlaceOf(dialog, RES_BROWSER);
        EXPECT_EQ(browser.left, 5);
        EXPECT_EQ(browser.top, 10 + 20);
        EXPECT_EQ(browser.right, client.right - 5);
        EXPECT_EQ(browser.bottom, client.bottom - 230 + 20);
        std::vector<RECT> panels;
        for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            if (GetDlgCtrlID(child) == RES_IMAGE_PANEL) {
                RECT inner;
                GetClientRect(child, &inner);
                MapWindowPoints(child, dialog, reinterpret_cast<POINT*>(&inner), 2);
                panels.push_back(inner);
            }
        }
        ASSERT_EQ(panels.size(), 2U);
        for (const RECT& panel : panels) {
            EXPECT_EQ(panel.right - panel.left, 149);
            EXPECT_EQ(panel.bottom - panel.top, 149);
            EXPECT_EQ(panel.top, client.bottom - 190 + 20 + 1) << "the frame is one pixel wide";
        }
        RECT units{328, 242, 328 + 80, 0};
        MapDialogRect(dialog, &units);
        const RECT box = PlaceOf(dialog, RES_UNIT);
        EXPECT_EQ(box.left, units.left);
        EXPECT_EQ(box.top, units.top + 20);
        EXPECT_EQ(box.right - box.left, units.right - units.left);
        HWND bar = FindWindowExW(dialog, nullptr, TOOLBARCLASSNAMEW, nullptr);
        for (int command = RES_FILTER_PART; command <= RES_FILTER_MARVEN; ++command) {
            EXPECT_EQ(SendMessageW(bar, TB_ISBUTTONPRESSED, static_cast<WPARAM>(command), 0) != 0,
                      command == RES_FILTER_PART);
        }
        EXPECT_TRUE(Called("extent 4419 4471"));
        EXPECT_FALSE(IsWindowEnabled(host));
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), host);
        EXPECT_EQ(driver.FocusedControl(dialog), RES_BROWSER);
        driver.Key(VK_ESCAPE);
    });
    EXPECT_TRUE(IsWindowEnabled(host));
    EXPECT_EQ(GetActiveWindow(), host);
    EXPECT_EQ(Count(), 0);
}

TEST_F(WindowsDialogs, CaptionsFollowTheLanguage)
{
    const std::array<std::array<const wchar_t*, 3>, 3> expected{{{L"Add", L"Input Quantity", L"Parts Name (&P)"},
                                                                 {L"追加", L"員数入力", L"パーツ名 (&P)"},
                                                                 {L"添加", L"输入个数", L"零件名称 (&P)"}}};
    for (std::size_t language = 0; language < expected.size(); ++language) {
        object.SetLanguageID(static_cast<std::int32_t>(language) + 1);
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            EXPECT_EQ(TextOf(dialog, RES_ADD), expected[language][0]);
            EXPECT_EQ(TextOf(dialog, RES_ASK_QUANTITY), expected[language][1]);
            EXPECT_EQ(TextOf(dialog, RES_PART_NAME_CAPTION), expected[language][2]);
            DialogDriver::SavePicture(dialog, "language" + std::to_string(language + 1));
            driver.Press(dialog, RES_CANCEL);
        });
    }
}

TEST_F(WindowsDialogs, KeysMeanTheSameOnEveryControl)
{
    struct Row {
        const char* label;
        int focus;
        WORD key;
        std::int32_t loaded;
    };
    std::int32_t total = 0;
    for (const Row& row :
         {Row{"Enter on Cancel", RES_CANCEL, VK_RETURN, 1}, Row{"Enter on Add", RES_ADD, VK_RETURN, 1},
          Row{"Enter in the browser", RES_BROWSER, VK_RETURN, 1}, Row{"Escape on Load", RES_LOAD, VK_ESCAPE, 0},
          Row{"Escape in the browser", RES_BROWSER, VK_ESCAPE, 0}}) {
        SCOPED_TRACE(row.label);
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            driver.Focus(dialog, row.focus);
            driver.Key(row.key);
            driver.WaitGone(dialog);
        });
        total += row.loaded;
        EXPECT_EQ(Count(), total);
    }
}

TEST_F(WindowsDialogs, CtrlASelectsAllInMultiSelectionOnly)
{
    for (const bool multi : {true, false}) {
        stand_in->recorder.lines.clear();
        Run(multi, [&](DialogDriver& driver, HWND dialog) {
            EXPECT_EQ(driver.FocusedControl(dialog), RES_BROWSER);
            driver.KeyWith(VK_CONTROL, 'A', "its effect",
                           [&] { return Called(multi ? "SelectAllParts(1)" : "key 65"); });
            driver.Key(VK_ESCAPE);
            driver.WaitGone(dialog);
        });
        EXPECT_EQ(Called("SelectAllParts(1)"), multi);
    }
}

TEST_F(WindowsDialogs, TabWalksThroughTheBrowserAndBack)
{
    Run(false, [&](DialogDriver& driver, HWND dialog) {
        stand_in->script.On(BrowserOperation::MoveFocus, ControlResult(std::int16_t{1}));
        driver.Key(VK_TAB); // the browser keeps it
        driver.Until("the first answer", [&] { return Called("MoveFocus(1)"); });
        EXPECT_EQ(driver.FocusedControl(dialog), RES_BROWSER);
        stand_in->script.On(BrowserOperation::MoveFocus, ControlResult(std::int16_t{0}));
        driver.Key(VK_TAB);
        driver.Until("the unit box", [&] { return driver.FocusedControl(dialog) == RES_UNIT; });
        driver.Focus(dialog, RES_LOAD);
        driver.Key(VK_TAB);
        driver.Until("the dialog's order", [&] { return driver.FocusedControl(dialog) == RES_CANCEL; });
        driver.Key(VK_ESCAPE);
    });
}

TEST_F(WindowsDialogs, AddListsPartsWhoseQuantitiesChangeAndLoadTakesThem)
{
    const HostResult result = Run(true, [&](DialogDriver& driver, HWND dialog) {
        driver.Press(dialog, RES_ADD);
        HWND list_window = driver.Window(L"Selected Parts");
        HWND list = GetDlgItem(list_window, RES_PART_LIST);
        driver.Until("three rows", [&] { return SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 3; });
        SetFocus(list);
        PostMessageW(list, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 30));
        PostMessageW(list, WM_LBUTTONUP, 0, MAKELPARAM(20, 30));
        driver.Until("a selected row", [&] { return SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0) == 1; });
        driver.Press(list_window, RES_CHANGE_QUANTITY);
        HWND keypad = driver.Window(L"Input Quantity");
        EXPECT_FALSE(IsWindowEnabled(dialog));
        for (const int digit : {RES_DIGIT_00, RES_DIGIT_7}) {
            driver.Press(keypad, digit);
        }
        driver.Until("the digits", [&] { return TextOf(keypad, RES_QUANTITY) == L"007"; });
        DialogDriver::SavePicture(keypad, "keypad");
        driver.Press(keypad, RES_OK);
        driver.WaitGone(keypad);
        driver.Until("the owner again", [&] { return IsWindowEnabled(dialog) != 0; });
        DialogDriver::SavePicture(list_window, "selected_parts");
        PostMessageW(list_window, WM_CLOSE, 0, 0);
        driver.Until("the list hidden", [&] { return !IsWindowVisible(list_window); });
        driver.Press(dialog, RES_LOAD);
        driver.WaitGone(dialog);
    });
    EXPECT_EQ(result, HostResult::Ok);
    ASSERT_EQ(Count(), 3);
    std::u16string path;
    std::u16string name;
    std::u16string quantity;
    object.GetPartInfo(0, nullptr, nullptr, &path, nullptr, nullptr, &name, nullptr, nullptr, nullptr, nullptr, nullptr,
                       &quantity);
    EXPECT_EQ(name, u"ALPHA");
    EXPECT_EQ(quantity, u"007");
    EXPECT_EQ(path.substr(path.rfind(u'\\')), u"\\ALPHA.iga");
}

TEST_F(WindowsDialogs, FilterButtonsAndUnitReachTheBrowser)
{
    Run(false, [&](DialogDriver& driver, HWND dialog) {
        HWND bar = FindWindowExW(dialog, nullptr, TOOLBARCLASSNAMEW, nullptr);
        RECT button;
        SendMessageW(bar, TB_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&button));
        for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP}) {
            PostMessageW(bar, message, 0, MAKELPARAM(button.left + 3, button.top + 3));
        }
        driver.Until("the filter", [&] { return Called("SetPartFilter(10)"); });
        EXPECT_TRUE(SendMessageW(bar, TB_ISBUTTONPRESSED, RES_FILTER_LASER, 0));
        EXPECT_FALSE(SendMessageW(bar, TB_ISBUTTONPRESSED, RES_FILTER_PART, 0));
        driver.Focus(dialog, RES_UNIT);
        driver.Key(VK_DOWN);
        driver.Until("the unit", [&] { return Called("SetDisplayUnit(1)"); });
        driver.Key(VK_ESCAPE);
    });
}

// One colour all over, as a BMP file.
std::string PlainBitmap(char red, char blue)
{
    const BITMAPINFOHEADER header{sizeof header, 4, 4, 1, 24, BI_RGB, 48, 0, 0, 0, 0};
    std::string file(14 + sizeof header + 48, '\0');
    std::memcpy(file.data() + 14, &header, sizeof header);
    for (std::size_t pixel = 54; pixel < file.size(); pixel += 3) {
        file[pixel] = blue;
        file[pixel + 2] = red;
    }
    return file;
}

TEST_F(WindowsDialogs, ClicksShowPicturesAndTheOwnPanelDecodesPng)
{
    constexpr unsigned char png[] = {0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49,
                                     0x48, 0x44, 0x52, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00, 0x08, 0x08, 0x02,
                                     0x00, 0x00, 0x00, 0x4B, 0x6D, 0x29, 0xDC, 0x00, 0x00, 0x00, 0x11, 0x49, 0x44,
                                     0x41, 0x54, 0x78, 0xDA, 0x63, 0x38, 0x21, 0x27, 0x87, 0x15, 0x31, 0x0C, 0x2D,
                                     0x09, 0x00, 0x90, 0xBF, 0x41, 0x01, 0xCF, 0x70, 0xA1, 0x3C, 0x00, 0x00, 0x00,
                                     0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};
    constexpr COLORREF png_color = RGB(200, 30, 30);
    const auto picture = folder.Path("Work") / "Lumora_ForPNG" / "preview.PNG";
    stand_in->script.previewTitle = u"preview";
    for (const bool own_panel : {false, true}) {
        stand_in->script.images = {{"2D", PlainBitmap(-1, 0)}, {"3D", PlainBitmap(0, -1)}};
        if (own_panel) {
            RegDeleteTreeW(HKEY_CLASSES_ROOT, L"CLSID\\{DBE2F81A-E533-4E67-A6CD-A05F41A9627E}");
        }
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            const RECT flat = PlaceOf(dialog, RES_PICTURE);
            ClickRow(0);
            driver.Until("2D", [&] { return ColorAt(dialog, 30, flat.top + 40) == RGB(255, 0, 0); });
            driver.Until("3D", [&] { return ColorAt(dialog, 200, flat.top + 40) == RGB(0, 0, 255); });
            EXPECT_EQ(TextOf(dialog, RES_PART_NAME), L"ALPHA");
            DialogDriver::SavePicture(dialog, "pictures");
            WriteBytes(picture, {reinterpret_cast<const char*>(png), sizeof png});
            stand_in->script.images["PNG"] = "PNG";
            ClickRow(1);
            driver.Until("the picture's place", [&] { return IsWindowVisible(GetDlgItem(dialog, RES_PICTURE)) != 0; });
            RECT client;
            GetClientRect(GetDlgItem(dialog, RES_PICTURE), &client);
            EXPECT_EQ(client.right, 149);
            EXPECT_EQ(client.bottom, 149);
            if (own_panel) {
                driver.Until("PNG", [&] { return ColorAt(dialog, 30, flat.top + 40) == png_color; });
                DialogDriver::SavePicture(dialog, "png");
                EXPECT_TRUE(std::filesystem::remove(picture)) << "the file is not kept open";
            } else {
                driver.Until("the path", [&] {
                    return Called("put 1 " + Quoted(folder.Core(u"Work") + u"\\Lumora_ForPNG\\preview.PNG"));
                });
            }
            stand_in->script.images.erase("PNG");
            ClickRow(9);
            driver.Until("blank", [&] { return ColorAt(dialog, 30, flat.top + 40) == GetSysColor(COLOR_3DFACE); });
            driver.Key(VK_ESCAPE);
        });
    }
}

TEST_F(WindowsDialogs, NoBrowserGivesAMessageAndADialogThatCloses)
{
    SetStandIn(false);
    const DialogDriver driver([&](DialogDriver& played) {
        EXPECT_EQ(played.AnswerMessage(L"Kolvyn"), L"Partkeep cannot be started");
        HWND dialog = played.Window(selection_title);
        EXPECT_FALSE(IsWindowEnabled(host)) << "a message must not enable what the dialog has disabled";
        EXPECT_EQ(GetDlgItem(dialog, RES_BROWSER), nullptr);
        played.Press(dialog, RES_LOAD);
        EXPECT_EQ(played.AnswerMessage(message_title), L"Please select one or more part.");
        played.Press(dialog, RES_CANCEL);
    });
    EXPECT_EQ(object.InvokePartkeep(), HostResult::False);
}

TEST_F(WindowsDialogs, KeypadTakesTypedKeysUpToItsLimit)
{
    CQuantityKeypadDlg keypad(windows, nullptr);
    const DialogDriver driver([&](DialogDriver& played) {
        HWND dialog = played.Window(L"Input Quantity");
        played.Focus(dialog, RES_QUANTITY);
        for (const WORD digit : {'1', '2', '3', '4', '5', '6'}) {
            played.Key(digit);
        }
        played.Until("five digits", [&] { return TextOf(dialog, RES_QUANTITY) == L"12345"; });
        played.Press(dialog, RES_DIGIT_0);
        played.Until("a sixth one", [&] { return TextOf(dialog, RES_QUANTITY) == L"123450"; });
        played.Press(dialog, RES_OK);
        EXPECT_EQ(played.AnswerMessage(message_title), L"Please enter value within the range [1-99999]");
        played.Focus(dialog, RES_QUANTITY);
        SendMessageW(GetDlgItem(dialog, RES_QUANTITY), EM_SETSEL, 1, -1);
        played.Key(VK_DELETE);
        played.Until("one digit", [&] { return TextOf(dialog, RES_QUANTITY) == L"1"; });
        played.Key(VK_RETURN);
        played.WaitGone(dialog);
    });
    EXPECT_EQ(keypad.DoModal(), id_ok);
    EXPECT_EQ(keypad.Quantity(), u"1");
}

// Each operation once: the stand-in compares what arrives with the contract's table.
TEST_F(WindowsDialogs, EveryOperationArrivesWithTheContractsTypes)
{
    CKPDKeyManager browser;
    browser.Attach(controls.CreateHidden(part_browser_class_id, 12033342, 100, 100));
    ASSERT_TRUE(browser.HasControl());
    std::vector<char> image(image_block_bytes);
    std::vector<char> scratch(scratch_block_bytes);
    std::array<char, long_text_bytes> text{};
    std::vector<std::int16_t> values(max_view_state_values);
    ServerTable table;
    PartAttributeBlocks blocks(u"ALPHA");
    EXPECT_TRUE(browser.ConnectServer(u"SERVER1"));
    EXPECT_FALSE(browser.ConnectServer(u"nowhere"));
    browser.SetTargetFolder(folder.Core(u""));
    stand_in->script.previewTitle = u"部品";
    EXPECT_EQ(browser.GetPreviewFileTitle(), u"部品");
    browser.SetDataKind(24);
    browser.GetLastStatus();
    browser.SetCurrentServer(u"部品");
    EXPECT_TRUE(Called("SetCurrentServer('部品')"));
    EXPECT_EQ(browser.GetCurrentServer(), u"SERVER1");
    browser.SetDisplayUnit(1);
    browser.SelectNextServer();
    browser.OpenFolderSelection();
    browser.SetCurrentFolder(u"FOLDER1");
    EXPECT_EQ(browser.GetCurrentFolder(), u"FOLDER1");
    browser.RefreshPartList();
    browser.GetServerList(table);
    browser.SetServerList(table);
    browser.GetViewState(values.data());
    browser.GetViewStateCount();
    browser.SetViewState(values.data());
    browser.SetPartFilter(24);
    browser.ReadPartImage(folder.Core(u""), image.data(), scratch.data());
    browser.MoveFocus(1);
    EXPECT_TRUE(browser.CopyPartFiles(u"SERVER1", u"FOLDER1\\ALPHA"));
    EXPECT_TRUE(browser.ReadPartAttributes(u"SERVER1", u"FOLDER1\\ALPHA", blocks));
    EXPECT_EQ(blocks.thickness, 15000);
    EXPECT_STREQ(blocks.material.data(), "SPCC");
    EXPECT_EQ(browser.GetSelectedPartCount(), 3);
    EXPECT_EQ(browser.GetSelectedPart(2, text.data(), text.data() + 80, text.data() + 160), 1);
    EXPECT_STREQ(text.data() + 160, "GAMMA");
    browser.SelectAllParts(0);
    browser.DisconnectServer();
    std::size_t operations = 0;
    for (const OperationSignature& signature : BrowserSignatures()) {
        operations += static_cast<std::size_t>(std::ranges::any_of(stand_in->recorder.lines, [&](const auto& line) {
            return line.starts_with(std::string(signature.name) + "(");
        }));
    }
    EXPECT_EQ(operations, BrowserSignatures().size());
    for (const std::string& line : stand_in->recorder.lines) {
        EXPECT_EQ(line.find("bad types"), std::string::npos) << line;
    }
}

TEST_F(WindowsDialogs, EventsInsideACallComeBehindIt)
{
    const std::unique_ptr<IHostedControl> control = controls.CreateHidden(part_browser_class_id, 1, 10, 10);
    std::vector<std::int32_t> events;
    bool inside = false;
    control->SetEventSink([&](std::int32_t event) {
        EXPECT_FALSE(inside);
        events.push_back(event);
    });
    stand_in->fireInsideCalls = true;
    inside = true;
    control->Invoke(36, InvokeKind::Method, {}, ControlType::Bool);
    inside = false;
    EXPECT_TRUE(events.empty());
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
    stand_in->fire(1);
    EXPECT_EQ(events, (std::vector<std::int32_t>{-600, 1}));
}

TEST_F(WindowsDialogs, NoControlIsMadeWhereItsPointersWouldBeMarshalled)
{
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        EXPECT_EQ(controls.CreateHidden(part_browser_class_id, 1, 10, 10), nullptr);
        CoUninitialize();
    }).join();
}

// More often than the table of drawing objects has room for a leak of one each time.
TEST_F(WindowsDialogs, NothingLeaksOverFiftyRuns)
{
    stand_in->script.images = {{"2D", PlainBitmap(-1, 0)}, {"3D", PlainBitmap(0, -1)}};
    for (int run = 0; run < 50; ++run) {
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            ClickRow(run % 3);
            const int row = PlaceOf(dialog, RES_PICTURE).top + 40;
            driver.Until("2D", [&] { return ColorAt(dialog, 30, row) == RGB(255, 0, 0); });
            HWND panel = GetDlgItem(dialog, RES_IMAGE_PANEL);
            for (int paint = 0; run == 0 && paint < 17000; ++paint) {
                RedrawWindow(panel, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
            }
            EXPECT_EQ(ColorAt(dialog, 30, row), RGB(255, 0, 0));
            driver.Key(VK_ESCAPE);
        });
    }
}

} // namespace
} // namespace partkeep
