#include "windows/win_dialog_window.h"

#include "platform/windows/wide_text.h"
#include "resources/dialog_templates.h"
#include "windows/dialog_scale.h"
#include "windows/live_counts.h"
#include "windows/others_disabled.h"
#include "windows/site_window.h"
#include "windows/waiting_input.h"
#include "windows/win_panel.h"

#include <commctrl.h>

#include <utility>

namespace partkeep {

namespace {

bool IsKeyDown(int key)
{
    return GetAsyncKeyState(key) < 0;
}

bool IsKeyMessage(const MSG& message)
{
    return message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
}

BOOL CALLBACK TellColors(HWND child, LPARAM)
{
    SendMessageW(child, WM_SYSCOLORCHANGE, 0, 0);
    return TRUE;
}

// Before whatever a paint leads to: a message shown from there would be painted over and over.
void Validate(HWND window)
{
    PAINTSTRUCT paint;
    BeginPaint(window, &paint);
    EndPaint(window, &paint);
}

// Escape belongs to the dialog even where a hosted control would take every key.
bool TranslateInHostedControl(HWND dialog, MSG& message)
{
    CSiteContent* content = ContentOfSite(FocusedChildOf(dialog));
    if (content == nullptr) {
        return false;
    }
    if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) {
        SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        return true;
    }
    return content->TranslateKey(message);
}

} // namespace

std::unique_ptr<IDialogWindow> CWinDialogs::Make(const DialogTemplate& dialog)
{
    return std::make_unique<CWinDialogWindow>(module_, dialog);
}

CWinDialogWindow* CWinDialogWindow::Of(HWND window)
{
    for (; window != nullptr; window = GetAncestor(window, GA_PARENT)) {
        if (HANDLE dialog = GetPropW(window, dialog_property); dialog != nullptr) {
            return static_cast<CWinDialogWindow*>(dialog);
        }
    }
    return nullptr;
}

bool CWinDialogWindow::Create(IDialogEvents& events, HWND owner)
{
    if (window_ != nullptr) {
        return false;
    }
    const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_BAR_CLASSES | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    events_ = &events;
    owner_ = owner;
    owner_messages_ = CWinMessages(owner);
    ended_ = false;
    result_ = -1;
    CreateDialogParamW(module_, MAKEINTRESOURCEW(template_.number), owner, Procedure, reinterpret_cast<LPARAM>(this));
    return window_ != nullptr;
}

int CWinDialogWindow::RunModal(IDialogEvents& events)
{
    HWND owner = GetActiveWindow();
    {
        const COthersDisabled disabled(owner);
        if (!Create(events, owner)) {
            return -1;
        }
        if (!ended_) {
            Show(true);
        }
        result_ = RunLoop();
        DropWaitingInput();
    }
    // The owner is enabled again by now: were it not, the system would give the focus to another program.
    if (owner != nullptr && GetActiveWindow() == window_) {
        SetActiveWindow(owner);
    }
    Destroy();
    return result_;
}

bool CWinDialogWindow::CreateModeless(IDialogEvents& events, IDialogWindow* owner)
{
    modeless_ = true;
    placed_ = false;
    const auto* window = static_cast<CWinDialogWindow*>(owner); // windows of one front end know each other
    return Create(events, window != nullptr ? window->window_ : nullptr);
}

int CWinDialogWindow::RunLoop()
{
    while (!ended_ && window_ != nullptr) {
        MSG message;
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0) {
            PostQuitMessage(static_cast<int>(message.wParam)); // meant for the loop of the host
            return -1;
        }
        if (got < 0) {
            return -1;
        }
        HWND focus = GetFocus();
        CWinDialogWindow* dialog = Of(message.hwnd);
        if (dialog == nullptr || !dialog->PreTranslate(message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (dialog == this && window_ != nullptr) {
            FollowMouseButton(message, focus);
        }
    }
    return ended_ ? result_ : -1;
}

// A finger's tap leaves the field its focus, as it was before, so that Enter still means OK. And a tool that is let go
// beside itself comes up, whatever the logic has pressed.
void CWinDialogWindow::FollowMouseButton(const MSG& message, HWND focus)
{
    if (message.message == WM_LBUTTONDOWN || message.message == WM_LBUTTONDBLCLK) {
        focus_before_tap_ = template_.for_fingers && IsPushButton(message.hwnd) ? focus : nullptr;
    }
    if (message.message != WM_LBUTTONUP) {
        return;
    }
    toolbar_.ShowPressedTools();
    if (HWND field = std::exchange(focus_before_tap_, nullptr); IsChild(window_, field) && IsWindowEnabled(window_)) {
        SetFocus(field);
    }
}

void CWinDialogWindow::EndModal(int result)
{
    result_ = result;
    ended_ = true;
    EnableWindow(window_, FALSE);
    PostMessageW(window_, WM_NULL, 0, 0); // wakes the loop
}

void CWinDialogWindow::Destroy()
{
    if (window_ != nullptr) {
        DestroyWindow(window_);
    }
}

bool CWinDialogWindow::PreTranslate(MSG& message)
{
    if (!IsKeyMessage(message)) {
        return false;
    }
    const KeyPress press{static_cast<int>(message.wParam), IsKeyDown(VK_CONTROL), IsKeyDown(VK_SHIFT)};
    if (message.message == WM_KEYDOWN && events_->PreTranslateMessage(press)) {
        return true;
    }
    HWND window = window_;
    return TranslateInHostedControl(window, message) || IsDialogMessageW(window, &message);
}

INT_PTR CWinDialogWindow::Procedure(HWND window, UINT message, WPARAM word, LPARAM value) noexcept
{
    if (message == WM_INITDIALOG) {
        auto* created = reinterpret_cast<CWinDialogWindow*>(value);
        created->window_ = window;
        SetPropW(window, dialog_property, created);
        ++TheLiveCounts().windows;
    }
    auto* dialog = static_cast<CWinDialogWindow*>(GetPropW(window, dialog_property));
    if (dialog == nullptr) {
        return FALSE;
    }
    return dialog->Handle(message, word, value);
}

INT_PTR CWinDialogWindow::Handle(UINT message, WPARAM word, LPARAM value)
{
    switch (message) {
    case WM_INITDIALOG:
        return HandleInit();
    case WM_COMMAND:
        return HandleCommand(word);
    case WM_NOTIFY:
        return HandleNotify(*reinterpret_cast<const NMHDR*>(value));
    case WM_SETCURSOR:
        return HandleSetCursor();
    case WM_CLOSE: // the system would post the command behind whatever waits
        events_->OnCommand(id_cancel);
        return TRUE;
    case WM_SYSCOLORCHANGE: // the system tells windows of the screen alone
        EnumChildWindows(window_, TellColors, 0);
        return TRUE;
    case WM_PAINT:
        Validate(window_);
        events_->OnPaint();
        return TRUE;
    case WM_DESTROY:
        events_->OnDestroy();
        return FALSE;
    case WM_NCDESTROY:
        HandleGone();
        return FALSE;
    default:
        return FALSE;
    }
}

// The system gives the focus to the first control unless the logic has given it to another. A modeless window must not
// take it from its owner, in which the user goes on.
INT_PTR CWinDialogWindow::HandleInit()
{
    PlaceTemplateControls();
    PutLabelsBeforeTheirFields();
    HWND before = GetFocus();
    events_->OnInitDialog();
    return GetFocus() == before && !modeless_ ? TRUE : FALSE;
}

INT_PTR CWinDialogWindow::HandleCommand(WPARAM word)
{
    const int id = LOWORD(word);
    switch (HIWORD(word)) {
    case BN_CLICKED: // of a tool, too
        events_->OnCommand(id);
        return TRUE;
    case CBN_SELCHANGE:
        events_->OnSelectionChange(id);
        return TRUE;
    case EN_CHANGE:
        events_->OnTextChange(id);
        return TRUE;
    default:
        return FALSE;
    }
}

INT_PTR CWinDialogWindow::HandleNotify(const NMHDR& notice)
{
    if (notice.code != TTN_GETDISPINFOW || notice.idFrom == 0) {
        return FALSE;
    }
    auto& request = const_cast<NMTTDISPINFOW&>(reinterpret_cast<const NMTTDISPINFOW&>(notice));
    try {
        tip_text_ = WideText(events_->ToolTipText(static_cast<int>(notice.idFrom)));
    } catch (...) {
        tip_text_.clear(); // nothing may fly through the system's frames
    }
    request.lpszText = tip_text_.data();
    return TRUE;
}

INT_PTR CWinDialogWindow::HandleSetCursor()
{
    if (wait_depth_ == 0) {
        return FALSE;
    }
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT)));
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, TRUE);
    return TRUE;
}

void CWinDialogWindow::HandleGone()
{
    RemovePropW(window_, dialog_property);
    --TheLiveCounts().windows;
    window_ = nullptr;
    toolbar_.Forget();
}

void CWinDialogWindow::SetTitle(std::u16string_view title)
{
    SetWindowTextW(window_, WideText(title).c_str());
}

IconHandle CWinDialogWindow::ParentSmallIcon() const
{
    return owner_ != nullptr ? reinterpret_cast<IconHandle>(SendMessageW(owner_, WM_GETICON, ICON_SMALL, 0)) : nullptr;
}

void CWinDialogWindow::SetSmallIcon(IconHandle icon)
{
    SendMessageW(window_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
}

void CWinDialogWindow::Show(bool visible)
{
    if (!visible || !modeless_) {
        ShowWindow(window_, visible ? SW_SHOW : SW_HIDE);
        return;
    }
    if (!std::exchange(placed_, true)) {
        PlaceBesideOwner();
    }
    SetWindowPos(window_, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

void CWinDialogWindow::EnableOwner(bool enabled)
{
    if (owner_ != nullptr) {
        EnableWindow(owner_, enabled ? TRUE : FALSE);
    }
}

void CWinDialogWindow::Invalidate()
{
    if (window_ != nullptr) { // without one it would be every window on the screen
        InvalidateRect(window_, nullptr, FALSE);
        InvalidatePanels(window_);
    }
}

void CWinDialogWindow::UpdateNow()
{
    UpdateWindow(window_);
}

void CWinDialogWindow::BeginWait()
{
    HCURSOR before = SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_WAIT)));
    if (wait_depth_++ == 0) {
        cursor_before_wait_ = before;
    }
}

void CWinDialogWindow::EndWait()
{
    if (wait_depth_ > 0 && --wait_depth_ == 0) {
        SetCursor(cursor_before_wait_);
    }
}

Rect CWinDialogWindow::ClientRect() const
{
    return LogicalClientOf(window_);
}

} // namespace partkeep
