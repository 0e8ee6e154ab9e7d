// Wide core paths to native ones: separators, and names looked up without regard to case on a file system that
// has it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

// The path as it is spelled on disk as far as it exists, the rest as given. Separators become "/", runs of them
// one; one at the end stays. Empty for an empty path and for one that holds a NUL. A path whose exact spelling
// exists costs one call of the system; otherwise each folder with a missing name is read once.
[[nodiscard]] std::string FindOnDisk(std::u16string_view path);

// The names in a native folder in sorted order, without "." and "..". A name that core text can't tell apart
// (not UTF-8, or with a backslash in it) is left out, so that no other file is ever hit in its place.
[[nodiscard]] std::vector<std::u16string> ReadFolder(const std::string& native_folder);

} // namespace partkeep
