// Fills a library from a folder of files: a file's name and extension give part and kind, subfolders become
// folders. The whole folder arrives or nothing does.
#pragma once

#include "partlibrary/library/file_kinds.h"
#include "partlibrary/library/library_admin.h"
#include "partlibrary/library/library_problem.h"
#include "platform/posix/file_handle.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace partkeep {

class ILibraryWriter;

struct ImportOptions {
    QString source;                        // native path of the folder to read
    QString target;                        // folder in the library; empty is the root
    QString attribute_table;               // native path of the table; empty for none
    std::optional<QStringList> files = {}; // only these, by their native paths in the source; none: all that it holds
    WorkProgress progress = {};            // by files, then parts; may be none
    bool dry_run = false;                  // everything is looked at, and nothing written
    bool follow_links = true;              // to files; those to folders never
};

struct ImportReport {
    int parts = 0;
    int files = 0;
    QStringList skipped; // native paths of what has another ending or is no file
};

struct ImportTarget {
    QString folder;
    QString part;
    FileSlot slot = FileSlot::Iga;
};

// Where a file of the source goes. Nothing for one that belongs to no part, and for a name that is refused, then with
// the problem.
[[nodiscard]] std::optional<ImportTarget> TargetOf(const QString& file, const ImportOptions& options,
                                                   LibraryProblem& problem);

// A file of the source to read from, so that a pipe that has taken its place is not waited for. Not open on failure,
// with the reason.
[[nodiscard]] CFileHandle OpenSource(const QString& file, const ImportOptions& options, LibraryProblem& problem);

// Runs in a transaction of its own. False on failure, with the reason; the library is then as it was.
bool ImportFolder(ILibraryWriter& writer, const ImportOptions& options, ImportReport& report, LibraryProblem& problem);

} // namespace partkeep
