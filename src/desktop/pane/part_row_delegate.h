// Draws the cells of the part list on the row that the view has painted: picture, text with the hits of a search, and
// the folder of a result.
#pragma once

#include "desktop/pane/search_hits.h"

#include <QRect>
#include <QStringList>
#include <QStyledItemDelegate>

namespace partkeep {

class CPartRowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void SetPictureSide(int side) { picture_side_ = side; } // logical pixels; 0: no pictures
    [[nodiscard]] int PictureSide() const { return picture_side_; }
    void SetSearchWords(const QStringList& words) { words_ = words; }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    // A tool tip only for a text that is cut.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    [[nodiscard]] QRect TextArea(const QRect& cell, const QModelIndex& index) const;

    void PaintPicture(QPainter& painter, const QRect& cell, const QModelIndex& index) const;
    void PaintText(QPainter& painter, const QRect& area, const QString& text, const QModelIndex& index) const;

    int picture_side_ = 0;
    QStringList words_;
};

} // namespace partkeep
