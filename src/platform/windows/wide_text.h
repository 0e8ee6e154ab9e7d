// Text between the core's UTF-16 and the wide strings of the Windows headers: the same units under two types.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

[[nodiscard]] inline std::wstring WideText(std::u16string_view text)
{
    return {text.begin(), text.end()};
}

[[nodiscard]] inline std::u16string CoreText(std::wstring_view text)
{
    return {text.begin(), text.end()};
}

} // namespace partkeep
