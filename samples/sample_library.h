// Made-up libraries to try everything on: three servers with Latin, Japanese and Chinese names, nested
// folders, and parts of which some lack files or pictures. The same every time.
#pragma once

#include "partlibrary/library/library_problem.h"

#include <QString>
#include <QStringList>

namespace partkeep {

// Makes `<server>.kpl` for each sample server in an existing folder (native path). Adds the files made to
// `made`. Without `replace`, a file that is there already is an error. A library that fails is removed.
bool MakeSampleLibraries(const QString& folder, bool replace, QStringList& made, LibraryProblem& problem);

} // namespace partkeep
