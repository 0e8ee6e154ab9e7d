#include "desktop/pane/pane_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPolygonF>

namespace partkeep {

namespace {

constexpr int drawn_size = 24; // the unit of the drawings below

void DrawServer(QPainter& painter, bool away)
{
    painter.drawRoundedRect(QRectF(3.5, 4.5, 17, 6.5), 1.5, 1.5);
    painter.drawRoundedRect(QRectF(3.5, 13, 17, 6.5), 1.5, 1.5);
    painter.drawLine(QPointF(6.5, 7.75), QPointF(10, 7.75));
    painter.drawLine(QPointF(6.5, 16.25), QPointF(10, 16.25));
    if (away) {
        painter.drawLine(QPointF(2, 22), QPointF(22, 2));
        return;
    }
    painter.drawPoint(QPointF(17, 7.75));
    painter.drawPoint(QPointF(17, 16.25));
}

void DrawFolder(QPainter& painter, const QPalette& palette)
{
    QPainterPath path;
    path.moveTo(3, 19);
    path.lineTo(3, 5.5);
    path.lineTo(9, 5.5);
    path.lineTo(11.5, 8);
    path.lineTo(21, 8);
    path.lineTo(21, 19);
    path.closeSubpath();
    painter.setBrush(IsDark(palette) ? QColor(176, 140, 60) : QColor(245, 208, 120));
    painter.drawPath(path);
}

void DrawStar(QPainter& painter)
{
    const QPolygonF star({{12, 2.5},
                          {14.9, 8.9},
                          {21.8, 9.6},
                          {16.6, 14.3},
                          {18.1, 21.1},
                          {12, 17.6},
                          {5.9, 21.1},
                          {7.4, 14.3},
                          {2.2, 9.6},
                          {9.1, 8.9}});
    painter.drawPolygon(star);
}

void DrawSearch(QPainter& painter)
{
    painter.drawEllipse(QRectF(4, 4, 11, 11));
    painter.drawLine(QPointF(13.8, 13.8), QPointF(20, 20));
}

void DrawClear(QPainter& painter)
{
    painter.drawLine(QPointF(6, 6), QPointF(18, 18));
    painter.drawLine(QPointF(18, 6), QPointF(6, 18));
}

void DrawColumns(QPainter& painter)
{
    painter.drawRect(QRectF(3.5, 4.5, 17, 15));
    painter.drawLine(QPointF(9.2, 4.5), QPointF(9.2, 19.5));
    painter.drawLine(QPointF(14.8, 4.5), QPointF(14.8, 19.5));
    painter.drawLine(QPointF(3.5, 8.5), QPointF(20.5, 8.5));
}

void DrawExport(QPainter& painter)
{
    painter.drawPolyline(QPolygonF({{4, 13}, {4, 20}, {20, 20}, {20, 13}}));
    painter.drawLine(QPointF(12, 3.5), QPointF(12, 15));
    painter.drawPolyline(QPolygonF({{7.5, 10.5}, {12, 15}, {16.5, 10.5}}));
}

void DrawNarrow(QPainter& painter)
{
    painter.drawPolygon(QPolygonF({{3.5, 4.5}, {20.5, 4.5}, {14, 12.5}, {14, 20}, {10, 17.5}, {10, 12.5}}));
}

void DrawWarning(QPainter& painter)
{
    painter.setBrush(QColor(240, 170, 0));
    painter.setPen(QPen(QColor(60, 40, 0), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolygon(QPolygonF({{12, 3}, {22, 20.5}, {2, 20.5}}));
    painter.drawLine(QPointF(12, 9), QPointF(12, 14.5));
    painter.drawPoint(QPointF(12, 17.6));
}

void Draw(QPainter& painter, PaneIcon icon, const QPalette& palette)
{
    switch (icon) {
    case PaneIcon::Server:
    case PaneIcon::ServerAway:
        return DrawServer(painter, icon == PaneIcon::ServerAway);
    case PaneIcon::Folder:
        return DrawFolder(painter, palette);
    case PaneIcon::Search:
        return DrawSearch(painter);
    case PaneIcon::Clear:
        return DrawClear(painter);
    case PaneIcon::Star:
        return DrawStar(painter);
    case PaneIcon::Columns:
        return DrawColumns(painter);
    case PaneIcon::Export:
        return DrawExport(painter);
    case PaneIcon::Narrow:
        return DrawNarrow(painter);
    case PaneIcon::Warning:
        return DrawWarning(painter);
    }
}

QPixmap DrawPixmap(PaneIcon icon, const QPalette& palette, QPalette::ColorRole role, int scale)
{
    QPixmap pixmap(drawn_size * scale, drawn_size * scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(QPen(palette.color(role), 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    Draw(painter, icon, palette);
    return pixmap;
}

} // namespace

bool IsDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QIcon DrawPaneIcon(PaneIcon icon, const QPalette& palette)
{
    QIcon result;
    for (const int scale : {1, 2, 4}) {
        result.addPixmap(DrawPixmap(icon, palette, QPalette::Text, scale));
        result.addPixmap(DrawPixmap(icon, palette, QPalette::HighlightedText, scale), QIcon::Selected);
    }
    return result;
}

} // namespace partkeep
