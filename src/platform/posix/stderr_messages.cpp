#include "platform/posix/stderr_messages.h"

#include "platform/posix/utf8.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

namespace partkeep {

namespace {

bool SteersTerminal(char16_t unit)
{
    return (unit < 0x20 && unit != u'\n' && unit != u'\t') || (unit >= 0x7F && unit < 0xA0);
}

// Holds back the signal that ends a process which writes to a pipe that nobody reads.
class CNoPipeSignal {
public:
    CNoPipeSignal()
    {
        sigset_t pending;
        sigpending(&pending);
        was_pending_ = sigismember(&pending, SIGPIPE) == 1;
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~CNoPipeSignal()
    {
        const timespec at_once{};
        while (!was_pending_ && sigtimedwait(&pipe_, nullptr, &at_once) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    CNoPipeSignal(const CNoPipeSignal&) = delete;
    CNoPipeSignal& operator=(const CNoPipeSignal&) = delete;

private:
    sigset_t pipe_{};
    sigset_t before_{};
    bool was_pending_ = false;
};

// A pipe whose reader sleeps must not hold the host: what does not go in soon is dropped.
bool TakesBytes()
{
    constexpr int patience_milliseconds = 100;
    pollfd stream{STDERR_FILENO, POLLOUT, 0};
    return poll(&stream, 1, patience_milliseconds) == 1;
}

} // namespace

void CStderrMessages::Show(const Message& message)
{
    std::u16string line = message.title + u": " + message.text;
    std::erase(line, u'\r');
    std::replace_if(line.begin(), line.end(), SteersTerminal, u'\uFFFD');
    line += u'\n';
    const std::string bytes = NarrowToUtf8(line);
    const CNoPipeSignal quiet;
    std::fflush(stderr);
    for (std::size_t done = 0; done < bytes.size() && TakesBytes();) {
        // No more at once than a pipe that takes bytes is sure to take.
        const ssize_t count =
            write(STDERR_FILENO, bytes.data() + done, std::min<std::size_t>(bytes.size() - done, PIPE_BUF));
        if (count <= 0 && errno != EINTR) {
            return;
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

} // namespace partkeep
