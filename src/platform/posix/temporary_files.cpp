#include "platform/posix/temporary_files.h"

#include "platform/posix/file_handle.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr std::string_view name_start = ".partkeep-";
constexpr time_t a_day = 86400;

struct CCloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// Differs from one start of the machine to the next, and is the same in all containers on it, as locks are.
const std::string& StartOfMachine()
{
    static const std::string start = [] {
        const CFileHandle file = CFileHandle::Open("/proc/sys/kernel/random/boot_id", O_RDONLY);
        std::array<char, 8> digits{};
        const bool got =
            file.IsOpen() && read(file.Descriptor(), digits.data(), digits.size()) == ssize_t{digits.size()};
        return got ? std::string(digits.data(), digits.size()) : std::string("unknown");
    }();
    return start;
}

bool IsOld(int descriptor)
{
    struct stat status {};
    return fstat(descriptor, &status) == 0 && std::time(nullptr) - status.st_mtime > a_day;
}

} // namespace

std::string NewTemporaryName()
{
    std::array<std::uint64_t, 2> random{};
    if (getrandom(random.data(), sizeof random, 0) != static_cast<ssize_t>(sizeof random)) {
        return {};
    }
    std::array<char, 40> digits{};
    std::snprintf(digits.data(), digits.size(), "-%016jx%016jx", std::uintmax_t{random[0]}, std::uintmax_t{random[1]});
    return std::string(name_start) + StartOfMachine() + digits.data() + ".tmp";
}

void HoldTemporaryFile(int descriptor)
{
    if (descriptor >= 0) { // else errno still tells why there is no file
        flock(descriptor, LOCK_EX | LOCK_NB);
    }
}

void RemoveIfLeftOver(int directory, std::string_view name)
{
    if (!name.starts_with(name_start) || !name.ends_with(".tmp")) {
        return;
    }
    const std::string file(name);
    const CFileHandle handle(openat(directory, file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const bool of_now = name.substr(name_start.size()).starts_with(StartOfMachine());
    if (handle.IsOpen() && flock(handle.Descriptor(), LOCK_EX | LOCK_NB) == 0 &&
        (of_now || IsOld(handle.Descriptor()))) {
        unlinkat(directory, file.c_str(), 0);
    }
}

void RemoveLeftOvers(const std::string& folder)
{
    const std::unique_ptr<DIR, CCloseFolder> stream(opendir(folder.empty() ? "." : folder.c_str()));
    while (const dirent* const entry = stream != nullptr ? readdir(stream.get()) : nullptr) {
        RemoveIfLeftOver(dirfd(stream.get()), entry->d_name);
    }
}

} // namespace partkeep
