#include "partlibrary/staged_files.h"

#include "platform/files.h"
#include "platform/text.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

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

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

// The file names in a folder, whose descriptor stays open.
std::vector<std::string> FileNames(int directory)
{
    std::vector<std::string> names;
    const int copy = openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, DirectoryCloser> stream(copy >= 0 ? fdopendir(copy) : nullptr);
    if (stream == nullptr) {
        if (copy >= 0) {
            close(copy);
        }
        return names;
    }
    while (const dirent* entry = readdir(stream.get())) {
        names.emplace_back(entry->d_name);
    }
    return names;
}

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// Folding is slow beside reading a folder's names, so plain ASCII of another length is told apart at once.
bool IsSpelling(const std::string& candidate, std::string_view narrow, std::u16string_view wide)
{
    if (candidate.size() != narrow.size() && IsAscii(candidate) && IsAscii(narrow)) {
        return false;
    }
    return EqualNoCase(WidenText(candidate, utf8_code_page), wide);
}

} // namespace

CStagedFiles::CStagedFiles(std::u16string_view folder)
    : folder_(folder.empty() ? "." : NativePath(folder)), prefix_(RandomPrefix())
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

bool CStagedFiles::Add(std::u16string_view name, QByteArrayView content)
{
    if (problem_) {
        return false;
    }
    const std::string narrow = NarrowText(name, utf8_code_page);
    if (folder_.size() + 1 + narrow.size() >= PATH_MAX || narrow.size() > NAME_MAX) {
        return Fail(ENAMETOOLONG);
    }
    std::string temporary = prefix_ + std::to_string(entries_.size());
    entries_.push_back({std::u16string(name), temporary, {}});
    return WriteTemporary(temporary, content);
}

bool CStagedFiles::WriteTemporary(const std::string& temporary, QByteArrayView content)
{
    const int file =
        openat(directory_, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, new_file_mode);
    if (file < 0) {
        return Fail(errno);
    }
    const bool written = WriteAll(file, content);
    const bool closed = close(file) == 0;
    return written && (closed || Fail(errno));
}

bool CStagedFiles::WriteAll(int file, QByteArrayView content)
{
    while (!content.isEmpty()) {
        const ssize_t count = write(file, content.data(), static_cast<std::size_t>(content.size()));
        if (count < 0 && errno != EINTR) {
            return Fail(errno);
        }
        content = content.sliced(std::max<ssize_t>(count, 0));
    }
    return true;
}

// The exact spelling wins. Only where it is missing is the folder read, once for all files.
void CStagedFiles::FindSpellings()
{
    std::vector<std::string> names;
    for (Entry& entry : entries_) {
        entry.target = NarrowText(entry.name, utf8_code_page);
        if (faccessat(directory_, entry.target.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
            continue;
        }
        if (names.empty()) {
            names = FileNames(directory_);
            std::sort(names.begin(), names.end());
        }
        const auto found = std::find_if(names.begin(), names.end(), [&entry](const std::string& candidate) {
            return IsSpelling(candidate, entry.target, entry.name);
        });
        if (found != names.end()) {
            entry.target = *found;
        }
    }
}

bool CStagedFiles::Commit()
{
    if (problem_) {
        return false;
    }
    FindSpellings();
    for (const Entry& entry : entries_) {
        if (renameat(directory_, entry.temporary.c_str(), directory_, entry.target.c_str()) != 0) {
            return Fail(errno);
        }
    }
    entries_.clear();
    return true;
}

} // namespace partkeep
