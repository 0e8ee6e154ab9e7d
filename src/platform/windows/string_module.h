// The module whose string resources are the string table.
#pragma once

namespace partkeep {

inline constexpr wchar_t component_module_name[] = L"ORVICPartkeepRead";

// Process-wide; the component's own module to begin with. Null is the program itself. Borrowed, not copied.
void SetStringModule(const wchar_t* name);

} // namespace partkeep
