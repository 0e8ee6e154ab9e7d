// The one pair of helpers through which packed, unaligned, little-endian fields are read and written.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "xml/xml_bytes.h"

namespace partkeep {

static_assert(std::endian::native == std::endian::little, "packed fields are stored as the machine holds them");

template <class T>
[[nodiscard]] inline T LoadField(const std::byte* at)
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// Gives the position behind the field.
template <class T>
inline std::byte* PutField(std::byte* at, T value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(at, &value, sizeof value);
    return at + sizeof value;
}

inline std::byte* PutBytes(std::byte* at, std::string_view bytes)
{
    CopyShort(at, bytes.data(), bytes.size());
    return at + bytes.size();
}

} // namespace partkeep
