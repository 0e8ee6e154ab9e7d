// Reads a bitmap whose size in memory is known: what its header says, and whether header, colour table and
// pixels lie inside the bytes. Everything that draws or copies from a block goes through here first; the
// functions of dib_helpers.h that take a bare pointer cannot check anything.
//
// Layout, little-endian, by Windows' BITMAPINFOHEADER (size 40) and BITMAPCOREHEADER (size 12):
//
//   field                 | 40 bytes        | 12 bytes
//   size of the header    | 0, 32-bit       | 0, 32-bit
//   width                 | 4, 32-bit       | 4, 16-bit
//   height                | 8, 32-bit       | 6, 16-bit
//   planes                | 12, 16-bit      | 8, 16-bit
//   bits per pixel        | 14, 16-bit      | 10, 16-bit
//   compression           | 16, 32-bit      | none
//   bytes of pixels       | 20, 32-bit      | none
//   colours used          | 32, 32-bit      | none
//   a colour's bytes      | B, G, R, unused | B, G, R
#pragma once

#include "platform/graphics.h"
#include "platform/memory_block.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>

namespace partkeep {

using HDIB = MemoryHandle; // a block that holds a complete BMP file

inline constexpr std::size_t dib_file_header_bytes = 14;
inline constexpr std::uint32_t dib_info_header_bytes = 40;
inline constexpr std::uint32_t dib_core_header_bytes = 12;

// Headers lie 14 bytes into a block and pixels where the colour table ends, so no field is aligned.
template <typename T>
T ReadField(const void* base, std::size_t offset)
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, static_cast<const std::byte*>(base) + offset, sizeof value);
    return value;
}

enum class DibCompression : std::uint32_t { None = 0, Rle8 = 1, Rle4 = 2, BitFields = 3 };

// What a sound header says.
struct DibFigures {
    std::uint32_t header_bytes = 0; // 40 or 12
    int width = 0;                  // above 0
    int height = 0;                 // above 0, whichever row is stored first
    bool top_down = false;          // the top row is stored first
    unsigned bits = 0;              // 1, 4, 8, 16, 24 or 32
    DibCompression compression = DibCompression::None;
    std::uint32_t image_bytes = 0; // of run-length coded pixels
    std::size_t mask_bytes = 0;    // three colour masks behind the header, or none
    std::size_t color_count = 0;   // entries of the colour table that a device reads
    std::size_t color_bytes = 0;   // of one entry

    [[nodiscard]] std::uint64_t RowBytes() const; // padded to 4 bytes
    [[nodiscard]] std::size_t TableOffset() const { return header_bytes + mask_bytes; }
    [[nodiscard]] std::size_t TableEnd() const { return TableOffset() + color_count * color_bytes; }
};

// `dib` begins with the bitmap header. Nothing when the header is cut, is of another size than the two, or says
// what no device draws; the colour table need not be there.
[[nodiscard]] std::optional<DibFigures> ReadDibFigures(std::span<const std::byte> dib);

// `dib` begins with the bitmap header. Nothing unless header, colour table and pixels all lie inside.
[[nodiscard]] std::optional<DibView> MakeDibView(std::span<const std::byte> dib);

// Keeps a bitmap's block locked for a scope.
class CLockedDib {
public:
    explicit CLockedDib(HDIB block) : lock_(block), bytes_(lock_.Address() != nullptr ? BlockSize(block) : 0) {}

    // The block's bytes from `offset` on; empty for a handle that is no block, and where the block is shorter.
    [[nodiscard]] std::span<const std::byte> From(std::size_t offset) const;

private:
    CBlockLock lock_;
    std::size_t bytes_;
};

} // namespace partkeep
