// One call through the automation interface with the argument types that the caller names, by-reference ones as
// plain pointers.
#pragma once

#include "platform/control.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <span>

namespace partkeep {

// monostate when the object refuses, or answers something that cannot become the type asked for.
[[nodiscard]] ControlResult CallDispatch(IDispatch& object, std::int32_t dispatch_id, InvokeKind kind,
                                         std::span<const ControlArgument> arguments, ControlType result);

} // namespace partkeep
