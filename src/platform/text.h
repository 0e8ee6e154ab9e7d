// Text of the system: wide text is UTF-16 in std::u16string, narrow text is bytes in a code page.
// Conversions replace what has no form in the target; they never fail and never throw for bad text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace partkeep {

using CodePage = std::uint32_t;

inline constexpr CodePage system_code_page = 0; // whatever SystemCodePage() answers
inline constexpr CodePage shift_jis_code_page = 932;
inline constexpr CodePage utf7_code_page = 65000;
inline constexpr CodePage utf8_code_page = 65001;

// The code page behind `system_code_page`: on Windows the process's ANSI code page, elsewhere 65001
// until the host's set-up chooses another with SetSystemCodePage.
[[nodiscard]] CodePage SystemCodePage();

// Process-wide. Has no effect on Windows, where the system decides.
void SetSystemCodePage(CodePage page);

// Bytes to UTF-16. Malformed bytes become the code page's replacement character. A NUL is an ordinary
// character. An unknown code page gives empty text.
[[nodiscard]] std::u16string WidenText(std::string_view narrow, CodePage page = system_code_page);

// UTF-16 to bytes. A unit with no form in the code page becomes the nearest form that the page defines for it
// (a Latin letter without its mark), otherwise "?". In UTF-8 an unpaired surrogate becomes U+FFFD. An unknown
// code page gives empty text.
[[nodiscard]] std::string NarrowText(std::u16string_view wide, CodePage page = system_code_page);

// Upper case, one UTF-16 unit to one, by Unicode's simple mapping and without regard to locale. Letters whose
// upper case does not lead back to them (dotless i, long s, final sigma) stay, so that nothing outside ASCII
// ever equals a name in ASCII.
[[nodiscard]] char16_t UpperCase(char16_t unit);
[[nodiscard]] std::u16string UpperCase(std::u16string_view text);

// Equal when their upper-case forms are.
[[nodiscard]] bool EqualNoCase(std::u16string_view left, std::u16string_view right);

} // namespace partkeep
