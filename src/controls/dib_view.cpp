#include "controls/dib_view.h"

#include "controls/dib_helpers.h"

#include <algorithm>
#include <limits>

namespace partkeep {

namespace {

// A few bytes of run-length coded pixels can claim a picture of any size, and drawing needs room for all of it.
constexpr std::uint64_t max_run_length_pixels = 1U << 24;

// Entries that a device may read, however many more the header claims.
constexpr std::uint32_t max_table_colors = 256;

constexpr std::size_t bytes_of_masks = 12;

bool CompressionFits(DibCompression compression, unsigned bits)
{
    switch (compression) {
    case DibCompression::None:
        return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    case DibCompression::Rle8:
        return bits == 8;
    case DibCompression::Rle4:
        return bits == 4;
    case DibCompression::BitFields:
        return bits == 16 || bits == 32;
    }
    return false;
}

// Zero where the height has no magnitude, so that it is refused with the empty pictures.
int Magnitude(std::int32_t height)
{
    return height == std::numeric_limits<std::int32_t>::min() ? 0 : std::abs(height);
}

std::size_t ColorCount(std::uint32_t colors_used, unsigned bits)
{
    if (colors_used != 0) {
        return std::min(colors_used, max_table_colors);
    }
    return bits <= 8 ? std::size_t{1} << bits : 0;
}

DibFigures InfoFigures(const void* header)
{
    const auto height = ReadField<std::int32_t>(header, 8);
    DibFigures figures;
    figures.header_bytes = dib_info_header_bytes;
    figures.width = ReadField<std::int32_t>(header, 4);
    figures.height = Magnitude(height);
    figures.top_down = height < 0;
    figures.bits = ReadField<std::uint16_t>(header, 14);
    figures.compression = static_cast<DibCompression>(ReadField<std::uint32_t>(header, 16));
    figures.image_bytes = ReadField<std::uint32_t>(header, 20);
    figures.mask_bytes = figures.compression == DibCompression::BitFields ? bytes_of_masks : 0;
    figures.color_bytes = 4;
    return figures;
}

DibFigures CoreFigures(const void* header)
{
    DibFigures figures;
    figures.header_bytes = dib_core_header_bytes;
    figures.width = ReadField<std::uint16_t>(header, 4);
    figures.height = ReadField<std::uint16_t>(header, 6);
    figures.bits = ReadField<std::uint16_t>(header, 10);
    figures.color_bytes = 3;
    return figures;
}

bool IsRunLengthCoded(const DibFigures& figures)
{
    return figures.compression == DibCompression::Rle8 || figures.compression == DibCompression::Rle4;
}

// Devices take the length of run-length coded pixels from the header, and no such picture is top-down.
bool RunLengthFits(const DibFigures& figures, std::size_t available)
{
    const auto pixels = static_cast<std::uint64_t>(figures.width) * static_cast<std::uint64_t>(figures.height);
    return !figures.top_down && pixels <= max_run_length_pixels && figures.image_bytes <= available;
}

// 0 when they do not fit.
std::size_t PixelBytes(const DibFigures& figures, std::size_t available)
{
    if (IsRunLengthCoded(figures)) {
        return RunLengthFits(figures, available) ? figures.image_bytes : 0;
    }
    const auto rows = static_cast<std::uint64_t>(figures.height);
    const auto row_bytes = figures.RowBytes();
    return rows <= available / row_bytes ? static_cast<std::size_t>(rows * row_bytes) : 0;
}

} // namespace

std::uint64_t DibFigures::RowBytes() const
{
    return (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
}

std::optional<DibFigures> ReadDibFigures(std::span<const std::byte> dib)
{
    if (dib.size() < dib_core_header_bytes) {
        return {};
    }
    const auto header_bytes = ReadField<std::uint32_t>(dib.data(), 0);
    const bool info = header_bytes == dib_info_header_bytes;
    if ((!info && header_bytes != dib_core_header_bytes) || dib.size() < header_bytes) {
        return {};
    }
    DibFigures figures = info ? InfoFigures(dib.data()) : CoreFigures(dib.data());
    const auto planes = ReadField<std::uint16_t>(dib.data(), info ? 12 : 8);
    if (planes != 1 || figures.width <= 0 || figures.height <= 0 ||
        !CompressionFits(figures.compression, figures.bits)) {
        return {};
    }
    figures.color_count = ColorCount(info ? ReadField<std::uint32_t>(dib.data(), 32) : 0, figures.bits);
    return figures;
}

std::optional<DibView> MakeDibView(std::span<const std::byte> dib)
{
    const auto figures = ReadDibFigures(dib);
    if (!figures) {
        return {};
    }
    // FindDIBBits knows nothing of colour masks. Drawn from where it points, their 12 bytes would be pixels.
    const std::size_t pixel_offset = figures->header_bytes + PaletteSize(dib.data()) + figures->mask_bytes;
    if (figures->TableEnd() > dib.size()) {
        return {};
    }
    const auto pixels = dib.subspan(std::min(pixel_offset, dib.size()));
    const std::size_t pixel_bytes = PixelBytes(*figures, pixels.size());
    if (pixel_bytes == 0) {
        return {};
    }
    return DibView{dib.first(figures->TableEnd()), pixels.first(pixel_bytes)};
}

std::span<const std::byte> CLockedDib::From(std::size_t offset) const
{
    const std::span bytes(static_cast<const std::byte*>(lock_.Address()), bytes_);
    return bytes.subspan(std::min(offset, bytes.size()));
}

} // namespace partkeep
