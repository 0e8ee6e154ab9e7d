#include "desktop/qt_dialog_toolbar.h"

#include "desktop/qt_toolbar.h"
#include "desktop/qt_values.h"
#include "partlibrary/library/library_text.h"

namespace partkeep {

bool CQtDialogToolbar::CreateToolbar(const ToolbarTemplate& toolbar)
{
    if (!frame_) {
        return false;
    }
    bar_ = new CQtToolbar(toolbar, frame_, [this](int command) { events_.Command(command); });
    return true;
}

Rect CQtDialogToolbar::ClientRectBesideToolbar() const
{
    Rect rest = frame_ ? ToRect(frame_->rect()) : Rect{};
    rest.top += bar_ ? bar_->height() : 0;
    return rest;
}

void CQtDialogToolbar::MoveAllControls(int dx, int dy)
{
    if (!frame_) {
        return;
    }
    for (QWidget* child : frame_->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!child->isWindow() && child != bar_) {
            child->move(child->x() + dx, child->y() + dy);
        }
    }
}

void CQtDialogToolbar::PlaceToolbar()
{
    if (bar_) {
        bar_->move(0, 0);
        bar_->show();
    }
}

void CQtDialogToolbar::EnableToolTips()
{
    if (bar_) {
        bar_->EnableToolTips([this](int command) { return FromWide(events_.ToolTipText(command)); });
    }
}

void CQtDialogToolbar::PressTool(int command, bool pressed)
{
    if (bar_) {
        bar_->Press(command, pressed);
    }
}

} // namespace partkeep
