#include "desktop/pane/part_row_delegate.h"

#include "desktop/pane/part_pictures.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
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
    const bool beside_picture = pictures_ && index.column() == 0;
    return cell.adjusted(beside_picture ? picture_size + 2 * picture_margin : text_margin, 0, -text_margin, 0);
}

void CPartRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (pictures_ && index.column() == 0) {
        const auto picture = index.data(Qt::DecorationRole).value<QPixmap>();
        const QSize size = picture.deviceIndependentSize().toSize();
        QRect place(QPoint(), size);
        place.moveCenter(QPoint(option.rect.left() + picture_margin + picture_size / 2, option.rect.center().y()));
        painter->drawPixmap(place.intersected(option.rect).topLeft(), picture);
    }
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QRect area = TextArea(option.rect, index);
    const QVariant alignment = index.data(Qt::TextAlignmentRole);
    painter->setFont(option.font);
    painter->setPen(option.palette.color(GroupOf(option), selected ? QPalette::HighlightedText : QPalette::Text));
    painter->drawText(area, alignment.isValid() ? alignment.toInt() : int(Qt::AlignLeft | Qt::AlignVCenter),
                      option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, area.width()));
}

bool CPartRowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                                 const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const QString text = index.data().toString();
    const bool cut = view->fontMetrics().horizontalAdvance(text) > TextArea(view->visualRect(index), index).width();
    QToolTip::showText(event->globalPos(), cut ? text : QString(), view);
    return true;
}

} // namespace partkeep
