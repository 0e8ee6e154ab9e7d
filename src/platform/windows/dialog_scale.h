// Between the logic's pixels, which are those of 96 dpi, and the pixels of the screen.
#pragma once

#include "platform/geometry.h"

#include <windows.h>

namespace partkeep {

inline constexpr int logical_dpi = 96;

[[nodiscard]] inline int ScreenDpi()
{
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : logical_dpi;
}

[[nodiscard]] inline int ToDevice(int logical)
{
    return MulDiv(logical, ScreenDpi(), logical_dpi);
}

[[nodiscard]] inline int ToLogical(int device)
{
    return MulDiv(device, logical_dpi, ScreenDpi());
}

[[nodiscard]] inline RECT ToDevice(const Rect& area)
{
    return {ToDevice(area.left), ToDevice(area.top), ToDevice(area.right), ToDevice(area.bottom)};
}

[[nodiscard]] inline Rect ToLogical(const RECT& area)
{
    return {ToLogical(static_cast<int>(area.left)), ToLogical(static_cast<int>(area.top)),
            ToLogical(static_cast<int>(area.right)), ToLogical(static_cast<int>(area.bottom))};
}

[[nodiscard]] inline RECT ClientOf(HWND window)
{
    RECT client{};
    if (window != nullptr) {
        GetClientRect(window, &client);
    }
    return client;
}

// From the client area of one window to that of another.
[[nodiscard]] inline Rect MapArea(HWND from, HWND to, const Rect& area)
{
    RECT device = ToDevice(area);
    MapWindowPoints(from, to, reinterpret_cast<POINT*>(&device), 2);
    return ToLogical(device);
}

// Moves a window so that its client area comes to lie there, in the coordinates of its parent.
inline void MoveClientArea(HWND window, const Rect& area, bool repaint)
{
    RECT device = ToDevice(area);
    AdjustWindowRectEx(&device, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    MoveWindow(window, device.left, device.top, device.right - device.left, device.bottom - device.top,
               repaint ? TRUE : FALSE);
}

} // namespace partkeep
