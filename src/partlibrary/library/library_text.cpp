#include "partlibrary/library/library_text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace partkeep {

bool IsControlOfTerminal(QChar shown)
{
    const char16_t unit = shown.unicode();
    return unit < u' ' || (unit >= 0x7F && unit <= 0x9F) || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

// Most texts of a library are ASCII.
QString FromUtf8(std::string_view text)
{
    if (std::none_of(text.begin(), text.end(), [](char byte) { return byte < 0; })) {
        return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    }
    return FromWide(WidenText(text, utf8_code_page));
}

std::string ToUtf8(QStringView text)
{
    return NarrowText(ViewOf(text), utf8_code_page);
}

std::string Printable(QStringView text)
{
    std::u16string shown;
    for (const char16_t unit : ViewOf(text)) {
        if (!IsControlOfTerminal(unit)) {
            shown += unit;
            continue;
        }
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), unit < 0x100 ? "\\x%02X" : "\\u%04X", static_cast<unsigned>(unit));
        shown.append(code.begin(), std::find(code.begin(), code.end(), '\0'));
    }
    return NarrowText(shown, utf8_code_page);
}

// Only conversion knows how long a character is, so the text is shortened by characters until it fits.
std::string NarrowWithin(const QString& text, std::size_t limit)
{
    QString kept = text.left(static_cast<qsizetype>(limit));
    if (kept.size() < text.size() && !kept.isEmpty() && kept.back().isHighSurrogate()) {
        kept.chop(1);
    }
    std::string narrow = NarrowText(ViewOf(kept));
    while (narrow.size() > limit) {
        const bool pair = kept.size() > 1 && kept.back().isLowSurrogate() && kept[kept.size() - 2].isHighSurrogate();
        kept.chop(pair ? 2 : 1);
        narrow = NarrowText(ViewOf(kept));
    }
    return narrow;
}

void CopyNarrow(const QString& text, std::span<char> buffer)
{
    if (buffer.empty()) {
        return;
    }
    const std::string narrow = NarrowWithin(text, buffer.size() - 1);
    std::fill(std::copy(narrow.begin(), narrow.end(), buffer.begin()), buffer.end(), '\0');
}

} // namespace partkeep
