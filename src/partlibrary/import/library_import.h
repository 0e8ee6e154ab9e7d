// Fills a library from a folder of files: a file's name and extension give part and kind, subfolders become
// folders. The whole folder arrives or nothing does.
#pragma once

#include "partlibrary/library/library_problem.h"

#include <QString>
#include <QStringList>

namespace partkeep {

class ILibraryWriter;

struct ImportOptions {
    QString source;          // native path of the folder to read
    QString target;          // folder in the library; empty is the root
    QString attribute_table; // native path of the table; empty for none
};

struct ImportReport {
    int parts = 0;
    int files = 0;
    QStringList skipped; // native paths of what has another ending or is no file
};

// Runs in a transaction of its own. False on failure, with the reason; the library is then as it was.
bool ImportFolder(ILibraryWriter& writer, const ImportOptions& options, ImportReport& report, LibraryProblem& problem);

} // namespace partkeep
