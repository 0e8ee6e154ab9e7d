// Wide core paths to native ones: separators, and names looked up without regard to case on a file system that
// has it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace partkeep {

// The path as it is spelled on disk as far as it exists, the rest as given. Separators become "/", runs of them
// one; one at the end stays. Empty for an empty path and for one that holds a NUL or a "/": inside the core that is
// no separator, and no name has one. A path whose exact spelling exists costs one call of the system; otherwise each
// folder with a missing name is read once.
[[nodiscard]] std::string FindOnDisk(std::u16string_view path);

// The same for many paths while nothing changes: no folder is read twice.
class CSpellings {
public:
    [[nodiscard]] std::string FindOnDisk(std::u16string_view path);

private:
    using Names = std::unordered_map<std::u16string, std::u16string>; // by upper case, the first in sorted order

    [[nodiscard]] std::string FindOtherSpelling(const std::string& native_folder, const std::string& wanted);

    std::unordered_map<std::string, Names> folders_; // by native path
};

// Hands over the names in a native folder in no order, without "." and "..". A name that core text cannot tell
// apart (not UTF-8, or with a backslash in it) is left out, so that no other file is ever hit in its place.
void ReadFolder(const std::string& native_folder, const std::function<void(const std::u16string&)>& use);

} // namespace partkeep
