// Between the logic's pixels, which are those of 96 dpi, and the pixels of one window.
#pragma once

#include "platform/geometry.h"

#include <windows.h>

namespace partkeep {

inline constexpr int logical_dpi = 96;

// The density by which the system lays out dialogs where this window is. How much of the screen's own density a
// process sees is its host's decision; it is asked for each time, and never set.
[[nodiscard]] int DpiOf(HWND window);

class CDialogScale {
public:
    explicit CDialogScale(HWND window) : dpi_(DpiOf(window)) {}

    [[nodiscard]] bool IsPlain() const { return dpi_ == logical_dpi; }
    [[nodiscard]] int ToDevice(int logical) const { return MulDiv(logical, dpi_, logical_dpi); }
    [[nodiscard]] int ToLogical(int device) const { return MulDiv(device, logical_dpi, dpi_); }

    // Sizes come out the same wherever an area lies.
    [[nodiscard]] RECT ToDevice(const Rect& area) const
    {
        const int left = ToDevice(area.left);
        const int top = ToDevice(area.top);
        return {left, top, left + ToDevice(area.Width()), top + ToDevice(area.Height())};
    }
    [[nodiscard]] Rect ToLogical(const RECT& area) const
    {
        const int left = ToLogical(static_cast<int>(area.left));
        const int top = ToLogical(static_cast<int>(area.top));
        return {left, top, left + ToLogical(static_cast<int>(area.right - area.left)),
                top + ToLogical(static_cast<int>(area.bottom - area.top))};
    }

private:
    int dpi_;
};

[[nodiscard]] inline RECT ClientOf(HWND window)
{
    RECT client{};
    if (window != nullptr) {
        GetClientRect(window, &client);
    }
    return client;
}

[[nodiscard]] inline Rect LogicalClientOf(HWND window)
{
    return CDialogScale(window).ToLogical(ClientOf(window));
}

// From the client area of one window to that of another.
[[nodiscard]] inline Rect MapArea(HWND from, HWND to, const Rect& area)
{
    const CDialogScale scale(to);
    RECT device = scale.ToDevice(area);
    MapWindowPoints(from, to, reinterpret_cast<POINT*>(&device), 2);
    return scale.ToLogical(device);
}

// Moves a window so that its client area comes to lie there, in the coordinates of its parent.
inline void MoveClientArea(HWND window, const Rect& area, bool repaint)
{
    RECT device = CDialogScale(window).ToDevice(area);
    AdjustWindowRectEx(&device, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    MoveWindow(window, device.left, device.top, device.right - device.left, device.bottom - device.top,
               repaint ? TRUE : FALSE);
}

} // namespace partkeep
