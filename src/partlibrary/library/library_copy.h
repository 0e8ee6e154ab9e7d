// One library into another, whatever engines hold them: the same folders, parts, attributes, files and pictures.
#pragma once

#include "partlibrary/library/library_admin.h"

namespace partkeep {

// Everything of `from` into the empty library behind `to`, in one transaction. False on failure, with the reason: Busy
// where `from` was changed meanwhile, AlreadyThere where `to` holds something. Nothing has been changed then.
bool CopyWholeLibrary(IPartLibrary& from, ILibraryWriter& to, const WorkProgress& progress, LibraryProblem& problem);

} // namespace partkeep
