// A registry in memory, spelled as "HKLM\key|value" or "HKCU\key|value".
#pragma once

#include "platform/registry.h"

#include <map>
#include <set>

namespace partkeep {

class CMemoryRegistry : public IRegistry {
public:
    void Set(std::u16string path, std::u16string name, std::u16string text) { values_[path][name] = std::move(text); }
    void SetKey(const std::u16string& path) { values_[path]; }

    [[nodiscard]] std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view key,
                                                          std::u16string_view name) const override
    {
        const std::u16string prefix = root == RegistryRoot::LocalMachine ? u"HKLM\\" : u"HKCU\\";
        const auto found = values_.find(prefix + std::u16string(key));
        if (found == values_.end()) {
            return std::nullopt;
        }
        const auto value = found->second.find(std::u16string(name));
        return value != found->second.end() ? value->second : std::u16string();
    }

private:
    std::map<std::u16string, std::map<std::u16string, std::u16string>> values_;
};

} // namespace partkeep
