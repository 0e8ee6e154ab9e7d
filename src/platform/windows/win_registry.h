// The system's registry, read only.
#pragma once

#include "platform/registry.h"

#include <optional>
#include <string>
#include <string_view>

namespace partkeep {

class CWinRegistry final : public IRegistry {
public:
    [[nodiscard]] std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view key,
                                                          std::u16string_view name) const override;
};

} // namespace partkeep
