// What the library writes to the registry about itself, and takes away again.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace partkeep {

class CComponentModule;

// Runs the registration script, then registers the type library. The status of the first step that fails.
HRESULT RegisterComponent(const CComponentModule& module);

// Runs every step, whatever the one before it says.
void UnregisterComponent(const CComponentModule& module);

// A path as it may stand between single quotes in the script.
[[nodiscard]] std::wstring QuotedForScript(std::wstring_view path);

} // namespace partkeep
