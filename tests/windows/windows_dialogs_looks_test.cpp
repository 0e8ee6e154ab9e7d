// What the dialogs look like: places, captions, pictures, and that drawing leaves nothing behind.

#include "tests/selection/selection_run.h"
#include "tests/windows/windows_dialogs_fixture.h"
#include "windows/com_ptr.h"

#include <commctrl.h>
#include <ole2.h>
#include <olectl.h>

#include <cstring>

namespace partkeep {
namespace {

std::array<LONG, 4> Sides(const RECT& area)
{
    return {area.left, area.top, area.right, area.bottom};
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
        HDC screen = GetDC(nullptr);
        const double scale = GetDeviceCaps(screen, LOGPIXELSX) / 96.0;
        ReleaseDC(nullptr, screen);
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
    EXPECT_EQ(CountOf(object), 0);
}

TEST_F(WindowsDialogs, CaptionsFollowTheLanguageAndControlsAreToldTheLooks)
{
    const wchar_t* expected[][2]{
        {L"Add", L"Parts Name (&P)"}, {L"追加", L"パーツ名 (&P)"}, {L"添加", L"零件名称 (&P)"}};
    for (int language = 1; language <= 3; ++language) {
        object.SetLanguageID(language);
        Run(false, [&](DialogDriver& driver, HWND dialog) {
            EXPECT_EQ(TextOf(dialog, RES_ADD), expected[language - 1][0]);
            EXPECT_EQ(TextOf(dialog, RES_PART_NAME_CAPTION), expected[language - 1][1]);
            Between([&] {
                EXPECT_EQ(stand_in.ambient(DISPID_AMBIENT_BACKCOLOR).lVal, LONG(0x80000000 | COLOR_3DFACE));
                EXPECT_EQ(stand_in.ambient(DISPID_AMBIENT_FORECOLOR).lVal, LONG(0x80000000 | COLOR_BTNTEXT));
                VARIANT name = stand_in.ambient(DISPID_AMBIENT_DISPLAYNAME);
                EXPECT_STREQ(name.bstrVal, selection_title);
                VARIANT font = stand_in.ambient(DISPID_AMBIENT_FONT);
                CComPtr<IFont> own;
                ASSERT_EQ(font.vt, VT_DISPATCH);
                ASSERT_EQ(font.pdispVal->QueryInterface(IID_IFont, own.PutVoid()), S_OK);
                CY size{};
                own->get_Size(&size);
                EXPECT_NEAR(static_cast<double>(size.int64) / 10000, RES_FONT_POINTS, 0.5);
                VariantClear(&name);
                VariantClear(&font);
            });
            driver.SavePicture(dialog, "language" + std::to_string(language));
            driver.Press(dialog, RES_CANCEL);
        });
    }
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
    // 8 by 8 pixels that cover half of what is behind them.
    const std::string png =
        "\x89\x50\x4E\x47\x0D\x0A\x1A\x0A\x00\x00\x00\x0D\x49\x48\x44\x52\x00\x00\x00\x08\x00\x00\x00\x08\x08"
        "\x06\x00\x00\x00\xC4\x0F\xBE\x8B\x00\x00\x00\x12\x49\x44\x41\x54\x78\xDA\x63\x38\x21\x27\xD7\x80\x0F"
        "\x33\x8C\x0C\x05\x00\x22\xF6\x61\x01\xC6\xFE\xAD\xF2\x00\x00\x00\x00\x49\x45\x4E\x44\xAE\x42\x60\x82"s;
    const int behind = GetRValue(GetSysColor(COLOR_3DFACE)) * 127 / 255;
    const COLORREF png_color = RGB(100 + behind, 15 + behind, 15 + behind);
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
            shows(200, GetSysColor(COLOR_3DFACE));
            ClickRow(0);
            shows(30, RGB(255, 0, 0));
            ClickRow(9); // with nothing hidden meanwhile
            shows(30, GetSysColor(COLOR_3DFACE));
            driver.Leave(dialog, VK_ESCAPE);
        });
    }
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
        EXPECT_TRUE(DeleteObject(CreateSolidBrush(0))) << "there is room for drawing objects";
    }
    EXPECT_EQ(RoomForBlocks(), room);
}

} // namespace
} // namespace partkeep
