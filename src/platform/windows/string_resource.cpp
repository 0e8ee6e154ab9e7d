// String blocks out of a module's resources.

#include "platform/string_resource.h"

#include "platform/windows/string_module.h"

#include <windows.h>

namespace partkeep {

namespace {

const wchar_t* string_module_name = component_module_name;

// Asked for here and not left to the resource loader, which may find one of the other two first. A reader of
// traditional characters is better served by English than by the simplified ones.
WORD LanguageOfUser()
{
    const LANGID user = GetUserDefaultLangID();
    const bool simplified =
        SUBLANGID(user) == SUBLANG_CHINESE_SIMPLIFIED || SUBLANGID(user) == SUBLANG_CHINESE_SINGAPORE;
    if (PRIMARYLANGID(user) == LANG_JAPANESE) {
        return japanese_language;
    }
    if (PRIMARYLANGID(user) == LANG_CHINESE && simplified) {
        return chinese_language;
    }
    return english_language;
}

// The units that the 16 entries take; nothing behind the resource's end counts.
std::size_t UnitsOfBlock(const char16_t* units, std::size_t available)
{
    std::size_t used = 0;
    for (std::size_t entry = 0; entry < strings_in_block; ++entry) {
        if (used >= available || units[used] >= available - used) {
            return 0;
        }
        used += 1 + std::size_t{units[used]};
    }
    return used;
}

} // namespace

void SetStringModule(const wchar_t* name)
{
    string_module_name = name;
}

std::span<const char16_t> StringBlock(std::uint32_t block, std::uint32_t language)
{
    HMODULE module = GetModuleHandleW(string_module_name);
    if (module == nullptr || block == 0 || block > 0xFFFF) {
        return {};
    }
    const WORD resource_language = language == neutral_language ? LanguageOfUser() : static_cast<WORD>(language);
    HRSRC found = FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(block), resource_language);
    HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    if (loaded == nullptr) {
        return {};
    }
    const auto* units = static_cast<const char16_t*>(LockResource(loaded));
    return {units, UnitsOfBlock(units, SizeofResource(module, found) / sizeof(char16_t))};
}

} // namespace partkeep
