// Text between the core, the toolkit and the bytes of a library, without loss: the toolkit's own conversions drop or
// swap a leading mark (U+FEFF, U+FFFE), so that one name would become another.
#pragma once

#include "platform/text.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <span>
#include <string>
#include <string_view>

namespace partkeep {

[[nodiscard]] inline QString FromWide(std::u16string_view text)
{
    return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline std::u16string_view ViewOf(QStringView text)
{
    return {text.utf16(), static_cast<std::size_t>(text.size())};
}

[[nodiscard]] inline std::u16string ToWide(QStringView text)
{
    return std::u16string(ViewOf(text));
}

// Malformed bytes become U+FFFD, and so do unpaired surrogates.
[[nodiscard]] QString FromUtf8(std::string_view text);
[[nodiscard]] std::string ToUtf8(QStringView text);

// Control characters, line and paragraph ends, and what turns the direction of writing.
[[nodiscard]] bool IsControlOfTerminal(QChar unit);
// The same with every control character written out, for a terminal: "\x1B".
[[nodiscard]] std::string Printable(QStringView text);

// In the system code page: the longest beginning of whole characters that has at most `limit` bytes.
[[nodiscard]] std::string NarrowWithin(const QString& text, std::size_t limit);

// Fills the rest of the buffer with zeros, at least one.
void CopyNarrow(const QString& text, std::span<char> buffer);

} // namespace partkeep
