// The registry as the component uses it: single text values, read only.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace partkeep {

// A value that holds a path: in the platform's own spelling where it stands, in the core's where it is read.
inline constexpr char16_t install_path_value[] = u"installpath";

enum class RegistryRoot { LocalMachine, CurrentUser };

class IRegistry {
public:
    virtual ~IRegistry() = default;

    // Nothing when the key cannot be opened. Otherwise the text of the value, empty when the key has no text
    // value of that name. An empty name asks for the key's default value. Keys and names are compared without
    // regard to case; a separator at the end of a key does no harm.
    [[nodiscard]] virtual std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view key,
                                                                  std::u16string_view name) const = 0;
};

} // namespace partkeep
