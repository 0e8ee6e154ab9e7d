#include "platform/files.h"

#include "platform/text.h"
#include "platform/text_mode.h"
#include "platform/windows/file_handle.h"
#include "platform/windows/system_path.h"
#include "platform/windows/whole_file.h"
#include "platform/windows/wide.h"

#include <algorithm>
#include <windows.h>

namespace partkeep {

namespace {

bool IsSeparator(char16_t unit)
{
    return unit == u'\\' || unit == u'/';
}

DWORD AttributesOf(std::u16string_view path)
{
    const std::u16string system_path = SystemPath(path);
    return system_path.empty() ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(AsWide(system_path.c_str()));
}

bool IsFolder(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// The system is lenient here: some versions find a file under a path that ends like a folder's.
bool IsFileAsFolder(std::u16string_view path, DWORD attributes)
{
    return !path.empty() && IsSeparator(path.back()) && !IsFolder(attributes);
}

std::u16string WithoutFinalSeparator(std::u16string system_path)
{
    if (system_path.ends_with(path_separator)) {
        system_path.pop_back();
    }
    return system_path;
}

} // namespace

bool PathExists(std::u16string_view path)
{
    const DWORD attributes = AttributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !IsFileAsFolder(path, attributes);
}

bool FileExists(std::u16string_view path)
{
    const DWORD attributes = AttributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !IsFolder(attributes) && !IsFileAsFolder(path, attributes);
}

bool MakeDirectory(std::u16string_view path)
{
    const std::u16string folder = WithoutFinalSeparator(SystemPath(path));
    return !folder.empty() && CreateDirectoryW(AsWide(folder.c_str()), nullptr) != 0;
}

bool RemoveEmptyDirectory(std::u16string_view path)
{
    const std::u16string folder = WithoutFinalSeparator(SystemPath(path));
    return !folder.empty() && RemoveDirectoryW(AsWide(folder.c_str())) != 0;
}

bool RemoveFile(std::u16string_view path)
{
    return FileExists(path) && DeleteFileW(AsWide(SystemPath(path).c_str())) != 0;
}

std::vector<std::u16string> ListFolder(std::u16string_view folder)
{
    std::vector<std::u16string> paths;
    if (folder.empty() || !IsSeparator(folder.back())) {
        return paths;
    }
    WIN32_FIND_DATAW entry{};
    const std::u16string pattern = SystemPath(folder) + u'*';
    const HANDLE search = FindFirstFileExW(AsWide(pattern.c_str()), FindExInfoBasic, &entry, FindExSearchNameMatch,
                                           nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE) {
        return paths;
    }
    const std::u16string prefix = FullPath(folder);
    do {
        const std::u16string name = FromWide(entry.cFileName);
        if (name != u"." && name != u"..") {
            paths.push_back(prefix + name);
        }
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::u16string> ListFolder(std::u16string_view folder, const PathFilter& wanted)
{
    std::vector<std::u16string> paths = ListFolder(folder);
    std::erase_if(paths, [&wanted](const std::u16string& path) { return !wanted(path); });
    return paths;
}

// The system finds any name at once.
struct CFileSearch::Listings {};

CFileSearch::CFileSearch() = default;

CFileSearch::~CFileSearch() = default;

bool CFileSearch::FileExists(std::u16string_view path)
{
    return partkeep::FileExists(path);
}

void CFileSearch::Forget() {}

std::optional<std::string> ReadTextFile(std::u16string_view path, bool* in_trouble)
{
    std::optional<std::string> bytes = ReadWholeFile(SystemPath(path), in_trouble);
    if (bytes) {
        FromTextMode(*bytes);
    }
    return bytes;
}

bool ReplaceTextFile(std::u16string_view path, std::string_view text, OldFile old_file)
{
    const std::u16string system_path = SystemPath(path);
    return !system_path.empty() && ReplaceWholeFile(system_path, ToTextMode(text), old_file);
}

// The system finds names without regard to case, so that no spelling needs to be looked up.
std::string NativePath(std::u16string_view path)
{
    std::u16string native(path);
    std::replace(native.begin(), native.end(), u'/', path_separator);
    return NarrowText(native, utf8_code_page);
}

std::u16string CorePath(std::string_view native)
{
    std::u16string path = WidenText(native, utf8_code_page);
    std::replace(path.begin(), path.end(), u'/', path_separator);
    return path;
}

} // namespace partkeep
