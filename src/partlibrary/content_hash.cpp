#include "partlibrary/content_hash.h"

#include <bit>
#include <cstddef>
#include <cstring>

namespace partkeep {

namespace {

constexpr std::size_t lanes = 4;
constexpr std::size_t lane_bytes = 8;
constexpr std::uint64_t odd_factor = 0x9E3779B97F4A7C15U; // 2^64 divided by the golden ratio

std::uint64_t Mix(std::uint64_t state, std::uint64_t word)
{
    return std::rotl((state ^ word) * odd_factor, 29);
}

// Little endian on every machine that the library runs on; the copy keeps the read aligned.
std::uint64_t ReadWord(const char* bytes, std::size_t count)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

} // namespace

// Four independent lanes, since one multiplication must not wait for the last.
std::int64_t ContentHash(QByteArrayView content)
{
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t state[lanes] = {1, 2, 3, 4};
    const char* bytes = content.data();
    auto left = static_cast<std::size_t>(content.size());
    for (; left >= lanes * lane_bytes; left -= lanes * lane_bytes, bytes += lanes * lane_bytes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            state[lane] = Mix(state[lane], ReadWord(bytes + lane * lane_bytes, lane_bytes));
        }
    }
    for (; left > 0;) {
        const std::size_t count = left < lane_bytes ? left : lane_bytes;
        state[0] = Mix(state[0], ReadWord(bytes, count));
        bytes += count;
        left -= count;
    }
    std::uint64_t result = static_cast<std::uint64_t>(content.size());
    for (const std::uint64_t lane : state) {
        result = Mix(result, lane);
    }
    result ^= result >> 32;
    return static_cast<std::int64_t>(result * odd_factor);
}

} // namespace partkeep
