#include "platform/text.h"

#include "platform/windows/wide.h"

#include <climits>
#include <windows.h>

namespace partkeep {

namespace {

// The system's lengths are int, and one conversion may triple the length: longer text is refused.
constexpr std::size_t max_length = INT_MAX / 4;

bool IsConvertible(std::size_t length)
{
    return length > 0 && length <= max_length;
}

bool IsSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit < 0xE000;
}

void MapToUpper(const char16_t* from, int length, char16_t* to)
{
    LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, AsWide(from), length, AsWide(to), length, nullptr, nullptr,
                  0);
}

} // namespace

CodePage SystemCodePage()
{
    return GetACP();
}

void SetSystemCodePage(CodePage /*page*/) {}

std::u16string WidenText(std::string_view narrow, CodePage page)
{
    if (!IsConvertible(narrow.size())) {
        return {};
    }
    const int length = static_cast<int>(narrow.size());
    const int needed = MultiByteToWideChar(page, 0, narrow.data(), length, nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(needed), u'\0');
    MultiByteToWideChar(page, 0, narrow.data(), length, AsWide(wide.data()), needed);
    return wide;
}

std::string NarrowText(std::u16string_view wide, CodePage page)
{
    if (!IsConvertible(wide.size())) {
        return {};
    }
    const int length = static_cast<int>(wide.size());
    const int needed = WideCharToMultiByte(page, 0, AsWide(wide.data()), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(page, 0, AsWide(wide.data()), length, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

char16_t UpperCase(char16_t unit)
{
    char16_t upper = unit;
    MapToUpper(&unit, 1, &upper);
    return upper;
}

std::u16string UpperCase(std::u16string_view text)
{
    std::u16string upper(text);
    if (IsConvertible(text.size())) {
        MapToUpper(text.data(), static_cast<int>(text.size()), upper.data());
    }
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (IsSurrogate(text[at])) {
            upper[at] = text[at]; // newer systems map whole pairs
        }
    }
    return upper;
}

bool EqualNoCase(std::u16string_view left, std::u16string_view right)
{
    return left.size() == right.size() && UpperCase(left) == UpperCase(right);
}

} // namespace partkeep
