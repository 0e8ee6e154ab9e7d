// Where the host product is installed: the folder of the two settings files. Found in the registry at each
// selection run, first by the host's own install path, then by the folder of a sibling component.
#pragma once

#include "platform/registry.h"

#include <string>
#include <string_view>

namespace partkeep {

inline constexpr char16_t install_path_key[] = u"software\\Velmar\\ORVIC";

// Reads a value under HKEY_LOCAL_MACHINE. 1 when the key opened, and `path` is then the value or empty; 0 when
// not, and `path` is left alone. A value of more than 255 characters is not usable and reads as empty.
int ReadInstallPath(const IRegistry& registry, std::u16string& path, std::u16string_view key,
                    std::u16string_view value_name);

// The folder of the sibling component's module, from its CodeBase under HKEY_CURRENT_USER, without a trailing
// backslash. 1 when both keys opened, 0 when not, and `folder` is then left alone. The limit is as above.
int ReadCodeBaseFolder(const IRegistry& registry, std::u16string& folder);

// Both in their order. Empty: not found.
[[nodiscard]] std::u16string FindInstallFolder(const IRegistry& registry);

} // namespace partkeep
