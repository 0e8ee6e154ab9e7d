// The registry of a system that has none: text files of the same roots, keys and values, of the user and of the
// machine. The files are read afresh at each call, so that a change counts from the next selection run on.
#pragma once

#include "platform/registry.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace partkeep {

class CIniRegistry final : public IRegistry {
public:
    // Native paths in UTF-8; any file may be missing. Each may hold both roots. A value of a file goes before the same
    // value of those behind it.
    explicit CIniRegistry(std::vector<std::string> files) : files_(std::move(files)) {}

    // partkeep-read/registry.ini in XDG_CONFIG_HOME (~/.config), then in the folders of XDG_CONFIG_DIRS (/etc/xdg). A
    // relative path in one of these variables counts as none, as the convention asks.
    [[nodiscard]] static CIniRegistry AtConventionalPaths();

    [[nodiscard]] std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view key,
                                                          std::u16string_view name) const override;

    [[nodiscard]] const std::vector<std::string>& Files() const { return files_; }

private:
    std::vector<std::string> files_;
};

// Takes the process's system code page from the value ACP of the key
// HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Nls\CodePage. False, with the page left as it is, when
// there is no such value or when it is no code page that text can be converted to.
bool ApplySystemCodePage(const IRegistry& registry);

} // namespace partkeep
