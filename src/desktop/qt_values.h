// The core's values as Qt's and back: rectangles, whose right and bottom edges differ by one.
#pragma once

#include "platform/geometry.h"

#include <QRect>

namespace partkeep {

inline QRect ToQRect(const Rect& area)
{
    return {area.left, area.top, area.Width(), area.Height()};
}

inline Rect ToRect(const QRect& area)
{
    return {area.left(), area.top(), area.left() + area.width(), area.top() + area.height()};
}

} // namespace partkeep
