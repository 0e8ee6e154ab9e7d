// What holds of every window: what a screen reader meets in it, and that its texts can be read.
#pragma once

#include <QStringList>
#include <QWidget>

namespace partkeep {

// In the reader's order, "Role name" of each element that is shown, the cells of lists included.
void Speak(QWidget& window, QStringList& spoken);

// 4.5 to 1 for the texts of all that is in it, shown or not.
void ExpectReadable(QWidget& window);

} // namespace partkeep
