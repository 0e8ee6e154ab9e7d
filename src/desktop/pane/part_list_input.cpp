// How the part list takes keys and the mouse.

#include "desktop/finger.h"
#include "desktop/pane/part_list_model.h"
#include "desktop/pane/part_list_view.h"
#include "desktop/qt_keys.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStyleHints>

#include <utility>

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
    if (IsOfFinger(*event) || (plain && index.isValid() && (results_ || on_selected))) {
        PressUndecided(index, *event);
        return;
    }
    events_.Act(event->button() == Qt::LeftButton, [&] {
        QAbstractItemView::mousePressEvent(event);
        TakeAnchor(event->modifiers());
        if (plain && !index.isValid()) {
            clearSelection();
        }
    });
}

// What is selected may be about to be dragged, a list of results goes away under the pointer, and a finger may be about
// to scroll: all wait for what comes next.
void CPartListView::PressUndecided(const QModelIndex& index, const QMouseEvent& event)
{
    undecided_ = {event.position().toPoint(), index.isValid() ? index.row() : -1, IsOfFinger(event)};
    if (undecided_->finger) {
        hold_.start(QGuiApplication::styleHints()->mousePressAndHoldInterval());
    } else {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    }
}

// Selected rows are dragged by the mouse; a finger scrolls, which the view's scroller does.
void CPartListView::Decide(const QPoint& moved_to)
{
    if ((moved_to - undecided_->place).manhattanLength() < QApplication::startDragDistance()) {
        return;
    }
    const bool drags = !undecided_->finger && !results_;
    if (drags || undecided_->finger) {
        undecided_.reset();
        hold_.stop();
    }
    if (drags) {
        pressed_ = false; // the drag takes the release
        events_.DragSelection();
    }
}

// What a right click does for a mouse.
void CPartListView::FingerHeld()
{
    if (!undecided_) {
        return;
    }
    const Undecided held = *std::exchange(undecided_, std::nullopt);
    pressed_ = false;
    selectionModel()->setCurrentIndex(model()->index(held.row, FirstColumn()), QItemSelectionModel::NoUpdate);
    events_.RowMenu(viewport()->mapToGlobal(held.place));
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
        const bool scrolls = IsOfFinger(*event);
        scrolls ? void() : events_.Act(false, [&] { QAbstractItemView::mouseMoveEvent(event); });
        return;
    }
    Decide(event->position().toPoint());
}

void CPartListView::mouseReleaseEvent(QMouseEvent* event)
{
    pressed_ = false;
    hold_.stop();
    if (!undecided_) {
        const bool scrolled = IsOfFinger(*event);
        scrolled ? void() : events_.Act(false, [&] { QAbstractItemView::mouseReleaseEvent(event); });
        return;
    }
    const QModelIndex index = indexAt(event->position().toPoint());
    if (std::exchange(undecided_, std::nullopt)->row == (index.isValid() ? index.row() : -1)) {
        ReleaseOn(index);
    }
}

void CPartListView::ReleaseOn(const QModelIndex& index)
{
    events_.Act(true, [&] {
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        TakeAnchor(Qt::NoModifier);
    });
}

void CPartListView::TakeAnchor(Qt::KeyboardModifiers modifiers)
{
    if ((modifiers & Qt::ShiftModifier) == 0) {
        anchor_ = PartAt(currentIndex());
        kept_anchor_ = -1;
    }
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
    events_.Act(false, [&] {
        QAbstractItemView::keyPressEvent(event);
        TakeAnchor(event->modifiers());
    });
}

bool CPartListView::SelectRow(int row, bool selected)
{
    const QWidget* modal = QApplication::activeModalWidget();
    const QModelIndex index = model()->index(row, FirstColumn());
    if (!index.isValid() || (modal != nullptr && modal != window()) ||
        selectionModel()->isRowSelected(row) == selected) {
        return false;
    }
    const auto change = selected ? QItemSelectionModel::Select : QItemSelectionModel::Deselect;
    events_.Act(true, [&] { selectionModel()->setCurrentIndex(index, change | QItemSelectionModel::Rows); });
    return true;
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
