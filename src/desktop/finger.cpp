#include "desktop/finger.h"

#include <QAbstractScrollArea>
#include <QInputDevice>
#include <QMouseEvent>
#include <QScroller>
#include <QStyle>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int least_side = 24;
constexpr int finger_side = 44;

bool TakesTouch()
{
    const QList<const QInputDevice*> devices = QInputDevice::devices();
    return std::ranges::any_of(
        devices, [](const QInputDevice* device) { return device->type() == QInputDevice::DeviceType::TouchScreen; });
}

} // namespace

int FingerSide(int by_mouse)
{
    return std::max(by_mouse, TakesTouch() ? finger_side : least_side);
}

bool IsOfFinger(const QMouseEvent& event)
{
    return event.source() == Qt::MouseEventSynthesizedByQt;
}

void ScrollByFinger(QAbstractScrollArea& area)
{
    QScroller::grabGesture(area.viewport(), QScroller::TouchGesture);
    QScroller* scroller = QScroller::scroller(area.viewport());
    QScrollerProperties motion = scroller->scrollerProperties();
    for (const auto bounce :
         {QScrollerProperties::HorizontalOvershootPolicy, QScrollerProperties::VerticalOvershootPolicy}) {
        motion.setScrollMetric(bounce, QScrollerProperties::OvershootAlwaysOff);
    }
    if (area.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &area) == 0) {
        motion.setScrollMetric(QScrollerProperties::MaximumVelocity, 0);
    }
    scroller->setScrollerProperties(motion);
}

} // namespace partkeep
