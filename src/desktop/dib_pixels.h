// Reads the colours of a bitmap in memory pixel by pixel, straight from its bytes: every depth, both kinds of
// header, colour masks, and run-length coding, which alone is expanded first. Borrows the bytes.
#pragma once

#include "controls/dib_view.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace partkeep {

class CDibPixels {
public:
    // `bitmap` as MakeDibView gives it.
    explicit CDibPixels(const DibView& bitmap);

    [[nodiscard]] int Width() const { return figures_.width; }
    [[nodiscard]] int Height() const { return figures_.height; }

    // 0xFFRRGGBB, or 0 where run-length coding leaves a pixel out. x from 0 to Width() - 1; y counts from the
    // bottom row, 0 to Height() - 1. A colour number beyond the colour table is black.
    [[nodiscard]] std::uint32_t At(int x, int y) const;

private:
    // Where a colour's share of a pixel lies.
    struct Channel {
        explicit Channel(std::uint32_t bits_of_pixel = 0);
        [[nodiscard]] std::uint32_t Value(std::uint32_t pixel) const; // 0 to 255

        std::uint32_t mask;
        int shift;
        int length;
    };

    [[nodiscard]] std::uint32_t TableColor(unsigned index) const;
    [[nodiscard]] std::uint32_t MaskedColor(const std::byte* pixel) const;
    void ReadTable(const DibView& bitmap);
    void ReadChannels(const DibView& bitmap);

    DibFigures figures_;
    std::span<const std::byte> bytes_;
    std::vector<std::uint32_t> table_;
    std::array<Channel, 3> channels_;   // red, green, blue
    std::vector<std::int16_t> indexes_; // of run-length coding, bottom row first; -1 is left out
};

} // namespace partkeep
