#include "tests/support/linux_faults.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr uid_t nobody = 65534;

// A fault that can't be made must not look like a test that passed.
void Require(bool done, const char* what)
{
    if (!done) {
        std::fprintf(stderr, "%s: %s\n", what, std::strerror(errno));
        std::abort();
    }
}

void WriteTo(const char* path, const std::string& text)
{
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    const bool written = file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    Require(written, path);
    close(file);
}

// Whether this process was root before it entered a namespace.
bool EnterNamespace()
{
    const uid_t user = geteuid();
    const gid_t group = getegid();
    Require(unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) == 0, "mount namespace");
    if (user != 0) {
        WriteTo("/proc/self/setgroups", "deny");
        WriteTo("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
        WriteTo("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    }
    Require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
    return user == 0;
}

bool IsRealRoot()
{
    static const bool real_root = EnterNamespace();
    return real_root;
}

void Unmount(const std::filesystem::path& where)
{
    if (!where.empty()) {
        Require(umount2(where.c_str(), MNT_DETACH) == 0, "umount");
    }
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

// In a namespace of a single user there is nobody else to become; giving up the capabilities does the same.
void DropPrivileges()
{
    if (IsRealRoot()) {
        Require(setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0, "setuid");
        return;
    }
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    Require(syscall(SYS_capset, &header, none) == 0, "capset");
}

} // namespace

CMountedDisk::CMountedDisk(std::filesystem::path folder, const std::string& size) : folder_(std::move(folder))
{
    IsRealRoot();
    const std::string options = "mode=0777,size=" + size;
    Require(mount("partkeep-test", folder_.c_str(), "tmpfs", 0, options.c_str()) == 0, "mount");
}

CMountedDisk::~CMountedDisk()
{
    Unmount(folder_);
}

void CMountedDisk::Fill(std::size_t spare)
{
    const int file = open((folder_ / ".filler").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    Require(file >= 0, "filler");
    const std::string block(4096, 'x');
    off_t size = lseek(file, 0, SEEK_END);
    for (ssize_t written = 0; (written = write(file, block.data(), block.size())) > 0;) {
        size += written;
    }
    Require(errno == ENOSPC && ftruncate(file, size - static_cast<off_t>(spare)) == 0, "filler");
    close(file);
}

void CMountedDisk::MakeRoom()
{
    std::filesystem::remove(folder_ / ".filler");
}

void CMountedDisk::SetReadOnly(bool read_only)
{
    SetReadOnlyHere(folder_, read_only);
}

CReadOnlyFolder::CReadOnlyFolder(std::filesystem::path folder, std::filesystem::path writable_file)
    : folder_(std::move(folder)), writable_file_(std::move(writable_file))
{
    IsRealRoot();
    BindOnItself(folder_);
    if (!writable_file_.empty()) {
        BindOnItself(writable_file_);
    }
    SetReadOnlyHere(folder_, true);
}

CReadOnlyFolder::~CReadOnlyFolder()
{
    Unmount(writable_file_);
    Unmount(folder_);
}

void GiveToUnprivilegedUser(const std::filesystem::path& path)
{
    if (IsRealRoot()) {
        Require(lchown(path.c_str(), nobody, nobody) == 0, "chown");
    }
}

bool CanOwnForOthers()
{
    return IsRealRoot();
}

bool RunWithoutPrivileges(const std::function<bool()>& action)
{
    IsRealRoot();
    std::fflush(nullptr);
    const pid_t child = fork();
    Require(child >= 0, "fork");
    if (child == 0) {
        DropPrivileges();
        _exit(action() ? 0 : 1);
    }
    int status = 0;
    Require(waitpid(child, &status, 0) == child && WIFEXITED(status), "child");
    return WEXITSTATUS(status) == 0;
}

} // namespace partkeep
