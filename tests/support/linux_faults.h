// Real faults of a Linux file system: a disk that is full or read-only, and a user without rights. Mounts need root, or
// else a user namespace, which is entered by itself; where neither can be had the cases that mount are skipped.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

namespace partkeep {

// Whether this process may mount, for itself alone.
[[nodiscard]] bool CanMount();

// Begins a case that mounts.
#define PARTKEEP_NEEDS_MOUNTS()                                                                                        \
    if (!CanMount())                                                                                                   \
    GTEST_SKIP() << "no process may mount here, not even in a user namespace"

// What is mounted on an existing folder, seen by this process alone and gone with the object. Declare it behind the
// folder that it stands in.
class CMount {
public:
    CMount(const CMount&) = delete;
    CMount& operator=(const CMount&) = delete;

protected:
    explicit CMount(std::filesystem::path folder);
    ~CMount();

    const std::filesystem::path folder_;
};

// A small file system of its own.
class CMountedDisk : public CMount {
public:
    explicit CMountedDisk(std::filesystem::path folder, const std::string& size = "256k");

    // Leaves `spare` bytes free (whole pages of 4096), by a file ".filler"; MakeRoom takes it away again.
    void Fill(std::size_t spare = 0);
    void MakeRoom() { std::filesystem::remove(folder_ / ".filler"); }
    void SetReadOnly(bool read_only);
};

// Makes a folder read-only with all below it except `writable_file`, which is still written through to the file
// itself.
struct CReadOnlyFolder : CMount {
    explicit CReadOnlyFolder(std::filesystem::path folder, const std::filesystem::path& writable_file = {});
};

// Makes the user that RunWithoutPrivileges runs as the owner of a file or folder, where that is not this one.
void GiveToUnprivilegedUser(const std::filesystem::path& path);

// Whether what was not given to that user belongs to someone else. That takes root, outside of any user namespace.
[[nodiscard]] bool CanOwnForOthers();

// Runs `action` in a child process that no permission is waived for, and gives its result.
[[nodiscard]] bool RunWithoutPrivileges(const std::function<bool()>& action);

// How a child process ended that runs `action`, whose result is whether it went well.
enum class Ended { Well, Badly, Killed };

// Runs it in a child process that is killed as it comes to its `place`-th change of a file system, from 1 on. A system
// that does not let a process be watched throws.
[[nodiscard]] Ended KillAtChange(int place, const std::function<bool()>& action);

} // namespace partkeep
