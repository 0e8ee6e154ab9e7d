// What holds of every window: what a screen reader meets in it, that its texts can be read, do not overlap or lack
// room, and are of one language.
#pragma once

#include <QAccessible>
#include <QStringList>
#include <QWidget>

namespace partkeep {

// In the reader's order, "Role name" of each element that is shown, the cells of lists included.
void Speak(QAccessibleInterface& element, QStringList& spoken);

// 4.5 to 1 for the texts of all that is in it, shown or not.
void ExpectReadable(QWidget& window);

void ExpectGoodLooks(QWidget& window);

// Of all windows that there are, by the number of the language.
void ExpectLanguage(int language);
[[nodiscard]] bool IsOfLanguage(QString text, int language);

} // namespace partkeep
