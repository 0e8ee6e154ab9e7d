// Text mode: CR LF on disk, LF inside, on every platform alike.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace partkeep {

inline constexpr std::size_t max_text_bytes = std::size_t{1} << 30U; // a larger file is not read

// Each CR LF becomes LF; a lone CR stays, and so does the byte 0x1A with whatever follows it.
void FromTextMode(std::string& bytes);

// Each LF becomes CR LF.
[[nodiscard]] std::string ToTextMode(std::string_view text);

} // namespace partkeep
