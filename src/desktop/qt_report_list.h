// The report lists of a dialog window by id. Borrows the window's set of controls.
#pragma once

#include "desktop/control_set.h"
#include "platform/dialog_window.h"

#include <memory>

namespace partkeep {

[[nodiscard]] std::unique_ptr<IReportList> MakeQtReportList(CControlSet& controls);

} // namespace partkeep
