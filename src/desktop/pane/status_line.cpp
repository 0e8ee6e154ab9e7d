#include "desktop/pane/status_line.h"

#include <QPainter>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int bar_height = 3;
constexpr int text_gap = 2;

} // namespace

CStatusLine::CStatusLine()
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setContentsMargins(0, 0, 0, bar_height + text_gap);
}

void CStatusLine::ShowShare(double share)
{
    share_ = std::clamp(share, 0.0, 1.0);
    update();
}

void CStatusLine::paintEvent(QPaintEvent* event)
{
    QLabel::paintEvent(event);
    if (share_ > 0) {
        QPainter painter(this);
        const QRect whole(0, height() - bar_height, width(), bar_height);
        painter.fillRect(whole, palette().color(QPalette::Mid));
        painter.fillRect(QRect(whole.topLeft(), QSize(qRound(share_ * width()), bar_height)),
                         palette().color(QPalette::Highlight));
    }
}

} // namespace partkeep
