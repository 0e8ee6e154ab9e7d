// Files and folders by wide text paths, joined with backslashes by their callers and taken unchanged.
// Where the system separates by "/", a core path that holds one is refused: what comes from outside is converted by
// CorePath where it enters. Names are found without regard to case: on a file system
// that has case the exact spelling wins, otherwise the first in sorted order, for creation as well.
// A relative path starts at the process's current folder. No operation throws; all fail by result.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

inline constexpr char16_t path_separator = u'\\';

// True for a file or folder, with or without a separator at the end of the path of a folder.
[[nodiscard]] bool PathExists(std::u16string_view path);
[[nodiscard]] bool FileExists(std::u16string_view path); // a file, not a folder

// Creates one level. False when it exists already or cannot be made.
bool MakeDirectory(std::u16string_view path);

// Removes an empty folder; a trailing separator does no harm. Never removes a file.
bool RemoveEmptyDirectory(std::u16string_view path);

// Deletes a file (or a link), never a folder.
bool RemoveFile(std::u16string_view path);

// The absolute path of each entry of a folder, "." and ".." left out, in sorted order. `folder` must end in
// its separator: a text that does not lists nothing, so that no neighbour is hit by a path cut short.
// The folder part of each result is `folder` as given, made absolute, "." and ".." resolved by their text.
[[nodiscard]] std::vector<std::u16string> ListFolder(std::u16string_view folder);

// Those of them that `wanted` accepts: far cheaper than all where they are few.
using PathFilter = std::function<bool(std::u16string_view path)>;
[[nodiscard]] std::vector<std::u16string> ListFolder(std::u16string_view folder, const PathFilter& wanted);

// Asks for many files while nobody changes their folders: each folder is read once at most, where FileExists
// reads it for each name that is not there. What was read counts until Forget.
class CFileSearch {
public:
    CFileSearch();
    ~CFileSearch();
    CFileSearch(const CFileSearch&) = delete;
    CFileSearch& operator=(const CFileSearch&) = delete;

    [[nodiscard]] bool FileExists(std::u16string_view path);
    void Forget();

private:
    struct Listings;

    std::unique_ptr<Listings> listings_; // null where the system itself finds a name in any case
};

// The whole file in text mode: each CR LF becomes LF, a lone CR or LF stays. Nothing when it cannot be read
// to its end. The byte 0x1A is ordinary. `in_trouble` tells that the file was not read although it may be there for
// us: the system had an error other than that it is missing or forbidden, and the next try may succeed.
[[nodiscard]] std::optional<std::string> ReadTextFile(std::u16string_view path, bool* in_trouble = nullptr);

enum class OldFile { Dropped, Kept };

// Replaces a file as a whole in text mode: each LF becomes CR LF. Old content or new, never in between:
// written beside, flushed, checked and renamed; links are followed, mode and owner kept. A file that cannot
// be opened for writing is left alone. Only where permission forbids a file beside it is it written in place.
// `Kept` leaves an old file beside the new one, its name followed by ".kept1" or the next number that is free, and
// writes nothing where that cannot be done. Behind nine of them the ninth is replaced.
bool ReplaceTextFile(std::u16string_view path, std::string_view text, OldFile old_file = OldFile::Dropped);

// The platform's own spelling of a path: separators native, each component as it is spelled on disk as far
// as it exists. UTF-8 on Linux.
[[nodiscard]] std::string NativePath(std::u16string_view path);

// A native UTF-8 path as the core spells it, with backslashes. Adds and drops no trailing separator.
[[nodiscard]] std::u16string CorePath(std::string_view native);

} // namespace partkeep
