#include "windows/win_messages.h"

#include "platform/windows/wide_text.h"
#include "windows/others_disabled.h"
#include "windows/waiting_input.h"

#include <optional>

namespace partkeep {

namespace {

BOOL CALLBACK TakeMainWindow(HWND window, LPARAM result)
{
    if (!IsWindowVisible(window) || GetWindow(window, GW_OWNER) != nullptr) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(result) = window;
    return FALSE;
}

// The active window where the user works in this program, else the first window of the thread that shows.
HWND MainWindowOfThread()
{
    if (HWND active = GetActiveWindow(); active != nullptr) {
        return active;
    }
    HWND found = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), TakeMainWindow, reinterpret_cast<LPARAM>(&found));
    return found;
}

} // namespace

// A message of a dialog is owned by that dialog's owner, so that the system disables the owner alone: the dialogs are
// ours to disable. An owner that the dialog has disabled is handed over enabled: the system disables it at once, and
// enables it before its box goes. Else no window of the thread could be the next one, and another program's would be.
// Without an owner the system sees to all windows of the thread.
void CWinMessages::Show(const Message& message)
{
    const UINT kind = message.kind == MessageKind::Exclamation ? MB_ICONEXCLAMATION : MB_TASKMODAL;
    HWND active = GetActiveWindow();
    const bool owner_disabled = owner_ != nullptr && !IsWindowEnabled(owner_);
    {
        std::optional<COthersDisabled> dialogs;
        if (owner_ != nullptr) {
            dialogs.emplace(nullptr);
            EnableWindow(owner_, TRUE);
        }
        MessageBoxW(owner_, WideText(message.text).c_str(), WideText(message.title).c_str(), MB_OK | kind);
        DropWaitingInput();
    }
    if (owner_disabled) {
        EnableWindow(owner_, FALSE);
    }
    if (active != nullptr && IsWindowEnabled(active)) {
        SetActiveWindow(active);
    }
}

void CThreadMessages::Show(const Message& message)
{
    CWinMessages(MainWindowOfThread()).Show(message);
}

} // namespace partkeep
