#include "desktop/screen_watch.h"

#include "host/windows_part.h"
#include "partlibrary/library/library_text.h"
#include "platform/posix/stderr_messages.h"

#include <QApplication>
#include <QThread>

#include <dlfcn.h>
#include <exception>
#include <pthread.h>

namespace partkeep {

namespace {

QtMessageHandler others = nullptr; // who takes the toolkit's messages otherwise

bool TellsTheEnd(const QString& text)
{
    return text.startsWith(u"The X11 connection broke (") || text.startsWith(u"The Wayland connection ");
}

// The toolkit's own threads read from the server: theirs ends, and the application's is told.
[[noreturn]] void LeaveToolkit()
{
    if (qApp->thread() != QThread::currentThread()) {
        QMetaObject::invokeMethod(qApp, LeaveToolkit, Qt::QueuedConnection);
        pthread_exit(nullptr);
    }
    qApp->setProperty(screen_lost_property, true);
    throw CScreenLost();
}

// The toolkit's last words before it ends the process are the one place to get away from there, by an exception. That
// it minds the exception, on its way out of its loops, is of no use to anybody. A pipe that nobody reads must not end
// the process either.
void TakeMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (std::uncaught_exceptions() > 0 && qApp != nullptr && qApp->property(screen_lost_property).toBool()) {
        return;
    }
    if (others != nullptr) {
        others(type, context, text);
    } else {
        CStderrMessages().Show({ToWide(qFormatLogMessage(type, context, text)), u"Partkeep Read"});
    }
    if (TellsTheEnd(text) && std::uncaught_exceptions() == 0 && qApp != nullptr) {
        LeaveToolkit();
    }
}

// ---- The toolkit asks Xlib too, for pointers and keyboards, and that has an exit of its own

using XlibHandler = int (*)(_XDisplay*);

XlibHandler xlib_others = nullptr;
_XDisplay* own_display = nullptr;

// To return from here is well on this display: it is marked, and later calls do nothing.
int TakeXlibError(_XDisplay* display)
{
    return display == own_display || xlib_others == nullptr ? 0 : xlib_others(display);
}

void GoOn(_XDisplay* /*display*/, void* /*data*/) {}

// From the library that the toolkit's platform uses: null where it uses none, or an old one.
template <typename Function>
Function* FromXlib(const char* name)
{
    void* library = dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) {
        return nullptr;
    }
    void* found = dlsym(library, name);
    dlclose(library); // it stays: the platform holds it
    return reinterpret_cast<Function*>(found);
}

} // namespace

CScreenWatch::CScreenWatch() : before_(qInstallMessageHandler(nullptr))
{
    const QtMessageHandler toolkits = qInstallMessageHandler(TakeMessage);
    others = before_ == toolkits ? nullptr : before_;
}

CScreenWatch::~CScreenWatch()
{
    const QtMessageHandler last = qInstallMessageHandler(before_);
    if (last != TakeMessage) {
        qInstallMessageHandler(last); // somebody's who came later
    }
    if (own_display != nullptr) {
        own_display = nullptr;
        FromXlib<XlibHandler(XlibHandler)>("XSetIOErrorHandler")(xlib_others);
    }
}

void CScreenWatch::KeepXlibFromExit()
{
    const auto* native = qApp->nativeInterface<QNativeInterface::QX11Application>();
    auto* set_exit = FromXlib<void(_XDisplay*, void (*)(_XDisplay*, void*), void*)>("XSetIOErrorExitHandler");
    auto* set_handler = FromXlib<XlibHandler(XlibHandler)>("XSetIOErrorHandler");
    if (native == nullptr || set_exit == nullptr || set_handler == nullptr) {
        return;
    }
    own_display = native->display();
    set_exit(own_display, GoOn, nullptr);
    xlib_others = set_handler(TakeXlibError);
}

} // namespace partkeep
