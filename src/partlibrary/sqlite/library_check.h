// Looks a whole library over, for everything that a reader relies on: the engine's own structure, the tree of folders,
// names, values and sums of all rows, keys, search texts and their index, counts, and every file's content.
#pragma once

#include "partlibrary/library/library_admin.h"

#include <optional>

namespace partkeep {

// Nothing when the library cannot be read to its end, with the reason. `file` is a native path; progress is by files.
[[nodiscard]] std::optional<LibraryCheck> CheckLibrary(const QString& file, const WorkProgress& progress,
                                                       LibraryProblem& problem);

} // namespace partkeep
