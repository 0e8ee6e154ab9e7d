// The libraries that a session has open, one for each server that was asked for, and what was learnt of those that
// could not be opened: who asks again at once gets the same answer without a new wait.
#pragma once

#include "partlibrary/library/part_library.h"
#include "partlibrary/session/library_folder.h"

#include <QDateTime>
#include <QString>

#include <chrono>
#include <map>
#include <memory>

namespace partkeep {

class COpenLibraries {
public:
    explicit COpenLibraries(CLibraryFolder folder) : folder_(std::move(folder)) {}

    // The library as it stands in the folder now: opened where it is not open yet, or another file has taken its place.
    // Null on failure, with the reason; one that is open already stays so.
    [[nodiscard]] std::shared_ptr<IPartLibrary> Look(const QString& server);

    // It is opened anew at the next call: another library may have been written over its file.
    void Retry(const QString& server);

    // All but this one, whose place is only looked at.
    void CloseOthers(const QString& server);

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }
    [[nodiscard]] QDateTime FailsSince(const QString& server) const; // invalid while it does not
    [[nodiscard]] bool IsTwice(const QString& server) const;         // found as a file and in a database
    [[nodiscard]] const CLibraryFolder& Folder() const { return folder_; }

private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        std::shared_ptr<IPartLibrary> library;
        LibraryProblem problem; // of the last attempt
        Clock::time_point tried;
        QDateTime fails_since;
    };

    [[nodiscard]] std::unique_ptr<IPartLibrary> OpenNew(const QString& server, LibraryProblem& problem) const;
    void Open(const QString& server, Entry& entry);

    CLibraryFolder folder_;
    std::map<QString, Entry> entries_;
    LibraryProblem problem_;
};

} // namespace partkeep
