#include "interface/held_screen.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

// 0 for what is no socket.
ino_t SocketNumber(int file)
{
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISSOCK(status.st_mode) ? status.st_ino : 0;
}

} // namespace

CHeldScreen::CHeldScreen()
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()) == 0) {
        numbers_ = {SocketNumber(ends_[0]), SocketNumber(ends_[1])};
    }
}

// The host may have closed them, on another thread, and their numbers are then another file's.
CHeldScreen::~CHeldScreen()
{
    for (std::size_t end = 0; end < ends_.size(); ++end) {
        if (numbers_[end] != 0 && SocketNumber(ends_[end]) == numbers_[end]) {
            close(ends_[end]);
        }
    }
}

} // namespace partkeep
