#include "platform/posix/ini_registry.h"

#include "platform/posix/file_handle.h"
#include "platform/posix/utf8.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <sstream>

namespace partkeep {

namespace {

constexpr std::string_view file_below_config_folder = "/partkeep-read/registry.ini";
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
constexpr char16_t code_page_key[] = u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";

std::u16string_view RootName(RegistryRoot root)
{
    return root == RegistryRoot::LocalMachine ? u"HKEY_LOCAL_MACHINE" : u"HKEY_CURRENT_USER";
}

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::u16string_view WithoutFinalSeparators(std::u16string_view key)
{
    while (key.ends_with(u'\\')) {
        key.remove_suffix(1);
    }
    return key;
}

// A key is there when a section names it or one below it.
bool IsAtOrBelow(std::u16string_view section, std::u16string_view key)
{
    return section.size() >= key.size() && EqualNoCase(section.substr(0, key.size()), key) &&
           (section.size() == key.size() || section[key.size()] == u'\\');
}

struct Answer {
    bool key_found = false;
    std::optional<std::u16string> value;
};

// Reads one file line by line for one value.
class CIniSearch {
public:
    CIniSearch(std::u16string_view key, std::u16string_view name) : key_(key), name_(name.empty() ? u"@" : name) {}

    void Line(std::string_view raw)
    {
        const std::string_view line = Trim(raw);
        if (line.empty() || line.front() == ';' || line.front() == '#') {
            return;
        }
        if (line.front() == '[') {
            EnterSection(line.substr(1, line.rfind(']') - 1));
        } else if (in_key_ && !answer_.value) {
            TakeValue(line);
        }
    }

    [[nodiscard]] Answer Result() && { return std::move(answer_); }

private:
    void EnterSection(std::string_view name)
    {
        const std::u16string wide = WidenUtf8(Trim(name));
        const std::u16string_view section = WithoutFinalSeparators(wide);
        in_key_ = EqualNoCase(section, key_);
        answer_.key_found = answer_.key_found || IsAtOrBelow(section, key_);
    }

    void TakeValue(std::string_view line)
    {
        const std::size_t sign = line.find('=');
        if (sign != std::string_view::npos && EqualNoCase(WidenUtf8(Trim(line.substr(0, sign))), name_)) {
            answer_.value = WidenUtf8(Trim(line.substr(sign + 1)));
        }
    }

    std::u16string_view key_;
    std::u16string_view name_;
    bool in_key_ = false;
    Answer answer_;
};

Answer SearchFile(const std::string& file, std::u16string_view key, std::u16string_view name)
{
    CIniSearch search(key, name);
    const std::optional<std::string> bytes = ReadWholeFile(file);
    std::string_view rest = bytes ? std::string_view(*bytes) : std::string_view();
    if (rest.starts_with(byte_order_mark)) {
        rest.remove_prefix(byte_order_mark.size());
    }
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        search.Line(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return std::move(search).Result();
}

// Empty when the variable is not set or holds no absolute path.
std::string AbsolutePathIn(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? value : "";
}

// Desktops put folders of their own in front of the one that packages use.
std::vector<std::string> MachineConfigFolders()
{
    const char* value = std::getenv("XDG_CONFIG_DIRS");
    std::vector<std::string> folders;
    std::istringstream rest(value != nullptr ? value : "");
    for (std::string folder; std::getline(rest, folder, ':');) {
        if (folder.starts_with('/')) {
            folders.push_back(folder);
        }
    }
    return folders.empty() ? std::vector<std::string>{"/etc/xdg"} : folders;
}

std::string UserConfigFolder()
{
    const std::string folder = AbsolutePathIn("XDG_CONFIG_HOME");
    return folder.empty() ? AbsolutePathIn("HOME") + "/.config" : folder;
}

} // namespace

CIniRegistry CIniRegistry::AtConventionalPaths()
{
    std::vector<std::string> files = MachineConfigFolders();
    files.insert(files.begin(), UserConfigFolder());
    for (std::string& file : files) {
        file.append(file_below_config_folder);
    }
    return CIniRegistry(std::move(files));
}

std::optional<std::u16string> CIniRegistry::ReadValue(RegistryRoot root, std::u16string_view key,
                                                      std::u16string_view name) const
{
    std::u16string full_key(RootName(root));
    full_key.append(u"\\").append(key);
    bool key_found = false;
    for (const std::string& file : files_) {
        Answer answer = SearchFile(file, WithoutFinalSeparators(full_key), name);
        if (answer.value) {
            if (EqualNoCase(name, install_path_value)) {
                std::replace(answer.value->begin(), answer.value->end(), u'/', u'\\');
            }
            return std::move(answer.value);
        }
        key_found = key_found || answer.key_found;
    }
    return key_found ? std::optional(std::u16string()) : std::nullopt;
}

// UTF-7 is refused: it writes plain ASCII otherwise, which no system code page does.
bool ApplySystemCodePage(const IRegistry& registry)
{
    const auto value = registry.ReadValue(RegistryRoot::LocalMachine, code_page_key, u"ACP");
    const std::string digits = NarrowToUtf8(value.value_or(u""));
    const char* end = digits.data() + digits.size();
    CodePage page = 0;
    const auto [parsed_to, error] = std::from_chars(digits.data(), end, page);
    if (error != std::errc() || parsed_to != end || page == system_code_page || WidenText("+", page) != u"+") {
        return false;
    }
    SetSystemCodePage(page);
    return true;
}

} // namespace partkeep
