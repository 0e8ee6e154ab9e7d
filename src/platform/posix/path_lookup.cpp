#include "platform/posix/path_lookup.h"

#include "platform/posix/utf8.h"
#include "platform/text.h"

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <optional>
#include <sys/stat.h>

namespace partkeep {

namespace {

struct CCloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// Calls `use` on each name of a folder; on none when it cannot be read.
template <typename Use>
void ForEachName(const std::string& native_folder, Use use)
{
    const std::unique_ptr<DIR, CCloseFolder> folder(opendir(native_folder.c_str()));
    if (folder == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            use(name);
        }
    }
}

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// The name as core text; nothing where that would not lead back to the same name.
std::optional<std::u16string> CoreName(std::string_view name)
{
    std::u16string wide = WidenUtf8(name);
    if (name.find('\\') != std::string_view::npos || (!IsAscii(name) && NarrowToUtf8(wide) != name)) {
        return std::nullopt;
    }
    return wide;
}

bool EqualAsciiNoCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return UpperCase(static_cast<char16_t>(a)) == UpperCase(static_cast<char16_t>(b));
    });
}

// The first name in sorted order that equals `wanted` but for case; empty when there is none. Upper case leads
// nothing into ASCII, so that a name in ASCII is compared with its like alone.
std::string FindOtherSpelling(const std::string& native_folder, const std::string& wanted)
{
    const bool ascii = IsAscii(wanted);
    const std::u16string wide_wanted = WidenUtf8(wanted);
    std::optional<std::u16string> best;
    ForEachName(native_folder, [&](std::string_view name) {
        if (ascii && !EqualAsciiNoCase(name, wanted)) {
            return;
        }
        const std::optional<std::u16string> wide = CoreName(name);
        if (wide && EqualNoCase(*wide, wide_wanted) && (!best || *wide < *best)) {
            best = wide;
        }
    });
    return best ? NarrowToUtf8(*best) : std::string();
}

bool Exists(const std::string& native)
{
    struct stat status {};
    return lstat(native.c_str(), &status) == 0;
}

// UTF-8 with single forward slashes.
std::string Respell(std::u16string_view path)
{
    std::string native;
    for (const char byte : NarrowToUtf8(path)) {
        const char plain = byte == '\\' ? '/' : byte;
        if (plain != '/' || !native.ends_with('/')) {
            native += plain;
        }
    }
    return native;
}

// Walks the path from its start and corrects the spelling of each name that is missing as it stands. Behind the
// first name that has no spelling at all nothing exists, and the rest is taken as it is.
template <typename Find>
std::string CorrectSpelling(std::string_view native, Find find_other_spelling)
{
    std::string found;
    while (!native.empty()) {
        const std::size_t end = native.find('/');
        const std::string name(native.substr(0, end));
        if (!name.empty() && !Exists(found + name)) {
            const std::string other = find_other_spelling(found.empty() ? "." : found, name);
            if (other.empty()) {
                return found.append(native);
            }
            found += other;
        } else {
            found += name;
        }
        if (end == std::string_view::npos) {
            break;
        }
        found += '/';
        native.remove_prefix(end + 1);
    }
    return found;
}

template <typename Find>
std::string FindBy(std::u16string_view path, Find find_other_spelling)
{
    if (path.find(u'\0') != std::u16string_view::npos || path.find(u'/') != std::u16string_view::npos) {
        return {};
    }
    std::string native = Respell(path);
    if (native.empty() || Exists(native)) {
        return native;
    }
    return CorrectSpelling(native, find_other_spelling);
}

} // namespace

std::string FindOnDisk(std::u16string_view path)
{
    return FindBy(path, FindOtherSpelling);
}

std::string CSpellings::FindOnDisk(std::u16string_view path)
{
    return FindBy(path, [this](const std::string& native_folder, const std::string& wanted) {
        return FindOtherSpelling(native_folder, wanted);
    });
}

std::string CSpellings::FindOtherSpelling(const std::string& native_folder, const std::string& wanted)
{
    const auto [folder, fresh] = folders_.try_emplace(native_folder);
    Names& names = folder->second;
    if (fresh) {
        ReadFolder(native_folder, [&names](const std::u16string& name) {
            const auto [place, first] = names.try_emplace(UpperCase(name), name);
            if (!first && name < place->second) {
                place->second = name;
            }
        });
    }
    const auto found = names.find(UpperCase(WidenUtf8(wanted)));
    return found != names.end() ? NarrowToUtf8(found->second) : std::string();
}

void ReadFolder(const std::string& native_folder, const std::function<void(const std::u16string&)>& use)
{
    ForEachName(native_folder, [&use](std::string_view name) {
        if (const std::optional<std::u16string> wide = CoreName(name)) {
            use(*wide);
        }
    });
}

} // namespace partkeep
