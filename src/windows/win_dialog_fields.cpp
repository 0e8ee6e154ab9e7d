#include "windows/win_dialog_fields.h"

#include "platform/windows/wide.h"
#include "platform/windows/wide_text.h"
#include "windows/dialog_scale.h"

namespace partkeep {

LRESULT SendToControl(HWND dialog, int id, UINT message, WPARAM word, LPARAM value)
{
    HWND control = GetDlgItem(dialog, id);
    return control != nullptr ? SendMessageW(control, message, word, value) : 0;
}

HWND FocusedChildOf(HWND dialog)
{
    HWND child = GetFocus();
    while (child != nullptr && GetAncestor(child, GA_PARENT) != dialog) {
        child = GetAncestor(child, GA_PARENT);
    }
    return child;
}

void CWinDialogFields::SetText(int id, std::u16string_view text)
{
    SetDlgItemTextW(window_, id, WideText(text).c_str());
}

std::u16string CWinDialogFields::Text(int id) const
{
    HWND control = Control(id);
    if (control == nullptr) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return FromWide(text);
}

// A control that is disabled while it has the focus leaves it to nobody, and the keys with it. It gets it back.
void CWinDialogFields::Enable(int id, bool enabled)
{
    HWND control = Control(id);
    if (!enabled && control != nullptr && GetFocus() == control) {
        disabled_with_focus_ = id;
    }
    EnableWindow(control, enabled ? TRUE : FALSE);
    if (enabled && disabled_with_focus_ == id) {
        disabled_with_focus_ = 0;
        if (GetFocus() == nullptr && GetActiveWindow() == window_) {
            Focus(id);
        }
    }
}

void CWinDialogFields::ShowControl(int id, bool visible)
{
    ShowWindow(Control(id), visible ? SW_SHOW : SW_HIDE);
}

void CWinDialogFields::SetReadOnly(int id)
{
    SendToControl(window_, id, EM_SETREADONLY, TRUE);
}

void CWinDialogFields::LimitText(int id, int characters)
{
    SendToControl(window_, id, EM_LIMITTEXT, static_cast<WPARAM>(characters));
}

void CWinDialogFields::ClearSelectedText(int id)
{
    SendToControl(window_, id, WM_CLEAR);
}

void CWinDialogFields::SetCheck(int id, int state)
{
    SendToControl(window_, id, BM_SETCHECK, static_cast<WPARAM>(state));
}

int CWinDialogFields::Check(int id) const
{
    return static_cast<int>(SendToControl(window_, id, BM_GETCHECK));
}

Rect CWinDialogFields::ControlClientRect(int id) const
{
    return LogicalClientOf(Control(id));
}

Rect CWinDialogFields::MapToDialog(int id, const Rect& client_area) const
{
    HWND control = Control(id);
    return control != nullptr ? MapArea(control, window_, client_area) : Rect{};
}

void CWinDialogFields::MoveControl(int id, const Rect& area)
{
    if (HWND control = Control(id); control != nullptr) {
        MoveClientArea(control, area, true);
    }
}

void CWinDialogFields::Focus(int id)
{
    if (HWND control = Control(id); control != nullptr) {
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    }
}

int CWinDialogFields::FocusedControl() const
{
    HWND child = window_ != nullptr ? FocusedChildOf(window_) : nullptr;
    return child != nullptr ? GetDlgCtrlID(child) : 0;
}

void CWinDialogFields::MoveFocusByOrder(bool forward)
{
    SendMessageW(window_, WM_NEXTDLGCTL, forward ? 0 : 1, FALSE);
}

void CWinDialogFields::ResetEntries(int id)
{
    SendToControl(window_, id, CB_RESETCONTENT);
}

void CWinDialogFields::InsertEntry(int id, int index, std::u16string_view text)
{
    const std::wstring entry = WideText(text);
    SendToControl(window_, id, CB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(entry.c_str()));
}

void CWinDialogFields::SelectEntry(int id, int index)
{
    SendToControl(window_, id, CB_SETCURSEL, static_cast<WPARAM>(index));
}

int CWinDialogFields::SelectedEntry(int id) const
{
    return Control(id) != nullptr ? static_cast<int>(SendToControl(window_, id, CB_GETCURSEL)) : -1;
}

} // namespace partkeep
