#include "tests/support/raster_context.h"

#include <bit>
#include <cmath>
#include <utility>

namespace partkeep {

namespace {

// What a sound header says, read without the code that is tried.
DibFigures ReadPlainly(const std::byte* header)
{
    DibFigures figures;
    figures.header_bytes = ReadField<std::uint32_t>(header, 0);
    const bool core = figures.header_bytes == 12;
    const int height = core ? ReadField<std::uint16_t>(header, 6) : ReadField<std::int32_t>(header, 8);
    figures.width = core ? ReadField<std::uint16_t>(header, 4) : ReadField<std::int32_t>(header, 4);
    figures.height = height < 0 ? -height : height;
    figures.top_down = height < 0;
    figures.bits = ReadField<std::uint16_t>(header, core ? 10 : 14);
    figures.compression = DibCompression(core ? 0 : ReadField<std::uint32_t>(header, 16));
    figures.mask_bytes = figures.compression == DibCompression::BitFields ? 12 : 0;
    const auto used = core ? 0 : ReadField<std::uint32_t>(header, 32);
    figures.color_count = used == 0 && figures.bits <= 8 ? 1U << figures.bits : std::min(used, 256U);
    figures.color_bytes = core ? 3 : 4;
    return figures;
}

struct PlainDecoder {
    const DibView& bitmap;
    const DibFigures figures;
    Picture picture{figures.width, figures.height};

    Picture Decode()
    {
        const bool runs = figures.bits <= 8 && figures.compression != DibCompression::None;
        runs ? Runs() : Rows();
        return picture;
    }

    unsigned Byte(std::size_t at) const { return std::to_integer<unsigned>(bitmap.pixels[at]); }

    std::uint32_t FromTable(std::uint32_t index) const
    {
        std::uint32_t color = 0;
        for (std::size_t byte = 3; byte-- > 0 && index < figures.color_count;) {
            const std::size_t at = figures.header_bytes + index * figures.color_bytes + byte;
            color = color << 8 | std::to_integer<unsigned>(bitmap.header[at]);
        }
        return color;
    }

    // The share's bits from its highest down, over and over until there are eight.
    static std::uint32_t Share(std::uint32_t value, std::uint32_t mask)
    {
        const int low = std::countr_zero(mask);
        const int width = 32 - std::countl_zero(mask) - low;
        std::uint32_t eight = 0;
        for (int place = 0; mask != 0 && place < 8; ++place) {
            eight = eight << 1 | ((value & mask) >> (low + width - 1 - place % width) & 1);
        }
        return eight;
    }

    std::uint32_t FromBytes(std::size_t at) const
    {
        std::uint32_t value = 0;
        for (std::size_t byte = figures.bits / 8; byte-- > 0;) {
            value = value << 8 | Byte(at + byte);
        }
        std::uint32_t color = 0;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const auto mask = figures.mask_bytes != 0 ? ReadField<std::uint32_t>(bitmap.header.data(), 40 + 4 * channel)
                              : figures.bits == 16    ? 0x1FU << (10 - 5 * channel)
                                                      : 0xFFU << (16 - 8 * channel);
            color = color << 8 | Share(value, mask);
        }
        return color;
    }

    // The first bit is the highest of its byte.
    void Put(std::int64_t x, std::int64_t y, std::size_t first_bit)
    {
        std::uint32_t index = 0;
        for (std::size_t bit = first_bit; figures.bits <= 8 && bit < first_bit + figures.bits; ++bit) {
            index = index << 1 | (Byte(bit / 8) >> (7 - bit % 8) & 1);
        }
        if (x < figures.width && y >= 0) {
            picture.At(static_cast<int>(x), static_cast<int>(y)) =
                figures.bits <= 8 ? FromTable(index) : FromBytes(first_bit / 8);
        }
    }

    void Rows()
    {
        const std::size_t row_bits = (static_cast<std::size_t>(figures.width) * figures.bits + 31) / 32 * 32;
        for (int stored = 0; stored < figures.height; ++stored) {
            for (int x = 0; x < figures.width; ++x) {
                Put(x, figures.top_down ? stored : figures.height - 1 - stored,
                    static_cast<std::size_t>(stored) * row_bits + static_cast<std::size_t>(x) * figures.bits);
            }
        }
    }

    void Runs()
    {
        const std::size_t bits = figures.bits;
        std::int64_t x = 0;
        std::int64_t y = figures.height - 1;
        for (std::size_t at = 2; at <= bitmap.pixels.size() && y >= 0; at += 2) {
            const unsigned count = Byte(at - 2);
            const unsigned code = Byte(at - 1);
            const std::size_t follow = count != 0 || code < 2 ? 0 : code == 2 ? 2 : (code * bits + 7) / 8;
            if ((count == 0 && code == 1) || at + follow > bitmap.pixels.size()) {
                return;
            }
            for (std::size_t step = 0; step < (count != 0 || code < 3 ? count : code); ++step) {
                Put(x, y, count != 0 ? at * 8 - 8 + step * bits % 8 : at * 8 + step * bits);
                x = std::min<std::int64_t>(x + 1, figures.width);
            }
            if (count == 0 && code == 0) {
                x = 0;
                --y;
            } else if (count == 0 && code == 2) {
                x += Byte(at);
                y -= Byte(at + 1);
            }
            at += (follow + 1) / 2 * 2;
        }
    }
};

} // namespace

Picture DecodePlainly(const DibView& bitmap)
{
    return PlainDecoder{bitmap, ReadPlainly(bitmap.header.data())}.Decode();
}

PaletteHandle RasterContext::SelectPalette(PaletteHandle palette, bool background)
{
    Note(background ? "SelectPalette background" : "SelectPalette", {static_cast<char*>(palette) - palettes.data()});
    return std::exchange(selected, palette);
}

int RasterContext::SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                                     unsigned first_line, unsigned line_count, const DibView& bitmap)
{
    Note("SetDIBitsToDevice", {target_x, target_y, width, height, source_x, source_y, first_line, line_count});
    Copy({target_x, target_y, target_x + width, target_y + height},
         {source_x, source_y, source_x + width, source_y + height}, bitmap);
    return static_cast<int>(line_count);
}

int RasterContext::StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap)
{
    Note("StretchDIBits",
         {target.left, target.top, target.right, target.bottom, source.left, source.top, source.right, source.bottom});
    Copy(target, source, bitmap);
    return ReadDibFigures(bitmap.header)->height;
}

// Each target pixel takes the source pixel under its centre. Unmirrored.
void RasterContext::Copy(const Rect& target, const Rect& source, const DibView& bitmap)
{
    Picture picture = PlainDecoder{bitmap, *ReadDibFigures(bitmap.header)}.Decode();
    const double across = double(source.right - double(source.left)) / (target.right - double(target.left));
    const double up = double(source.bottom - double(source.top)) / (target.bottom - double(target.top));
    for (int y = std::max(0, target.top); y < std::min(canvas.height, target.bottom); ++y) {
        for (int x = std::max(0, target.left); x < std::min(canvas.width, target.right); ++x) {
            const double column = std::floor(source.left + (x - double(target.left) + 0.5) * across);
            const double row = picture.height - 1 - std::floor(source.top + (target.bottom - double(y) - 0.5) * up);
            const bool inside = column >= 0 && column < picture.width && row >= 0 && row < picture.height;
            const auto color = inside ? picture.At(static_cast<int>(column), static_cast<int>(row)) : untouched;
            canvas.At(x, y) = color != untouched ? color : canvas.At(x, y);
        }
    }
}

void RasterContext::Note(std::string call, std::initializer_list<long long> numbers)
{
    for (const long long number : numbers) {
        call += ' ' + std::to_string(number);
    }
    calls.push_back(std::move(call));
}

} // namespace partkeep
