// What a whole answer may take, of time and of memory, where somebody waits for it: behind the first seconds it has to
// come as fast as over the slowest of lines, and it has an end. That each byte comes in time says neither.
#pragma once

#include <QtGlobal>

#include <algorithm>
#include <chrono>
#include <sys/ioctl.h>

namespace partkeep {

class CPgAnswer {
public:
    using Clock = std::chrono::steady_clock;

    void Begin()
    {
        began_ = Clock::now();
        bytes_ = 0;
    }

    // Calls `read`, which takes what has come, and counts it by what lies at the socket before and behind: how much it
    // takes the client library tells nobody. That is too little where more comes meanwhile, and too much only of TLS in
    // smaller records than servers send.
    template <typename Read>
    auto Count(int socket, const Read& read)
    {
        const qint64 before = Lying(socket);
        const auto result = read();
        bytes_ += std::max(before - Lying(socket), std::min(before, least_read));
        return result;
    }

    [[nodiscard]] Clock::time_point Until() const
    {
        const std::chrono::milliseconds by_rate{bytes_ * 1000 / slowest_rate};
        return began_ + std::min(first_seconds + by_rate, longest);
    }
    [[nodiscard]] bool IsEndless() const { return bytes_ > most_bytes; }

    static constexpr qint64 most_bytes = 128 << 20;
    static constexpr const char* endless = "an answer without end";

private:
    static constexpr std::chrono::milliseconds first_seconds{10000};
    static constexpr std::chrono::milliseconds longest{60000};
    static constexpr qint64 slowest_rate = 16 << 10; // bytes a second
    static constexpr qint64 least_read = 8 << 10;    // as far as they are there

    [[nodiscard]] static qint64 Lying(int socket)
    {
        int bytes = 0;
        return ioctl(socket, FIONREAD, &bytes) == 0 ? bytes : 0;
    }

    Clock::time_point began_;
    qint64 bytes_ = 0;
};

} // namespace partkeep
