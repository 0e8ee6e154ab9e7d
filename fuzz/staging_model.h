// The rules on staged names once more, unit by unit and with nothing of the system's own, for comparison.
#pragma once

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
    std::u16string extension; // in upper case

    explicit Parts(const std::u16string& path)
    {
        bool behind_dot = false;
        for (const char16_t unit : path) {
            if (behind_dot) {
                extension += unit;
            } else if (unit == u'.') {
                behind_dot = true;
            } else {
                unit == u'\\' ? bare.clear() : bare.push_back(unit);
            }
        }
        skipped = !behind_dot || path.back() == u'.';
        extension = Upper(extension);
    }
};

inline bool Clears(const std::u16string& path, const std::u16string& name)
{
    Parts parts(path);
    const std::u16string start = parts.bare.substr(0, 3);
    if (start == u"B2D" || start == u"B3D" || start == u"B2d" || start == u"B3d") {
        parts.bare.erase(0, 3);
    }
    return !parts.skipped && Upper(parts.bare) == Upper(name) && parts.extension != u"XML" &&
           parts.extension.find(u"SY") != 0;
}

inline bool Deletes(const std::u16string& path, const std::u16string& name)
{
    const Parts parts(path);
    std::u16string tail = Upper(parts.bare);
    while (tail.size() > name.size()) {
        tail.erase(0, 1);
    }
    const bool kept = parts.extension == u"XML" || parts.extension == u"BMP" || parts.extension == u"SY5";
    return !parts.skipped && tail == Upper(name) && !kept;
}

} // namespace partkeep::model
