// The rules on staged names once more, unit by unit and with nothing of the system's own, for comparison.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace partkeep::model {

// What random names are made of. Upper() knows exactly these.
inline constexpr std::u16string_view alphabet = u"Pp.B23dDbxXMLSY5iga\\ \u3000\u00E4\u00C4\uFF41\uFF21\u92FC\u8868";

inline std::u16string Upper(std::u16string text)
{
    for (char16_t& unit : text) {
        const bool has_case = (unit >= u'a' && unit <= u'z') || unit == u'\u00E4' || unit == u'\uFF41';
        unit = static_cast<char16_t>(has_case ? unit - 0x20 : unit);
    }
    return text;
}

struct Parts {
    bool skipped = false;
    std::u16string bare;
    std::u16string extension;
};

inline Parts Split(const std::u16string& path)
{
    Parts parts;
    bool behind_dot = false;
    for (const char16_t unit : path) {
        if (behind_dot) {
            parts.extension += unit;
        } else if (unit == u'.') {
            behind_dot = true;
        } else if (unit == u'\\') {
            parts.bare.clear();
        } else {
            parts.bare += unit;
        }
    }
    parts.skipped = !behind_dot || path.back() == u'.';
    return parts;
}

inline bool Clears(const std::u16string& path, const std::u16string& name)
{
    Parts parts = Split(path);
    std::u16string& bare = parts.bare;
    if (bare.size() >= 3 && bare[0] == u'B' && (bare[1] == u'2' || bare[1] == u'3') &&
        (bare[2] == u'D' || bare[2] == u'd')) {
        bare.erase(0, 3);
    }
    const std::u16string extension = Upper(parts.extension);
    return !parts.skipped && Upper(bare) == Upper(name) && extension != u"XML" && extension.find(u"SY") != 0;
}

inline bool Deletes(const std::u16string& path, const std::u16string& name)
{
    const Parts parts = Split(path);
    const std::u16string bare = Upper(parts.bare);
    const std::u16string wanted = Upper(name);
    if (parts.skipped || bare.size() < wanted.size()) {
        return false;
    }
    for (std::size_t back = 1; back <= wanted.size(); ++back) {
        if (bare[bare.size() - back] != wanted[wanted.size() - back]) {
            return false;
        }
    }
    for (const char16_t* kept : {u"XML", u"BMP", u"SY5"}) {
        if (Upper(parts.extension) == kept) {
            return false;
        }
    }
    return true;
}

} // namespace partkeep::model
