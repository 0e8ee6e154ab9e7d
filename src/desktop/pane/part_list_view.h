// The view of the part list: rows of one height, so that it holds nothing per row and a million rows cost what ten do.
// Columns are those of a header that the user arranges.
#pragma once

#include <QAbstractItemView>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QTimer>

#include <functional>
#include <optional>

class QHeaderView;

namespace partkeep {

// What the view asks of the pane around it.
class IPartListEvents {
public:
    virtual ~IPartListEvents() = default;

    // Runs what the view does with an event by which the user may change the selection. `clicked`: a button went down
    // in the view.
    virtual void Act(bool clicked, const std::function<void()>& action) = 0;
    virtual void TextTyped(const QString& text) = 0;              // belongs to the search
    virtual void ColumnMenu(int column, const QPoint& place) = 0; // `place` in global coordinates
    virtual void RowMenu(const QPoint& place) = 0;                // for what is selected; in global coordinates
    virtual void DoubleClicked(qint64 part) = 0;                  // which the first press met; 0: none
    virtual void DragSelection() = 0;                             // returns when the drag has ended
    virtual void ListPainted() = 0;
};

// A frame inside the viewport of a view that has the focus, so that it can be seen from afar.
void PaintFocus(QAbstractScrollArea& view);

class CPartListView : public QAbstractItemView {
public:
    CPartListView(IPartListEvents& events, QWidget* parent);
    ~CPartListView() override;
    CPartListView(const CPartListView&) = delete;
    CPartListView& operator=(const CPartListView&) = delete;

    [[nodiscard]] QHeaderView& Header() const { return *header_; }
    // A button is held: what would move the rows under the pointer has to wait.
    [[nodiscard]] bool Pressed() const { return pressed_; }
    void SetRowHeight(int height);
    [[nodiscard]] int RowHeight() const { return row_height_; }
    // Shown in place of rows while there are none.
    void SetEmptyText(const QString& text);
    [[nodiscard]] const QString& EmptyText() const { return empty_text_; }
    void UpdateRange() { updateGeometries(); } // of what can be scrolled to, before the next paint
    void SetFaded(bool faded);                 // what is shown may be out of date
    void TakeKey(QKeyEvent* event);            // from the search box
    // By an assistive tool. False where nothing was done, such as behind a window that waits for an answer.
    bool SelectRow(int row, bool selected);
    // Rows that lead away from here, each when it is chosen: by a click or the space bar. Moving on selects nothing.
    void SetResults(bool results) { results_ = results; }

    // The part from which Shift extends a selection; 0: none. Whoever brings another list says where it stands by then,
    // -1 for nowhere.
    [[nodiscard]] qint64 Anchor() const { return anchor_; }
    void KeepAnchor(int row) { kept_anchor_ = row; }

    void setModel(QAbstractItemModel* model) override;
    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;
    void keyboardSearch(const QString& /*text*/) override {}
    void selectAll() override {} // the dialog's

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    [[nodiscard]] int horizontalOffset() const override;
    [[nodiscard]] int verticalOffset() const override;
    [[nodiscard]] bool isIndexHidden(const QModelIndex& index) const override;
    [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                                       const QEvent* event) const override;
    void setSelection(const QRect& area, QItemSelectionModel::SelectionFlags command) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void updateGeometries() override;
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;

private:
    // A press that selects, chooses, drags or scrolls when more of it is known.
    struct Undecided {
        QPoint place;
        int row; // -1: beside the rows
        bool finger;
    };

    void PressUndecided(const QModelIndex& index, const QMouseEvent& event);
    void Decide(const QPoint& moved_to);
    void ReleaseOn(const QModelIndex& index);
    void FingerHeld();
    void TakeAnchor(Qt::KeyboardModifiers modifiers);
    [[nodiscard]] qint64 PartAt(const QModelIndex& index) const;
    void PaintRow(QPainter& painter, int row);
    void PaintEmpty(QPainter& painter) const;
    [[nodiscard]] int RowAt(int y) const; // as if rows went on for ever
    [[nodiscard]] int Rows() const;
    [[nodiscard]] int RowsInView() const;
    [[nodiscard]] int FirstColumn() const; // the leftmost that is shown

    IPartListEvents& events_;
    QHeaderView* header_;
    int row_height_ = 36;
    int hovered_row_ = -1;
    bool pressed_ = false;
    bool results_ = false;
    qint64 pressed_part_ = 0;
    qint64 anchor_ = 0;
    int kept_anchor_ = -1; // its row, where the toolkit has lost it
    std::optional<Undecided> undecided_;
    QTimer hold_; // of a finger
    QString empty_text_;
    bool faded_ = false;
};

} // namespace partkeep
