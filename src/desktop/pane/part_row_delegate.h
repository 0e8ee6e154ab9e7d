// Draws the cells of the part list on the row that the view has painted.
#pragma once

#include <QRect>
#include <QStyledItemDelegate>

namespace partkeep {

class CPartRowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void ShowPictures(bool shown) { pictures_ = shown; }
    [[nodiscard]] bool PicturesShown() const { return pictures_; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    // A tool tip only for a text that is cut.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    [[nodiscard]] QRect TextArea(const QRect& cell, const QModelIndex& index) const;

    bool pictures_ = true;
};

} // namespace partkeep
