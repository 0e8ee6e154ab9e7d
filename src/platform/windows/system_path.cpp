#include "platform/windows/system_path.h"

#include "platform/windows/wide.h"

#include <windows.h>

namespace partkeep {

namespace {

constexpr std::u16string_view long_prefix = u"\\\\?\\";
constexpr std::u16string_view device_prefix = u"\\\\.\\";
constexpr std::u16string_view share_prefix = u"\\\\";

} // namespace

std::u16string FullPath(std::u16string_view path)
{
    std::u16string given(path);
    if (given.empty() || given.find(u'\0') != std::u16string::npos) {
        return {};
    }
    if (path.starts_with(long_prefix)) {
        return given;
    }
    const DWORD needed = GetFullPathNameW(AsWide(given.c_str()), 0, nullptr, nullptr);
    std::u16string full(needed, u'\0');
    const DWORD length = GetFullPathNameW(AsWide(given.c_str()), needed, AsWide(full.data()), nullptr);
    full.resize(length < needed ? length : 0); // the current folder may have changed in between
    return full;
}

std::u16string SystemPath(std::u16string_view path)
{
    std::u16string full = FullPath(path);
    if (full.empty() || full.starts_with(long_prefix) || full.starts_with(device_prefix)) {
        return full;
    }
    if (full.starts_with(share_prefix)) {
        return u"\\\\?\\UNC\\" + full.substr(share_prefix.size());
    }
    return std::u16string(long_prefix) + full;
}

} // namespace partkeep
