// The user of a dialog that runs on the test's thread: waits for windows, presses keys and buttons, and looks, all
// from a thread of its own and through the system's message queue. Every wait has a limit; one that passes fails
// the test and closes what is open.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

namespace partkeep {

// Of the window itself, or of a control in it.
[[nodiscard]] inline std::wstring TextOf(HWND window, int control = 0)
{
    std::array<wchar_t, 512> text{};
    HWND holder = control != 0 ? GetDlgItem(window, control) : window;
    SendMessageW(holder, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

[[nodiscard]] inline COLORREF ColorAt(HWND window, int x, int y)
{
    HDC context = GetDC(window);
    const COLORREF color = GetPixel(context, x, y);
    ReleaseDC(window, context);
    return color;
}

class DialogDriver {
public:
    // Plays `user` while the test's thread is inside a modal run. The run must end with it.
    explicit DialogDriver(std::function<void(DialogDriver&)> user)
    {
        user_ = std::jthread([this, play = std::move(user)] {
            play(*this);
            for (int round = 0; failed_ && round < 25; ++round) {
                ForEachVisible([](HWND window) { PostMessageW(window, WM_COMMAND, IDCANCEL, 0); });
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            }
        });
    }

    void Until(const char* what, const std::function<bool()>& condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(failed_ ? 0 : 20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                failed_ = true;
                ADD_FAILURE() << "never came: " << what;
                return;
            }
            std::this_thread::sleep_for(pause);
        }
    }

    // The visible top-level window of the test's thread with this title.
    HWND Window(const std::wstring& caption)
    {
        HWND found = nullptr;
        Until("a window", [&] {
            ForEachVisible([&](HWND window) { found = TextOf(window) == caption ? window : found; });
            return found != nullptr;
        });
        return found;
    }

    static void Press(HWND dialog, int button) { PostMessageW(GetDlgItem(dialog, button), BM_CLICK, 0, 0); }
    // Let go elsewhere where that is told.
    static void Click(HWND window, int x, int y, POINT moved = {})
    {
        PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y));
        PostMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(x + moved.x, y + moved.y));
    }
    void Focus(HWND dialog, int control)
    {
        PostMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, control)), TRUE);
        WaitForFocus(dialog, control);
    }
    void WaitForFocus(HWND dialog, int control)
    {
        HWND wanted = GetDlgItem(dialog, control);
        Until("the focus", [=, this] { return Focused() == wanted || IsChild(wanted, Focused()); });
    }
    void Key(WORD key) { PostMessageW(Focused(), WM_KEYDOWN, key, 1); } // to the window with the focus
    void KeyWithAlt(char letter) { PostMessageW(Focused(), WM_SYSCHAR, static_cast<WPARAM>(letter), 1 << 29); }
    void Leave(HWND dialog, WORD key)
    {
        Key(key);
        Until("the end of a window", [=] { return !IsWindow(dialog); });
    }

    // Control is really down until the condition holds. A window that has just come gets the keyboard's real state
    // late, which lets it up again.
    void KeyWithControl(WORD key, const std::function<bool()>& condition)
    {
        Until("the effect of two keys", [&] {
            keybd_event(VK_CONTROL, 0, 0, 0);
            Key(key);
            std::this_thread::sleep_for(pause);
            return condition();
        });
        keybd_event(VK_CONTROL, 0, KEYEVENTF_KEYUP, 0);
    }

    // Answers the message box with this title and gives its text.
    std::wstring AnswerMessage(const std::wstring& caption)
    {
        constexpr int text_control = 0xFFFF;
        HWND box = Window(caption);
        Until("the message's text", [&] { return GetDlgItem(box, text_control) != nullptr; });
        const std::wstring text = TextOf(box, text_control);
        SavePicture(box, "message");
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        Until("the end of a message", [=] { return !IsWindow(box); });
        return text;
    }

    // A picture of the screen under a window, into the folder PARTKEEP_PICTURES if that is set.
    void SavePicture(HWND window, const std::string& name)
    {
        const char* folder = std::getenv("PARTKEEP_PICTURES");
        if (folder == nullptr) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(300)); // what is to be painted is painted
        RECT at;
        GetWindowRect(window, &at);
        std::array<char, 80> area{};
        std::snprintf(area.data(), area.size(), "%ldx%ld+%ld+%ld ", at.right - at.left, at.bottom - at.top, at.left,
                      at.top);
        const std::string file = std::string(folder) + "/" + name + ".png";
        std::filesystem::remove(file);
        std::system(("start /unix /usr/bin/import -window root -crop " + (area.data() + file)).c_str());
        Until("a picture", [&] { return std::filesystem::exists(file); });
    }

private:
    static constexpr auto pause = std::chrono::milliseconds(10);

    void ForEachVisible(const std::function<void(HWND)>& visit) const
    {
        for (HWND window = GetTopWindow(nullptr); window != nullptr; window = GetWindow(window, GW_HWNDNEXT)) {
            if (GetWindowThreadProcessId(window, nullptr) == thread_ && IsWindowVisible(window)) {
                visit(window);
            }
        }
    }
    [[nodiscard]] HWND Focused() const // on the test's thread
    {
        GUITHREADINFO information{};
        information.cbSize = sizeof information;
        return GetGUIThreadInfo(thread_, &information) ? information.hwndFocus : nullptr;
    }

    DWORD thread_ = GetCurrentThreadId();
    bool failed_ = false;
    std::jthread user_; // ends before the rest does
};

} // namespace partkeep
