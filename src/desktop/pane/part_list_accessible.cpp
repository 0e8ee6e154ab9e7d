#include "desktop/pane/part_list_accessible.h"

#include "desktop/pane/part_list_view.h"

#include <QItemSelectionModel>

namespace partkeep {

namespace {

constexpr qsizetype most_cells = 4000; // kept at a time
constexpr int most_told_rows = 1000;   // a reader that asks for a million selected rows cannot use them

// One cell; answers nothing once its list or its row has gone.
class CPartCell : public QAccessibleInterface, public QAccessibleTableCellInterface {
public:
    CPartCell(CPartListView& view, int row, int column) : view_(&view), row_(row), column_(column) {}

    [[nodiscard]] bool isValid() const override { return Index().isValid(); }
    [[nodiscard]] QObject* object() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(view_); }
    [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Cell; }
    void setText(QAccessible::Text /*which*/, const QString& /*text*/) override {}

    [[nodiscard]] QString text(QAccessible::Text which) const override
    {
        return which == QAccessible::Name || which == QAccessible::Value
                   ? Index().data(Qt::AccessibleTextRole).toString()
                   : QString();
    }
    [[nodiscard]] QRect rect() const override
    {
        const QRect place = view_->visualRect(Index());
        return place.isNull() ? place : place.translated(view_->viewport()->mapToGlobal(QPoint()));
    }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state;
        const QModelIndex index = Index();
        state.invalid = !index.isValid();
        state.selectable = true;
        state.focusable = true;
        state.selected = index.isValid() && isSelected();
        state.focused = index.isValid() && index == view_->currentIndex() && view_->hasFocus();
        state.invisible = !view_->viewport()->rect().intersects(view_->visualRect(index));
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableCellInterface ? static_cast<QAccessibleTableCellInterface*>(this) : nullptr;
    }
    [[nodiscard]] bool isSelected() const override { return view_->selectionModel()->isSelected(Index()); }
    [[nodiscard]] QList<QAccessibleInterface*> columnHeaderCells() const override { return {}; }
    [[nodiscard]] QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    [[nodiscard]] int columnIndex() const override { return column_; }
    [[nodiscard]] int rowIndex() const override { return row_; }
    [[nodiscard]] int columnExtent() const override { return 1; }
    [[nodiscard]] int rowExtent() const override { return 1; }
    [[nodiscard]] QAccessibleInterface* table() const override { return parent(); }

private:
    [[nodiscard]] QModelIndex Index() const { return view_->model()->index(row_, column_); }

    CPartListView* view_;
    int row_;
    int column_;
};

int lists = 0; // alive in this process

QAccessibleInterface* MakeAccessible(const QString& /*class_name*/, QObject* object)
{
    auto* view = dynamic_cast<CPartListView*>(object);
    return view != nullptr ? new CPartListAccessible(*view) : nullptr;
}

} // namespace

CPartListAccessible::CPartListAccessible(CPartListView& view) : QAccessibleWidget(&view, QAccessible::Table) {}

CPartListAccessible::~CPartListAccessible()
{
    ForgetCells();
}

void CPartListAccessible::AddList()
{
    if (lists++ == 0) {
        QAccessible::installFactory(MakeAccessible);
    }
}

void CPartListAccessible::RemoveList()
{
    if (--lists == 0) {
        QAccessible::removeFactory(MakeAccessible);
    }
}

CPartListView& CPartListAccessible::View() const
{
    return *static_cast<CPartListView*>(object());
}

void* CPartListAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface) {
        return static_cast<QAccessibleTableInterface*>(this);
    }
    return QAccessibleWidget::interface_cast(type);
}

int CPartListAccessible::rowCount() const
{
    return View().model()->rowCount();
}

int CPartListAccessible::columnCount() const
{
    return View().model()->columnCount();
}

int CPartListAccessible::childCount() const
{
    return rowCount() * columnCount();
}

QAccessibleInterface* CPartListAccessible::child(int index) const
{
    return index >= 0 ? cellAt(index / columnCount(), index % columnCount()) : nullptr;
}

QAccessibleInterface* CPartListAccessible::cellAt(int row, int column) const
{
    if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount()) {
        return nullptr;
    }
    const int place = row * columnCount() + column;
    if (const auto known = cells_.constFind(place); known != cells_.constEnd()) {
        return QAccessible::accessibleInterface(*known);
    }
    if (cells_.size() >= most_cells) {
        ForgetCells();
    }
    auto* cell = new CPartCell(View(), row, column); // the registry owns it
    cells_.insert(place, QAccessible::registerAccessibleInterface(cell));
    return cell;
}

void CPartListAccessible::ForgetCells() const
{
    for (const QAccessible::Id cell : std::as_const(cells_)) {
        QAccessible::deleteAccessibleInterface(cell);
    }
    cells_.clear();
}

QAccessibleInterface* CPartListAccessible::childAt(int x, int y) const
{
    const QModelIndex index = View().indexAt(View().viewport()->mapFromGlobal(QPoint(x, y)));
    return cellAt(index.row(), index.column());
}

int CPartListAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* cell = dynamic_cast<const CPartCell*>(child);
    return cell != nullptr ? cell->rowIndex() * columnCount() + cell->columnIndex() : -1;
}

QAccessibleInterface* CPartListAccessible::focusChild() const
{
    const QModelIndex current = View().currentIndex();
    return View().hasFocus() ? cellAt(current.row(), current.column()) : nullptr;
}

QString CPartListAccessible::columnDescription(int column) const
{
    return View().model()->headerData(column, Qt::Horizontal).toString();
}

int CPartListAccessible::selectedRowCount() const
{
    int rows = 0;
    for (const QItemSelectionRange& range : View().selectionModel()->selection()) {
        rows += range.height();
    }
    return rows;
}

int CPartListAccessible::selectedCellCount() const
{
    return selectedRowCount() * columnCount();
}

QList<int> CPartListAccessible::selectedRows() const
{
    QList<int> rows;
    for (const QItemSelectionRange& range : View().selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom() && rows.size() < most_told_rows; ++row) {
            rows += row;
        }
    }
    return rows;
}

QList<QAccessibleInterface*> CPartListAccessible::selectedCells() const
{
    QList<QAccessibleInterface*> cells;
    for (const int row : selectedRows()) {
        cells += cellAt(row, 0);
    }
    return cells;
}

bool CPartListAccessible::selectRow(int row)
{
    return View().SelectRow(row, true);
}

bool CPartListAccessible::unselectRow(int row)
{
    return View().SelectRow(row, false);
}

bool CPartListAccessible::isRowSelected(int row) const
{
    return View().selectionModel()->isRowSelected(row);
}

// Rows of a search are other parts under the same numbers, so every cell is made anew.
void CPartListAccessible::modelChange(QAccessibleTableModelChangeEvent* event)
{
    if (event->modelChangeType() != QAccessibleTableModelChangeEvent::DataChanged) {
        ForgetCells();
    }
}

} // namespace partkeep
