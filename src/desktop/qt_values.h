// The core's values as Qt's and back: UTF-16 text and rectangles, whose right and bottom edges differ by one.
#pragma once

#include "partlibrary/library/library_text.h"
#include "platform/geometry.h"

#include <QRect>
#include <QString>

#include <string>
#include <string_view>

namespace partkeep {

inline QString ToQString(std::u16string_view text)
{
    return FromWide(text);
}

inline std::u16string ToText(const QString& text)
{
    return ToWide(text);
}

inline QRect ToQRect(const Rect& area)
{
    return {area.left, area.top, area.Width(), area.Height()};
}

inline Rect ToRect(const QRect& area)
{
    return {area.left(), area.top(), area.left() + area.width(), area.top() + area.height()};
}

} // namespace partkeep
