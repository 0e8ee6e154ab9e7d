#include "platform/posix/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace partkeep {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr std::uint64_t high_bits = 0x8080808080808080U;

// Number of leading ASCII bytes, rounded down to whole words of eight.
std::size_t AsciiWords(const char* bytes, std::size_t size)
{
    std::size_t at = 0;
    for (std::uint64_t word = 0; at + sizeof word <= size; at += sizeof word) {
        std::memcpy(&word, bytes + at, sizeof word);
        if ((word & high_bits) != 0) {
            break;
        }
    }
    return at;
}

std::size_t SequenceLength(unsigned char lead)
{
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

// Whether the first two bytes already rule a sequence out; `prefix` is the value that they hold.
bool IsBadPrefix(std::size_t length, char32_t prefix)
{
    if (length == 3) {
        return prefix < 0x20 || (prefix >= 0x360 && prefix < 0x380);
    }
    return length == 4 && (prefix < 0x10 || prefix >= 0x110);
}

// Takes one character that is not ASCII from the front of `rest`.
char32_t TakeSequence(std::string_view& rest)
{
    const auto lead = static_cast<unsigned char>(rest.front());
    rest.remove_prefix(1);
    const std::size_t length = SequenceLength(lead);
    if (length == 0) {
        return replacement;
    }
    char32_t value = lead & (0x7FU >> length);
    for (std::size_t count = 1; count < length; ++count) {
        if (rest.empty() || (static_cast<unsigned char>(rest.front()) & 0xC0U) != 0x80U) {
            return replacement;
        }
        value = value << 6U | (static_cast<unsigned char>(rest.front()) & 0x3FU);
        rest.remove_prefix(1);
        if (count == 1 && IsBadPrefix(length, value)) {
            return replacement;
        }
    }
    return value;
}

char16_t* PutUtf16(char16_t* out, char32_t character)
{
    if (character < 0x10000) {
        *out++ = static_cast<char16_t>(character);
        return out;
    }
    *out++ = static_cast<char16_t>(0xD7C0 + (character >> 10U));
    *out++ = static_cast<char16_t>(0xDC00 + (character & 0x3FFU));
    return out;
}

bool IsSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit < 0xE000;
}

// Takes one character from the front of `rest`.
char32_t TakeUtf16(std::u16string_view& rest)
{
    const char32_t first = rest.front();
    rest.remove_prefix(1);
    if (!IsSurrogate(first)) {
        return first;
    }
    if (first >= 0xDC00 || rest.empty() || rest.front() < 0xDC00 || rest.front() >= 0xE000) {
        return replacement;
    }
    const char32_t second = rest.front();
    rest.remove_prefix(1);
    return ((first - 0xD7C0) << 10U) + (second - 0xDC00);
}

// Enough bytes for the text: counted first, since three for each unit would be far too many for ASCII.
std::size_t LongestUtf8(std::u16string_view wide)
{
    std::size_t bytes = wide.size();
    for (const char16_t unit : wide) {
        bytes += (unit >= 0x80 ? 1U : 0U) + (unit >= 0x800 ? 1U : 0U);
    }
    return bytes;
}

char* PutUtf8(char* out, char32_t character)
{
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (character < 0x80) {
        put(character);
        return out;
    }
    if (character < 0x800) {
        put(0xC0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            put(0xE0U | character >> 12U);
        } else {
            put(0xF0U | character >> 18U);
            put(0x80U | (character >> 12U & 0x3FU));
        }
        put(0x80U | (character >> 6U & 0x3FU));
    }
    put(0x80U | (character & 0x3FU));
    return out;
}

} // namespace

std::u16string WidenUtf8(std::string_view narrow)
{
    std::u16string wide(narrow.size(), u'\0'); // no byte gives more than one unit
    char16_t* out = wide.data();
    while (!narrow.empty()) {
        const std::size_t ascii = AsciiWords(narrow.data(), narrow.size());
        for (std::size_t at = 0; at < ascii; ++at) {
            *out++ = static_cast<char16_t>(narrow[at]);
        }
        narrow.remove_prefix(ascii);
        for (std::size_t count = 0; count < 8 && !narrow.empty(); ++count) {
            if ((static_cast<unsigned char>(narrow.front()) & 0x80U) == 0) {
                *out++ = static_cast<char16_t>(narrow.front());
                narrow.remove_prefix(1);
            } else {
                out = PutUtf16(out, TakeSequence(narrow));
            }
        }
    }
    wide.resize(static_cast<std::size_t>(out - wide.data()));
    return wide;
}

std::string NarrowToUtf8(std::u16string_view wide)
{
    std::string narrow(LongestUtf8(wide), '\0');
    char* out = narrow.data();
    while (!wide.empty()) {
        if (wide.front() < 0x80) {
            *out++ = static_cast<char>(wide.front());
            wide.remove_prefix(1);
        } else {
            out = PutUtf8(out, TakeUtf16(wide));
        }
    }
    narrow.resize(static_cast<std::size_t>(out - narrow.data()));
    return narrow;
}

} // namespace partkeep
