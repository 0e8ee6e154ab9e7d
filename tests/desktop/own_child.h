// Finds a widget of one of our classes, which have no names for the toolkit to find them by.
#pragma once

#include <QWidget>

namespace partkeep {

// The first that there is; there must be one.
template <class Widget>
Widget& OwnChild(const QWidget& parent)
{
    Widget* found = nullptr;
    for (QWidget* child : parent.findChildren<QWidget*>()) {
        found = found == nullptr ? dynamic_cast<Widget*>(child) : found;
    }
    return *found;
}

} // namespace partkeep
