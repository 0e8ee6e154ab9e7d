#include "xml/xml_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace partkeep {

namespace {

constexpr int float_precision = 16;
constexpr int float_least_decimals = 1;
constexpr int most_decimals = 32;
// The sign, every digit of the largest value, the point, the decimals and the terminator.
constexpr std::size_t fixed_buffer_size = 1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + most_decimals + 1;

bool IsSpace(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// The leading number as atol reads it, cut to its low 16 bits whatever its size.
std::int16_t ShortFromText(std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size() && IsSpace(text[at])) {
        ++at;
    }
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        negative = text[at++] == '-';
    }
    std::uint32_t number = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        number = number * 10 + static_cast<std::uint32_t>(text[at] - '0');
    }
    return static_cast<std::int16_t>(negative ? 0 - number : number);
}

std::int16_t ShortFromFloat(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2 to the 63rd
    if (!(std::fabs(value) < limit)) {
        return 0;
    }
    return static_cast<std::int16_t>(static_cast<std::int64_t>(value));
}

// Integer kinds; a bool reads as its byte.
std::int64_t IntegerOf(const XmlScalar& scalar)
{
    switch (scalar.kind) {
    case XmlKind::Signed8:
        return LoadField<std::int8_t>(scalar.bytes);
    case XmlKind::Unsigned16:
        return LoadField<std::uint16_t>(scalar.bytes);
    case XmlKind::Signed16:
        return LoadField<std::int16_t>(scalar.bytes);
    case XmlKind::Unsigned32:
        return LoadField<std::uint32_t>(scalar.bytes);
    case XmlKind::Signed32:
        return LoadField<std::int32_t>(scalar.bytes);
    default:
        return LoadField<std::uint8_t>(scalar.bytes);
    }
}

double FloatOf(const XmlScalar& scalar)
{
    return scalar.kind == XmlKind::Float32 ? LoadField<float>(scalar.bytes) : LoadField<double>(scalar.bytes);
}

std::string_view TextOf(const XmlScalar& scalar)
{
    return {reinterpret_cast<const char*>(scalar.bytes), scalar.length};
}

bool IsFloat(XmlKind kind)
{
    return kind == XmlKind::Float32 || kind == XmlKind::Float64;
}

// What rounds to nothing has neither a sign nor digits, only the decimals that must be there.
const char* PlainZero(char* text, int decimals)
{
    text[0] = '0';
    if (decimals == 0) {
        text[1] = '\0';
        return text;
    }
    text[1] = '.';
    std::memset(text + 2, '0', static_cast<std::size_t>(decimals));
    text[2 + decimals] = '\0';
    return text;
}

} // namespace

XmlScalar ScalarOf(const std::byte* leaf)
{
    const XmlKind kind = NodeKind(leaf);
    return kind == XmlKind::Text ? XmlScalar{kind, leaf + XmlPlaces::counted, NodeSize(leaf)}
                                 : XmlScalar{kind, leaf + XmlPlaces::head};
}

bool ScalarAsBool(const XmlScalar& scalar)
{
    if (scalar.kind == XmlKind::Text) {
        return TextOf(scalar) == "true";
    }
    return IsFloat(scalar.kind) ? FloatOf(scalar) != 0.0 : IntegerOf(scalar) != 0;
}

std::int16_t ScalarAsShort(const XmlScalar& scalar)
{
    if (scalar.kind == XmlKind::Text) {
        return ShortFromText(TextOf(scalar));
    }
    return IsFloat(scalar.kind) ? ShortFromFloat(FloatOf(scalar)) : static_cast<std::int16_t>(IntegerOf(scalar));
}

std::string_view ScalarAsText(const XmlScalar& scalar)
{
    if (scalar.kind == XmlKind::Text) {
        return TextOf(scalar);
    }
    if (scalar.kind == XmlKind::Boolean) {
        return ScalarAsBool(scalar) ? "true" : "false";
    }
    if (IsFloat(scalar.kind)) {
        return FormatFixed(FloatOf(scalar), float_precision, float_least_decimals);
    }
    static char number[24];
    const auto end = std::to_chars(number, number + sizeof number, IntegerOf(scalar)).ptr;
    return {number, static_cast<std::size_t>(end - number)};
}

const char* FormatFixed(double value, int precision, int least_decimals)
{
    static char text[fixed_buffer_size];
    precision = std::clamp(precision, 0, most_decimals);
    const double magnitude = std::isfinite(value) ? std::fabs(value) : 0.0;
    char* begin = text + 1; // room for the sign
    char* end = std::to_chars(begin, text + sizeof text - 1, magnitude, std::chars_format::fixed, precision).ptr;
    least_decimals = std::clamp(least_decimals, 0, most_decimals);
    if (std::all_of(begin, end, [](char digit) { return digit == '0' || digit == '.'; })) {
        return PlainZero(begin, least_decimals);
    }
    char* const point = std::find(begin, end, '.');
    char* const least_end = end - point > least_decimals ? point + 1 + least_decimals : end;
    while (end > least_end && end[-1] == '0') {
        --end;
    }
    if (end == point + 1) {
        --end; // no decimal is left
    }
    *end = '\0';
    if (std::signbit(value)) {
        *--begin = '-';
    }
    return begin;
}

} // namespace partkeep
