#include "platform/posix/utf7.h"

#include <cstddef>
#include <cstdint>

namespace partkeep {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::u16string_view direct_marks = u"\0\t\n\r '(),-./:?"sv;

bool IsDirect(char16_t unit)
{
    const auto lower = static_cast<char16_t>(unit | 0x20U);
    return (lower >= u'a' && lower <= u'z' && unit < 0x80) || (unit >= u'0' && unit <= u'9') ||
           direct_marks.find(unit) != std::u16string_view::npos;
}

// Reads one run behind its "+", up to and with a closing "-", and gives what follows it.
std::string_view TakeRun(std::string_view rest, std::u16string& wide)
{
    std::uint32_t bits = 0;
    unsigned count = 0;
    while (!rest.empty()) {
        const std::size_t digit = digits.find(rest.front());
        if (digit == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(1);
        bits = bits << 6U | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 16) {
            count -= 16;
            wide += static_cast<char16_t>(bits >> count);
        }
    }
    if (rest.starts_with('-')) {
        rest.remove_prefix(1);
    }
    return rest;
}

// Writes the units in front of the next direct one as a run, and gives what follows.
std::u16string_view PutRun(std::u16string_view rest, std::string& narrow)
{
    std::uint32_t bits = 0;
    unsigned count = 0;
    const auto put_digit = [&](std::uint32_t digit) { narrow += digits[digit & 0x3FU]; };
    narrow += '+';
    for (; !rest.empty() && !IsDirect(rest.front()); rest.remove_prefix(1)) {
        bits = bits << 16U | rest.front();
        for (count += 16; count >= 6; count -= 6) {
            put_digit(bits >> (count - 6));
        }
    }
    if (count > 0) {
        put_digit(bits << (6 - count));
    }
    narrow += '-';
    return rest;
}

} // namespace

std::u16string WidenUtf7(std::string_view narrow)
{
    std::u16string wide;
    while (!narrow.empty()) {
        const auto byte = static_cast<unsigned char>(narrow.front());
        narrow.remove_prefix(1);
        if (byte != '+') {
            wide += static_cast<char16_t>(byte);
        } else if (narrow.starts_with('-')) {
            wide += u'+';
            narrow.remove_prefix(1);
        } else {
            narrow = TakeRun(narrow, wide);
        }
    }
    return wide;
}

std::string NarrowToUtf7(std::u16string_view wide)
{
    std::string narrow;
    while (!wide.empty()) {
        const char16_t unit = wide.front();
        if (IsDirect(unit)) {
            narrow += static_cast<char>(unit);
            wide.remove_prefix(1);
        } else if (unit == u'+') {
            narrow += "+-";
            wide.remove_prefix(1);
        } else {
            wide = PutRun(wide, narrow);
        }
    }
    return narrow;
}

} // namespace partkeep
