// Text mode: CR LF on disk, LF inside, on every platform alike.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

// Each CR LF becomes LF; a lone CR stays, and so does the byte 0x1A with whatever follows it.
void FromTextMode(std::string& bytes);

// Each LF becomes CR LF.
[[nodiscard]] std::string ToTextMode(std::string_view text);

} // namespace partkeep
