// The controls of a dialog window by id. Borrows the place of the window's handle, which is null while none exists.
#pragma once

#include "platform/dialog_window.h"

#include <windows.h>

#include <memory>

namespace partkeep {

// Sends a message to a control of a dialog. 0 where there is none.
LRESULT SendToControl(HWND dialog, int id, UINT message, WPARAM word = 0, LPARAM value = 0);

[[nodiscard]] bool IsPushButton(HWND window);

// The child of the dialog that has the focus or holds it; null for none.
[[nodiscard]] HWND FocusedChildOf(HWND dialog);

[[nodiscard]] std::unique_ptr<IDialogFields> MakeWinDialogFields(const HWND& window);

} // namespace partkeep
