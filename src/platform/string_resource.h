// The string table in its resource form: blocks of 16 strings by language.
#pragma once

#include <cstdint>
#include <span>

namespace partkeep {

// Language ids are sublanguage * 1024 + primary language.
inline constexpr std::uint32_t english_language = 1033;
inline constexpr std::uint32_t japanese_language = 1041;
inline constexpr std::uint32_t chinese_language = 2052;
inline constexpr std::uint32_t neutral_language = 1024;
inline constexpr std::uint32_t strings_in_block = 16;

// The block of strings (block - 1) * 16 to (block - 1) * 16 + 15 in one of these languages; the neutral one follows the
// user's locale among the others and otherwise is English: 16 entries, each a length in UTF-16 units and then that many
// units without terminator. Empty when there is none. The bytes live as long as the component is loaded.
[[nodiscard]] std::span<const char16_t> StringBlock(std::uint32_t block, std::uint32_t language);

} // namespace partkeep
