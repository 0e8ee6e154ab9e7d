#include "platform/posix/whole_file.h"

#include "platform/posix/file_handle.h"
#include "platform/posix/temporary_files.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr char access_list[] = "system.posix_acl_access";
constexpr mode_t all_mode_bits = 07777;

enum class Outcome { Done, Forbidden, Failed };

// By errno of the call that has just failed.
Outcome WhyItFailed()
{
    const bool forbidden = errno == EACCES || errno == EPERM || errno == EROFS;
    return forbidden ? Outcome::Forbidden : Outcome::Failed;
}

std::string FolderOf(const std::string& native)
{
    return native.substr(0, native.rfind('/') + 1); // without a separator: nothing, which is the current folder
}

std::optional<std::string> ReadLink(const std::string& native)
{
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlink(native.c_str(), target.data(), target.size());
    if (size <= 0) {
        return std::nullopt;
    }
    return std::string(target.data(), static_cast<std::size_t>(size));
}

// The file that a chain of links ends at, whether it exists or not; realpath would refuse one that does not.
std::string FollowLinks(std::string native)
{
    constexpr int longest_chain = 40; // the limit of the system itself
    for (int count = 0; count < longest_chain; ++count) {
        const std::optional<std::string> target = ReadLink(native);
        if (!target) {
            break;
        }
        native = target->starts_with('/') ? *target : FolderOf(native) + *target;
    }
    return native;
}

// Removes the file unless it was renamed away.
class CTemporaryFile {
public:
    CTemporaryFile(std::string name, unsigned mode)
        : name_(std::move(name)), handle_(CFileHandle::Open(name_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode))
    {
        exists_ = handle_.IsOpen();
        HoldTemporaryFile(handle_.Descriptor());
    }
    ~CTemporaryFile()
    {
        if (exists_) {
            unlink(name_.c_str());
        }
    }
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;

    [[nodiscard]] const CFileHandle& Handle() const { return handle_; }

    [[nodiscard]] bool Flush() const { return fsync(handle_.Descriptor()) == 0; }

    Outcome RenameTo(const std::string& target)
    {
        if (rename(name_.c_str(), target.c_str()) != 0) {
            return WhyItFailed();
        }
        exists_ = false;
        return Outcome::Done;
    }

    // Not every file system knows the renaming that replaces nothing; one that does not has second names.
    bool RenameToNew(const std::string& target)
    {
        exists_ = renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) != 0;
        return !exists_ || (errno != EEXIST && link(name_.c_str(), target.c_str()) == 0);
    }

private:
    std::string name_;
    CFileHandle handle_;
    bool exists_ = false;
};

// With an access list the group bits of the mode are its mask: set without the list they would give the file's
// group more than it had.
bool CopyAccessList(int from, int to)
{
    const ssize_t size = fgetxattr(from, access_list, nullptr, 0);
    if (size <= 0) {
        return true;
    }
    std::string list(static_cast<std::size_t>(size), '\0');
    return fgetxattr(from, access_list, list.data(), list.size()) == size &&
           fsetxattr(to, access_list, list.data(), list.size(), 0) == 0;
}

// Called when all is written, and the owner goes first: both clear mode bits.
bool CopyRights(const CFileHandle& from, const CFileHandle& to)
{
    struct stat old_status {};
    struct stat new_status {};
    if (fstat(from.Descriptor(), &old_status) != 0 || fstat(to.Descriptor(), &new_status) != 0) {
        return false;
    }
    const bool same_owner = old_status.st_uid == new_status.st_uid && old_status.st_gid == new_status.st_gid;
    if (!same_owner && fchown(to.Descriptor(), old_status.st_uid, old_status.st_gid) != 0) {
        return false;
    }
    return fchmod(to.Descriptor(), old_status.st_mode & all_mode_bits) == 0 &&
           CopyAccessList(from.Descriptor(), to.Descriptor());
}

// A rename lasts only once its folder is on the disk. A folder that cannot be flushed changes nothing about the
// outcome: the file is whole either way.
void FlushFolder(const std::string& target)
{
    const std::string folder = FolderOf(target);
    const CFileHandle handle = CFileHandle::Open(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY);
    if (handle.IsOpen()) {
        fsync(handle.Descriptor());
    }
}

// `old_file` is not open when there is no file yet.
Outcome ReplaceFromBeside(const std::string& target, const CFileHandle& old_file, std::string_view bytes)
{
    RemoveLeftOvers(FolderOf(target));
    const std::string name = NewTemporaryName();
    if (name.empty()) {
        return Outcome::Failed;
    }
    CTemporaryFile beside(FolderOf(target) + name, old_file.IsOpen() ? 0600 : 0666);
    if (!beside.Handle().IsOpen()) {
        return WhyItFailed();
    }
    if (!beside.Handle().WriteAll(bytes)) {
        return Outcome::Failed;
    }
    if (old_file.IsOpen() && !CopyRights(old_file, beside.Handle())) {
        return WhyItFailed();
    }
    if (!beside.Flush()) {
        return Outcome::Failed;
    }
    const Outcome outcome = beside.RenameTo(target);
    if (outcome == Outcome::Done) {
        FlushFolder(target);
    }
    return outcome;
}

// Reserving the space first leaves the old content alone on a disk that is full. A file system that cannot
// reserve is trusted.
bool WriteInPlace(const CFileHandle& file, std::string_view bytes)
{
    const auto size = static_cast<off_t>(bytes.size());
    if (size > 0 && fallocate(file.Descriptor(), FALLOC_FL_KEEP_SIZE, 0, size) != 0 && errno != EOPNOTSUPP &&
        errno != ENOSYS) {
        return false;
    }
    return file.WriteAll(bytes) && ftruncate(file.Descriptor(), size) == 0 && fsync(file.Descriptor()) == 0;
}

// The name under which the old file stays when its own goes to the new one: a second name for it, which needs no
// reading, or a copy where the file system has no such names. The first number that is free; the last one gives way.
std::optional<std::string> KeepBeside(const std::string& target, const CFileHandle& old_file)
{
    constexpr char last_number = '9';
    for (char number = '1'; number <= last_number; ++number) {
        const std::string name = target + ".kept" + number;
        if (number == last_number) {
            unlink(name.c_str());
        }
        if (link(target.c_str(), name.c_str()) == 0) {
            return name;
        }
        if (errno != EEXIST) {
            const std::optional<std::string> bytes = ReadWholeFile(target);
            const bool copied = bytes && ReplaceFromBeside(name, old_file, *bytes) == Outcome::Done;
            return copied ? std::optional(name) : std::nullopt;
        }
    }
    return std::nullopt;
}

bool IsRegular(const CFileHandle& file)
{
    struct stat status {};
    return fstat(file.Descriptor(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

bool ReplaceWholeFile(const std::string& native, std::string_view bytes, OldFile old)
{
    const std::string target = FollowLinks(native);
    CFileHandle old_file = CFileHandle::Open(target, O_WRONLY);
    if (old_file.IsOpen() ? !IsRegular(old_file) : errno != ENOENT || target.ends_with('/')) {
        return false;
    }
    const bool keeps = old == OldFile::Kept && old_file.IsOpen();
    const std::optional<std::string> kept = keeps ? KeepBeside(target, old_file) : std::nullopt;
    if (keeps && !kept) {
        return false;
    }
    const Outcome outcome = ReplaceFromBeside(target, old_file, bytes);
    if (kept && outcome != Outcome::Done) {
        unlink(kept->c_str());
        return false;
    }
    if (outcome == Outcome::Forbidden && old_file.IsOpen()) {
        const bool written = WriteInPlace(old_file, bytes);
        return old_file.Close() && written;
    }
    return outcome == Outcome::Done;
}

bool CreateWholeFile(const std::string& native, std::string_view bytes)
{
    RemoveLeftOvers(FolderOf(native));
    const std::string name = NewTemporaryName();
    CTemporaryFile beside(FolderOf(native) + name, 0666);
    const bool made = !name.empty() && beside.Handle().IsOpen() && beside.Handle().WriteAll(bytes) && beside.Flush() &&
                      beside.RenameToNew(native);
    if (made) {
        FlushFolder(native);
    }
    return made;
}

} // namespace partkeep
