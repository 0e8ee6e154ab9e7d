// An open file of the system with an owner, and whole reads and writes on it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <windows.h>

namespace partkeep {

class CFileHandle {
public:
    explicit CFileHandle(HANDLE handle) : handle_(handle) {}
    ~CFileHandle() { Close(); }
    CFileHandle(CFileHandle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    CFileHandle& operator=(CFileHandle&&) = delete;

    // Shared with everybody. GetLastError tells why it failed.
    [[nodiscard]] static CFileHandle Open(const std::u16string& system_path, DWORD access, DWORD disposition);

    [[nodiscard]] bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] bool IsDiskFile() const { return GetFileType(handle_) == FILE_TYPE_DISK; }
    [[nodiscard]] HANDLE Handle() const { return handle_; }
    bool WriteAll(std::string_view bytes) const; // from the current position
    bool Close();                                // false when data written earlier could not be kept

private:
    HANDLE handle_;
};

// The bytes of a file on a disk. Nothing for anything else, when it cannot be read to its end, or when it is
// larger than 1 GB: no text of ours is. `in_trouble` tells whether the system failed for another reason than that the
// file is missing or forbidden.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::u16string& system_path, bool* in_trouble = nullptr);

} // namespace partkeep
