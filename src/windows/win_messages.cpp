#include "windows/win_messages.h"

#include "platform/windows/wide_text.h"
#include "windows/others_disabled.h"
#include "windows/waiting_input.h"

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
// ours to disable. The owner was disabled already, which not every version of the system leaves so when the message is
// answered, and the active window would be the owner instead of the dialog.
void CWinMessages::Show(const Message& message)
{
    const UINT kind = message.kind == MessageKind::Exclamation ? MB_ICONEXCLAMATION : MB_TASKMODAL;
    HWND active = GetActiveWindow();
    const bool owner_disabled = owner_ != nullptr && !IsWindowEnabled(owner_);
    {
        const COthersDisabled dialogs(nullptr);
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
