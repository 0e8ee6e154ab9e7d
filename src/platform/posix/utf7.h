// UTF-7 (RFC 2152) and UTF-16. Written out by hand because the C library's converter differs from the Windows
// conversion in which characters it writes directly and in when it closes a run.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

// Never fails: bits left over at the end of a run are dropped, and a byte that belongs to no run stands for
// itself. Surrogates come as they are.
[[nodiscard]] std::u16string WidenUtf7(std::string_view narrow);

// Writes the mandatory direct characters, NUL, tab, line ends and blank as they are. Every run is closed by "-".
[[nodiscard]] std::string NarrowToUtf7(std::u16string_view wide);

} // namespace partkeep
