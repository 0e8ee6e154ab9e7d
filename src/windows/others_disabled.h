// What cannot be used while a modal window is open.
#pragma once

#include <windows.h>

namespace partkeep {

// A window of this component's dialogs bears this property: a pointer to its CWinDialogWindow.
inline constexpr wchar_t dialog_property[] = L"PartkeepDialog";

// While a dialog or a message is open modally, its owner and every other dialog of this component on the thread are
// disabled: a list left enabled beside it could start a second run of what is going on. The windows themselves bear
// the mark of who disabled them, which needs no memory of ours and goes with a window that goes meanwhile.
class COthersDisabled {
public:
    // Null: the dialogs alone.
    explicit COthersDisabled(HWND owner);
    ~COthersDisabled();
    COthersDisabled(const COthersDisabled&) = delete;
    COthersDisabled& operator=(const COthersDisabled&) = delete;

private:
    static BOOL CALLBACK DisableDialog(HWND window, LPARAM self) noexcept;
    static BOOL CALLBACK Enable(HWND window, LPARAM self) noexcept;
    void Disable(HWND window);

    HWND owner_; // may be of another kind and even of another thread
};

} // namespace partkeep
