// Takes from a damaged library whatever can still be read and is as it was stored, into a new one.
#pragma once

#include "partlibrary/library/library_admin.h"

#include <memory>

namespace partkeep {

class CConnection;

// Parts whose folder is lost go to the folder "recovered". Tells what is kept and what is dropped. Null on failure,
// with the reason; else what keeps others from changing the damaged library as long as it is held. `target` is an empty
// library of nobody else's; both are native paths.
[[nodiscard]] std::shared_ptr<CConnection> SalvageLibrary(const QString& file, const QString& target,
                                                          const WorkProgress& progress, LibraryRepair& repair,
                                                          LibraryProblem& problem);

} // namespace partkeep
