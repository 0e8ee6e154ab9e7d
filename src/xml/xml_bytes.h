// Looks for bytes, compares and copies short runs of them where they lie. Nothing outside the bounds given is read or
// written, but where a function says by how much. The searches go sixteen bytes at a time where the machine can, and
// one by one otherwise; both ways give the same.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace partkeep {

// A few bytes, told by a text literal.
template <std::size_t Count>
struct CXmlByteSet {
    char bytes[Count];

    template <std::size_t... At>
    constexpr CXmlByteSet(const char (&text)[Count + 1], std::index_sequence<At...>) : bytes{text[At]...}
    {
    }
    explicit constexpr CXmlByteSet(const char (&text)[Count + 1]) : CXmlByteSet(text, std::make_index_sequence<Count>())
    {
    }
};

template <std::size_t Length>
CXmlByteSet(const char (&)[Length]) -> CXmlByteSet<Length - 1>;

// A bit for each byte below 64: delimiters all are.
template <CXmlByteSet Set>
inline constexpr std::uint64_t bits_of = [] {
    std::uint64_t bits = 0;
    for (const char byte : Set.bytes) {
        bits |= std::uint64_t{1} << byte;
    }
    return bits;
}();

template <CXmlByteSet Set>
[[nodiscard]] constexpr bool IsIn(char byte)
{
    if constexpr (sizeof Set.bytes == 1) {
        return byte == Set.bytes[0];
    }
    const auto value = static_cast<std::uint8_t>(byte);
    return value < 64 && (bits_of<Set> >> value & 1) != 0;
}

inline constexpr std::size_t xml_marks_width = 64;
// As many bytes as are read and written by one copy at most.
inline constexpr std::size_t xml_wide = 16;

namespace xml_bytes_plain {

// The first byte of the set, or `end`.
template <CXmlByteSet Set>
[[nodiscard]] inline const char* Find(const char* at, const char* end)
{
    while (at != end && !IsIn<Set>(*at)) {
        ++at;
    }
    return at;
}

// A bit for each of the 64 bytes from `at` on that is of the set, the lowest for the first.
template <CXmlByteSet Set>
[[nodiscard]] inline std::uint64_t Marks(const char* at)
{
    std::uint64_t marks = 0;
    for (std::size_t place = 0; place < xml_marks_width; ++place) {
        marks |= std::uint64_t{IsIn<Set>(at[place])} << place;
    }
    return marks;
}

// Of up to 16 bytes; as many may be read.
[[nodiscard]] inline bool EqualWide(const char* left, const char* right, std::size_t size)
{
    return std::memcmp(left, right, size) == 0;
}

// Copies up to the first NUL or `size` bytes, and gives the position behind them. Up to 16 bytes more may be read and
// written.
inline char* CopyToNul(char* to, const char* from, std::size_t size)
{
    for (; size != 0 && *from != '\0'; --size) {
        *to++ = *from++;
    }
    return to;
}

inline void FetchAhead(const void*, std::size_t) {}

} // namespace xml_bytes_plain

#ifdef __SSE2__

namespace xml_bytes_wide {

// A bit for each byte that may be of the set: the members up to a blank are tested for by one comparison, which lets
// other such bytes pass.
template <CXmlByteSet Set>
[[nodiscard]] inline std::uint32_t Candidates(__m128i bytes)
{
    constexpr bool has_low = (bits_of<Set> & 0x1FFFFFFFF) != 0;
    __m128i any = _mm_setzero_si128();
    if constexpr (has_low) {
        any = _mm_cmpeq_epi8(bytes, _mm_min_epu8(bytes, _mm_set1_epi8(' ')));
    }
    const auto add = [&](char byte) { any = _mm_or_si128(any, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte))); };
    [&]<std::size_t... At>(std::index_sequence<At...>)
    {
        ((Set.bytes[At] > ' ' ? add(Set.bytes[At]) : void()), ...);
    }
    (std::make_index_sequence<sizeof Set.bytes>());
    return static_cast<std::uint32_t>(_mm_movemask_epi8(any));
}

template <CXmlByteSet Set>
[[nodiscard]] inline const char* Find(const char* at, const char* end)
{
    constexpr std::ptrdiff_t width = sizeof(__m128i);
    for (; end - at >= width; at += width) {
        std::uint32_t mask = Candidates<Set>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)));
        for (; mask != 0; mask &= mask - 1) {
            const char* found = at + std::countr_zero(mask);
            if (IsIn<Set>(*found)) {
                return found;
            }
        }
    }
    return xml_bytes_plain::Find<Set>(at, end);
}

// Of a single byte.
template <CXmlByteSet Set>
[[nodiscard]] inline std::uint64_t Marks(const char* at)
{
    static_assert(sizeof Set.bytes == 1);
    const auto quarter = [at](std::size_t number) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at) + number);
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(Set.bytes[0])));
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(found)) << 16 * number;
    };
    return quarter(0) | quarter(1) | quarter(2) | quarter(3);
}

[[nodiscard]] inline bool EqualWide(const char* left, const char* right, std::size_t size)
{
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right));
    const auto equal = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(a, b)));
    return (~equal & ((std::uint32_t{1} << size) - 1)) == 0;
}

inline char* CopyToNul(char* to, const char* from, std::size_t size)
{
    constexpr std::size_t width = sizeof(__m128i);
    for (;; to += width, from += width, size -= width) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
        const auto nuls = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())));
        const auto up_to_nul = static_cast<std::size_t>(std::countr_zero(nuls | std::uint32_t{1} << width));
        if (up_to_nul < width || size <= width) {
            return to + (up_to_nul < size ? up_to_nul : size);
        }
    }
}

// Brings what lies so far behind a place nearer for a later look. Nothing is read: the place need not be there.
inline void FetchAhead(const void* at, std::size_t distance)
{
    const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(at) + distance;
    _mm_prefetch(reinterpret_cast<const char*>(place), _MM_HINT_T0); // NOLINT(performance-no-int-to-ptr)
}

} // namespace xml_bytes_wide

using xml_bytes_wide::CopyToNul;
using xml_bytes_wide::EqualWide;
using xml_bytes_wide::FetchAhead;
using xml_bytes_wide::Find;
using xml_bytes_wide::Marks;

#else

using xml_bytes_plain::CopyToNul;
using xml_bytes_plain::EqualWide;
using xml_bytes_plain::FetchAhead;
using xml_bytes_plain::Find;
using xml_bytes_plain::Marks;

#endif

// As wide as an address, such as stands behind every name in a block.
using XmlWord = std::uintptr_t;

// Copies word by word: up to a word less a byte more may be read and written.
inline char* CopyByWords(char* to, const char* from, std::size_t size)
{
    for (std::size_t at = 0; at < size; at += sizeof(XmlWord)) {
        XmlWord word;
        std::memcpy(&word, from + at, sizeof word);
        std::memcpy(to + at, &word, sizeof word);
    }
    return to + size;
}

// The first bytes as a number; a whole word may be read where `size` is not 0.
inline XmlWord FirstWord(const char* at, std::size_t size)
{
    XmlWord word = 0;
    if (size != 0) {
        std::memcpy(&word, at, sizeof word);
        word = size < sizeof word ? word & ((XmlWord{1} << 8 * size) - 1) : word;
    }
    return word;
}

// Copies in pieces that may overlap; neither source nor target is touched outside its `size` bytes.
inline void CopyShort(void* target, const void* source, std::size_t size)
{
    auto* to = static_cast<std::byte*>(target);
    const auto* from = static_cast<const std::byte*>(source);
    const auto both_ends = [&](auto piece) {
        auto last = piece;
        std::memcpy(&piece, from, sizeof piece);
        std::memcpy(&last, from + size - sizeof last, sizeof last);
        std::memcpy(to, &piece, sizeof piece);
        std::memcpy(to + size - sizeof last, &last, sizeof last);
    };
    struct Wide {
        std::uint64_t low, high;
    };
    if (size > 2 * sizeof(Wide)) {
        std::memcpy(to, from, size);
    } else if (size >= sizeof(Wide)) {
        both_ends(Wide{});
    } else if (size >= 8) {
        both_ends(std::uint64_t{});
    } else if (size >= 4) {
        both_ends(std::uint32_t{});
    } else if (size >= 2) {
        both_ends(std::uint16_t{});
    } else if (size == 1) {
        *to = *from;
    }
}

[[nodiscard]] inline bool EqualShort(const void* left, const void* right, std::size_t size)
{
    const auto* a = static_cast<const std::byte*>(left);
    const auto* b = static_cast<const std::byte*>(right);
    const auto both_ends = [&](auto piece) {
        auto other = piece;
        std::memcpy(&piece, a, sizeof piece);
        std::memcpy(&other, b, sizeof other);
        const auto first = piece ^ other;
        std::memcpy(&piece, a + size - sizeof piece, sizeof piece);
        std::memcpy(&other, b + size - sizeof other, sizeof other);
        return (first | (piece ^ other)) == 0;
    };
    if (size > 2 * sizeof(std::uint64_t)) {
        return std::memcmp(a, b, size) == 0;
    }
    if (size >= 8) {
        return both_ends(std::uint64_t{});
    }
    if (size >= 4) {
        return both_ends(std::uint32_t{});
    }
    return size == 0 || (*a == *b && a[size / 2] == b[size / 2] && a[size - 1] == b[size - 1]);
}

} // namespace partkeep
