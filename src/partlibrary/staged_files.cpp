#include "partlibrary/staged_files.h"

#include "platform/files.h"
#include "platform/text.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace partkeep {

namespace {

constexpr qsizetype write_bytes = 262144;

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

// Behind what a write has taken; pieces that are used up are left out, empty ones too.
std::vector<iovec>::iterator Advance(std::vector<iovec>::iterator first, std::vector<iovec>::iterator end,
                                     std::size_t count)
{
    while (first != end && count >= first->iov_len) {
        count -= first->iov_len;
        ++first;
    }
    if (first != end) {
        first->iov_base = static_cast<char*>(first->iov_base) + count;
        first->iov_len -= count;
    }
    return first;
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
    if (file_ >= 0) {
        close(file_);
    }
    for (const Entry& entry : entries_) {
        unlinkat(directory_, entry.temporary.c_str(), 0);
    }
    if (directory_ >= 0) {
        close(directory_);
    }
}

bool CStagedFiles::Fail(int error)
{
    const std::string text = std::generic_category().message(error);
    problem_ = {FaultOfError(error), QString::fromStdString(folder_), QString::fromStdString(text)};
    return false;
}

bool CStagedFiles::Begin(std::u16string_view name)
{
    if (problem_ || !End()) {
        return false;
    }
    const std::string narrow = NarrowText(name, utf8_code_page);
    if (folder_.size() + 1 + narrow.size() >= PATH_MAX || narrow.size() > NAME_MAX) {
        return Fail(ENAMETOOLONG);
    }
    entries_.push_back({std::u16string(name), prefix_ + std::to_string(entries_.size())});
    file_ = openat(directory_, entries_.back().temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                   new_file_mode);
    return file_ >= 0 || Fail(errno);
}

// Kept until there is enough for one large write, which the file system answers with large blocks.
bool CStagedFiles::Append(const QByteArray& content)
{
    pending_.push_back(content);
    pending_bytes_ += content.size();
    return pending_bytes_ < write_bytes || Flush();
}

bool CStagedFiles::Flush()
{
    std::vector<iovec> pieces;
    for (const QByteArray& content : pending_) {
        pieces.push_back({const_cast<char*>(content.constData()), static_cast<std::size_t>(content.size())});
    }
    for (auto first = pieces.begin(); first != pieces.end();) {
        const ssize_t count = writev(file_, &*first, static_cast<int>(pieces.end() - first));
        if (count < 0 && errno != EINTR) {
            return Fail(errno);
        }
        first = Advance(first, pieces.end(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    pending_.clear();
    pending_bytes_ = 0;
    return true;
}

// A file system may tell only here that there was no room.
bool CStagedFiles::End()
{
    if (file_ < 0) {
        return true;
    }
    const bool flushed = Flush();
    const bool closed = close(std::exchange(file_, -1)) == 0;
    return flushed && (closed || Fail(errno));
}

// A file of another spelling keeps its name and takes the new content.
bool CStagedFiles::Commit()
{
    if (problem_ || !End()) {
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
