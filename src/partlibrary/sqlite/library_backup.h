// Copies one state of a library into another file while others read and write.
#pragma once

#include "partlibrary/library/library_admin.h"

namespace partkeep {

// False on failure, with the reason. Both are native paths; `target` is an empty file of nobody else's.
bool CopyLibrary(const QString& file, const QString& target, const WorkProgress& progress, LibraryProblem& problem);

} // namespace partkeep
