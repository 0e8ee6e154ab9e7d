#include "desktop/qt_dialog_fields.h"

#include "desktop/control_widgets.h"
#include "desktop/qt_values.h"
#include "partlibrary/library/library_text.h"

#include <QCheckBox>

namespace partkeep {

void CQtDialogFields::SetText(int id, std::u16string_view text)
{
    controls_.SetText(id, FromWide(text));
}

std::u16string CQtDialogFields::Text(int id) const
{
    return ToWide(controls_.Text(id));
}

void CQtDialogFields::Enable(int id, bool enabled)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setEnabled(enabled);
    }
}

void CQtDialogFields::ShowControl(int id, bool visible)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setVisible(visible);
    }
}

void CQtDialogFields::SetReadOnly(int id)
{
    if (auto* edit = controls_.As<CDialogEdit>(id)) {
        edit->MakeReadOnly();
    }
}

void CQtDialogFields::LimitText(int id, int characters)
{
    if (auto* edit = controls_.As<CDialogEdit>(id)) {
        edit->SetTypedLimit(characters);
    }
}

void CQtDialogFields::ClearSelectedText(int id)
{
    if (auto* edit = controls_.As<CDialogEdit>(id)) {
        edit->ClearSelection();
    }
}

// Any state but 0 is checked: these boxes have two.
void CQtDialogFields::SetCheck(int id, int state)
{
    if (auto* box = controls_.As<QCheckBox>(id)) {
        box->setChecked(state != 0);
    }
}

int CQtDialogFields::Check(int id) const
{
    const auto* box = controls_.As<QCheckBox>(id);
    return box != nullptr && box->isChecked() ? 1 : 0;
}

Rect CQtDialogFields::ControlClientRect(int id) const
{
    const QWidget* widget = controls_.Widget(id);
    return widget == nullptr ? Rect{} : ToRect(widget->rect());
}

Rect CQtDialogFields::MapToDialog(int id, const Rect& client_area) const
{
    const QWidget* widget = controls_.Widget(id);
    return widget == nullptr ? Rect{} : ToRect(ToQRect(client_area).translated(widget->pos()));
}

void CQtDialogFields::MoveControl(int id, const Rect& area)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setGeometry(ToQRect(area));
        controls_.Refit(id);
        widget->update();
    }
}

// ---- Keyboard focus

void CQtDialogFields::Focus(int id)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setFocus(Qt::OtherFocusReason);
    }
}

int CQtDialogFields::FocusedControl() const
{
    return frame_ ? controls_.IdAround(frame_->focusWidget()) : 0;
}

void CQtDialogFields::MoveFocusByOrder(bool forward)
{
    if (QWidget* widget = controls_.Widget(controls_.NextStop(FocusedControl(), forward))) {
        widget->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    }
}

// ---- Drop-down list

void CQtDialogFields::ResetEntries(int id)
{
    if (auto* list = controls_.As<CDropDownList>(id)) {
        list->clear();
    }
}

// Qt selects the first entry of an empty list by itself.
void CQtDialogFields::InsertEntry(int id, int index, std::u16string_view text)
{
    if (auto* list = controls_.As<CDropDownList>(id)) {
        const bool none_selected = list->currentIndex() < 0;
        list->insertItem(index, FromWide(text));
        if (none_selected) {
            list->setCurrentIndex(-1);
        }
    }
}

void CQtDialogFields::SelectEntry(int id, int index)
{
    if (auto* list = controls_.As<CDropDownList>(id)) {
        list->setCurrentIndex(index < list->count() ? index : -1);
    }
}

int CQtDialogFields::SelectedEntry(int id) const
{
    const auto* list = controls_.As<CDropDownList>(id);
    return list == nullptr ? -1 : list->currentIndex();
}

} // namespace partkeep
