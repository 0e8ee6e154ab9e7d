// A piece of core text as the system takes it: with a terminator behind it.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

[[nodiscard]] inline std::wstring WideText(std::u16string_view text)
{
    return {text.begin(), text.end()};
}

} // namespace partkeep
