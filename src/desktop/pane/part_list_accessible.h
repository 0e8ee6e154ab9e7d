// The part list for a screen reader: a table whose cells are made as they are asked for. The toolkit knows tables only
// of its own views.
#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QList>
#include <QString>

namespace partkeep {

class CPartListView;

class CPartListAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit CPartListAccessible(CPartListView& view);
    ~CPartListAccessible() override;

    // While there is a list the toolkit asks here for its cells. Nothing stays behind: the component may be unloaded
    // from a host that goes on.
    static void AddList();
    static void RemoveList();

    [[nodiscard]] CPartListView& View() const;

    void* interface_cast(QAccessible::InterfaceType type) override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override; // row by row
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;

    [[nodiscard]] QAccessibleInterface* caption() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* summary() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* cellAt(int row, int column) const override;
    [[nodiscard]] int selectedCellCount() const override;
    [[nodiscard]] QList<QAccessibleInterface*> selectedCells() const override;
    [[nodiscard]] QString columnDescription(int column) const override;
    [[nodiscard]] QString rowDescription(int /*row*/) const override { return {}; }
    [[nodiscard]] int selectedColumnCount() const override { return 0; }
    [[nodiscard]] int selectedRowCount() const override;
    [[nodiscard]] int columnCount() const override;
    [[nodiscard]] int rowCount() const override;
    [[nodiscard]] QList<int> selectedColumns() const override { return {}; }
    [[nodiscard]] QList<int> selectedRows() const override; // the first thousand
    [[nodiscard]] bool isColumnSelected(int /*column*/) const override { return false; }
    [[nodiscard]] bool isRowSelected(int row) const override;
    // For whoever has neither keys nor a pointer: the row too, or no more.
    bool selectRow(int row) override;
    bool selectColumn(int /*column*/) override { return false; }
    bool unselectRow(int row) override;
    bool unselectColumn(int /*column*/) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent* event) override;

private:
    void ForgetCells() const;

    mutable QHash<int, QAccessible::Id> cells_; // by child index
};

} // namespace partkeep
