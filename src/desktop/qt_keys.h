// Key events as the dialogs' logic knows them.
#pragma once

#include "platform/dialog_window.h"

class QKeyEvent;

namespace partkeep {

// By virtual key code; key 0 for a key that has none here. With Alt held a key is a menu's or an access key and
// no key press at all: key 0 too.
[[nodiscard]] KeyPress ToKeyPress(const QKeyEvent& event);

// True for the keys that belong to the dialog wherever the focus is: no shortcut may take them first.
[[nodiscard]] bool IsDialogKey(const QKeyEvent& event);

} // namespace partkeep
