#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>

namespace partkeep {

namespace {

constexpr auto limit = std::chrono::seconds(20);
constexpr auto pause = std::chrono::milliseconds(10);

struct Search {
    std::wstring title;
    HWND found = nullptr;
};

BOOL CALLBACK Visit(HWND window, LPARAM value)
{
    auto& search = *reinterpret_cast<Search*>(value);
    if (IsWindowVisible(window) && TextOf(window) == search.title) {
        search.found = window;
    }
    return TRUE;
}

BOOL CALLBACK CloseVisible(HWND window, LPARAM)
{
    if (IsWindowVisible(window)) {
        PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    }
    return TRUE;
}

} // namespace

DialogDriver::DialogDriver(std::function<void(DialogDriver&)> user) : thread_(GetCurrentThreadId())
{
    user_ = std::thread([this, play = std::move(user)] {
        play(*this);
        if (failed_) {
            CloseEverything();
        }
    });
}

DialogDriver::~DialogDriver()
{
    user_.join();
}

bool DialogDriver::Until(const char* what, const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + (failed_ ? std::chrono::seconds(0) : limit);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            failed_ = true;
            ADD_FAILURE() << "never came: " << what;
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
    return true;
}

HWND DialogDriver::Window(const std::wstring& title)
{
    Search search{title, nullptr};
    Until("a window", [&] {
        EnumThreadWindows(thread_, Visit, reinterpret_cast<LPARAM>(&search));
        return search.found != nullptr;
    });
    return search.found;
}

void DialogDriver::WaitGone(HWND window)
{
    Until("the end of a window", [&] { return !IsWindow(window); });
}

void DialogDriver::Press(HWND dialog, int button)
{
    PostMessageW(GetDlgItem(dialog, button), BM_CLICK, 0, 0);
}

void DialogDriver::Focus(HWND dialog, int control)
{
    PostMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, control)), TRUE);
    Until("the focus", [&] { return FocusedControl(dialog) == control; });
}

HWND DialogDriver::Focused() const
{
    GUITHREADINFO information{};
    information.cbSize = sizeof information;
    return GetGUIThreadInfo(thread_, &information) ? information.hwndFocus : nullptr;
}

int DialogDriver::FocusedControl(HWND dialog) const
{
    HWND window = Focused();
    while (window != nullptr && GetAncestor(window, GA_PARENT) != dialog) {
        window = GetAncestor(window, GA_PARENT);
    }
    return window != nullptr ? GetDlgCtrlID(window) : 0;
}

void DialogDriver::Key(WORD key)
{
    PostMessageW(Focused(), WM_KEYDOWN, key, 1);
}

void DialogDriver::KeyWith(WORD modifier, WORD key, const char* what, const std::function<bool()>& condition)
{
    const auto send = [](WORD code, DWORD flags) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = code;
        input.ki.dwFlags = flags;
        SendInput(1, &input, sizeof input);
    };
    // A window that has just come gets the keyboard's real state late, which lets the modifier up again.
    Until(what, [&] {
        send(modifier, 0);
        Key(key);
        std::this_thread::sleep_for(pause);
        return condition();
    });
    send(modifier, KEYEVENTF_KEYUP);
}

std::wstring DialogDriver::AnswerMessage(const std::wstring& title)
{
    constexpr int text_control = 0xFFFF;
    HWND box = Window(title);
    Until("the message's text", [&] { return GetDlgItem(box, text_control) != nullptr; });
    const std::wstring text = TextOf(box, text_control);
    SavePicture(box, "message");
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    WaitGone(box);
    return text;
}

void DialogDriver::CloseEverything() const
{
    for (int round = 0; round < 5; ++round) {
        EnumThreadWindows(thread_, CloseVisible, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
}

void DialogDriver::SavePicture(HWND window, const std::string& name)
{
    const char* folder = std::getenv("PARTKEEP_PICTURES");
    if (folder == nullptr) {
        return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // what is to be painted is painted
    RECT place;
    GetWindowRect(window, &place);
    const std::string area = std::to_string(place.right - place.left) + "x" + std::to_string(place.bottom - place.top) +
                             "+" + std::to_string(place.left) + "+" + std::to_string(place.top);
    std::system(
        ("start /wait /unix /usr/bin/import -window root -crop " + area + " " + folder + "/" + name + ".png").c_str());
}

std::wstring TextOf(HWND window, int control)
{
    std::array<wchar_t, 512> text{};
    HWND target = control != 0 ? GetDlgItem(window, control) : window;
    SendMessageW(target, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

RECT PlaceOf(HWND window, int control)
{
    RECT place;
    GetWindowRect(GetDlgItem(window, control), &place);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

COLORREF ColorAt(HWND window, int x, int y)
{
    HDC context = GetDC(window);
    const COLORREF color = GetPixel(context, x, y);
    ReleaseDC(window, context);
    return color;
}

} // namespace partkeep
