#include "desktop/pane/part_list_view.h"

#include "desktop/finger.h"
#include "desktop/pane/part_list_accessible.h"

#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr int header_side = 24; // by a mouse, in logical pixels

} // namespace

void PaintFocus(QAbstractScrollArea& view)
{
    if (view.hasFocus()) {
        QPainter painter(view.viewport());
        painter.setPen(QPen(view.palette().color(QPalette::Highlight), 2));
        painter.drawRect(view.viewport()->rect().adjusted(1, 1, -1, -1));
    }
}

CPartListView::CPartListView(IPartListEvents& events, QWidget* parent)
    : QAbstractItemView(parent), events_(events), header_(new QHeaderView(Qt::Horizontal, this))
{
    CPartListAccessible::AddList();
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    setDragEnabled(false);
    viewport()->setMouseTracking(true);
    ScrollByFinger(*this);
    hold_.setSingleShot(true);
    connect(&hold_, &QTimer::timeout, this, [this] { FingerHeld(); });
    header_->setSectionsMovable(true);
    header_->setSectionsClickable(true);
    header_->setSortIndicatorShown(true);
    header_->setHighlightSections(false);
    header_->setStretchLastSection(true);
    header_->setFocusPolicy(Qt::NoFocus);
    header_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header_, &QHeaderView::sectionResized, this, [this] { updateGeometries(); });
    connect(header_, &QHeaderView::sectionMoved, viewport(), qOverload<>(&QWidget::update));
    connect(header_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        events_.ColumnMenu(header_->logicalIndexAt(place), header_->mapToGlobal(place));
    });
}

CPartListView::~CPartListView()
{
    CPartListAccessible::RemoveList();
}

void CPartListView::SetRowHeight(int height)
{
    row_height_ = height;
    updateGeometries();
    viewport()->update();
}

void CPartListView::SetFaded(bool faded)
{
    if (std::exchange(faded_, faded) != faded) {
        viewport()->update();
    }
}

void CPartListView::SetEmptyText(const QString& text)
{
    if (empty_text_ != text) {
        empty_text_ = text;
        setAccessibleDescription(text);
        viewport()->update();
    }
}

void CPartListView::setModel(QAbstractItemModel* model)
{
    QAbstractItemView::setModel(model);
    header_->setModel(model);
}

// Places.

int CPartListView::Rows() const
{
    return model() != nullptr ? model()->rowCount() : 0;
}

int CPartListView::RowsInView() const
{
    return std::max(1, viewport()->height() / row_height_);
}

int CPartListView::RowAt(int y) const
{
    const int place = y + verticalOffset();
    return place < 0 ? -1 : place / row_height_;
}

int CPartListView::FirstColumn() const
{
    for (int place = 0; place < header_->count(); ++place) {
        if (!header_->isSectionHidden(header_->logicalIndex(place))) {
            return header_->logicalIndex(place);
        }
    }
    return 0;
}

int CPartListView::horizontalOffset() const
{
    return horizontalScrollBar()->value();
}

int CPartListView::verticalOffset() const
{
    return verticalScrollBar()->value();
}

bool CPartListView::isIndexHidden(const QModelIndex& index) const
{
    return header_->isSectionHidden(index.column());
}

QRect CPartListView::visualRect(const QModelIndex& index) const
{
    if (!index.isValid() || isIndexHidden(index)) {
        return {};
    }
    return {header_->sectionViewportPosition(index.column()), index.row() * row_height_ - verticalOffset(),
            header_->sectionSize(index.column()), row_height_};
}

QModelIndex CPartListView::indexAt(const QPoint& point) const
{
    const int row = RowAt(point.y());
    const int column = header_->logicalIndexAt(point.x());
    return row >= 0 && row < Rows() && column >= 0 ? model()->index(row, column) : QModelIndex();
}

void CPartListView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (!index.isValid()) {
        return;
    }
    const int top = index.row() * row_height_;
    const int height = viewport()->height();
    const int highest = hint == PositionAtTop ? top : top + row_height_ - height;
    const int lowest = hint == PositionAtBottom ? top + row_height_ - height : top;
    if (hint == PositionAtCenter) {
        verticalScrollBar()->setValue(top - (height - row_height_) / 2);
    } else if (verticalOffset() > lowest || row_height_ > height) {
        verticalScrollBar()->setValue(lowest);
    } else if (verticalOffset() < highest) {
        verticalScrollBar()->setValue(highest);
    }
}

void CPartListView::updateGeometries()
{
    QAbstractItemView::updateGeometries();
    const int header_height = std::max(header_->sizeHint().height(), FingerSide(header_side));
    setViewportMargins(0, header_height, 0, 0);
    const QRect area = viewport()->geometry();
    header_->setGeometry(area.left(), area.top() - header_height, area.width(), header_height);
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(row_height_);
    verticalScrollBar()->setRange(0, std::max(0, Rows() * row_height_ - viewport()->height()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(row_height_);
    horizontalScrollBar()->setRange(0, std::max(0, header_->length() - viewport()->width()));
    header_->setOffset(horizontalOffset());
}

void CPartListView::scrollContentsBy(int dx, int /*dy*/)
{
    if (dx != 0) {
        header_->setOffset(horizontalOffset());
    }
    viewport()->update();
}

void CPartListView::rowsInserted(const QModelIndex& parent, int start, int end)
{
    QAbstractItemView::rowsInserted(parent, start, end);
    updateGeometries();
    viewport()->update();
}

// Selection.

QModelIndex CPartListView::moveCursor(CursorAction action, Qt::KeyboardModifiers /*modifiers*/)
{
    const int rows = Rows();
    if (rows == 0) {
        return {};
    }
    const QModelIndex current = currentIndex();
    const int column = current.isValid() ? current.column() : FirstColumn();
    const int row = current.isValid() ? current.row() : -1;
    const auto at = [&](int wanted) { return model()->index(std::clamp(wanted, 0, rows - 1), column); };
    switch (action) {
    case MoveUp:
    case MovePrevious:
        return at(row - 1);
    case MoveDown:
    case MoveNext:
        return at(row + 1);
    case MovePageUp:
        return at(row - RowsInView());
    case MovePageDown:
        return at(std::max(row, 0) + RowsInView());
    case MoveHome:
        return at(0);
    case MoveEnd:
        return at(rows - 1);
    case MoveLeft:
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
        return current;
    case MoveRight:
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        return current;
    }
    return current;
}

void CPartListView::setSelection(const QRect& area, QItemSelectionModel::SelectionFlags command)
{
    const QRect place = area.normalized();
    const bool kept = kept_anchor_ >= 0 && command.testFlag(QItemSelectionModel::Current);
    const int current = currentIndex().row();
    const int first = std::max(0, kept ? std::min(kept_anchor_, current) : RowAt(place.top()));
    const int last = std::min(Rows() - 1, kept ? std::max(kept_anchor_, current) : RowAt(place.bottom()));
    const bool hit = first <= last;
    const QItemSelection rows =
        hit ? QItemSelection(model()->index(first, 0), model()->index(last, model()->columnCount() - 1))
            : QItemSelection();
    selectionModel()->select(rows, command);
}

QRegion CPartListView::visualRegionForSelection(const QItemSelection& selection) const
{
    QRegion region;
    for (const QItemSelectionRange& range : selection) {
        const int top = std::max(0, range.top() * row_height_ - verticalOffset());
        const int bottom = std::min(viewport()->height(), (range.bottom() + 1) * row_height_ - verticalOffset());
        region += QRect(0, top, viewport()->width(), std::max(0, bottom - top));
    }
    return region;
}

void CPartListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QAbstractItemView::selectionChanged(selected, deselected);
    viewport()->update();
}

void CPartListView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QAbstractItemView::currentChanged(current, previous);
    viewport()->update();
}

// Painting.

void CPartListView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const int first = std::max(0, RowAt(event->rect().top()));
    const int last = std::min(Rows() - 1, RowAt(event->rect().bottom()));
    for (int row = first; row <= last; ++row) {
        PaintRow(painter, row);
    }
    if (Rows() == 0) {
        PaintEmpty(painter);
    }
    painter.end();
    PaintFocus(*this);
    events_.ListPainted();
}

void CPartListView::PaintRow(QPainter& painter, int row)
{
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.showDecorationSelected = true;
    option.state.setFlag(QStyle::State_Enabled, !faded_ && isEnabled());
    option.state.setFlag(QStyle::State_HasFocus, hasFocus() && row == currentIndex().row());
    option.state.setFlag(QStyle::State_Selected, selectionModel()->isRowSelected(row));
    option.state.setFlag(QStyle::State_MouseOver, row == hovered_row_);
    option.features.setFlag(QStyleOptionViewItem::Alternate, row % 2 != 0);
    const QRect line(0, row * row_height_ - verticalOffset(), viewport()->width(), row_height_);
    option.rect = line;
    style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &option, &painter, this);
    for (int place = 0; place < header_->count(); ++place) {
        const int column = header_->logicalIndex(place);
        const QModelIndex index = model()->index(row, column);
        option.rect = visualRect(index);
        if (!header_->isSectionHidden(column) && option.rect.right() >= 0 && option.rect.left() < line.width()) {
            itemDelegate()->paint(&painter, option, index);
        }
    }
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        const bool selected = option.state.testFlag(QStyle::State_Selected);
        painter.setPen(QPen(palette().color(selected ? QPalette::HighlightedText : QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(line.adjusted(2, 2, -2, -2));
    }
}

void CPartListView::PaintEmpty(QPainter& painter) const
{
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(viewport()->rect().adjusted(16, 8, -16, -8), Qt::AlignCenter | Qt::TextWordWrap, empty_text_);
}

} // namespace partkeep
