#include "partlibrary/sqlite/engine_files.h"

#include <mutex>
#include <sqlite3.h>
#include <sys/stat.h>

namespace partkeep {

namespace {

constexpr char our_name[] = "partkeep";

sqlite3_vfs* system_files = nullptr; // none of the engine's members changes it
sqlite3_vfs our_files;

// The first version of these has neither shared nor mapped memory. All files of one system have the same.
const sqlite3_io_methods* WithoutMemory(const sqlite3_io_methods* methods)
{
    static const sqlite3_io_methods* const plain = methods;
    static const sqlite3_io_methods reduced = [] {
        sqlite3_io_methods first = *plain;
        first.iVersion = 1;
        return first;
    }();
    return methods == plain ? &reduced : nullptr;
}

bool IsOther(const char* name)
{
    struct stat status = {};
    return name != nullptr && stat(name, &status) == 0 && !S_ISREG(status.st_mode);
}

int OpenFile(sqlite3_vfs* /*files*/, const char* name, sqlite3_file* file, int flags, int* got)
{
    file->pMethods = nullptr;
    if ((flags & (SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL)) != 0 || IsOther(name)) {
        return SQLITE_CANTOPEN;
    }
    const int code = system_files->xOpen(system_files, name, file, flags, got);
    if (code != SQLITE_OK || (flags & SQLITE_OPEN_MAIN_DB) == 0) {
        return code;
    }
    const sqlite3_io_methods* const reduced = WithoutMemory(file->pMethods);
    if (reduced == nullptr) {
        file->pMethods->xClose(file);
        file->pMethods = nullptr;
        return SQLITE_CANTOPEN;
    }
    file->pMethods = reduced;
    return SQLITE_OK;
}

} // namespace

const char* EngineFiles()
{
    static std::mutex one_at_a_time;
    const std::lock_guard guard(one_at_a_time);
    if (sqlite3_vfs_find(our_name) != nullptr) {
        return our_name;
    }
    system_files = sqlite3_vfs_find(nullptr);
    if (system_files != nullptr) {
        our_files = *system_files;
        our_files.pNext = nullptr;
        our_files.zName = our_name;
        our_files.xOpen = OpenFile;
        sqlite3_vfs_register(&our_files, 0);
    }
    return our_name;
}

} // namespace partkeep
