// Typed values of leaves, and the number formats in which they become text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_block.h"

namespace partkeep {

// `value` is undefined while `has` is 0.
template <class T>
struct CXmlValue {
    T value;
    std::uint8_t has;
};

// The value's place behind a leaf's head, a text's or an item's bytes: what a scalar of some kind is read from.
struct XmlScalar {
    XmlKind kind;
    const std::byte* bytes;
    std::uint32_t length = 0; // of a text
};

// Of a leaf that is no array.
[[nodiscard]] XmlScalar ScalarOf(const std::byte* leaf);

[[nodiscard]] bool ScalarAsBool(const XmlScalar& scalar);
[[nodiscard]] std::int16_t ScalarAsShort(const XmlScalar& scalar);
// A text's own bytes; for numbers, text in a static buffer that the next call overwrites.
[[nodiscard]] std::string_view ScalarAsText(const XmlScalar& scalar);

// Fixed notation with `precision` decimals, correctly rounded, of which trailing zeros behind the first
// `least_decimals` are dropped. A value that is no number, or infinite, reads as zero. `precision` is cut to 32.
// The text, NUL-terminated, is in a static buffer that the next call overwrites.
[[nodiscard]] const char* FormatFixed(double value, int precision, int least_decimals);

} // namespace partkeep
