// The controls of a dialog window by id. Borrows the window's frame and its set of controls.
#pragma once

#include "desktop/control_set.h"
#include "desktop/dialog_frame.h"
#include "platform/dialog_window.h"

#include <QPointer>

#include <memory>

namespace partkeep {

[[nodiscard]] std::unique_ptr<IDialogFields> MakeQtDialogFields(const QPointer<CDialogFrame>& frame,
                                                                CControlSet& controls);

} // namespace partkeep
