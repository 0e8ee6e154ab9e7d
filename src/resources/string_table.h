// The string table as data: every text in the three languages, from the one source that the resource compiler
// reads too.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace partkeep {

struct StringRow {
    std::int32_t number;
    std::u16string_view english;
    std::u16string_view japanese;
    std::u16string_view chinese; // simplified
};

// By rising number.
[[nodiscard]] std::span<const StringRow> StringTable();

} // namespace partkeep
