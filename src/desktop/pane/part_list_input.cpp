// How the part list takes keys and the mouse.

#include "desktop/pane/part_list_view.h"
#include "desktop/qt_keys.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>

namespace partkeep {

namespace {

bool IsPlainPress(const QMouseEvent& event)
{
    return event.button() == Qt::LeftButton && event.modifiers() == Qt::NoModifier;
}

} // namespace

// A plain press selects at once, on a selected entry too. Nothing is dragged from here, so the base class need not
// wait for the release, which would tell of one click twice.
QItemSelectionModel::SelectionFlags CPartListView::selectionCommand(const QModelIndex& index, const QEvent* event) const
{
    if (event != nullptr && event->type() == QEvent::MouseButtonRelease) {
        return QItemSelectionModel::NoUpdate;
    }
    if (event != nullptr && event->type() == QEvent::MouseButtonPress &&
        IsPlainPress(static_cast<const QMouseEvent&>(*event))) {
        return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    }
    return QAbstractItemView::selectionCommand(index, event);
}

void CPartListView::mousePressEvent(QMouseEvent* event)
{
    pressed_ = true;
    const bool beside = IsPlainPress(*event) && !indexAt(event->position().toPoint()).isValid();
    events_.Act(event->button() == Qt::LeftButton, [&] {
        QAbstractItemView::mousePressEvent(event);
        if (beside) {
            clearSelection();
        }
    });
}

void CPartListView::mouseMoveEvent(QMouseEvent* event)
{
    const int row = RowAt(event->position().toPoint().y());
    if (row != hovered_row_) {
        hovered_row_ = row;
        viewport()->update();
    }
    if (event->buttons() == Qt::NoButton) { // passing by is no action, and costs no look at the library
        QAbstractItemView::mouseMoveEvent(event);
        return;
    }
    events_.Act(false, [&] { QAbstractItemView::mouseMoveEvent(event); });
}

void CPartListView::mouseReleaseEvent(QMouseEvent* event)
{
    pressed_ = false;
    events_.Act(false, [&] { QAbstractItemView::mouseReleaseEvent(event); });
}

void CPartListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    events_.Act(event->button() == Qt::LeftButton, [&] { QAbstractItemView::mouseDoubleClickEvent(event); });
}

void CPartListView::keyPressEvent(QKeyEvent* event)
{
    if (IsDialogKey(*event)) {
        event->ignore();
        return;
    }
    const bool plain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier;
    const QString text = event->text();
    if (plain && !text.isEmpty() && text.front().isPrint() && text != QStringLiteral(" ")) {
        events_.TextTyped(text);
        return;
    }
    events_.Act(false, [&] { QAbstractItemView::keyPressEvent(event); });
}

// By the menu key, for the sorted column; the mouse asks the header.
void CPartListView::contextMenuEvent(QContextMenuEvent* event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        events_.ColumnMenu(header_->sortIndicatorSection(), header_->mapToGlobal(QPoint(8, header_->height())));
    }
}

// The base class would make the first row current, and the first Down would then take the second.
void CPartListView::focusInEvent(QFocusEvent* /*event*/)
{
    viewport()->update();
}

void CPartListView::focusOutEvent(QFocusEvent* event)
{
    QAbstractItemView::focusOutEvent(event);
    viewport()->update();
}

bool CPartListView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Leave || event->type() == QEvent::HoverLeave) {
        hovered_row_ = -1;
        viewport()->update();
    }
    return QAbstractItemView::viewportEvent(event);
}

} // namespace partkeep
