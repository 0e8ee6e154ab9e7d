// A host of a kind that is told, which loads the component as it stands, twice, and works it. Writes into a file:
// results of a read of a part, a read that has a message, a dialog and a multi selection, the number of parts, and the
// longest of these in milliseconds.
//   environment_host LIBRARY WORK-FOLDER RESULT-FILE KIND

#include "partkeep_read.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

char** words = nullptr;

template <typename Function>
Function* Named(void* library, const char* name)
{
    void* found = dlsym(library, name);
    return found != nullptr ? reinterpret_cast<Function*>(found) : (_exit(3), nullptr);
}
#define CALL(name) Named<decltype(name)>(library, #name)

void Work()
{
    for (int time = 0; time < 2; ++time) {
        void* again = dlopen(words[1], RTLD_NOW | RTLD_LOCAL);
        if (again == nullptr || (time == 0 && dlclose(again) != 0)) {
            _exit(4);
        }
    }
    void* library = dlopen(words[1], RTLD_NOW | RTLD_LOCAL);
    std::string results;
    long longest = 0;
    const auto note = [&](const std::function<int()>& operation) {
        const auto start = std::chrono::steady_clock::now();
        results += std::to_string(operation()) + " ";
        const auto time = std::chrono::steady_clock::now() - start;
        longest =
            std::max(longest, static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()));
    };
    partkeep_read* object = CALL(partkeep_read_create)();
    CALL(partkeep_read_set_working_folder)(object, words[2]);
    CALL(partkeep_read_set_language_id)(object, 1);
    for (const char* part : {"BRK-1", "\x01 no such server"}) {
        note([&] {
            return CALL(partkeep_read_read_cad_data)(object, part[0] == 'B' ? "PLATES" : part, "Brackets\\L", part, "",
                                                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        });
    }
    note([&] { return CALL(partkeep_read_invoke)(object); });
    note([&] { return CALL(partkeep_read_invoke_multi_selection)(object, 1); });
    int32_t number = -1;
    CALL(partkeep_read_number_of_parts_selected)(object, &number);
    CALL(partkeep_read_destroy)(object);
    dlclose(library);
    std::ofstream(words[3]) << results << number << ' ' << longest;
}

void WorkOnStack(std::size_t bytes)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread{};
    pthread_create(
        &thread, &attributes, [](void*) -> void* { return Work(), nullptr; }, nullptr);
    pthread_join(thread, nullptr);
}

void WorkInFork()
{
    const pid_t child = fork();
    if (child == 0) {
        Work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        _exit(5);
    }
}

template <typename Application>
void Under(const std::function<void()>& work)
{
    int count = 1;
    Application application(count, words);
    work();
}

// As a program on the other toolkit: connected to the screen before anything of ours is loaded.
void WorkBesideGtk()
{
    void* gtk = dlopen("libgtk-3.so.0", RTLD_NOW | RTLD_GLOBAL);
    gtk = gtk != nullptr ? gtk : dlopen("libgtk-x11-2.0.so.0", RTLD_NOW | RTLD_GLOBAL);
    void* start = gtk != nullptr ? dlsym(gtk, "gtk_init_check") : nullptr;
    if (start == nullptr || reinterpret_cast<int (*)(int*, char***)>(start)(nullptr, nullptr) == 0) {
        _exit(77);
    }
    Work();
}

// Does what is told with each window that comes up, again and again.
void Watch(const std::function<void(QWidget&)>& look)
{
    QTimer::singleShot(10, qApp, [look] {
        if (QWidget* window = QApplication::activeModalWidget()) {
            look(*window);
        }
        Watch(look);
    });
}

void ExitInTheDialog()
{
    Watch([](QWidget& window) { window.windowTitle() == "Partkeep Read" ? std::exit(0) : void(); });
}

void CloseWindows()
{
    Watch([](QWidget& window) { window.close(); });
}

// The display server's end, once there is a window of that title; others are closed.
void EndScreenIn(const char* title)
{
    Watch([title](QWidget& window) {
        window.windowTitle() == title ? static_cast<void>(kill(std::atoi(std::getenv("SERVER")), SIGKILL))
                                      : static_cast<void>(window.close());
    });
}

// With what runs as soon as the component makes its application. No other program takes part, which would keep up a
// display server that minds its last client.
void WorkWith(void (*routine)(), int rounds = 1)
{
    qAddPreRoutine(routine);
    for (int round = 0; round < rounds; ++round) {
        Work();
    }
}

void WorkWithSignals(void (*handler)(int))
{
    std::signal(SIGCHLD, handler);
    Work();
}

void WorkWithoutSignals()
{
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, nullptr);
    Work();
}

void WorkWithBrokenPipe()
{
    int ends[2];
    if (pipe(ends) == 0) {
        close(ends[0]);
        dup2(ends[1], STDERR_FILENO);
    }
    Work();
}

} // namespace

int main(int /*count*/, char** arguments)
{
    words = arguments;
    const std::string kind = arguments[4];
    const auto on_thread = [] { std::thread(Work).join(); };
    const std::pair<const char*, std::function<void()>> kinds[] = {
        {"plain", Work},
        {"thread", on_thread},
        {"small stack", [] { WorkOnStack(std::size_t{128} << 10U); }},
        {"fork", WorkInFork},
        {"core", [] { Under<QCoreApplication>(Work); }},
        {"gui", [] { Under<QGuiApplication>(Work); }},
        {"other thread", [&] { Under<QApplication>(on_thread); }},
        {"fork of a window host", [] { Under<QApplication>(WorkInFork); }},
        {"gtk", WorkBesideGtk},
        {"exits in the dialog", [] { WorkWith(ExitInTheDialog); }},
        {"closes its windows", [] { WorkWith(CloseWindows); }},
        {"closes its windows, again and again", [] { WorkWith(CloseWindows, 20); }},
        {"raised rights, own application",
         [] { Under<QApplication>([] { seteuid(65534) == 0 ? Work() : _exit(77); }); }},
        {"loses the screen in a message", [] { WorkWith([] { EndScreenIn("Kolvyn PartkeepRead"); }); }},
        {"loses the screen in the dialog", [] { WorkWith([] { EndScreenIn("Partkeep Read"); }); }},
        {"ignores children", [] { WorkWithSignals(SIG_IGN); }},
        {"reaps children",
         [] {
             WorkWithSignals([](int) {
                 while (waitpid(-1, nullptr, WNOHANG) > 0) {
                 }
             });
         }},
        {"knows its children", [] { WorkWithSignals([](int) { _exit(6); }); }},
        {"blocks signals", WorkWithoutSignals},
        {"raised rights", [] { return seteuid(65534) == 0 ? Work() : _exit(77); }},
        {"broken pipe for errors", WorkWithBrokenPipe},
    };
    for (const auto& [name, work] : kinds) {
        if (kind == name) {
            work();
            return 0;
        }
    }
    return 2;
}
