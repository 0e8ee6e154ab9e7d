// Reads and paints device-independent bitmaps in memory: the seven bitmap functions that the component also
// exports. They keep no state, report by result only and own nothing; a block is locked for the length of a call.
//
// The functions that take a pointer take the bitmap header, behind the file header's 14 bytes. Its first field
// tells its kind: 40 is a BITMAPINFOHEADER, anything else counts as a BITMAPCOREHEADER. They trust the header;
// the two that take a block refuse what does not fit it.
#pragma once

#include "controls/dib_view.h"
#include "platform/geometry.h"
#include "platform/graphics.h"

#include <cstdint>

namespace partkeep {

[[nodiscard]] std::uint32_t DIBWidth(const void* header);

// As stored: the height of a top-down bitmap comes out as 2^32 less its rows.
[[nodiscard]] std::uint32_t DIBHeight(const void* header);

// Entries of the colour table, cut to 16 bits.
[[nodiscard]] std::uint16_t DIBNumColors(const void* header);

// The colour table's size in bytes, cut to 16 bits.
[[nodiscard]] std::uint16_t PaletteSize(const void* header);

[[nodiscard]] const void* FindDIBBits(const void* header);

// Paints `source`, in bitmap pixels, into `target`: unscaled when both have one size, else stretched. A top-down
// bitmap is shown upright; a source height measured by its DIBHeight counts by its magnitude. `palette` may be
// null and is selected in the background for the call.
// The copy's own result: 0 on failure, for a null argument, and for a bitmap that does not fit its block.
std::int32_t PaintDIB(IDeviceContext& context, const Rect* target, HDIB block, const Rect* source,
                      const IPalette* palette);

// Makes a palette from the colour table. The block is a BMP file, as PaintDIB takes it, or begins with the bitmap
// header at once.
// Nonzero if a palette was made; 0 for a null argument, a bitmap without colour table, a table that does not fit
// the block, and when memory has run out.
std::int32_t CreateDIBPalette(HDIB block, IPalette* palette);

} // namespace partkeep
