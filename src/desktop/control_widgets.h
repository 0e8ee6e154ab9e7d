// The widgets that differ from Qt's own so that they behave as the dialogs' logic expects.
#pragma once

#include "resources/dialog_templates.h"

#include <QComboBox>
#include <QLineEdit>
#include <QString>
#include <QTreeWidget>

namespace partkeep {

// A one-line field with a limit on what is typed or pasted, not on what the program writes; its selection
// outlives the focus, so that a button can work on it.
class CDialogEdit : public QLineEdit {
public:
    explicit CDialogEdit(QWidget* parent);

    void SetTypedLimit(int characters);
    void SetProgramText(const QString& text);
    void ClearSelection(); // nothing selected: nothing happens
    void MakeReadOnly();

protected:
    void focusOutEvent(QFocusEvent* event) override;

private:
    void FollowLimit();

    int typed_limit_;
};

// Changes by the wheel only where it has the focus: a wheel that passes by must not change a setting.
class CDropDownList : public QComboBox {
public:
    using QComboBox::QComboBox;

    // Takes the entry under the cursor of the open list, as if clicked, and closes the list.
    void AcceptOpenList();

protected:
    void wheelEvent(QWheelEvent* event) override;
};

// Rows of text in columns, in the order in which they were put. Takes parts that are dragged from the window that this
// one belongs to; what becomes of them is for that window to say when the drag has ended.
class CReportList : public QTreeWidget {
public:
    explicit CReportList(QWidget* parent);

    void AddColumn(int column, const QString& header, int width);
    void AddRow(int row, const QString& text);
    void SetCell(int row, int column, const QString& text);
    [[nodiscard]] QString Cell(int row, int column) const;
    void RemoveRow(int row);
    [[nodiscard]] int SelectedCount() const;
    [[nodiscard]] int NextSelected(int after) const;
    void FocusRow(int row); // and selects nothing

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void TakeDrag(QDropEvent& event) const;
};

// A child of `parent` for any kind but a hosted control.
[[nodiscard]] QWidget* MakeControlWidget(const TemplateControl& control, QWidget* parent);

} // namespace partkeep
