// The user of a dialog that runs on the test's thread: waits for windows, presses keys and buttons, and looks, all
// from a thread of its own and through the system's message queue. Every wait has a limit; one that passes fails
// the test and closes what is open.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <thread>

namespace partkeep {

class DialogDriver {
public:
    // Plays `user` while the test's thread is inside a modal run. The run must end with it.
    explicit DialogDriver(std::function<void(DialogDriver&)> user);
    ~DialogDriver();
    DialogDriver(const DialogDriver&) = delete;
    DialogDriver& operator=(const DialogDriver&) = delete;

    // The visible top-level window of the test's thread with this title.
    HWND Window(const std::wstring& title);
    void WaitGone(HWND window);
    bool Until(const char* what, const std::function<bool()>& condition);

    void Press(HWND dialog, int button);
    void Focus(HWND dialog, int control);
    [[nodiscard]] HWND Focused() const; // on the test's thread
    [[nodiscard]] int FocusedControl(HWND dialog) const;
    void Key(WORD key); // a message to the window with the focus
    // Through the keyboard, so that the modifier is really down until the condition holds.
    void KeyWith(WORD modifier, WORD key, const char* what, const std::function<bool()>& condition);

    // Answers the message box with this title and gives its text.
    std::wstring AnswerMessage(const std::wstring& title);

    // A picture of the screen under a window, into the folder PARTKEEP_PICTURES if that is set.
    static void SavePicture(HWND window, const std::string& name);

private:
    void CloseEverything() const;

    DWORD thread_;
    bool failed_ = false;
    std::thread user_;
};

[[nodiscard]] std::wstring TextOf(HWND window, int control = 0); // 0: the window itself
[[nodiscard]] RECT PlaceOf(HWND window, int control);            // in the window's client coordinates
[[nodiscard]] COLORREF ColorAt(HWND window, int x, int y);

} // namespace partkeep
