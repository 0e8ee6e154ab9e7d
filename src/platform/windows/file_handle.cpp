#include "platform/windows/file_handle.h"

#include "platform/text_mode.h"
#include "platform/windows/wide.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::size_t chunk_bytes = std::size_t{16} << 20U; // a larger single call may be refused on a network drive

DWORD ChunkOf(std::size_t size)
{
    return static_cast<DWORD>(std::min(size, chunk_bytes));
}

// By the error of the call that has just failed. Gives the nothing that was read.
std::nullopt_t NotRead(bool* in_trouble)
{
    const DWORD error = GetLastError();
    if (in_trouble != nullptr) {
        *in_trouble = error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND && error != ERROR_ACCESS_DENIED;
    }
    return std::nullopt;
}

} // namespace

CFileHandle CFileHandle::Open(const std::u16string& system_path, DWORD access, DWORD disposition)
{
    constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return CFileHandle(
        CreateFileW(AsWide(system_path.c_str()), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool CFileHandle::WriteAll(std::string_view bytes) const
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(handle_, bytes.data(), ChunkOf(bytes.size()), &written, nullptr) == 0 || written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

bool CFileHandle::Close()
{
    const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE);
    return handle == INVALID_HANDLE_VALUE || CloseHandle(handle) != 0;
}

std::optional<std::string> ReadWholeFile(const std::u16string& system_path, bool* in_trouble)
{
    const CFileHandle file = CFileHandle::Open(system_path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER told_size{};
    if (!file.IsOpen()) {
        return NotRead(in_trouble);
    }
    if (!file.IsDiskFile() || GetFileSizeEx(file.Handle(), &told_size) == 0 ||
        told_size.QuadPart > static_cast<LONGLONG>(max_text_bytes)) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(told_size.QuadPart), '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
        DWORD count = 0;
        if (ReadFile(file.Handle(), bytes.data() + size, ChunkOf(bytes.size() - size), &count, nullptr) == 0) {
            return NotRead(in_trouble);
        }
        if (count == 0) {
            break; // it was cut meanwhile
        }
        size += count;
    }
    bytes.resize(size);
    return bytes;
}

} // namespace partkeep
