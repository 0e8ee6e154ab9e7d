// Core paths as the wide file calls take them.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

// The absolute path by the system's rules (separators, current folder and drive, "." and ".."), without a prefix;
// a final separator stays. Empty for an empty path and for one that holds a NUL.
[[nodiscard]] std::u16string FullPath(std::u16string_view path);

// The full path in the form that has no limit of 260 characters. Device names stay device names.
[[nodiscard]] std::u16string SystemPath(std::u16string_view path);

} // namespace partkeep
