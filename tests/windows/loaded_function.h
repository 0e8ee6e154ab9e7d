// A function of a loaded library by name, with the type that the caller knows it has.
#pragma once

#include <windows.h>

namespace partkeep {

template <class Function>
[[nodiscard]] Function LoadedFunction(HMODULE library, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

} // namespace partkeep
