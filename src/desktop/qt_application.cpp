#include "desktop/qt_application.h"

#include <QApplication>
#include <QLibraryInfo>

#include <dlfcn.h>
#include <filesystem>
#include <string>
#include <string_view>

namespace partkeep {

namespace {

std::string_view Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// Through the library that Qt's own plugin uses, loaded for the moment only: libxcb's xcb_connect never fails by
// a null pointer, so the connection is asked.
bool XServerAnswers()
{
    if (Environment("DISPLAY").empty()) {
        return false;
    }
    const std::unique_ptr<void, int (*)(void*)> library(dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL), dlclose);
    if (library == nullptr) {
        return false;
    }
    using Connect = void* (*)(const char*, int*);
    using HasError = int (*)(void*);
    using Disconnect = void (*)(void*);
    const auto connect = reinterpret_cast<Connect>(dlsym(library.get(), "xcb_connect"));
    const auto has_error = reinterpret_cast<HasError>(dlsym(library.get(), "xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library.get(), "xcb_disconnect"));
    if (connect == nullptr || has_error == nullptr || disconnect == nullptr) {
        return false;
    }
    void* connection = connect(nullptr, nullptr);
    const bool answers = has_error(connection) == 0;
    disconnect(connection);
    return answers;
}

bool WaylandAnswers()
{
    const std::string display(Environment("WAYLAND_DISPLAY"));
    if (display.empty()) {
        return false;
    }
    std::error_code error;
    const std::filesystem::path socket = std::filesystem::path(Environment("XDG_RUNTIME_DIR")) / display;
    const std::filesystem::path plugins = QLibraryInfo::path(QLibraryInfo::PluginsPath).toStdString();
    return std::filesystem::exists(socket, error) &&
           std::filesystem::exists(plugins / "platforms" / "libqwayland-generic.so", error);
}

std::shared_ptr<QApplication> MakeApplication()
{
    static int count = 1;
    static char name[] = "partkeep-read";
    static char* arguments[] = {name, nullptr};
    // The setting outlives the application, and the host may yet make one of its own.
    const bool quits = QApplication::quitOnLastWindowClosed();
    std::shared_ptr<QApplication> application(new QApplication(count, static_cast<char**>(arguments)),
                                              [quits](QApplication* made) {
                                                  delete made;
                                                  QApplication::setQuitOnLastWindowClosed(quits);
                                              });
    QApplication::setQuitOnLastWindowClosed(false);
    return application;
}

} // namespace

bool ScreenCanBeReached()
{
    const std::string_view chosen = Environment("QT_QPA_PLATFORM");
    if (!chosen.empty() && !chosen.starts_with("xcb") && !chosen.starts_with("wayland")) {
        return true; // offscreen and the like need no server
    }
    return XServerAnswers() || (!chosen.starts_with("xcb") && WaylandAnswers());
}

void CQtApplication::Ensure()
{
    static std::weak_ptr<QApplication> shared;
    if (made_ != nullptr) {
        return;
    }
    made_ = shared.lock();
    if (made_ == nullptr && QCoreApplication::instance() == nullptr && ScreenCanBeReached()) {
        made_ = MakeApplication();
        shared = made_;
    }
}

} // namespace partkeep
