// The drawing calls on a GDI device context, and a palette of GDI. Neither owns the device context.
#pragma once

#include "platform/graphics.h"

#include <windows.h>

#include <span>
#include <utility>

namespace partkeep {

class CGdiDeviceContext final : public IDeviceContext {
public:
    explicit CGdiDeviceContext(HDC context) : context_(context) {}

    PaletteHandle SelectPalette(PaletteHandle palette, bool background) override;
    void SetStretchBltMode(int mode) override;
    int SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                          unsigned first_line, unsigned line_count, const DibView& bitmap) override;
    int StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap) override;
    void FillSolidRect(const Rect& area, ColorRef color) override; // leaves the colour as background colour
    [[nodiscard]] ColorRef GetSysColor(int index) const override;

private:
    HDC context_;
};

// Owns its palette. A second CreatePalette replaces the first one; no device context may have it selected.
class CGdiPalette final : public IPalette {
public:
    CGdiPalette() = default;
    ~CGdiPalette() override;
    CGdiPalette(const CGdiPalette&) = delete;
    CGdiPalette& operator=(const CGdiPalette&) = delete;

    bool CreatePalette(std::span<const PaletteEntry> entries) override;
    [[nodiscard]] PaletteHandle Handle() const override { return palette_; }
    [[nodiscard]] HPALETTE Detach() { return std::exchange(palette_, nullptr); } // the caller's from now on

private:
    HPALETTE palette_ = nullptr;
};

} // namespace partkeep
