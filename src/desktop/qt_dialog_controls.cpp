// The controls of a dialog window by id, its toolbar and the children made at run time.

#include "controls/zan_pic_ctrl.h"
#include "desktop/control_widgets.h"
#include "desktop/picture_control.h"
#include "desktop/qt_dialog_window.h"
#include "desktop/qt_panel_window.h"
#include "desktop/qt_toolbar.h"
#include "desktop/qt_values.h"

#include <QCheckBox>

namespace partkeep {

// ---- Any control

void CQtDialogWindow::SetText(int id, std::u16string_view text)
{
    controls_.SetText(id, ToQString(text));
}

std::u16string CQtDialogWindow::Text(int id) const
{
    return ToText(controls_.Text(id));
}

void CQtDialogWindow::Enable(int id, bool enabled)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setEnabled(enabled);
    }
}

void CQtDialogWindow::ShowControl(int id, bool visible)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setVisible(visible);
    }
}

void CQtDialogWindow::SetReadOnly(int id)
{
    if (auto* edit = controls_.As<CDialogEdit>(id)) {
        edit->MakeReadOnly();
    }
}

void CQtDialogWindow::LimitText(int id, int characters)
{
    if (auto* edit = controls_.As<CDialogEdit>(id)) {
        edit->SetTypedLimit(characters);
    }
}

void CQtDialogWindow::ClearSelectedText(int id)
{
    if (auto* edit = controls_.As<CDialogEdit>(id)) {
        edit->ClearSelection();
    }
}

// Any state but 0 is checked: these boxes have two.
void CQtDialogWindow::SetCheck(int id, int state)
{
    if (auto* box = controls_.As<QCheckBox>(id)) {
        box->setChecked(state != 0);
    }
}

int CQtDialogWindow::Check(int id) const
{
    const auto* box = controls_.As<QCheckBox>(id);
    return box != nullptr && box->isChecked() ? 1 : 0;
}

Rect CQtDialogWindow::ControlClientRect(int id) const
{
    const QWidget* widget = controls_.Widget(id);
    return widget == nullptr ? Rect{} : ToRect(widget->rect());
}

Rect CQtDialogWindow::MapToDialog(int id, const Rect& client_area) const
{
    const QWidget* widget = controls_.Widget(id);
    return widget == nullptr ? Rect{} : ToRect(ToQRect(client_area).translated(widget->pos()));
}

void CQtDialogWindow::MoveControl(int id, const Rect& area)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setGeometry(ToQRect(area));
        controls_.Refit(id);
        widget->update();
    }
}

// ---- Keyboard focus

void CQtDialogWindow::Focus(int id)
{
    if (QWidget* widget = controls_.Widget(id)) {
        widget->setFocus(Qt::OtherFocusReason);
    }
}

int CQtDialogWindow::FocusedControl() const
{
    return frame_ ? controls_.IdAround(frame_->focusWidget()) : 0;
}

void CQtDialogWindow::MoveFocusByOrder(bool forward)
{
    if (QWidget* widget = controls_.Widget(controls_.NextStop(FocusedControl(), forward))) {
        widget->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    }
}

// ---- Drop-down list

void CQtDialogWindow::ResetEntries(int id)
{
    if (auto* list = controls_.As<CDropDownList>(id)) {
        list->clear();
    }
}

// Qt selects the first entry of an empty list by itself.
void CQtDialogWindow::InsertEntry(int id, int index, std::u16string_view text)
{
    if (auto* list = controls_.As<CDropDownList>(id)) {
        const bool none_selected = list->currentIndex() < 0;
        list->insertItem(index, ToQString(text));
        if (none_selected) {
            list->setCurrentIndex(-1);
        }
    }
}

void CQtDialogWindow::SelectEntry(int id, int index)
{
    if (auto* list = controls_.As<CDropDownList>(id)) {
        list->setCurrentIndex(index < list->count() ? index : -1);
    }
}

int CQtDialogWindow::SelectedEntry(int id) const
{
    const auto* list = controls_.As<CDropDownList>(id);
    return list == nullptr ? -1 : list->currentIndex();
}

// ---- Report list

void CQtDialogWindow::InsertColumn(int id, int column, std::u16string_view header, int width)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->AddColumn(column, ToQString(header), width);
    }
}

void CQtDialogWindow::SetFullRowSelect(int id)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->setAllColumnsShowFocus(true);
    }
}

void CQtDialogWindow::InsertRow(int id, int row, std::u16string_view text)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->AddRow(row, ToQString(text));
    }
}

void CQtDialogWindow::SetCell(int id, int row, int column, std::u16string_view text)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->SetCell(row, column, ToQString(text));
    }
}

std::u16string CQtDialogWindow::Cell(int id, int row, int column) const
{
    const auto* list = controls_.As<CReportList>(id);
    return list == nullptr ? std::u16string() : ToText(list->Cell(row, column));
}

void CQtDialogWindow::DeleteRow(int id, int row)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->RemoveRow(row);
    }
}

int CQtDialogWindow::SelectedRowCount(int id) const
{
    const auto* list = controls_.As<CReportList>(id);
    return list == nullptr ? 0 : list->SelectedCount();
}

int CQtDialogWindow::NextSelectedRow(int id, int after) const
{
    const auto* list = controls_.As<CReportList>(id);
    return list == nullptr ? -1 : list->NextSelected(after);
}

// ---- Toolbar

bool CQtDialogWindow::CreateToolbar(const ToolbarTemplate& toolbar)
{
    if (!frame_) {
        return false;
    }
    toolbar_ = new CQtToolbar(toolbar, frame_, [this](int command) { Command(command); });
    return true;
}

Rect CQtDialogWindow::ClientRectBesideToolbar() const
{
    Rect rest = ClientRect();
    rest.top += toolbar_ ? toolbar_->height() : 0;
    return rest;
}

void CQtDialogWindow::MoveAllControls(int dx, int dy)
{
    if (!frame_) {
        return;
    }
    for (QWidget* child : frame_->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!child->isWindow() && child != toolbar_) {
            child->move(child->x() + dx, child->y() + dy);
        }
    }
}

void CQtDialogWindow::PlaceToolbar()
{
    if (toolbar_) {
        toolbar_->move(0, 0);
        toolbar_->show();
    }
}

void CQtDialogWindow::EnableToolTips()
{
    if (toolbar_) {
        toolbar_->EnableToolTips([this](int command) { return ToQString(events_->ToolTipText(command)); });
    }
}

void CQtDialogWindow::PressTool(int command, bool pressed)
{
    if (toolbar_) {
        toolbar_->Press(command, pressed);
    }
}

// ---- Children made at run time

std::unique_ptr<IHostedControl> CQtDialogWindow::MakeHosted(const ClassId& class_id, QWidget*& widget)
{
    if (class_id == picture_control_class_id) {
        auto* picture = new CPictureWidget(frame_);
        widget = picture;
        return std::make_unique<CPictureControl>(picture);
    }
    return factory_ == nullptr ? nullptr : factory_->Create(class_id, frame_, widget);
}

std::unique_ptr<IHostedControl> CQtDialogWindow::CreateHostedControl(const ClassId& class_id, int id, const Rect& area)
{
    QWidget* widget = nullptr;
    auto control = frame_ ? MakeHosted(class_id, widget) : nullptr;
    if (control == nullptr || widget == nullptr) {
        return nullptr;
    }
    widget->setGeometry(ToQRect(area));
    widget->show();
    controls_.AddHosted(id, widget);
    return control;
}

std::unique_ptr<IHostedControl> CQtDialogWindow::TemplateControl(int id)
{
    const auto control = template_controls_.find(id);
    return control == template_controls_.end() ? nullptr : std::move(control->second);
}

std::unique_ptr<IPanelWindow> CQtDialogWindow::CreatePanel(int id, const Rect& area)
{
    if (!frame_) {
        return nullptr;
    }
    auto* panel = new CPanelFrame(frame_);
    panel->setObjectName(QString::number(id));
    panel->setGeometry(ToQRect(area));
    panel->show();
    panels_.emplace_back(panel);
    return std::make_unique<CQtPanelWindow>(panel);
}

} // namespace partkeep
