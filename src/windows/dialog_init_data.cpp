// A resource of type 240 is a row of entries, each
//
//   offset  bytes
//   0       2      control id; 0 ends the row
//   2       2      message: how the control takes the data
//   4       4      length of the data
//   8       n      data
//
// and the data of a hosted control begin with a version of 4 bytes and the extent, 4 bytes each way.

#include "windows/dialog_init_data.h"

#include <cstring>
#include <span>

namespace partkeep {

namespace {

constexpr WORD dialog_init_type = 240;
constexpr WORD load_from_stream = 0x376;
constexpr std::size_t entry_header = 8;
constexpr std::size_t version_bytes = 4;

template <class T>
T FieldAt(std::span<const std::byte> bytes, std::size_t offset)
{
    T field;
    std::memcpy(&field, bytes.data() + offset, sizeof field);
    return field;
}

std::span<const std::byte> InitData(HMODULE module, int dialog)
{
    HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(dialog), MAKEINTRESOURCEW(dialog_init_type));
    HGLOBAL loaded = found != nullptr ? LoadResource(module, found) : nullptr;
    if (loaded == nullptr) {
        return {};
    }
    return {static_cast<const std::byte*>(LockResource(loaded)), SizeofResource(module, found)};
}

} // namespace

std::optional<SIZE> InitialExtent(HMODULE module, int dialog, int control)
{
    for (std::span<const std::byte> rest = InitData(module, dialog); rest.size() >= entry_header;) {
        const auto id = FieldAt<WORD>(rest, 0);
        const auto message = FieldAt<WORD>(rest, 2);
        const std::size_t length = FieldAt<DWORD>(rest, 4);
        rest = rest.subspan(entry_header);
        if (id == 0 || length > rest.size()) {
            return std::nullopt;
        }
        if (id == control && message == load_from_stream && length >= version_bytes + sizeof(SIZE)) {
            return FieldAt<SIZE>(rest, version_bytes);
        }
        rest = rest.subspan(length);
    }
    return std::nullopt;
}

} // namespace partkeep
