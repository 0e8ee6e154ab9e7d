#include "tests/support/linux_faults.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <grp.h>
#include <iterator>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr uid_t nobody = 65534;

// A fault that cannot be made must not look like a test that passed.
void Require(bool done, const char* what)
{
    if (!done) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void WriteTo(const char* path, const std::string& text)
{
    Require((std::ofstream(path) << text).flush().good(), path);
}

// Root needs no user namespace, unless it is the root of a container that holds the right back.
void EnterNamespace()
{
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNS) != 0) {
        Require(unshare(CLONE_NEWNS | CLONE_NEWUSER) == 0, "mount namespace");
        WriteTo("/proc/self/setgroups", "deny");
        WriteTo("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
        WriteTo("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    }
    Require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
}

void Mount(const std::filesystem::path& where, const std::string& options)
{
    Require(mount("partkeep-test", where.c_str(), "tmpfs", 0, options.c_str()) == 0, "mount");
}

// Flags of the mount below that a namespace may not take off again are handed on.
void SetReadOnlyHere(const std::filesystem::path& where, bool read_only)
{
    struct statvfs status {};
    Require(statvfs(where.c_str(), &status) == 0, "statvfs");
    const unsigned long kept = status.f_flag & (MS_NOSUID | MS_NODEV | MS_NOEXEC);
    const unsigned long flags = MS_REMOUNT | MS_BIND | kept | (read_only ? MS_RDONLY : 0);
    Require(mount(nullptr, where.c_str(), nullptr, flags, nullptr) == 0, "remount");
}

void BindOnItself(const std::filesystem::path& what)
{
    Require(mount(what.c_str(), what.c_str(), nullptr, MS_BIND, nullptr) == 0, "bind mount");
}

// What is thrown ends the child process with a signal.
[[noreturn]] void EndWith(const std::function<bool()>& action) noexcept
{
    _exit(action() ? 0 : 1);
}

// In a child process, so that this one stays as it is.
bool Succeeds(const std::function<bool()>& action)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        EndWith(action);
    }
    int status = 0;
    Require(child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status), "child");
    return WEXITSTATUS(status) == 0;
}

bool BecomeNobody()
{
    return setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0;
}

// Where there is nobody else to become, giving up the capabilities does the same.
void DropPrivileges()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    Require(CanOwnForOthers() ? BecomeNobody() : syscall(SYS_capset, &header, none) == 0, "privileges");
}

constexpr std::uint64_t changes[] = {
    SYS_write,    SYS_pwrite64, SYS_ftruncate, SYS_renameat2, SYS_linkat,
    SYS_unlinkat, SYS_mkdirat,  SYS_utimensat, SYS_ioctl,     SYS_copy_file_range,
#ifdef SYS_renameat // some, and the next ones, only older processors have
    SYS_renameat,
#endif
#ifdef SYS_unlink
    SYS_unlink,   SYS_rename,   SYS_link,      SYS_mkdir,     SYS_rmdir,
#endif
};

// Of a child that stands at a call of the system.
bool IsChange(pid_t child)
{
    __ptrace_syscall_info call{};
    Require(ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof call, &call) > 0, "look at a child");
    const bool makes_file = call.entry.nr == SYS_openat && (call.entry.args[2] & O_CREAT) != 0;
    return call.op == PTRACE_SYSCALL_INFO_ENTRY &&
           (makes_file || std::find(std::begin(changes), std::end(changes), call.entry.nr) != std::end(changes));
}

} // namespace

bool CanMount()
{
    static const bool can = Succeeds([] {
        try {
            EnterNamespace();
            Mount("/", "");
            return true;
        } catch (const std::system_error& problem) {
            std::fprintf(stderr, "%s\n", problem.what());
            return false;
        }
    });
    return can;
}

CMount::CMount(std::filesystem::path folder) : folder_(std::move(folder))
{
    [[maybe_unused]] static const bool entered = (EnterNamespace(), true);
}

// With all that is mounted below.
CMount::~CMount()
{
    Require(umount2(folder_.c_str(), MNT_DETACH) == 0, "umount");
}

CMountedDisk::CMountedDisk(std::filesystem::path folder, const std::string& size) : CMount(std::move(folder))
{
    Mount(folder_, "mode=0777,size=" + size);
}

void CMountedDisk::Fill(std::size_t spare)
{
    const int file = open((folder_ / ".filler").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    const std::string block(4096, 'x');
    while (write(file, block.data(), block.size()) > 0) {
    }
    const bool full = errno == ENOSPC;
    Require(full && ftruncate(file, lseek(file, 0, SEEK_END) - static_cast<off_t>(spare)) == 0, "filler");
    close(file);
}

void CMountedDisk::SetReadOnly(bool read_only)
{
    SetReadOnlyHere(folder_, read_only);
}

CReadOnlyFolder::CReadOnlyFolder(std::filesystem::path folder, const std::filesystem::path& writable_file)
    : CMount(std::move(folder))
{
    BindOnItself(folder_);
    if (!writable_file.empty()) {
        BindOnItself(writable_file);
    }
    SetReadOnlyHere(folder_, true);
}

void GiveToUnprivilegedUser(const std::filesystem::path& path)
{
    Require(!CanOwnForOthers() || lchown(path.c_str(), nobody, nobody) == 0, "chown");
}

bool CanOwnForOthers()
{
    return Succeeds([] {
        const int file = memfd_create("partkeep-test", MFD_CLOEXEC);
        return fchown(file, nobody, nobody) == 0 && BecomeNobody();
    });
}

bool RunWithoutPrivileges(const std::function<bool()>& action)
{
    return Succeeds([&action] {
        DropPrivileges();
        return action();
    });
}

Ended KillAtChange(int place, const std::function<bool()>& action)
{
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) {
            raise(SIGSTOP);
        }
        _exit(action() ? 0 : 1);
    }
    int status = 0;
    Require(waitpid(child, &status, 0) == child && WIFSTOPPED(status) &&
                ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) == 0,
            "watch a child");
    for (int made = 0; WIFSTOPPED(status);) {
        made += WSTOPSIG(status) == (SIGTRAP | 0x80) && IsChange(child) ? 1 : 0;
        Require((made == place ? kill(child, SIGKILL)
                               : static_cast<int>(ptrace(PTRACE_SYSCALL, child, nullptr, nullptr))) == 0,
                "lead a child");
        Require(waitpid(child, &status, 0) == child, "wait for a child");
    }
    return WIFSIGNALED(status) ? Ended::Killed : WEXITSTATUS(status) == 0 ? Ended::Well : Ended::Badly;
}

} // namespace partkeep
