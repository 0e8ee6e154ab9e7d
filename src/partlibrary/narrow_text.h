// Narrow text for buffers of a fixed size: the system code page, cut at a character, always terminated.
#pragma once

#include "platform/text.h"

#include <QString>

#include <span>
#include <string>

namespace partkeep {

[[nodiscard]] std::string NarrowOf(const QString& text);

// The longest beginning of whole characters whose narrow form has at most `limit` bytes.
[[nodiscard]] std::string NarrowWithin(const QString& text, std::size_t limit);

// Fills the rest of the buffer with zeros, at least one.
void CopyNarrow(const QString& text, std::span<char> buffer);

} // namespace partkeep
