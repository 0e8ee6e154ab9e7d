// The initial state of controls in a dialog template, as resource editors store it beside the template.
#pragma once

#include <windows.h>

#include <optional>

namespace partkeep {

// In 1/100 mm; nothing where the module has none for this control.
[[nodiscard]] std::optional<SIZE> InitialExtent(HMODULE module, int dialog, int control);

} // namespace partkeep
