// Tries whether the toolkit can open a screen here, in a process of its own: where it cannot, the toolkit ends the
// process, and display libraries and plugins have ways of their own to hang or crash.

#include "host/windows_part.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

#include <array>
#include <cstring>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned last_resort_seconds = 4; // whoever started this is gone, or stopped, by then

// These draw for nobody, hear nobody, or open without a screen too: a window there would wait for ever.
bool SomebodySees(const QString& platform)
{
    return platform != u"offscreen" && platform != u"minimal" && platform != u"minimalegl" &&
           platform != u"vkkhrdisplay";
}

bool IsSocket(int file)
{
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISSOCK(status.st_mode);
}

// Into the standard input, where whoever started this keeps them open until it has opened the screen itself: the
// server shall not see its last client go before.
void SendConnections()
{
    constexpr std::size_t most = 64;
    constexpr int highest = 1024;
    std::array<int, most> sockets{};
    std::size_t count = 0;
    for (int file = STDERR_FILENO + 1; file < highest && count < most; ++file) {
        if (IsSocket(file)) {
            sockets[count++] = file;
        }
    }
    char byte = 0;
    iovec content{&byte, 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof sockets)> files{};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = files.data();
    message.msg_controllen = CMSG_SPACE(count * sizeof(int));
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(count * sizeof(int));
    std::memcpy(CMSG_DATA(header), sockets.data(), count * sizeof(int));
    sendmsg(STDIN_FILENO, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
}

} // namespace

int main(int argc, char** argv)
{
    alarm(last_resort_seconds);
    prctl(PR_SET_DUMPABLE, 0); // an end by abort is an answer, and nothing to keep a memory image of
    const QApplication application(argc, argv);
    QWidget window;
    window.winId(); // makes the window in the window system, unseen
    if (!SomebodySees(QGuiApplication::platformName()) || QGuiApplication::primaryScreen() == nullptr) {
        _exit(1);
    }
    SendConnections();
    _exit(partkeep::screen_found_code); // what comes behind could only take time
}
