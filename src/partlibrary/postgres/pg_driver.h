// The client library of the database server, which a small module brings along: a process that is not set up for a
// database never loads it, nor needs it installed.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/postgres/pq_functions.h"

namespace partkeep {

// Loaded at the first call, for as long as the process runs. Null where the module is not installed, with the reason.
[[nodiscard]] const PqDriver* LoadPqDriver(LibraryProblem& problem);

} // namespace partkeep
