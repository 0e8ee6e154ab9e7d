// The controls of a dialog window by id. Borrows the window's frame and its set of controls.
#pragma once

#include "desktop/control_set.h"
#include "desktop/dialog_frame.h"
#include "platform/dialog_window.h"

#include <QPointer>

#include <string>
#include <string_view>

namespace partkeep {

class CQtDialogFields : public IDialogFields {
public:
    CQtDialogFields(const QPointer<CDialogFrame>& frame, CControlSet& controls) : frame_(frame), controls_(controls) {}

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
    const QPointer<CDialogFrame>& frame_;
    CControlSet& controls_;
};

} // namespace partkeep
