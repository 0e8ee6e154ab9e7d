// Core text as the system takes it: both are UTF-16, only the character types differ.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

[[nodiscard]] inline const wchar_t* AsWide(const char16_t* text)
{
    return reinterpret_cast<const wchar_t*>(text);
}
[[nodiscard]] inline wchar_t* AsWide(char16_t* text)
{
    return reinterpret_cast<wchar_t*>(text);
}
[[nodiscard]] inline std::u16string FromWide(std::wstring_view text)
{
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

static_assert(sizeof(wchar_t) == sizeof(char16_t));

} // namespace partkeep
