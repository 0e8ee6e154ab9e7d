#include "partlibrary/session/open_libraries.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/sqlite/sqlite_library.h"

#include <QFileInfo>

#include <utility>

namespace partkeep {

namespace {

// How long an answer counts: a lock is waited for once, and what an opening found holds for what the user is doing.
// That there is no file costs nothing to find out.
std::chrono::milliseconds Validity(LibraryFault fault)
{
    const bool waited_for = fault == LibraryFault::Busy || IsAway(fault);
    return std::chrono::milliseconds(waited_for ? 10000 : fault == LibraryFault::NotFound ? 0 : 1000);
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

// A file goes before a database.
std::unique_ptr<IPartLibrary> COpenLibraries::OpenNew(const QString& server, LibraryProblem& problem) const
{
    const QString file = folder_.FileOf(server);
    CServiceServers* const services = folder_.Services();
    if (!file.isEmpty() && (services == nullptr || QFileInfo::exists(file))) {
        return CSqliteLibrary::Open(file, problem);
    }
    const bool may_be = services != nullptr && CheckName(server) == NameFault::None;
    if (const auto place = may_be ? services->Find(server) : std::nullopt) {
        return OpenPgLibrary(*place, folder_.Cache(), problem);
    }
    const bool none = !folder_.IsConfigured();
    problem = may_be && services->Problem()
                  ? services->Problem()
                  : LibraryProblem{LibraryFault::NotFound, server,
                                   none ? QStringLiteral("no library folder is configured") : QString()};
    return nullptr;
}

void COpenLibraries::Open(const QString& server, Entry& entry)
{
    entry.problem = {};
    if (auto library = OpenNew(server, entry.problem); library != nullptr) {
        entry.library = std::move(library);
    }
    entry.tried = Clock::now();
    if (!entry.problem) {
        entry.fails_since = {};
    } else if (!entry.fails_since.isValid()) {
        entry.fails_since = QDateTime::currentDateTime();
    }
}

// What is open on a database that still is away stays: opening it anew would wait once more, and there would be
// nothing to show.
void COpenLibraries::Retry(const QString& server)
{
    const auto entry = entries_.find(server);
    const auto open = entry != entries_.end() ? entry->second.library : nullptr;
    const bool in_database =
        open != nullptr && folder_.Services() != nullptr && !QFileInfo::exists(folder_.FileOf(server));
    if (in_database && !open->Revision() && IsAway(open->Problem().fault)) {
        return;
    }
    entries_.erase(server);
    if (folder_.Services() != nullptr) {
        folder_.Services()->Retry();
    }
}

void COpenLibraries::CloseOthers(const QString& server)
{
    std::erase_if(entries_, [&server](const auto& entry) { return entry.first != server && !entry.second.problem; });
}

QDateTime COpenLibraries::FailsSince(const QString& server) const
{
    const auto entry = entries_.find(server);
    if (entry == entries_.end()) {
        return {};
    }
    const bool fails = entry->second.fails_since.isValid() || entry->second.library == nullptr;
    return fails ? entry->second.fails_since : entry->second.library->SilentSince();
}

bool COpenLibraries::IsTwice(const QString& server) const
{
    return folder_.Services() != nullptr && folder_.Services()->Knows(server) &&
           QFileInfo::exists(folder_.FileOf(server));
}

} // namespace partkeep
