#include "partdata/staged_names.h"

#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <array>

namespace partkeep {

namespace {

using namespace std::string_view_literals;

// Spelled exactly so: "b2d" is an ordinary beginning of a name.
constexpr std::array companion_prefixes{u"B2D"sv, u"B3D"sv, u"B2d"sv, u"B3d"sv};

std::u16string_view WithoutCompanionPrefix(std::u16string_view bare_name)
{
    const bool is_companion = std::any_of(companion_prefixes.begin(), companion_prefixes.end(),
                                          [bare_name](auto prefix) { return bare_name.starts_with(prefix); });
    return is_companion ? bare_name.substr(companion_prefixes.front().size()) : bare_name;
}

std::u16string_view Tail(std::u16string_view text, std::size_t length)
{
    return text.substr(text.size() - std::min(length, text.size()));
}

} // namespace

std::optional<PathParts> TakePathApart(std::u16string_view path)
{
    const std::size_t dot = path.find(u'.');
    if (dot == std::u16string_view::npos || path.ends_with(u'.')) {
        return std::nullopt;
    }
    const std::u16string_view stem = path.substr(0, dot);
    return PathParts{stem.substr(stem.rfind(path_separator) + 1), path.substr(dot + 1)};
}

bool IsClearedBeforeStaging(std::u16string_view path, std::u16string_view name)
{
    const auto parts = TakePathApart(path);
    if (!parts.has_value() || !EqualNoCase(WithoutCompanionPrefix(parts->bare_name), name)) {
        return false;
    }
    const std::u16string extension = UpperCase(parts->extension);
    return extension != u"XML" && !extension.starts_with(u"SY");
}

bool IsDeletedWithPart(std::u16string_view path, std::u16string_view name)
{
    const auto parts = TakePathApart(path);
    if (!parts.has_value() || !EqualNoCase(Tail(parts->bare_name, name.size()), name)) {
        return false;
    }
    const std::u16string extension = UpperCase(parts->extension);
    return extension != u"XML" && extension != u"BMP" && extension != u"SY5";
}

} // namespace partkeep
