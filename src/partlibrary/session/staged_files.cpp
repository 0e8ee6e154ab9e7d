#include "partlibrary/session/staged_files.h"

#include "partlibrary/library/library_text.h"
#include "platform/files.h"
#include "platform/posix/temporary_files.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr mode_t new_file_mode = 0666; // less the process's mask, as for a file that is copied

} // namespace

CStagedFiles::CStagedFiles(std::u16string_view folder, CFolderNames& names)
    : names_(names), folder_(folder.empty() ? "." : NativePath(folder))
{
    directory_ = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory_ < 0) {
        Fail(errno);
    }
}

CStagedFiles::~CStagedFiles()
{
    for (const Entry& entry : entries_) {
        unlinkat(directory_, entry.temporary.c_str(), 0);
        close(entry.descriptor);
    }
    if (directory_ >= 0) {
        close(directory_);
    }
}

bool CStagedFiles::Fail(int error)
{
    problem_ = WriteProblem(error, FromUtf8(folder_));
    return false;
}

bool CStagedFiles::Begin(std::u16string_view name)
{
    const std::string narrow = NarrowText(name, utf8_code_page);
    if (!problem_ && (folder_.size() + 1 + narrow.size() >= PATH_MAX || narrow.size() > NAME_MAX)) {
        Fail(ENAMETOOLONG);
    }
    if (problem_) {
        return false;
    }
    // Before there is a file, which would be left where memory runs out.
    Entry& entry = entries_.emplace_back(Entry{std::u16string(name), NewTemporaryName(), -1});
    entry.descriptor = openat(directory_, entry.temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                              new_file_mode);
    if (entry.descriptor < 0) {
        const int error = errno;
        entries_.pop_back();
        return Fail(error);
    }
    HoldTemporaryFile(entry.descriptor);
    return true;
}

LibraryProblem CStagedFiles::Write(std::span<const char> block) const
{
    while (!block.empty()) {
        const ssize_t count = write(entries_.back().descriptor, block.data(), block.size());
        if (count < 0 && errno != EINTR) {
            return WriteProblem(errno, FromUtf8(folder_));
        }
        block = block.subspan(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return {};
}

// Some file systems tell only when a descriptor is closed that there was no room. A second one is closed for that: the
// first holds the lock until the file has its name.
bool CStagedFiles::EndAll()
{
    int error = 0;
    for (const Entry& entry : entries_) {
        const int second = dup(entry.descriptor);
        error = second < 0 || close(second) != 0 ? errno : error;
    }
    return error == 0 || Fail(error);
}

// A file of another spelling keeps its name and takes the new content.
bool CStagedFiles::Commit()
{
    if (problem_ || !EndAll()) {
        return false;
    }
    names_.Update(directory_);
    std::vector<std::string> targets; // all at first: what is renamed and what is not is told without memory
    targets.reserve(entries_.size());
    for (const Entry& entry : entries_) {
        targets.push_back(names_.SpellingOf(directory_, entry.name));
    }
    std::size_t placed = 0;
    int error = 0;
    for (; placed < entries_.size() && error == 0; placed += error == 0 ? 1 : 0) {
        const bool moved =
            renameat(directory_, entries_[placed].temporary.c_str(), directory_, targets[placed].c_str()) == 0;
        error = moved ? 0 : errno;
        if (moved) {
            close(entries_[placed].descriptor);
        }
    }
    entries_.erase(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(placed));
    return error == 0 || Fail(error);
}

} // namespace partkeep
