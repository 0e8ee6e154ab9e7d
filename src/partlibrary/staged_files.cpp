#include "partlibrary/staged_files.h"

#include "platform/files.h"
#include "platform/text.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace partkeep {

namespace {

constexpr mode_t new_file_mode = 0666; // less the process's mask, as for a file that is copied

LibraryFault FaultOfError(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return LibraryFault::DiskFull;
    case ENAMETOOLONG:
        return LibraryFault::PathTooLong;
    default:
        return LibraryFault::WriteFailed;
    }
}

std::string RandomPrefix()
{
    const QString number = QString::number(QRandomGenerator::system()->generate64(), 16);
    return "~partkeep" + number.toStdString() + "-";
}

} // namespace

CStagedFiles::CStagedFiles(std::u16string_view folder, CFolderNames& names)
    : names_(names), folder_(folder.empty() ? "." : NativePath(folder)), prefix_(RandomPrefix())
{
    directory_ = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory_ < 0) {
        Fail(errno);
    }
}

CStagedFiles::~CStagedFiles()
{
    EndAll();
    for (const Entry& entry : entries_) {
        unlinkat(directory_, entry.temporary.c_str(), 0);
    }
    if (directory_ >= 0) {
        close(directory_);
    }
}

LibraryProblem CStagedFiles::ProblemOf(int error) const
{
    const std::string text = std::generic_category().message(error);
    return {FaultOfError(error), QString::fromStdString(folder_), QString::fromStdString(text)};
}

bool CStagedFiles::Fail(int error)
{
    problem_ = ProblemOf(error);
    return false;
}

std::optional<std::size_t> CStagedFiles::Begin(std::u16string_view name)
{
    const std::string narrow = NarrowText(name, utf8_code_page);
    if (!problem_ && (folder_.size() + 1 + narrow.size() >= PATH_MAX || narrow.size() > NAME_MAX)) {
        Fail(ENAMETOOLONG);
    }
    if (problem_) {
        return std::nullopt;
    }
    const std::string temporary = prefix_ + std::to_string(entries_.size());
    const int descriptor =
        openat(directory_, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, new_file_mode);
    if (descriptor < 0) {
        Fail(errno);
        return std::nullopt;
    }
    entries_.push_back({std::u16string(name), temporary, descriptor});
    return entries_.size() - 1;
}

LibraryProblem CStagedFiles::Write(std::size_t file, qint64 offset, std::span<const char> block) const
{
    while (!block.empty()) {
        const ssize_t count = pwrite(entries_[file].descriptor, block.data(), block.size(), offset);
        if (count < 0 && errno != EINTR) {
            return ProblemOf(errno);
        }
        const ssize_t taken = std::max<ssize_t>(count, 0);
        offset += taken;
        block = block.subspan(static_cast<std::size_t>(taken));
    }
    return {};
}

// A file system may tell only here that there was no room.
bool CStagedFiles::EndAll()
{
    int error = 0;
    for (Entry& entry : entries_) {
        const int descriptor = std::exchange(entry.descriptor, -1);
        error = descriptor >= 0 && close(descriptor) != 0 ? errno : error;
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
    for (const Entry& entry : entries_) {
        const std::string target = names_.SpellingOf(directory_, entry.name);
        if (renameat(directory_, entry.temporary.c_str(), directory_, target.c_str()) != 0) {
            return Fail(errno);
        }
    }
    entries_.clear();
    return true;
}

} // namespace partkeep
