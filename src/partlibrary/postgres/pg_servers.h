// Which libraries services lead to, asked of all of them together: one that does not answer is waited for once, and
// costs the others nothing.
#pragma once

#include "partlibrary/library/library_problem.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <vector>

namespace partkeep {

struct PgServers {
    std::optional<QStringList> names; // in natural order; nothing on failure, with the reason
    QStringList barred;               // that are there as well, and that this user may not see
    LibraryProblem problem;
};

// One answer for each of the services, after two seconds at most.
[[nodiscard]] std::vector<PgServers> ReadPgServers(std::span<const QString> services);

} // namespace partkeep
