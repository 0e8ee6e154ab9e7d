#include "partlibrary/sqlite/library_backup.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/engine_files.h"

#include <chrono>
#include <sqlite3.h>
#include <thread>

namespace partkeep {

namespace {

constexpr int pages_per_step = 64; // 4 MB: as long as a writer waits for a step
constexpr int most_restarts = 8;
constexpr std::chrono::milliseconds between_steps{2};

struct CCloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, CCloseDatabase>;

struct CFinishBackup {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};
using Backup = std::unique_ptr<sqlite3_backup, CFinishBackup>;

// Begins anew by itself when somebody commits between two steps. Where that goes on and on, the rest is copied at once:
// a writer then waits for it.
int CopyPages(sqlite3_backup* backup, const WorkProgress& progress)
{
    int restarts = 0;
    int least_left = 0;
    for (;;) {
        const int code = sqlite3_backup_step(backup, restarts < most_restarts ? pages_per_step : -1);
        if (code != SQLITE_OK && code != SQLITE_BUSY && code != SQLITE_LOCKED) {
            return code;
        }
        const int left = sqlite3_backup_remaining(backup);
        const int total = sqlite3_backup_pagecount(backup);
        restarts += code == SQLITE_OK && least_left != 0 && left >= least_left ? 1 : 0;
        least_left = left;
        if (progress && !progress(total - left, total)) {
            return SQLITE_INTERRUPT;
        }
        std::this_thread::sleep_for(between_steps);
    }
}

} // namespace

bool CopyLibrary(const QString& file, const QString& target, const WorkProgress& progress, LibraryProblem& problem)
{
    // Looked at first, so that only a library is copied, and what a cut-off writer left is taken back.
    const auto library = CConnection::Open(file, OpenMode::ReadAll, problem);
    if (library == nullptr) {
        return false;
    }
    sqlite3* opened = nullptr;
    int code =
        sqlite3_open_v2(ToUtf8(target).c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, EngineFiles());
    const Database copy(opened);
    if (code == SQLITE_OK) { // nobody else knows the copy yet, so no journal is needed beside it
        sqlite3_exec(copy.get(), "PRAGMA journal_mode=MEMORY", nullptr, nullptr, nullptr);
        const Backup backup(sqlite3_backup_init(copy.get(), "main", library->Engine(), "main"));
        code = backup != nullptr ? CopyPages(backup.get(), progress) : sqlite3_extended_errcode(copy.get());
    }
    if (code == SQLITE_DONE) {
        return true;
    }
    problem = code == SQLITE_INTERRUPT ? LibraryProblem{LibraryFault::Stopped, file, {}} : ProblemOfCode(code, file);
    return false;
}

} // namespace partkeep
