// The user's input as events of the toolkit.
#pragma once

#include <QEvent>

namespace partkeep {

[[nodiscard]] bool IsInput(QEvent::Type type);

// Throws away what the user did before this moment and no window has seen yet: it was meant for a window that has
// just been closed, and would reach the one beneath.
void DropWaitingInput();

} // namespace partkeep
