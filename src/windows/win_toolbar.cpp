#include "windows/win_toolbar.h"

#include "resources/dialog_templates.h"
#include "windows/dialog_scale.h"
#include "windows/live_counts.h"

#include <commctrl.h>

#include <utility>
#include <vector>

namespace partkeep {

namespace {

constexpr int toolbar_id = 0xE800; // far from the ids of templates and commands
constexpr int frame_width = 7;     // what the system's own buttons have round their picture at 96 dpi
constexpr int frame_height = 7;

// A strip of pictures in the size of the screen's density; each by itself, so that none takes colour from the next.
HBITMAP ScaledStrip(HBITMAP strip, const ToolbarTemplate& toolbar, const CDialogScale& scale)
{
    const int width = scale.ToDevice(toolbar.button_width);
    const int height = scale.ToDevice(toolbar.button_height);
    const int count = static_cast<int>(toolbar.commands.size());
    HDC screen = GetDC(nullptr);
    HDC from = CreateCompatibleDC(screen);
    HDC to = CreateCompatibleDC(screen);
    HBITMAP scaled = CreateCompatibleBitmap(screen, width * count, height);
    HGDIOBJ old_from = SelectObject(from, strip);
    HGDIOBJ old_to = SelectObject(to, scaled);
    SetStretchBltMode(to, HALFTONE);
    for (int picture = 0; picture < count; ++picture) {
        StretchBlt(to, picture * width, 0, width, height, from, picture * toolbar.button_width, 0, toolbar.button_width,
                   toolbar.button_height, SRCCOPY);
    }
    SelectObject(from, old_from);
    SelectObject(to, old_to);
    DeleteDC(from);
    DeleteDC(to);
    ReleaseDC(nullptr, screen);
    return scaled;
}

} // namespace

void CWinToolbar::Forget()
{
    bar_ = nullptr;
    pressed_.clear();
    if (bitmap_ != nullptr) {
        DeleteObject(bitmap_);
        bitmap_ = nullptr;
        --TheLiveCounts().gdi_objects;
    }
}

bool CWinToolbar::CreateToolbar(const ToolbarTemplate& toolbar)
{
    bar_ = CreateWindowExW(0, TOOLBARCLASSNAMEW, L"", WS_CHILD | WS_VISIBLE | TBSTYLE_TOOLTIPS | CCS_TOP, 0, 0, 0, 0,
                           window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(toolbar_id)), module_, nullptr);
    if (bar_ == nullptr) {
        return false;
    }
    SendMessageW(bar_, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    const CDialogScale scale(window_);
    const auto size = [&scale](int width, int height) {
        return MAKELPARAM(scale.ToDevice(width), scale.ToDevice(height));
    };
    SendMessageW(bar_, TB_SETBITMAPSIZE, 0, size(toolbar.button_width, toolbar.button_height));
    SendMessageW(bar_, TB_SETBUTTONSIZE, 0,
                 size(toolbar.button_width + frame_width, toolbar.button_height + frame_height));
    return AddButtons(toolbar) > 0;
}

// The bitmap's grey becomes the user's button colour.
int CWinToolbar::AddButtons(const ToolbarTemplate& toolbar)
{
    bitmap_ = CreateMappedBitmap(module_, toolbar.number, 0, nullptr, 0);
    if (const CDialogScale scale(window_); bitmap_ != nullptr && !scale.IsPlain()) {
        HBITMAP plain = std::exchange(bitmap_, ScaledStrip(bitmap_, toolbar, scale));
        DeleteObject(plain);
    }
    if (bitmap_ != nullptr) {
        ++TheLiveCounts().gdi_objects;
        TBADDBITMAP strip{nullptr, reinterpret_cast<UINT_PTR>(bitmap_)};
        SendMessageW(bar_, TB_ADDBITMAP, toolbar.commands.size(), reinterpret_cast<LPARAM>(&strip));
    }
    std::vector<TBBUTTON> buttons;
    for (const int command : toolbar.commands) {
        TBBUTTON button{};
        button.iBitmap = static_cast<int>(buttons.size());
        button.idCommand = command;
        button.fsState = TBSTATE_ENABLED;
        button.fsStyle = BTNS_BUTTON;
        buttons.push_back(button);
    }
    SendMessageW(bar_, TB_ADDBUTTONSW, buttons.size(), reinterpret_cast<LPARAM>(buttons.data()));
    return static_cast<int>(buttons.size());
}

Rect CWinToolbar::ClientRectBesideToolbar() const
{
    RECT client = ClientOf(window_);
    if (bar_ != nullptr) {
        SendMessageW(bar_, TB_AUTOSIZE, 0, 0);
        RECT bar;
        GetWindowRect(bar_, &bar);
        client.top += bar.bottom - bar.top;
    }
    return CDialogScale(window_).ToLogical(client);
}

void CWinToolbar::MoveAllControls(int dx, int dy)
{
    const CDialogScale scale(window_);
    for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (child == bar_) {
            continue;
        }
        RECT place;
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&place), 2);
        SetWindowPos(child, nullptr, place.left + scale.ToDevice(dx), place.top + scale.ToDevice(dy), 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOREDRAW);
    }
}

void CWinToolbar::PlaceToolbar()
{
    SendMessageW(bar_, TB_AUTOSIZE, 0, 0);
    ShowWindow(bar_, SW_SHOW);
}

void CWinToolbar::EnableToolTips()
{
    HWND tips = reinterpret_cast<HWND>(SendMessageW(bar_, TB_GETTOOLTIPS, 0, 0));
    SendMessageW(tips, TTM_ACTIVATE, TRUE, 0);
}

void CWinToolbar::PressTool(int command, bool pressed)
{
    pressed_[command] = pressed;
    ShowPressedTools();
}

void CWinToolbar::ShowPressedTools()
{
    for (const auto& [command, pressed] : pressed_) {
        SendMessageW(bar_, TB_PRESSBUTTON, static_cast<WPARAM>(command), MAKELPARAM(pressed ? TRUE : FALSE, 0));
    }
}

} // namespace partkeep
