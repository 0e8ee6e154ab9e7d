// The way back: a library, or a folder of it, as a folder of files with a table of attributes, so that importing the
// one with the other gives the same folders and parts.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/library/library_problem.h"

#include <QString>

namespace partkeep {

class IPartLibrary;

struct ExtractOptions {
    QString target;          // native path, without a separator at its end, of a folder that is not there or empty
    QString folder;          // of the library; empty for all
    QString table;           // native path; one that is not there yet
    WorkProgress progress{}; // by parts; may be none
    bool dry_run = false;
};

struct ExtractReport {
    qint64 parts = 0;
    qint64 files = 0;
    qint64 bytes = 0;
};

// The folder appears when it is whole, then the table. False on failure, with the reason: Busy where the library was
// changed meanwhile. Nothing is there then that was not there before.
bool ExtractLibrary(IPartLibrary& library, const ExtractOptions& options, ExtractReport& report,
                    LibraryProblem& problem);

} // namespace partkeep
