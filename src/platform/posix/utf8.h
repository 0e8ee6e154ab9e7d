// UTF-8 and UTF-16. A pure run of ASCII, the usual case by far, is copied eight bytes at a time.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

// Malformed bytes become U+FFFD as the Windows conversion counts them: a byte that opens nothing is one, and a
// sequence that breaks off is one for what stood before the break. A second byte that makes the sequence
// overlong, a surrogate or too large still belongs to it.
[[nodiscard]] std::u16string WidenUtf8(std::string_view narrow);

// An unpaired surrogate becomes U+FFFD.
[[nodiscard]] std::string NarrowToUtf8(std::u16string_view wide);

} // namespace partkeep
