// A sunken child window that the dialog's logic paints.
#pragma once

#include "platform/dialog_window.h"

#include <windows.h>

#include <memory>

namespace partkeep {

// Null when the window cannot be made. `area` in device pixels.
[[nodiscard]] std::unique_ptr<IPanelWindow> MakePanel(HINSTANCE module, HWND dialog, int id, const RECT& area);

// All that `dialog` has. A dialog that clips its children is invalidated without them.
void InvalidatePanels(HWND dialog);

} // namespace partkeep
