// Expands run-length coded pixels of 4 or 8 bits (BI_RLE4 and BI_RLE8 of the Windows bitmap formats).
#pragma once

#include "controls/dib_view.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace partkeep {

// A colour number for each pixel, bottom row first; -1 where the coding leaves one out. Codes that point outside
// the picture, and a run that the end of the bytes cuts off, are dropped.
[[nodiscard]] std::vector<std::int16_t> ExpandRuns(const DibFigures& figures, std::span<const std::byte> codes);

} // namespace partkeep
