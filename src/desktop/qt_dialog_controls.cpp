// The children of a dialog window that are made at run time.

#include "controls/zan_pic_ctrl.h"
#include "desktop/picture_control.h"
#include "desktop/qt_dialog_window.h"
#include "desktop/qt_panel_window.h"
#include "desktop/qt_values.h"

#include <QLabel>

namespace partkeep {

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
    if (auto* keys = dynamic_cast<IWindowKeys*>(widget)) {
        events_.SetWindowKeys(keys, widget);
    }
    return control;
}

std::unique_ptr<IHostedControl> CQtDialogWindow::TemplateControl(int id)
{
    const auto control = template_controls_.find(id);
    return control == template_controls_.end() ? nullptr : std::move(control->second);
}

void CQtDialogWindow::CreateLabel(int id, const Rect& area)
{
    if (!frame_) {
        return;
    }
    auto* label = new QLabel(frame_);
    label->setGeometry(ToQRect(area));
    label->show();
    controls_.AddLabel(id, label);
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
