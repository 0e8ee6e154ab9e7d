// The string table in its resource form: blocks of 16 strings by language.
#pragma once

#include <cstdint>
#include <span>

namespace partkeep {

// The block of strings (block - 1) * 16 to (block - 1) * 16 + 15 in a language (1033, 1041, 2052; 1024 is
// the neutral language, which follows the user's locale among the three and otherwise is English): 16 entries,
// each a length in UTF-16 units and then that many units without terminator. Empty when there is none.
// The bytes live as long as the component is loaded.
[[nodiscard]] std::span<const char16_t> StringBlock(std::uint32_t block, std::uint32_t language);

} // namespace partkeep
