#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/postgres/pg_place.h"

namespace partkeep {

// Looks at everything that a reader relies on, all of one state. Nothing when the library cannot be read to its end.
[[nodiscard]] std::optional<LibraryCheck> CheckPgLibrary(const PgPlace& place, const WorkProgress& progress,
                                                         LibraryProblem& problem);

} // namespace partkeep
