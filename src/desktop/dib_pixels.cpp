#include "desktop/dib_pixels.h"

#include "desktop/run_length.h"

#include <bit>

namespace partkeep {

namespace {

constexpr std::uint32_t opaque = 0xFF000000;

using Masks = std::array<std::uint32_t, 3>;
constexpr Masks masks_of_16_bits{0x7C00, 0x3E0, 0x1F};
constexpr Masks masks_of_bytes{0xFF0000, 0xFF00, 0xFF};

std::uint32_t Packed(std::uint32_t red, std::uint32_t green, std::uint32_t blue)
{
    return opaque | red << 16 | green << 8 | blue;
}

} // namespace

CDibPixels::Channel::Channel(std::uint32_t bits_of_pixel)
    : mask(bits_of_pixel), shift(mask != 0 ? std::countr_zero(mask) : 0),
      length(static_cast<int>(std::bit_width(mask >> shift)))
{
}

// A short share is repeated over the eight bits, so that all ones is full brightness; a long one loses its tail.
std::uint32_t CDibPixels::Channel::Value(std::uint32_t pixel) const
{
    const std::uint32_t share = (pixel & mask) >> shift;
    if (length == 0) {
        return 0;
    }
    if (length >= 8) {
        return share >> (length - 8);
    }
    std::uint32_t value = share << (8 - length);
    for (int filled = length; filled < 8; filled *= 2) {
        value |= value >> filled;
    }
    return value;
}

CDibPixels::CDibPixels(const DibView& bitmap)
    : figures_(ReadDibFigures(bitmap.header).value_or(DibFigures{})), bytes_(bitmap.pixels)
{
    if (figures_.bits > 8) {
        ReadChannels(bitmap);
        return;
    }
    ReadTable(bitmap);
    if (figures_.compression != DibCompression::None) {
        indexes_ = ExpandRuns(figures_, bytes_);
    }
}

void CDibPixels::ReadTable(const DibView& bitmap)
{
    table_.reserve(figures_.color_count);
    for (std::size_t offset = figures_.TableOffset(); offset < figures_.TableEnd(); offset += figures_.color_bytes) {
        const auto bgr = ReadField<std::array<std::uint8_t, 3>>(bitmap.header.data(), offset);
        table_.push_back(Packed(bgr[2], bgr[1], bgr[0]));
    }
}

void CDibPixels::ReadChannels(const DibView& bitmap)
{
    Masks masks = figures_.bits == 16 ? masks_of_16_bits : masks_of_bytes;
    if (figures_.compression == DibCompression::BitFields) {
        masks = ReadField<Masks>(bitmap.header.data(), figures_.header_bytes);
    }
    channels_ = {Channel(masks[0]), Channel(masks[1]), Channel(masks[2])};
}

std::uint32_t CDibPixels::At(int x, int y) const
{
    const auto column = static_cast<std::size_t>(x);
    if (!indexes_.empty()) {
        const auto index = indexes_[static_cast<std::size_t>(y) * static_cast<std::size_t>(Width()) + column];
        return index < 0 ? 0 : TableColor(static_cast<unsigned>(index));
    }
    const auto row = static_cast<std::size_t>(figures_.top_down ? Height() - 1 - y : y);
    const std::byte* line = bytes_.data() + row * static_cast<std::size_t>(figures_.RowBytes());
    const std::size_t first_bit = column * figures_.bits;
    const std::byte* pixel = line + first_bit / 8;
    if (figures_.bits > 8) {
        return MaskedColor(pixel);
    }
    const unsigned behind = static_cast<unsigned>(8 - figures_.bits - first_bit % 8);
    return TableColor(std::to_integer<unsigned>(*pixel) >> behind & ((1U << figures_.bits) - 1));
}

std::uint32_t CDibPixels::TableColor(unsigned index) const
{
    return index < table_.size() ? table_[index] : opaque;
}

std::uint32_t CDibPixels::MaskedColor(const std::byte* pixel) const
{
    std::uint32_t value = 0;
    for (unsigned bit = 0; bit < figures_.bits; bit += 8) {
        value |= std::to_integer<std::uint32_t>(*pixel++) << bit;
    }
    return Packed(channels_[0].Value(value), channels_[1].Value(value), channels_[2].Value(value));
}

} // namespace partkeep
