// The close box of a window on an X server without a window manager. Apart, since its headers define short names.
#pragma once

namespace partkeep {

// Sends what a window manager sends when the box is pressed. The server has it when this returns.
void AskToClose(unsigned long window);

} // namespace partkeep
