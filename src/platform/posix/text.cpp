// Text without Windows. The conversions give what the Windows conversions give, replacements included, so that
// a settings file means the same on both.

#include "platform/text.h"

#include "platform/posix/code_page_table.h"
#include "platform/posix/utf7.h"
#include "platform/posix/utf8.h"

#include <atomic>
#include <cwctype>
#include <locale.h> // newlocale and its kin are not in <clocale>

namespace partkeep {

namespace {

std::atomic<CodePage> process_code_page{utf8_code_page};

CodePage Resolve(CodePage page)
{
    return page == system_code_page ? SystemCodePage() : page;
}

// The Unicode tables of the C library; a C.UTF-8 locale is built into it and depends on no setting.
locale_t UnicodeLocale()
{
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

// As Windows has it, a letter has an upper case only if the lower case of that leads back to it: of two letters
// that share an upper case (the two sigmas, the dotless i and the i) only the usual one is folded.
char16_t UpperCaseBeyondAscii(char16_t unit)
{
    const locale_t locale = UnicodeLocale();
    if (locale == nullptr) {
        return unit;
    }
    const std::wint_t upper = towupper_l(unit, locale);
    const bool fits = upper <= 0xFFFF && towlower_l(upper, locale) == unit;
    return fits ? static_cast<char16_t>(upper) : unit;
}

} // namespace

CodePage SystemCodePage()
{
    return process_code_page.load();
}

void SetSystemCodePage(CodePage page)
{
    process_code_page.store(page == system_code_page ? utf8_code_page : page);
}

std::u16string WidenText(std::string_view narrow, CodePage page)
{
    const CodePage resolved = Resolve(page);
    if (resolved == utf8_code_page) {
        return WidenUtf8(narrow);
    }
    if (resolved == utf7_code_page) {
        return WidenUtf7(narrow);
    }
    const CCodePageTable* table = CCodePageTable::Find(resolved);
    return table == nullptr ? std::u16string() : table->Widen(narrow);
}

std::string NarrowText(std::u16string_view wide, CodePage page)
{
    const CodePage resolved = Resolve(page);
    if (resolved == utf8_code_page) {
        return NarrowToUtf8(wide);
    }
    if (resolved == utf7_code_page) {
        return NarrowToUtf7(wide);
    }
    const CCodePageTable* table = CCodePageTable::Find(resolved);
    return table == nullptr ? std::string() : table->Narrow(wide);
}

char16_t UpperCase(char16_t unit)
{
    if (unit < 0x80) {
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
    }
    return UpperCaseBeyondAscii(unit);
}

std::u16string UpperCase(std::u16string_view text)
{
    std::u16string upper(text);
    for (char16_t& unit : upper) {
        unit = UpperCase(unit);
    }
    return upper;
}

bool EqualNoCase(std::u16string_view left, std::u16string_view right)
{
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t at = 0; at < left.size(); ++at) {
        if (left[at] != right[at] && UpperCase(left[at]) != UpperCase(right[at])) {
            return false;
        }
    }
    return true;
}

} // namespace partkeep
