// How long a server is waited for.
#pragma once

#include "partlibrary/library/library_text.h"

#include <QString>

#include <cerrno>
#include <chrono>
#include <poll.h>
#include <span>
#include <string_view>

namespace partkeep {

inline constexpr std::chrono::milliseconds browse_patience{2000};
inline constexpr std::chrono::milliseconds tool_patience{60000};
inline constexpr std::chrono::milliseconds impatience{10000};
inline constexpr std::chrono::milliseconds between_attempts{50};
inline constexpr std::string_view too_late = "no answer in time";

// What the client library says, which may have several lines.
[[nodiscard]] inline QString OneLine(std::string_view text)
{
    return FromUtf8(text).simplified();
}

// As poll has it: 0 when the time is over.
[[nodiscard]] inline int PollUntil(std::span<pollfd> sockets, std::chrono::steady_clock::time_point until)
{
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now()).count();
        const int ready = left > 0 ? poll(sockets.data(), sockets.size(), static_cast<int>(left)) : 0;
        if (ready >= 0 || errno != EINTR) {
            return ready;
        }
    }
}

[[nodiscard]] inline int PollUntil(pollfd socket, std::chrono::steady_clock::time_point until)
{
    return PollUntil(std::span(&socket, 1), until);
}

} // namespace partkeep
