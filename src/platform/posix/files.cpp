#include "platform/files.h"

#include "platform/posix/file_handle.h"
#include "platform/posix/path_lookup.h"
#include "platform/posix/utf8.h"
#include "platform/posix/whole_file.h"
#include "platform/text_mode.h"

#include <algorithm>
#include <array>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

bool EndsInSeparator(std::u16string_view path)
{
    return !path.empty() && path.back() == path_separator;
}

std::string WithoutFinalSeparator(std::string native)
{
    if (native.size() > 1 && native.ends_with('/')) {
        native.pop_back();
    }
    return native;
}

bool ReadStatus(std::u16string_view path, struct stat& status)
{
    return stat(FindOnDisk(path).c_str(), &status) == 0;
}

// By text alone: each name behind the one before, "." left out, ".." taking one away, as the other platform does it.
// A dot that stays in the path would change which staged files count as a part's.
std::u16string WithoutDots(std::u16string_view path)
{
    std::u16string plain;
    while (!path.empty()) {
        const std::size_t end = path.find(path_separator);
        const std::u16string_view name = path.substr(0, end);
        if (name == u"..") {
            plain.resize(std::min(plain.size(), plain.rfind(path_separator)));
        } else if (!name.empty() && name != u".") {
            plain.append(1, path_separator).append(name);
        }
        path.remove_prefix(end == std::u16string_view::npos ? path.size() : end + 1);
    }
    return plain;
}

// With a separator at its end; a relative folder lies in the current one. Empty when that is gone.
std::u16string MakeAbsolute(std::u16string_view folder)
{
    if (folder.front() == path_separator) {
        return WithoutDots(folder) + path_separator;
    }
    std::array<char, PATH_MAX> current{};
    if (getcwd(current.data(), current.size()) == nullptr) {
        return {};
    }
    return WithoutDots(CorePath(current.data()) + path_separator + std::u16string(folder)) + path_separator;
}

} // namespace

bool PathExists(std::u16string_view path)
{
    struct stat status {};
    return ReadStatus(path, status);
}

bool FileExists(std::u16string_view path)
{
    struct stat status {};
    return ReadStatus(path, status) && !S_ISDIR(status.st_mode);
}

bool MakeDirectory(std::u16string_view path)
{
    return mkdir(FindOnDisk(path).c_str(), 0777) == 0;
}

bool RemoveEmptyDirectory(std::u16string_view path)
{
    return rmdir(WithoutFinalSeparator(FindOnDisk(path)).c_str()) == 0;
}

bool RemoveFile(std::u16string_view path)
{
    const std::string native = FindOnDisk(path);
    struct stat status {};
    return lstat(native.c_str(), &status) == 0 && !S_ISDIR(status.st_mode) && unlink(native.c_str()) == 0;
}

std::vector<std::u16string> ListFolder(std::u16string_view folder)
{
    return ListFolder(folder, [](std::u16string_view) { return true; });
}

// Sorted at the end and joined in one place: most names of a large folder are looked at and left.
std::vector<std::u16string> ListFolder(std::u16string_view folder, const PathFilter& wanted)
{
    std::vector<std::u16string> paths;
    if (!EndsInSeparator(folder)) {
        return paths;
    }
    const std::string native = FindOnDisk(folder);
    std::u16string path = MakeAbsolute(folder);
    if (native.empty() || path.empty()) {
        return paths;
    }
    const std::size_t name_start = path.size();
    ReadFolder(native, [&](const std::u16string& name) {
        path.replace(name_start, std::u16string::npos, name);
        if (wanted(path)) {
            paths.push_back(path);
        }
    });
    std::sort(paths.begin(), paths.end());
    return paths;
}

struct CFileSearch::Listings {
    CSpellings spellings;
};

CFileSearch::CFileSearch() : listings_(std::make_unique<Listings>()) {}

CFileSearch::~CFileSearch() = default;

bool CFileSearch::FileExists(std::u16string_view path)
{
    struct stat status {};
    return stat(listings_->spellings.FindOnDisk(path).c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

void CFileSearch::Forget()
{
    *listings_ = {};
}

std::optional<std::string> ReadTextFile(std::u16string_view path, bool* in_trouble)
{
    std::optional<std::string> bytes = ReadWholeFile(FindOnDisk(path), in_trouble);
    if (bytes) {
        FromTextMode(*bytes);
    }
    return bytes;
}

bool ReplaceTextFile(std::u16string_view path, std::string_view text, OldFile old_file)
{
    const std::string native = FindOnDisk(path);
    return !native.empty() && ReplaceWholeFile(native, ToTextMode(text), old_file);
}

std::string NativePath(std::u16string_view path)
{
    return FindOnDisk(path);
}

std::u16string CorePath(std::string_view native)
{
    std::u16string path = WidenUtf8(native);
    std::replace(path.begin(), path.end(), u'/', path_separator);
    return path;
}

} // namespace partkeep
