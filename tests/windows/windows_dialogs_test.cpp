// The three dialogs with real windows and real input, over the stand-in controls, and the container by itself.

#include "host/partkeep_read_impl.h"
#include "resources/resource_ids.h"
#include "settings/process_values.h"
#include "tests/selection/selection_run.h"
#include "tests/support/dialog_window_suite.h"
#include "tests/support/memory_registry.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/dialog_driver.h"
#include "tests/windows/stand_in.h"
#include "windows/com_ptr.h"
#include "windows/hosted_control.h"
#include "windows/live_counts.h"
#include "windows/site_window.h"
#include "windows/win_dialog_window.h"
#include "windows/win_messages.h"

#include <gtest/gtest.h>

#include <commctrl.h>
#include <ole2.h>
#include <olectl.h>

#include <algorithm>
#include <cstring>

namespace partkeep {
namespace {

constexpr wchar_t selection_title[] = L"Partkeep Read"; // the same in every language
constexpr wchar_t message_title[] = L"Kolvyn PartkeepRead";

// The host: a window that is active on the thread, the controls installed, a folder for everything.
class WindowsDialogs : public testing::Test {
protected:
    using Action = std::function<void()>;
    using User = std::function<void(DialogDriver&, HWND)>;

    WindowsDialogs()
    {
        SetWindowLongPtrW(host, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HostProcedure));
        RegisterSiteWindows(module);
        std::filesystem::create_directories(folder.Path("Work"));
        registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core());
        object.SetWorkingFolder(folder.Core(u"Work") + u"\\");
        object.SetLanguageID(1);
        SetActiveWindow(host);
    }
    ~WindowsDialogs() override
    {
        DestroyWindow(host);
        UnregisterSiteWindows(module);
        TheProcessValues() = {};
        const auto& [windows_left, gdi_objects_left, com_objects_left] = TheLiveCounts();
        EXPECT_EQ((std::array<int, 4>{windows_left, gdi_objects_left, com_objects_left, stand_in.controls}),
                  (std::array<int, 4>{}));
    }

    void ClickRow(int row) const { DialogDriver::Click(stand_in.browserWindow, 5, row * StandIn::row_height + 2); }
    static LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM word, LPARAM value)
    {
        if (message == WM_APP) {
            (*reinterpret_cast<const Action*>(value))();
        }
        return message == WM_APP ? 0 : DefWindowProcW(window, message, word, value);
    }
    // On the thread of the dialogs, between two of their messages: what the user and they have in common.
    void Between(const Action& action) const
    {
        SendMessageTimeoutW(host, WM_APP, 0, reinterpret_cast<LPARAM>(&action), SMTO_NORMAL, 60000, nullptr);
    }
    [[nodiscard]] bool Called(const std::string& line) const
    {
        bool called = false;
        Between([&] { called = std::ranges::count(stand_in.recorder.lines, line) != 0; });
        return called;
    }
    HostResult Run(bool multi, const User& user)
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

    HINSTANCE module = GetModuleHandleW(nullptr);
    StandIn stand_in;
    CTemporaryFolder folder;
    HWND host = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200, nullptr,
                                nullptr, nullptr, nullptr);
    CMemoryRegistry registry;
    CThreadMessages messages;
    CHiddenControls controls{module};
    CWinDialogs windows{module};
    PartkeepReadImpl object{HostServices{registry, messages, controls, windows}};
};

double ScreenScale()
{
    HDC screen = GetDC(nullptr);
    const double scale = GetDeviceCaps(screen, LOGPIXELSX) / 96.0;
    ReleaseDC(nullptr, screen);
    return scale;
}

TEST_F(WindowsDialogs, DoWhatEveryFrontEndDoes)
{
    CheckDialogWindows(windows);
}

std::array<LONG, 4> Sides(const RECT& area)
{
    return {area.left, area.top, area.right, area.bottom};
}

RECT FrameOf(HWND window)
{
    RECT frame;
    GetWindowRect(window, &frame);
    return frame;
}

// In the dialog's client coordinates, without the frame if asked for.
RECT PlaceOf(HWND window, bool client = false)
{
    RECT place;
    (client ? GetClientRect : GetWindowRect)(window, &place);
    MapWindowPoints(client ? window : nullptr, GetParent(window), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

// Whatever the density, the places are the same in pixels of 96 dpi. The control with this id; of two panels, which.
TEST_F(WindowsDialogs, StartUpLaysOutTheSelectionDialog)
{
    const std::tuple<const char*, int, int, std::array<double, 4>> rows[]{
        {"browser", RES_BROWSER, 0, {5, 30, 808, 359}},
        {"2D", RES_IMAGE_PANEL, 0, {6, 400, 155, 549}},
        {"3D", RES_IMAGE_PANEL, 1, {176, 400, 325, 549}},
        {"caption", RES_CAPTION_2D, 0, {10.5, 382.4, 159, 395.4}},
        {"name", RES_PART_NAME, 0, {492, 450.6, 736.5, 471.8}},
        {"button", RES_CANCEL, 0, {696, 527, 777, 551.4}}};
    Run(false, [&](DialogDriver& driver, HWND dialog) {
        driver.SavePicture(dialog, "selection");
        const double scale = ScreenScale();
        std::vector<HWND> children;
        for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
            children.push_back(IsWindowVisible(child) ? child : nullptr);
        }
        std::erase(children, nullptr);
        for (const auto& [label, id, which, expected] : rows) {
            std::vector<HWND> found = children;
            std::erase_if(found, [id = id](HWND child) { return GetDlgCtrlID(child) != id; });
            std::ranges::sort(found, {}, [](HWND child) { return PlaceOf(child).left; });
            ASSERT_GT(found.size(), static_cast<std::size_t>(which)) << label;
            const auto place = Sides(PlaceOf(found[static_cast<std::size_t>(which)], id == RES_IMAGE_PANEL));
            for (std::size_t side = 0; side < place.size(); ++side) {
                EXPECT_NEAR(place[side], expected[side] * scale, 2) << label << ' ' << side;
            }
        }
        for (std::size_t one = 0; one < children.size(); ++one) {
            for (std::size_t other = 0; other < one; ++other) {
                const RECT places[]{PlaceOf(children[one]), PlaceOf(children[other])};
                RECT shared;
                EXPECT_FALSE(IntersectRect(&shared, &places[0], &places[1]))
                    << GetDlgCtrlID(children[one]) << " and " << GetDlgCtrlID(children[other]);
            }
        }
        HWND bar = FindWindowExW(dialog, nullptr, TOOLBARCLASSNAMEW, nullptr);
        const LRESULT tool = SendMessageW(bar, TB_GETBUTTONSIZE, 0, 0);
        EXPECT_NEAR(LOWORD(tool), 23 * scale, 1);
        EXPECT_NEAR(HIWORD(tool), 22 * scale, 1);
        EXPECT_TRUE(Called("extent 4419 4471"));
        EXPECT_FALSE(IsWindowEnabled(host));
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), host);
        driver.WaitForFocus(dialog, RES_BROWSER);
        driver.Leave(dialog, VK_ESCAPE);
    });
    EXPECT_TRUE(IsWindowEnabled(host));
    EXPECT_EQ(GetActiveWindow(), host);
    EXPECT_EQ(Count(), 0);
}

TEST_F(WindowsDialogs, ControlsAreToldWhatTheirDialogLooksLike)
{
    Run(false, [&](DialogDriver& driver, HWND dialog) {
        Between([&] {
            EXPECT_EQ(stand_in.Ambient(DISPID_AMBIENT_BACKCOLOR).lVal, static_cast<LONG>(0x80000000 | COLOR_3DFACE));
            EXPECT_EQ(stand_in.Ambient(DISPID_AMBIENT_FORECOLOR).lVal, static_cast<LONG>(0x80000000 | COLOR_BTNTEXT));
            VARIANT name = stand_in.Ambient(DISPID_AMBIENT_DISPLAYNAME);
            EXPECT_STREQ(name.bstrVal, selection_title);
            VARIANT font = stand_in.Ambient(DISPID_AMBIENT_FONT);
            CComPtr<IFont> own;
            ASSERT_EQ(font.pdispVal->QueryInterface(IID_IFont, own.PutVoid()), S_OK);
            CY size{};
            own->get_Size(&size);
            EXPECT_NEAR(static_cast<double>(size.int64) / 10000, RES_FONT_POINTS, 0.5);
            VariantClear(&name);
            VariantClear(&font);
        });
        driver.Leave(dialog, VK_ESCAPE);
    });
}

TEST_F(WindowsDialogs, CaptionsFollowTheLanguage)
{
    const wchar_t* expected[][2]{
        {L"Add", L"Parts Name (&P)"}, {L"追加", L"パーツ名 (&P)"}, {L"添加", L"零件名称 (&P)"}};
    for (int language = 1; language <= 3; ++language) {
        object.SetLanguageID(language);
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            EXPECT_EQ(TextOf(dialog, RES_ADD), expected[language - 1][0]);
            EXPECT_EQ(TextOf(dialog, RES_PART_NAME_CAPTION), expected[language - 1][1]);
            driver.SavePicture(dialog, "language" + std::to_string(language));
            driver.Press(dialog, RES_CANCEL);
        });
    }
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
        EXPECT_EQ(Count(), loaded) << label;
    }
}

TEST_F(WindowsDialogs, CtrlASelectsAllInMultiSelectionOnly)
{
    for (const bool multi : {true, false}) {
        stand_in.recorder.lines.clear();
        Run(multi, [&](DialogDriver& driver, HWND dialog) {
            driver.WaitForFocus(dialog, RES_BROWSER);
            driver.KeyWithControl('A', [&] { return Called(multi ? "SelectAllParts(1)" : "takes key 65"); });
            driver.Leave(dialog, VK_ESCAPE);
        });
        EXPECT_EQ(Called("SelectAllParts(1)"), multi);
    }
}

TEST_F(WindowsDialogs, TabWalksThroughTheBrowserAndBack)
{
    Run(false, [&](DialogDriver& driver, HWND dialog) {
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
        driver.Focus(dialog, RES_LOAD);
        driver.Key(VK_TAB);
        driver.WaitForFocus(dialog, RES_CANCEL); // the dialog's own order
        driver.Leave(dialog, VK_ESCAPE);
    });
}

TEST_F(WindowsDialogs, AddListsPartsWhoseQuantitiesChangeAndLoadTakesThem)
{
    Run(true, [&](DialogDriver& driver, HWND dialog) {
        driver.Press(dialog, RES_ADD);
        HWND list_window = driver.Window(L"Selected Parts");
        HWND list = GetDlgItem(list_window, RES_PART_LIST);
        driver.Until("three rows", [&] { return SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == 3; });
        driver.WaitForFocus(dialog, RES_ADD);
        for (const int id : {RES_BROWSER, RES_ADD, RES_LOAD, RES_CANCEL}) {
            RECT shared;
            const RECT places[]{FrameOf(GetDlgItem(dialog, id)), FrameOf(list_window)};
            EXPECT_FALSE(IntersectRect(&shared, &places[0], &places[1])) << id;
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
        for (const WORD digit : {'1', '2', '3', '4', '5', '6'}) {
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
    ASSERT_EQ(Count(), 3);
    std::u16string path, name, quantity;
    object.GetPartInfo(0, nullptr, nullptr, &path, nullptr, nullptr, &name, nullptr, nullptr, nullptr, nullptr, nullptr,
                       &quantity);
    EXPECT_EQ(name, u"ALPHA");
    EXPECT_EQ(quantity, u"007");
    EXPECT_TRUE(path.ends_with(u"\\ALPHA.iga"));
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
        std::array<wchar_t, 80> tip{};
        TOOLINFOW tool{TTTOOLINFOW_V1_SIZE, 0, bar, RES_FILTER_NCT, {}, nullptr, tip.data(), 0, nullptr};
        HWND tips = reinterpret_cast<HWND>(SendMessageW(bar, TB_GETTOOLTIPS, 0, 0));
        SendMessageW(tips, TTM_GETTEXTW, tip.size(), reinterpret_cast<LPARAM>(&tool));
        EXPECT_STREQ(tip.data(), L"NCT");
        driver.Focus(dialog, RES_UNIT);
        driver.Key(VK_DOWN);
        driver.Until("the unit", [&] { return Called("SetDisplayUnit(1)"); });
        driver.Leave(dialog, VK_ESCAPE);
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
    using namespace std::string_literals;
    const std::string png = "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x08\0\0\0\x08\x08\x02\0\0\0\x4B\x6D\x29\xDC\0\0\0\x11"
                            "IDAT\x78\xDA\x63\x38\x21\x27\x87\x15\x31\x0C-\x09\0\x90\xBF\x41\x01\xCF\x70\xA1\x3C"
                            "\0\0\0\0IEND\xAE\x42\x60\x82"s;
    constexpr COLORREF png_color = RGB(200, 30, 30);
    const auto picture = folder.Path("Work") / "Lumora_ForPNG" / "preview.PNG";
    stand_in.script.previewTitle = u"preview";
    for (const bool own_panel : {false, true}) {
        stand_in.script.images = {{"2D", PlainBitmap(-1, 0)}, {"3D", PlainBitmap(0, -1)}};
        if (own_panel) {
            stand_in.Withdraw(StandIn::Picture);
        }
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            const int row = PlaceOf(GetDlgItem(dialog, RES_PICTURE)).top + 40;
            const auto shows = [&](int x, COLORREF color) {
                driver.Until("a colour", [=] { return ColorAt(dialog, x, row) == color; });
            };
            ClickRow(0);
            shows(30, RGB(255, 0, 0));
            shows(200, RGB(0, 0, 255));
            EXPECT_EQ(TextOf(dialog, RES_PART_NAME), L"ALPHA");
            driver.SavePicture(dialog, "pictures");
            WriteBytes(picture, png);
            Between([this] { stand_in.script.images["PNG"] = "PNG"; });
            ClickRow(1);
            driver.Until("the picture's place", [&] { return IsWindowVisible(GetDlgItem(dialog, RES_PICTURE)) != 0; });
            const RECT place = PlaceOf(GetDlgItem(dialog, RES_PICTURE), true);
            EXPECT_EQ(Sides(place), (std::array{place.left, place.top, place.left + 149, place.top + 149}));
            if (own_panel) {
                shows(30, png_color);
                driver.SavePicture(dialog, "png");
                EXPECT_TRUE(std::filesystem::remove(picture)) << "the file is not kept open";
            } else {
                const RECT inside = PlaceOf(GetWindow(GetDlgItem(dialog, RES_PICTURE), GW_CHILD));
                EXPECT_EQ(Sides(inside), (std::array{0L, 0L, 149L, 149L})) << "the control fills it";
                const std::string path = Quoted(folder.Core(u"Work") + u"\\Lumora_ForPNG\\preview.PNG");
                driver.Until("the path", [&] { return Called("put 1 " + path); });
            }
            Between([this] { stand_in.script.images.erase("PNG"); });
            ClickRow(9);
            shows(30, GetSysColor(COLOR_3DFACE));
            driver.Leave(dialog, VK_ESCAPE);
        });
    }
}

TEST_F(WindowsDialogs, NoBrowserGivesAMessageAndADialogThatCloses)
{
    stand_in.Withdraw(StandIn::Browser);
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

// The stand-in compares what arrives with the contract's table.
TEST_F(WindowsDialogs, EveryOperationArrivesWithTheContractsTypes)
{
    const std::unique_ptr<IHostedControl> control = controls.CreateHidden(part_browser_class_id, 12033342, 100, 100);
    ASSERT_NE(control, nullptr);
    std::vector<std::int16_t> block(max_view_state_values);
    for (const OperationSignature& signature : browser_signatures) {
        std::vector<ControlArgument> arguments;
        for (const ControlType type : signature.arguments) {
            arguments.push_back({type, static_cast<void*>(block.data())});
            if (type == ControlType::Text) {
                arguments.back().value = std::u16string_view(u"部品");
            } else if (type == ControlType::Int16) {
                arguments.back().value = std::int16_t{2};
            }
        }
        const auto id = static_cast<std::int32_t>(signature.operation);
        const ControlResult result = control->Invoke(id, InvokeKind::Method, arguments, signature.result);
        const std::string line = stand_in.recorder.lines.back();
        EXPECT_TRUE(line.starts_with(std::string(signature.name) + "(")) << line;
        EXPECT_EQ(line.find("bad types"), std::string::npos) << line;
        EXPECT_EQ(std::ranges::count(signature.arguments, ControlType::Text) != 0,
                  line.find("'部品'") != std::string::npos)
            << line;
        EXPECT_EQ(std::holds_alternative<std::u16string>(result), signature.result == ControlType::Text) << line;
    }
    EXPECT_EQ(stand_in.recorder.lines.size(), browser_signatures.size());
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

// In all, panels are painted more often than the system has room for drawing objects, 65,536.
TEST_F(WindowsDialogs, NothingLeaksOverFiftyRuns)
{
    stand_in.script.images = {{"2D", PlainBitmap(-1, 0)}, {"3D", PlainBitmap(0, -1)}};
    const std::size_t room = RoomForBlocks();
    for (int run = 0; run < 50; ++run) {
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            ClickRow(run % 3);
            const int row = PlaceOf(GetDlgItem(dialog, RES_PICTURE)).top + 40;
            driver.Until("2D", [&] { return ColorAt(dialog, 30, row) == RGB(255, 0, 0); });
            HWND panel = GetDlgItem(dialog, RES_IMAGE_PANEL);
            Between([panel] {
                for (int paint = 0; paint < 1400; ++paint) {
                    RedrawWindow(panel, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
                }
            });
            EXPECT_EQ(ColorAt(dialog, 30, row), RGB(255, 0, 0));
            driver.Leave(dialog, VK_ESCAPE);
        });
        HBRUSH brush = CreateSolidBrush(0);
        EXPECT_TRUE(DeleteObject(brush)) << "there is room for drawing objects";
    }
    EXPECT_EQ(RoomForBlocks(), room);
}

} // namespace
} // namespace partkeep
