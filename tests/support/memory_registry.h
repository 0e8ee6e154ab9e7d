// A registry in memory, its keys spelled as "HKLM\key" or "HKCU\key".
#pragma once

#include "platform/registry.h"

#include <map>

namespace partkeep {

struct CMemoryRegistry : IRegistry {
    std::map<std::u16string, std::map<std::u16string, std::u16string>> keys; // values by key and name

    void Set(const std::u16string& key, const std::u16string& name, const std::u16string& text)
    {
        keys[key][name] = text;
    }

    [[nodiscard]] std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view key,
                                                          std::u16string_view name) const override
    {
        const auto found =
            keys.find((root == RegistryRoot::LocalMachine ? u"HKLM\\" : u"HKCU\\") + std::u16string(key));
        if (found == keys.end()) {
            return std::nullopt;
        }
        const auto value = found->second.find(std::u16string(name));
        return value != found->second.end() ? value->second : std::u16string();
    }
};

} // namespace partkeep
