#include "desktop/qt_dialog_fields.h"

#include "desktop/control_widgets.h"
#include "desktop/qt_values.h"
#include "partlibrary/library/library_text.h"

#include <QCheckBox>

namespace partkeep {

namespace {

class CQtDialogFields final : public IDialogFields {
public:
    CQtDialogFields(const QPointer<CDialogFrame>& frame, CControlSet& controls) : frame_(frame), controls_(controls) {}

    void SetText(int id, std::u16string_view text) override { controls_.SetText(id, FromWide(text)); }
    [[nodiscard]] std::u16string Text(int id) const override { return ToWide(controls_.Text(id)); }
    // The toolkit gives the focus of a control that is disabled to the next one, where keys and the wheel would change
    // something. It gets it back.
    void Enable(int id, bool enabled) override
    {
        QWidget* widget = controls_.Widget(id);
        if (widget == nullptr) {
            return;
        }
        if (!enabled && disabled_with_focus_ == 0 && frame_->focusWidget() == widget) {
            disabled_with_focus_ = id;
            widget->clearFocus();
        }
        widget->setEnabled(enabled);
        if (enabled && disabled_with_focus_ == id) {
            disabled_with_focus_ = 0;
            widget->setFocus();
        }
    }
    void ShowControl(int id, bool visible) override
    {
        if (QWidget* widget = controls_.Widget(id)) {
            widget->setVisible(visible);
        }
    }
    void SetReadOnly(int id) override
    {
        if (auto* edit = controls_.As<CDialogEdit>(id)) {
            edit->MakeReadOnly();
        }
    }
    void LimitText(int id, int characters) override
    {
        if (auto* edit = controls_.As<CDialogEdit>(id)) {
            edit->SetTypedLimit(characters);
        }
    }
    void ClearSelectedText(int id) override
    {
        if (auto* edit = controls_.As<CDialogEdit>(id)) {
            edit->ClearSelection();
        }
    }
    // Any state but 0 is checked: these boxes have two.
    void SetCheck(int id, int state) override
    {
        if (auto* box = controls_.As<QCheckBox>(id)) {
            box->setChecked(state != 0);
        }
    }
    [[nodiscard]] int Check(int id) const override
    {
        const auto* box = controls_.As<QCheckBox>(id);
        return box != nullptr && box->isChecked() ? 1 : 0;
    }
    [[nodiscard]] Rect ControlClientRect(int id) const override
    {
        const QWidget* widget = controls_.Widget(id);
        return widget == nullptr ? Rect{} : ToRect(widget->rect());
    }
    [[nodiscard]] Rect MapToDialog(int id, const Rect& client_area) const override
    {
        const QWidget* widget = controls_.Widget(id);
        return widget == nullptr ? Rect{} : ToRect(ToQRect(client_area).translated(widget->pos()));
    }
    void MoveControl(int id, const Rect& area) override
    {
        if (QWidget* widget = controls_.Widget(id)) {
            widget->setGeometry(ToQRect(area));
            controls_.Refit(id);
            widget->update();
        }
    }
    void Focus(int id) override
    {
        if (QWidget* widget = controls_.Widget(id)) {
            widget->setFocus(Qt::OtherFocusReason);
        }
    }
    [[nodiscard]] int FocusedControl() const override { return frame_ ? controls_.IdAround(frame_->focusWidget()) : 0; }
    void MoveFocusByOrder(bool forward) override
    {
        if (QWidget* widget = controls_.Widget(controls_.NextStop(FocusedControl(), forward))) {
            widget->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        }
    }
    void ResetEntries(int id) override
    {
        if (auto* list = controls_.As<CDropDownList>(id)) {
            list->clear();
        }
    }
    // Qt selects the first entry of an empty list by itself.
    void InsertEntry(int id, int index, std::u16string_view text) override
    {
        if (auto* list = controls_.As<CDropDownList>(id)) {
            const bool none_selected = list->currentIndex() < 0;
            list->insertItem(index, FromWide(text));
            if (none_selected) {
                list->setCurrentIndex(-1);
            }
        }
    }
    void SelectEntry(int id, int index) override
    {
        if (auto* list = controls_.As<CDropDownList>(id)) {
            list->setCurrentIndex(index < list->count() ? index : -1);
        }
    }
    [[nodiscard]] int SelectedEntry(int id) const override
    {
        const auto* list = controls_.As<CDropDownList>(id);
        return list == nullptr ? -1 : list->currentIndex();
    }

private:
    const QPointer<CDialogFrame>& frame_;
    CControlSet& controls_;
    int disabled_with_focus_ = 0; // the control's id
};

} // namespace

std::unique_ptr<IDialogFields> MakeQtDialogFields(const QPointer<CDialogFrame>& frame, CControlSet& controls)
{
    return std::make_unique<CQtDialogFields>(frame, controls);
}

} // namespace partkeep
