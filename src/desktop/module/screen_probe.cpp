// Tries whether the toolkit can open a screen here, in a process of its own: where it cannot, the toolkit ends the
// process, and display libraries and plugins have ways of their own to hang or crash.

#include "host/windows_part.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr unsigned last_resort_seconds = 4; // whoever started this is gone, or stopped, by then

// These draw for nobody, hear nobody, or open without a screen too: a window there would wait for ever.
bool SomebodySees(const QString& platform)
{
    return platform != u"offscreen" && platform != u"minimal" && platform != u"minimalegl" &&
           platform != u"vkkhrdisplay";
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
    _exit(partkeep::screen_found_code); // what comes behind could only take time
}
