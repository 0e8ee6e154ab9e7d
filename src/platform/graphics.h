// Drawing of device-independent bitmaps: the calls that the panel and the bitmap helpers ask of a device
// context, with the meaning and the results of the Windows calls of the same names.
#pragma once

#include "platform/geometry.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace partkeep {

using PaletteHandle = void*;    // null: none
using ColorRef = std::uint32_t; // 0x00BBGGRR

inline constexpr int stretch_mode_color_on_color = 3; // COLORONCOLOR
inline constexpr int system_color_3d_face = 15;       // COLOR_3DFACE

// A bitmap as it lies in memory: header with colour table, and pixels. The extents say how far each may be
// read; whoever fills this in has checked that the header's figures fit them.
struct DibView {
    std::span<const std::byte> header;
    std::span<const std::byte> pixels;
};

class IDeviceContext {
public:
    virtual ~IDeviceContext() = default;

    // The palette that was selected before.
    virtual PaletteHandle SelectPalette(PaletteHandle palette, bool background) = 0;

    virtual void SetStretchBltMode(int mode) = 0;

    // Copies without scaling; what lies outside the source bitmap stays as it is. Number of scan lines set, 0 on
    // failure. Source y and scan lines count from the bottom row, also where the top row is stored first.
    virtual int SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                                  unsigned first_line, unsigned line_count, const DibView& bitmap) = 0;

    // Copies and scales (SRCCOPY). Number of the bitmap's scan lines, 0 on failure. Source y as above; a negative
    // width or height of one of the rectangles mirrors.
    virtual int StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap) = 0;

    virtual void FillSolidRect(const Rect& area, ColorRef color) = 0;

    [[nodiscard]] virtual ColorRef GetSysColor(int index) const = 0;
};

struct PaletteEntry {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t flags = 0;
};

// Receives a palette, as the host's palette object does.
class IPalette {
public:
    virtual ~IPalette() = default;

    // Makes the palette (version 0x300) and attaches it; false when the platform refuses.
    virtual bool CreatePalette(std::span<const PaletteEntry> entries) = 0;
    [[nodiscard]] virtual PaletteHandle Handle() const = 0;
};

} // namespace partkeep
