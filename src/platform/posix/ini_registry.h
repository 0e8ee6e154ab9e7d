// The registry of a system that has none: text files of the same roots, keys and values, one per machine and one
// per user. The files are read afresh at each call, so that a change counts from the next selection run on.
#pragma once

#include "platform/registry.h"

#include <optional>
#include <string>

namespace partkeep {

class CIniRegistry final : public IRegistry {
public:
    // Native paths in UTF-8; either file may be missing. Both may hold both roots. A value of the user's file
    // goes before the same value of the machine's.
    CIniRegistry(std::string machine_file, std::string user_file);

    // partkeep-read/registry.ini in the first folder of XDG_CONFIG_DIRS (/etc/xdg), and in XDG_CONFIG_HOME
    // (~/.config). A relative path in one of these variables counts as none, as the convention asks.
    [[nodiscard]] static CIniRegistry AtConventionalPaths();

    [[nodiscard]] std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view key,
                                                          std::u16string_view name) const override;

    [[nodiscard]] const std::string& MachineFile() const { return machine_file_; }
    [[nodiscard]] const std::string& UserFile() const { return user_file_; }

private:
    std::string machine_file_;
    std::string user_file_;
};

// Takes the process's system code page from the value ACP of the key
// HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Nls\CodePage. False, with the page left as it is, when
// there is no such value or when it is no code page that text can be converted to.
bool ApplySystemCodePage(const IRegistry& registry);

} // namespace partkeep
