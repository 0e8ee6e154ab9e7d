// How long a server is waited for.
#pragma once

#include "partlibrary/library/library_text.h"

#include <QString>

#include <chrono>
#include <string_view>

namespace partkeep {

inline constexpr std::chrono::milliseconds browse_patience{2000};
inline constexpr std::chrono::milliseconds tool_patience{60000};
inline constexpr std::chrono::milliseconds impatience{10000};
inline constexpr std::chrono::milliseconds between_attempts{50};

// What the client library says, which may have several lines.
[[nodiscard]] inline QString OneLine(std::string_view text)
{
    return FromUtf8(text).simplified();
}

} // namespace partkeep
