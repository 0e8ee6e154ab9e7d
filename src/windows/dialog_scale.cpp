#include "windows/dialog_scale.h"

namespace partkeep {

namespace {

template <class Signature>
Signature* SystemFunction(const char* name)
{
    HMODULE library = GetModuleHandleW(L"user32.dll");
    return reinterpret_cast<Signature*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// Dialogs follow their screen only where the process has the second kind of awareness per screen; everywhere else all
// of them are laid out by the density of the main screen. 0 for such a window, and before Windows 10.
int DpiOfItsScreen(HWND window)
{
    auto* context_of = SystemFunction<HANDLE WINAPI(HWND)>("GetWindowDpiAwarenessContext");
    auto* are_equal = SystemFunction<BOOL WINAPI(HANDLE, HANDLE)>("AreDpiAwarenessContextsEqual");
    auto* dpi_of = SystemFunction<UINT WINAPI(HWND)>("GetDpiForWindow");
    HANDLE per_screen = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-4));
    const bool follows = window != nullptr && context_of != nullptr && are_equal != nullptr && dpi_of != nullptr &&
                         are_equal(context_of(window), per_screen) != FALSE;
    return follows ? static_cast<int>(dpi_of(window)) : 0;
}

} // namespace

int DpiOf(HWND window)
{
    if (const int dpi = DpiOfItsScreen(window); dpi > 0) {
        return dpi;
    }
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : logical_dpi;
}

} // namespace partkeep
