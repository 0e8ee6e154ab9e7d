#include "interface/screen.h"

#include "interface/shielded_process.h"

#include <QCoreApplication>
#include <QThread>
#include <QVariant>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pthread.h>
#include <string>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace partkeep {

namespace {

using std::chrono::steady_clock;

constexpr auto probe_time = std::chrono::milliseconds(1800); // of the 2 s that an operation may take altogether
constexpr auto fresh_time = std::chrono::minutes(1);
constexpr std::u16string_view raised_rights_text = u"the process runs with raised rights.";
constexpr int probe_tries = 2;

// What a dialog with its toolkit, plugins and fonts needs, with room to spare: it was seen with 530 MB of addresses and
// 11 files, and on 600 KB of stack.
constexpr rlim_t window_memory_bytes = rlim_t{1} << 30U;
constexpr rlim_t window_files = 64;
constexpr std::size_t window_stack_bytes = std::size_t{512} << 10U;

std::string Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A copy made by fork without exec shares the connection to the screen with its parent, and may not touch it.
bool application_is_parents = false;

void NoteFork()
{
    application_is_parents = application_is_parents || QCoreApplication::instance() != nullptr;
}

[[maybe_unused]] const int watches_forks = pthread_atfork(nullptr, nullptr, NoteFork);

// For a component that was loaded after the fork: platforms with a server read from it on threads, which a fork leaves
// behind.
bool LostItsThreads(const QCoreApplication& application)
{
    const QByteArray platform = application.property("platformName").toByteArray();
    if (!platform.startsWith("xcb") && !platform.startsWith("wayland")) {
        return false;
    }
    std::error_code error;
    const std::filesystem::directory_iterator threads("/proc/self/task", error);
    return !error && std::distance(begin(threads), end(threads)) == 1;
}

std::u16string_view ProblemWith(const QCoreApplication& application)
{
    if (geteuid() != getuid()) {
        return raised_rights_text;
    }
    if (application_is_parents || LostItsThreads(application)) {
        return u"the screen belongs to the process that this one was forked from.";
    }
    if (application.property(screen_lost_property).toBool()) {
        return u"the display server has gone.";
    }
    if (!application.inherits("QApplication")) {
        return u"the host's own application is of a kind without windows of this sort.";
    }
    if (application.thread() != QThread::currentThread()) {
        return u"windows belong to the thread of the host's application, and this is another.";
    }
    return QCoreApplication::closingDown() ? u"the host's application is ending." : u"";
}

// ---- Where the component would make the application

bool HasRaisedRights()
{
    return getauxval(AT_SECURE) != 0 || getuid() != geteuid() || getgid() != getegid();
}

// Platforms that draw for nobody, and a session without anything that names a screen.
bool NobodyCanSee()
{
    const std::string platforms = Environment("QT_QPA_PLATFORM");
    if (platforms.empty()) {
        return Environment("DISPLAY").empty() && Environment("WAYLAND_DISPLAY").empty();
    }
    const std::string first = platforms.substr(0, platforms.find_first_of(":;"));
    return first == "offscreen" || first == "minimal" || first == "minimalegl";
}

// The system's own count, in pages: all, resident, shared, text, library, data.
rlim_t PagesInUse(int column)
{
    std::ifstream counts("/proc/self/statm");
    rlim_t pages = 0;
    for (int read = 0; read <= column && counts; ++read) {
        counts >> pages;
    }
    return counts ? pages : 0;
}

bool MemoryIsTight()
{
    const auto is_tight = [](__rlimit_resource_t resource, int column) {
        rlimit limit{};
        return getrlimit(resource, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
               PagesInUse(column) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + window_memory_bytes > limit.rlim_cur;
    };
    return is_tight(RLIMIT_AS, 0) || is_tight(RLIMIT_DATA, 5);
}

bool FilesAreTight()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return false;
    }
    std::error_code error;
    const std::filesystem::directory_iterator open("/proc/self/fd", error);
    const auto count = static_cast<rlim_t>(std::distance(begin(open), end(open)));
    return error ? error == std::errc::too_many_files_open : count + window_files > limit.rlim_cur;
}

bool StackIsTight()
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return false;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_destroy(&attributes);
    const char here = 0;
    return &here < static_cast<const char*>(lowest) + window_stack_bytes;
}

// The toolkit takes exhausted memory, files or stack for a reason to end the process.
bool HostIsTight()
{
    return MemoryIsTight() || FilesAreTight() || StackIsTight();
}

// All that tells the toolkit which screen it is to open.
std::string NamedScreen()
{
    std::string all;
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "XAUTHORITY",
                             "QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH"}) {
        all += Environment(name) + '\n';
    }
    return all;
}

// No screen was found where this is named.
struct NoScreen {
    std::string named;
    steady_clock::time_point until;
};

// Null: no screen. An end without an answer is no end to ask again after at once: a server that starts anew, which it
// may do because this very process has just left it, refuses a client once.
std::unique_ptr<CHeldScreen> ProbeScreen(const std::string& program)
{
    static NoScreen none;
    const std::string named = NamedScreen();
    if (none.named == named && steady_clock::now() < none.until) {
        return nullptr;
    }
    const auto deadline = steady_clock::now() + probe_time;
    ProgramEnd end;
    for (int tries = 0; tries < probe_tries && end.code == -1 && !end.ran_out_of_time; ++tries) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now());
        auto held = std::make_unique<CHeldScreen>();
        end = RunShielded(program, left, held->ProgramsEnd());
        if (end.code == screen_found_code) {
            return held;
        }
    }
    none = {named, end.ran_out_of_time ? steady_clock::now() + fresh_time : steady_clock::time_point::max()};
    return nullptr;
}

} // namespace

ScreenAnswer FindScreen(const CWindowsLibrary& library)
{
    if (!library.IsThere()) {
        return {library_missing_text, nullptr};
    }
    if (const QCoreApplication* application = QCoreApplication::instance()) {
        return {ProblemWith(*application), nullptr};
    }
    if (HasRaisedRights()) {
        return {raised_rights_text, nullptr};
    }
    if (HostIsTight()) {
        return {u"the process is short of memory, files or stack for it.", nullptr};
    }
    std::unique_ptr<CHeldScreen> held = NobodyCanSee() ? nullptr : ProbeScreen(library.ProbePath());
    return {held == nullptr ? u"no screen can be reached." : u"", std::move(held)};
}

} // namespace partkeep
