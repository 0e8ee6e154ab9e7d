#include "windows/win_dialog_fields.h"

#include "platform/windows/wide.h"
#include "platform/windows/wide_text.h"
#include "windows/dialog_scale.h"
#include "windows/site_window.h"

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

bool IsPushButton(HWND window)
{
    return (SendMessageW(window, WM_GETDLGCODE, 0, 0) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
}

namespace {

bool IsTypedInto(HWND window)
{
    return (SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0 &&
           (GetWindowLongPtrW(window, GWL_STYLE) & ES_READONLY) == 0;
}

class CWinDialogFields final : public IDialogFields {
public:
    explicit CWinDialogFields(const HWND& window) : window_(window) {}

    void SetText(int id, std::u16string_view text) override
    {
        SetDlgItemTextW(window_, id, WideText(text).c_str());
        if (IsTypedInto(Control(id))) {
            SendToControl(window_, id, EM_SETSEL, text.size(), static_cast<LPARAM>(text.size())); // to type behind it
        }
    }
    [[nodiscard]] std::u16string Text(int id) const override
    {
        HWND control = Control(id);
        if (control == nullptr) {
            return {};
        }
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
        return FromWide(text);
    }
    // A control that is disabled while it has the focus leaves it to nobody, and the keys with it, or to another button
    // once a window has been open in front. It gets it back.
    void Enable(int id, bool enabled) override
    {
        HWND control = Control(id);
        if (!enabled && control != nullptr && GetFocus() == control) {
            disabled_with_focus_ = id;
        }
        EnableWindow(control, enabled ? TRUE : FALSE);
        if (enabled && disabled_with_focus_ == id) {
            disabled_with_focus_ = 0;
            if (GetActiveWindow() == window_) {
                Focus(id);
            }
        }
    }
    void ShowControl(int id, bool visible) override { ShowWindow(Control(id), visible ? SW_SHOW : SW_HIDE); }
    void SetReadOnly(int id) override { SendToControl(window_, id, EM_SETREADONLY, TRUE); }
    void LimitText(int id, int characters) override
    {
        SendToControl(window_, id, EM_LIMITTEXT, static_cast<WPARAM>(characters));
    }
    void ClearSelectedText(int id) override { SendToControl(window_, id, WM_CLEAR); }
    void SetCheck(int id, int state) override { SendToControl(window_, id, BM_SETCHECK, static_cast<WPARAM>(state)); }
    [[nodiscard]] int Check(int id) const override { return static_cast<int>(SendToControl(window_, id, BM_GETCHECK)); }
    [[nodiscard]] Rect ControlClientRect(int id) const override { return LogicalClientOf(Control(id)); }
    [[nodiscard]] Rect MapToDialog(int id, const Rect& client_area) const override
    {
        HWND control = Control(id);
        return control != nullptr ? MapArea(control, window_, client_area) : Rect{};
    }
    void MoveControl(int id, const Rect& area) override
    {
        if (HWND control = Control(id); control != nullptr) {
            MoveClientArea(control, area, true);
        }
    }
    void Focus(int id) override
    {
        if (HWND control = Control(id); control != nullptr) {
            SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
        }
    }
    [[nodiscard]] int FocusedControl() const override
    {
        HWND child = window_ != nullptr ? FocusedChildOf(window_) : nullptr;
        return child != nullptr ? GetDlgCtrlID(child) : 0;
    }
    // That of the template: what is made at run time comes behind all of it, and has keys of its own to lead there.
    void MoveFocusByOrder(bool forward) override
    {
        const auto behind = [&](HWND stop) { return GetNextDlgTabItem(window_, stop, forward ? FALSE : TRUE); };
        HWND const first = behind(GetFocus());
        HWND stop = first;
        while (IsMadeAtRunTime(stop) && behind(stop) != first) {
            stop = behind(stop);
        }
        if (stop != nullptr) {
            SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(stop), TRUE);
        }
    }
    void ResetEntries(int id) override { SendToControl(window_, id, CB_RESETCONTENT); }
    void InsertEntry(int id, int index, std::u16string_view text) override
    {
        const std::wstring entry = WideText(text);
        SendToControl(window_, id, CB_INSERTSTRING, static_cast<WPARAM>(index),
                      reinterpret_cast<LPARAM>(entry.c_str()));
    }
    void SelectEntry(int id, int index) override
    {
        SendToControl(window_, id, CB_SETCURSEL, static_cast<WPARAM>(index));
    }
    [[nodiscard]] int SelectedEntry(int id) const override
    {
        return Control(id) != nullptr ? static_cast<int>(SendToControl(window_, id, CB_GETCURSEL)) : -1;
    }

private:
    [[nodiscard]] HWND Control(int id) const { return GetDlgItem(window_, id); }

    const HWND& window_;
    int disabled_with_focus_ = 0; // the control's id
};

} // namespace

std::unique_ptr<IDialogFields> MakeWinDialogFields(const HWND& window)
{
    return std::make_unique<CWinDialogFields>(window);
}

} // namespace partkeep
