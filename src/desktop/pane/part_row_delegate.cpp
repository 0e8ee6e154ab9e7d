#include "desktop/pane/part_row_delegate.h"

#include "desktop/pane/part_list_model.h"
#include "desktop/readable_colours.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QTextDocument>
#include <QToolTip>

namespace partkeep {

namespace {

constexpr int text_margin = 4; // as the header has it
constexpr int picture_margin = 5;

QPalette::ColorGroup GroupOf(const QStyleOptionViewItem& option)
{
    if (!option.state.testFlag(QStyle::State_Enabled)) {
        return QPalette::Disabled;
    }
    return option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

} // namespace

QRect CPartRowDelegate::TextArea(const QRect& cell, const QModelIndex& index) const
{
    const bool beside_picture = picture_side_ > 0 && index.column() == 0;
    return cell.adjusted(beside_picture ? picture_side_ + 2 * picture_margin : text_margin, 0, -text_margin, 0);
}

void CPartRowDelegate::PaintPicture(QPainter& painter, const QRect& cell, const QModelIndex& index) const
{
    const auto picture = index.data(Qt::DecorationRole).value<QPixmap>();
    QRect place(QPoint(), picture.deviceIndependentSize().toSize());
    place.moveCenter(QPoint(cell.left() + picture_margin + picture_side_ / 2, cell.center().y()));
    painter.drawPixmap(place.intersected(cell).topLeft(), picture);
}

// A hit has a ground of its own, on which its letters can be read in every theme and on a selected row alike.
void CPartRowDelegate::PaintText(QPainter& painter, const QRect& area, const QString& text,
                                 const QModelIndex& index) const
{
    const QVariant alignment = index.data(Qt::TextAlignmentRole);
    const int place = alignment.isValid() ? alignment.toInt() : int(Qt::AlignLeft | Qt::AlignVCenter);
    const QFontMetrics metrics = painter.fontMetrics();
    const QString shown = metrics.elidedText(text, Qt::ElideRight, area.width());
    painter.drawText(area, place, shown);
    if (index.column() == static_cast<int>(PartColumn::Thickness)) {
        return;
    }
    for (const SearchHit& hit : FindHits(shown, words_)) {
        const int from = area.left() + metrics.horizontalAdvance(shown.left(hit.start));
        const int to = area.left() + metrics.horizontalAdvance(shown.left(hit.start + hit.length));
        const QRect ground(from, area.center().y() - metrics.height() / 2, to - from, metrics.height());
        painter.save(); // the next ground lies outside this one
        painter.fillRect(ground, QColor(255, 214, 92));
        painter.setClipRect(ground, Qt::IntersectClip);
        painter.setPen(Qt::black);
        painter.drawText(area, place, shown);
        painter.restore();
    }
}

void CPartRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (picture_side_ > 0 && index.column() == 0) {
        PaintPicture(*painter, option.rect, index);
    }
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QColor text = option.palette.color(GroupOf(option), selected ? QPalette::HighlightedText : QPalette::Text);
    QRect area = TextArea(option.rect, index);
    painter->setFont(option.font);
    const QString folder = index.data(folder_role).toString();
    if (!folder.isEmpty()) {
        const QRect below(area.left(), area.center().y() + 1, area.width(), option.fontMetrics.height());
        area = QRect(area.left(), area.center().y() - option.fontMetrics.height(), area.width(), below.height());
        painter->setPen(selected ? text : FaintText(text, option.palette.color(QPalette::Base)));
        painter->drawText(below, Qt::AlignLeft | Qt::AlignVCenter,
                          option.fontMetrics.elidedText(folder, Qt::ElideMiddle, below.width()));
    }
    painter->setPen(text);
    PaintText(*painter, area, index.data().toString(), index);
}

bool CPartRowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                                 const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const QString text = index.data().toString();
    const QString folder = index.data(folder_role).toString();
    const int room = TextArea(view->visualRect(index), index).width();
    const auto is_cut = [&](const QString& line) { return view->fontMetrics().horizontalAdvance(line) > room; };
    const QString whole = folder.isEmpty() ? text : text + u'\n' + folder;
    const QString plain = Qt::mightBeRichText(whole) ? Qt::convertFromPlainText(whole) : whole;
    QToolTip::showText(event->globalPos(), is_cut(text) || is_cut(folder) ? plain : QString(), view);
    return true;
}

} // namespace partkeep
