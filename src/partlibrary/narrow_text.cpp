#include "partlibrary/narrow_text.h"

#include <algorithm>
#include <string_view>

namespace partkeep {

QString FromWide(std::u16string_view text)
{
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

std::string NarrowOf(const QString& text)
{
    return NarrowText(std::u16string_view(QStringView(text).utf16(), static_cast<std::size_t>(text.size())));
}

// Only conversion knows how long a character is, so the text is shortened by characters until it fits.
std::string NarrowWithin(const QString& text, std::size_t limit)
{
    QString kept = text.left(static_cast<qsizetype>(limit));
    if (kept.size() < text.size() && !kept.isEmpty() && kept.back().isHighSurrogate()) {
        kept.chop(1);
    }
    std::string narrow = NarrowOf(kept);
    while (narrow.size() > limit) {
        const bool pair = kept.size() > 1 && kept.back().isLowSurrogate() && kept[kept.size() - 2].isHighSurrogate();
        kept.chop(pair ? 2 : 1);
        narrow = NarrowOf(kept);
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
