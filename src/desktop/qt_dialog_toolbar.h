// The tool bar of a dialog window. Borrows the window's frame and what it tells its events to.
#pragma once

#include "desktop/dialog_frame.h"
#include "desktop/qt_dialog_events.h"
#include "platform/dialog_window.h"

#include <QPointer>

#include <memory>

namespace partkeep {

[[nodiscard]] std::unique_ptr<IToolbar> MakeQtDialogToolbar(const QPointer<CDialogFrame>& frame,
                                                            CQtDialogEvents& events);

} // namespace partkeep
