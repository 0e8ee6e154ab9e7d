#include "host/install_location.h"

#include <optional>

namespace partkeep {

namespace {

constexpr std::size_t max_value_characters = 255;
constexpr char16_t sibling_class_key[] = u"Software\\Classes\\Ferrin.FerrinDataSelectionDialog\\CLSID\\";
constexpr char16_t class_key_prefix[] = u"Software\\Classes\\CLSID\\";
constexpr char16_t server_key_suffix[] = u"\\InprocServer32\\";

std::optional<std::u16string> ReadUsableValue(const IRegistry& registry, RegistryRoot root, std::u16string_view key,
                                              std::u16string_view name)
{
    std::optional<std::u16string> value = registry.ReadValue(root, key, name);
    if (value && value->size() > max_value_characters) {
        value->clear();
    }
    return value;
}

} // namespace

int ReadInstallPath(const IRegistry& registry, std::u16string& path, std::u16string_view key,
                    std::u16string_view value_name)
{
    std::optional<std::u16string> value = ReadUsableValue(registry, RegistryRoot::LocalMachine, key, value_name);
    if (!value) {
        return 0;
    }
    path = *std::move(value);
    return 1;
}

int ReadCodeBaseFolder(const IRegistry& registry, std::u16string& folder)
{
    const auto class_id = ReadUsableValue(registry, RegistryRoot::CurrentUser, sibling_class_key, u"");
    if (!class_id) {
        return 0;
    }
    const std::u16string server_key = class_key_prefix + *class_id + server_key_suffix;
    auto code_base = ReadUsableValue(registry, RegistryRoot::CurrentUser, server_key, u"CodeBase");
    if (!code_base) {
        return 0;
    }
    const std::size_t separator = code_base->rfind(u'\\');
    code_base->resize(separator == std::u16string::npos ? 0 : separator);
    folder = *std::move(code_base);
    return 1;
}

// The text decides, not whether a key opened: an install path that is empty is as good as none.
std::u16string FindInstallFolder(const IRegistry& registry)
{
    std::u16string folder;
    ReadInstallPath(registry, folder, install_path_key, install_path_value);
    if (folder.empty()) {
        ReadCodeBaseFolder(registry, folder);
    }
    return folder;
}

} // namespace partkeep
