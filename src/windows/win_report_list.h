// The report lists of a dialog window by id. Borrows the place of the window's handle, which is null while none exists.
#pragma once

#include "platform/dialog_window.h"

#include <windows.h>

#include <memory>

namespace partkeep {

[[nodiscard]] std::unique_ptr<IReportList> MakeWinReportList(const HWND& window);

} // namespace partkeep
