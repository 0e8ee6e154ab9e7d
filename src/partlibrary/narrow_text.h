// Text between the contract and the library: wide text, and narrow text in the system code page for buffers of a
// fixed size, cut at a character and always terminated.
#pragma once

#include "platform/text.h"

#include <QString>

#include <span>
#include <string>
#include <string_view>

namespace partkeep {

[[nodiscard]] QString FromWide(std::u16string_view text);

[[nodiscard]] std::string NarrowOf(const QString& text);

// The longest beginning of whole characters whose narrow form has at most `limit` bytes.
[[nodiscard]] std::string NarrowWithin(const QString& text, std::size_t limit);

// Fills the rest of the buffer with zeros, at least one.
void CopyNarrow(const QString& text, std::span<char> buffer);

} // namespace partkeep
