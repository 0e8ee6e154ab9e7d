#include "platform/windows/win_registry.h"

#include "platform/windows/wide.h"
#include "platform/windows/wide_text.h"

#include <windows.h>

namespace partkeep {

namespace {

// A value may change between the two questions, so the second answer's size is the one that counts.
std::u16string ReadText(HKEY key, const std::wstring& name)
{
    DWORD type = 0;
    DWORD bytes = 0;
    if (RegQueryValueExW(key, name.c_str(), nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) {
        return {};
    }
    std::wstring text(bytes / sizeof(wchar_t), L'\0');
    bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &bytes) !=
            ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return {};
    }
    text.resize(bytes / sizeof(wchar_t));
    return FromWide(text.substr(0, text.find(L'\0')));
}

} // namespace

std::optional<std::u16string> CWinRegistry::ReadValue(RegistryRoot root, std::u16string_view key,
                                                      std::u16string_view name) const
{
    HKEY root_key = root == RegistryRoot::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root_key, WideText(key).c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::u16string text = ReadText(opened, WideText(name));
    RegCloseKey(opened);
    return text;
}

} // namespace partkeep
