// How the part list takes keys and the mouse.

#include "desktop/pane/part_list_model.h"
#include "desktop/pane/part_list_view.h"
#include "desktop/qt_keys.h"

#include <QApplication>
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

// A plain press selects at once, so the base class need not wait for the release, which would tell of one click twice.
// Among results nothing is selected before one is chosen.
QItemSelectionModel::SelectionFlags CPartListView::selectionCommand(const QModelIndex& index, const QEvent* event) const
{
    const bool release = event != nullptr && event->type() == QEvent::MouseButtonRelease;
    const bool press = event != nullptr && event->type() == QEvent::MouseButtonPress;
    if (results_) {
        const bool key = event != nullptr && event->type() == QEvent::KeyPress;
        const bool chosen = key && static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Space;
        return chosen ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows : QItemSelectionModel::NoUpdate;
    }
    if (release) {
        return QItemSelectionModel::NoUpdate;
    }
    if (press && IsPlainPress(static_cast<const QMouseEvent&>(*event))) {
        return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    }
    return QAbstractItemView::selectionCommand(index, event);
}

qint64 CPartListView::PartAt(const QModelIndex& index) const
{
    return index.siblingAtColumn(0).data(part_role).toLongLong();
}

void CPartListView::mousePressEvent(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    const QModelIndex index = indexAt(place);
    const bool plain = IsPlainPress(*event);
    const bool on_selected = index.isValid() && selectionModel()->isRowSelected(index.row());
    pressed_ = true;
    pressed_part_ = PartAt(index);
    undecided_.reset();
    if (plain && index.isValid() && (results_ || on_selected)) {
        PressSelected(index, place);
        return;
    }
    events_.Act(event->button() == Qt::LeftButton, [&] {
        QAbstractItemView::mousePressEvent(event);
        if (plain && !index.isValid()) {
            clearSelection();
        }
    });
}

// What is selected may be about to be dragged, and a list of results goes away under the pointer: both wait for what
// the button does next.
void CPartListView::PressSelected(const QModelIndex& index, const QPoint& place)
{
    undecided_ = place;
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
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
    if (!undecided_) {
        events_.Act(false, [&] { QAbstractItemView::mouseMoveEvent(event); });
        return;
    }
    const int moved = (event->position().toPoint() - *undecided_).manhattanLength();
    if (!results_ && moved >= QApplication::startDragDistance()) {
        undecided_.reset();
        pressed_ = false; // the drag takes the release
        events_.DragSelection();
    }
}

void CPartListView::mouseReleaseEvent(QMouseEvent* event)
{
    pressed_ = false;
    if (!undecided_) {
        events_.Act(false, [&] { QAbstractItemView::mouseReleaseEvent(event); });
        return;
    }
    const QModelIndex index = indexAt(event->position().toPoint());
    undecided_.reset();
    if (index.isValid() && index.row() == currentIndex().row()) {
        ReleaseOn(index);
    }
}

void CPartListView::ReleaseOn(const QModelIndex& index)
{
    events_.Act(true, [&] {
        selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    });
}

// The first press may have brought another list under the pointer. Then the second one means the part that was
// chosen, not the one that lies there now.
void CPartListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const qint64 part = pressed_part_;
    const bool same = PartAt(indexAt(event->position().toPoint())) == part;
    if (same) {
        events_.Act(event->button() == Qt::LeftButton, [&] { QAbstractItemView::mouseDoubleClickEvent(event); });
    }
    if (IsPlainPress(*event) && part != 0) {
        events_.DoubleClicked(part);
    }
}

void CPartListView::TakeKey(QKeyEvent* event)
{
    if (results_) {
        setFocus(); // where the space bar chooses
    }
    keyPressEvent(event);
}

void CPartListView::keyPressEvent(QKeyEvent* event)
{
    if (IsDialogKey(*event) || event->matches(QKeySequence::Copy)) { // names are copied, not cells
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

void CPartListView::contextMenuEvent(QContextMenuEvent* event)
{
    if (event->reason() != QContextMenuEvent::Keyboard) {
        events_.RowMenu(event->globalPos());
        return;
    }
    const QRect row = visualRect(currentIndex().siblingAtColumn(FirstColumn()));
    const QPoint below = viewport()->rect().intersects(row) ? row.bottomLeft() : QPoint();
    events_.RowMenu(viewport()->mapToGlobal(below + QPoint(8, 0)));
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
