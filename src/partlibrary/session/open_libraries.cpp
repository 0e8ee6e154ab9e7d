#include "partlibrary/session/open_libraries.h"

#include "partlibrary/sqlite/sqlite_library.h"

#include <utility>

namespace partkeep {

namespace {

// How long an answer counts: a lock is waited for once, and what an opening found holds for what the user is doing.
// That there is no file costs nothing to find out.
std::chrono::milliseconds Validity(LibraryFault fault)
{
    return std::chrono::milliseconds(fault == LibraryFault::Busy ? 10000 : fault == LibraryFault::NotFound ? 0 : 1000);
}

} // namespace

std::shared_ptr<IPartLibrary> COpenLibraries::Look(const QString& server)
{
    Entry& entry = entries_[server];
    if (entry.library != nullptr && entry.library->Place() == LibraryPlace::Same) {
        problem_ = {};
        return entry.library;
    }
    if (!entry.problem || Clock::now() - entry.tried >= Validity(entry.problem.fault)) {
        Open(server, entry);
    }
    problem_ = entry.problem;
    return entry.problem ? nullptr : entry.library;
}

void COpenLibraries::Open(const QString& server, Entry& entry)
{
    const QString file = folder_.FileOf(server);
    entry.problem = {};
    if (file.isEmpty()) {
        const bool no_folder = folder_.Path().isEmpty();
        entry.problem = {LibraryFault::NotFound, server,
                         no_folder ? QStringLiteral("no library folder is configured") : QString()};
    } else if (auto library = CSqliteLibrary::Open(file, entry.problem); library != nullptr) {
        entry.library = std::move(library);
    }
    entry.tried = Clock::now();
    if (!entry.problem) {
        entry.fails_since = {};
    } else if (!entry.fails_since.isValid()) {
        entry.fails_since = QTime::currentTime();
    }
}

void COpenLibraries::Retry(const QString& server)
{
    entries_.erase(server);
}

void COpenLibraries::CloseOthers(const QString& server)
{
    std::erase_if(entries_, [&server](const auto& entry) { return entry.first != server && !entry.second.problem; });
}

QTime COpenLibraries::FailsSince(const QString& server) const
{
    const auto entry = entries_.find(server);
    return entry != entries_.end() ? entry->second.fails_since : QTime();
}

} // namespace partkeep
