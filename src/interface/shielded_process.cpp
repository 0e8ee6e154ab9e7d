#include "interface/shielded_process.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace partkeep {

namespace {

using std::chrono::steady_clock;

constexpr std::size_t stack_bytes = std::size_t{256} << 10U;

class CSpawnSettings {
public:
    explicit CSpawnSettings(int input)
    {
        posix_spawn_file_actions_init(&actions_);
        if (input != -1) {
            posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        } else {
            posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        }
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_WRONLY, 0);
        }
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~CSpawnSettings()
    {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    CSpawnSettings(const CSpawnSettings&) = delete;
    CSpawnSettings& operator=(const CSpawnSettings&) = delete;

    [[nodiscard]] pid_t Start(const char* program) const
    {
        pid_t process = -1;
        char* const arguments[] = {const_cast<char*>(program), nullptr};
        return posix_spawn(&process, program, &actions_, &attributes_, arguments, environ) == 0 ? process : -1;
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

struct Errand {
    const char* program;
    int input;
    const CSpawnSettings& settings;
    steady_clock::time_point deadline;
    ProgramEnd end;
};

// False when the deadline has come.
bool WaitForChildSignal(steady_clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - steady_clock::now()).count();
    if (left <= 0) {
        return false;
    }
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    const timespec time{static_cast<std::time_t>(left / 1'000'000'000), static_cast<long>(left % 1'000'000'000)};
    sigtimedwait(&child, nullptr, &time);
    return true;
}

void WaitForEnd(pid_t process, Errand& errand)
{
    int status = 0;
    pid_t ended = 0;
    while ((ended = waitpid(process, &status, WNOHANG)) == 0 && WaitForChildSignal(errand.deadline)) {
    }
    if (ended == 0) {
        errand.end.ran_out_of_time = true;
        kill(process, SIGKILL);
        while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
        }
    } else if (ended == process && WIFEXITED(status)) {
        errand.end.code = WEXITSTATUS(status);
    }
}

void CloseAllBut(int kept)
{
    if (kept > 0) {
        close_range(0, static_cast<unsigned>(kept) - 1, 0);
    }
    close_range(static_cast<unsigned>(kept + 1), ~0U, 0);
}

// The go-between: a process, so that it has signals, descriptors and children of its own, which works in the host's
// memory while the calling thread stands still.
int RunErrand(void* argument)
{
    auto& errand = *static_cast<Errand*>(argument);
    // The host may ignore it, and its child would then leave no status. Its handlers must not run here.
    struct sigaction plain {};
    plain.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &plain, nullptr);
    CloseAllBut(errand.input);
    const pid_t process = errand.settings.Start(errand.program);
    if (process > 0) {
        WaitForEnd(process, errand);
    }
    return 0;
}

class CStack {
public:
    CStack() : lowest_(mmap(nullptr, stack_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
    ~CStack()
    {
        if (Exists()) {
            munmap(lowest_, stack_bytes);
        }
    }
    CStack(const CStack&) = delete;
    CStack& operator=(const CStack&) = delete;

    [[nodiscard]] bool Exists() const { return lowest_ != MAP_FAILED; }
    [[nodiscard]] void* Top() const { return static_cast<char*>(lowest_) + stack_bytes; }

private:
    void* lowest_;
};

} // namespace

ProgramEnd RunShielded(const std::string& program, std::chrono::milliseconds time, int input)
{
    const CSpawnSettings settings(input);
    Errand errand{program.c_str(), input, settings, steady_clock::now() + time, {}};
    const CStack stack;
    if (!stack.Exists()) {
        return errand.end;
    }
    // No signal may reach the go-between: its handlers are the host's, and so is its memory.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    int cancelling = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelling);
    // No signal at its end, by the lowest byte: plain waits of the host pass it over then.
    const pid_t between = clone(RunErrand, stack.Top(), CLONE_VM | CLONE_VFORK, &errand);
    if (between > 0) {
        while (waitpid(between, nullptr, static_cast<int>(__WCLONE)) < 0 && errno == EINTR) {
        }
    }
    pthread_setcancelstate(cancelling, nullptr);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return errand.end;
}

} // namespace partkeep
