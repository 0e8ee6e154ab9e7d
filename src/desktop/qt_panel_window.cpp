#include "desktop/qt_panel_window.h"

#include "desktop/qt_device_context.h"
#include "desktop/qt_values.h"
#include "desktop/spoken_role.h"

#include <QPainter>

namespace partkeep {

CPanelFrame::CPanelFrame(QWidget* parent) : QFrame(parent)
{
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    SetSpokenRole(*this, QAccessible::Graphic);
}

void CPanelFrame::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    if (!painter) {
        return;
    }
    QPainter canvas(this);
    canvas.setClipRect(contentsRect());
    canvas.translate(contentsRect().topLeft());
    CQtDeviceContext context(canvas);
    painter(context);
}

void CQtPanelWindow::SetPainter(std::function<void(IDeviceContext&)> painter)
{
    if (frame_) {
        frame_->painter = std::move(painter);
        frame_->update();
    }
}

Rect CQtPanelWindow::ClientRect() const
{
    return frame_ ? Rect{0, 0, frame_->contentsRect().width(), frame_->contentsRect().height()} : Rect{};
}

Rect CQtPanelWindow::MapToDialog(const Rect& area) const
{
    return frame_ ? ToRect(ToQRect(area).translated(frame_->pos() + frame_->contentsRect().topLeft())) : Rect{};
}

void CQtPanelWindow::Move(const Rect& area)
{
    if (frame_) {
        const int border = frame_->frameWidth();
        frame_->setGeometry(ToQRect(area).adjusted(-border, -border, border, border));
    }
}

void CQtPanelWindow::Show(bool visible)
{
    if (frame_) {
        frame_->setVisible(visible);
    }
}

void CQtPanelWindow::Invalidate(bool)
{
    if (frame_) {
        frame_->update();
    }
}

} // namespace partkeep
