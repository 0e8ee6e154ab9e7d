// The controls of a dialog window by id. Borrows the place of the window's handle, which is null while none exists.
#pragma once

#include "platform/dialog_window.h"

#include <windows.h>

#include <string>
#include <string_view>

namespace partkeep {

// Sends a message to a control of a dialog. 0 where there is none.
LRESULT SendToControl(HWND dialog, int id, UINT message, WPARAM word = 0, LPARAM value = 0);

// The child of the dialog that has the focus or holds it; null for none.
[[nodiscard]] HWND FocusedChildOf(HWND dialog);

class CWinDialogFields final : public IDialogFields {
public:
    explicit CWinDialogFields(const HWND& window) : window_(window) {}

    void SetText(int id, std::u16string_view text) override;
    [[nodiscard]] std::u16string Text(int id) const override;
    void Enable(int id, bool enabled) override;
    void ShowControl(int id, bool visible) override;
    void SetReadOnly(int id) override;
    void LimitText(int id, int characters) override;
    void ClearSelectedText(int id) override;
    void SetCheck(int id, int state) override;
    [[nodiscard]] int Check(int id) const override;
    [[nodiscard]] Rect ControlClientRect(int id) const override;
    [[nodiscard]] Rect MapToDialog(int id, const Rect& client_area) const override;
    void MoveControl(int id, const Rect& area) override;

    void Focus(int id) override;
    [[nodiscard]] int FocusedControl() const override;
    void MoveFocusByOrder(bool forward) override;

    void ResetEntries(int id) override;
    void InsertEntry(int id, int index, std::u16string_view text) override;
    void SelectEntry(int id, int index) override;
    [[nodiscard]] int SelectedEntry(int id) const override;

private:
    [[nodiscard]] HWND Control(int id) const { return GetDlgItem(window_, id); }

    const HWND& window_;
    int disabled_with_focus_ = 0; // the control's id
};

} // namespace partkeep
