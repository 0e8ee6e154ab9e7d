// What must hold of the records that a host gets, whoever worked the dialog.
#pragma once

#include <string_view>

namespace partkeep {

// Digits, and blanks that were typed behind them.
[[nodiscard]] inline bool IsQuantity(std::u16string_view text)
{
    const std::size_t digits = text.find_first_not_of(u"0123456789");
    return !text.empty() && digits != 0 && text.find_first_not_of(u' ', digits) == std::u16string_view::npos;
}

} // namespace partkeep
