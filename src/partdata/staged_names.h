// Which files belong to a part, judged by their full paths alone. The rules are odd on purpose: hosts have relied
// on what stays and what goes for years, so nothing here is tidied up.
#pragma once

#include <optional>
#include <string_view>

namespace partkeep {

struct PathParts {
    std::u16string_view bare_name;
    std::u16string_view extension; // everything behind the dot, other dots included
};

// Parts at the first dot of the whole path, folders included: below a folder that holds a dot the bare name is a
// piece of that folder's name. Nothing for a path that ends in a dot or has none.
[[nodiscard]] std::optional<PathParts> TakePathApart(std::u16string_view path);

// True for a file that makes way before `name` is staged anew: the part's own and its companions "B2D" and "B3D".
// XML files and SY files stay; a new copy is laid over them.
[[nodiscard]] bool IsClearedBeforeStaging(std::u16string_view path, std::u16string_view name);

// True for a file of the working folder that goes with `name`. Only the tail of a name is compared, so that
// prefixes of any kind are hit, and so are parts whose names end in `name`. `name` must not be empty.
[[nodiscard]] bool IsDeletedWithPart(std::u16string_view path, std::u16string_view name);

} // namespace partkeep
