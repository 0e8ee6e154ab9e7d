// Journals that a cut-off writer left beside a library. The engine plays back whatever lies there under the right
// name, even beside another library, which that would destroy.
#pragma once

#include "partlibrary/library/library_problem.h"

#include <QString>

namespace partkeep {

// Renames a journal that belongs to another library, or to another state of this one, so that the engine does not
// see it; nothing is deleted. False, with the problem, where that is needed and fails.
bool SetForeignJournalAside(const QString& library, LibraryProblem& problem);

// Takes back what a cut-off writer left, or sets it aside, so that the library can be read. False where it cannot be
// done.
bool TakeBackLeftChanges(const QString& library);

} // namespace partkeep
