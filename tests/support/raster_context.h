// A device context that keeps its picture and notes each call as a line of text. It decodes whole bitmaps bit by
// bit and shares nothing with the decoder that draws on a screen.
#pragma once

#include "controls/dib_view.h"

#include <array>
#include <string>
#include <vector>

namespace partkeep {

inline constexpr std::uint32_t untouched = 0xFFFFFFFF; // no colour: nothing was drawn there

struct Picture {
    Picture(int columns, int rows)
        : width(columns), height(rows),
          pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), untouched)
    {
    }
    [[nodiscard]] std::uint32_t& At(int x, int y) { return pixels[static_cast<std::size_t>(y * width + x)]; }

    int width;
    int height;
    std::vector<std::uint32_t> pixels; // 0xRRGGBB, top row first
};

// Shares nothing with the code that reads headers, either.
[[nodiscard]] Picture DecodePlainly(const DibView& bitmap);

class RasterContext : public IDeviceContext {
public:
    RasterContext(int width, int height) : canvas(width, height) {}

    PaletteHandle SelectPalette(PaletteHandle palette, bool background) override;
    void SetStretchBltMode(int mode) override { Note("SetStretchBltMode", {mode}); }
    int SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                          unsigned first_line, unsigned line_count, const DibView& bitmap) override;
    int StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap) override;
    void FillSolidRect(const Rect& area, ColorRef color) override
    {
        Note("FillSolidRect", {area.left, area.top, area.right, area.bottom, color});
    }
    [[nodiscard]] ColorRef GetSysColor(int index) const override { return 0x100U + static_cast<ColorRef>(index); }

    // Stands for a palette; noted by its number.
    [[nodiscard]] static PaletteHandle Palette(std::size_t number) { return &palettes.at(number); }

    Picture canvas;
    std::vector<std::string> calls;
    PaletteHandle selected = Palette(3);

private:
    static inline std::array<char, 8> palettes;

    void Note(std::string call, std::initializer_list<long long> numbers);
    void Copy(const Rect& target, const Rect& source, const DibView& bitmap);
};

} // namespace partkeep
