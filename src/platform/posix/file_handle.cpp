#include "platform/posix/file_handle.h"

#include "platform/text_mode.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr std::size_t chunk_bytes = std::size_t{64} << 10U;

// By errno of the call that has just failed. Gives the nothing that was read.
std::nullopt_t NotRead(bool* in_trouble)
{
    if (in_trouble != nullptr) {
        *in_trouble = errno != ENOENT && errno != ENOTDIR && errno != EACCES && errno != EPERM;
    }
    return std::nullopt;
}

} // namespace

CFileHandle CFileHandle::Open(const std::string& native, int flags, unsigned mode)
{
    // Without O_NONBLOCK a named pipe that nobody serves would hold the host for ever.
    return CFileHandle(open(native.c_str(), flags | O_CLOEXEC | O_NONBLOCK, mode));
}

bool CFileHandle::WriteAll(std::string_view bytes) const
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool CFileHandle::Close()
{
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 || close(descriptor) == 0;
}

// The size that the system tells is a hint only: it is 0 for files that are made up while they are read.
std::optional<std::string> ReadWholeFile(const std::string& native, bool* in_trouble)
{
    const CFileHandle file = CFileHandle::Open(native, O_RDONLY);
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Descriptor(), &status) != 0) {
        return NotRead(in_trouble);
    }
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) > max_text_bytes) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t size = 0;
    while (size <= max_text_bytes) {
        if (size == bytes.size()) {
            bytes.resize(size + chunk_bytes);
        }
        const ssize_t count = read(file.Descriptor(), bytes.data() + size, bytes.size() - size);
        if (count == 0) {
            bytes.resize(size);
            return bytes;
        }
        if (count < 0 && errno != EINTR) {
            return NotRead(in_trouble);
        }
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return std::nullopt;
}

} // namespace partkeep
