// An open file descriptor with an owner, and whole reads and writes on it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace partkeep {

class CFileHandle {
public:
    CFileHandle() = default;
    explicit CFileHandle(int descriptor) : descriptor_(descriptor) {}
    ~CFileHandle() { Close(); }
    CFileHandle(CFileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    CFileHandle& operator=(CFileHandle&&) = delete;

    // A descriptor that is never inherited by a child process. errno tells why it failed.
    [[nodiscard]] static CFileHandle Open(const std::string& native, int flags, unsigned mode = 0);

    [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int Descriptor() const { return descriptor_; }
    bool WriteAll(std::string_view bytes) const; // from the current position
    bool Close();                                // false when data written earlier could not be kept

private:
    int descriptor_ = -1;
};

// The bytes of a regular file. Nothing for anything else, when it cannot be read to its end, or when it is larger
// than 1 GB: no text of ours is, and a file that grew without end must not take the host's memory along.
// `in_trouble` tells whether the system failed for another reason than that the file is missing or forbidden.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::string& native, bool* in_trouble = nullptr);

} // namespace partkeep
