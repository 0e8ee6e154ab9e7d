// Looks a whole library over, for everything that a reader relies on: the engine's own structure, the tree of folders,
// names, values and sums of all rows, keys, search texts and their index, counts, and every file's content.
#pragma once

#include "partlibrary/library/library_problem.h"

#include <QStringList>

#include <optional>

namespace partkeep {

struct LibraryCheck {
    qint64 folders = 0;
    qint64 parts = 0;
    qint64 files = 0;
    QStringList findings; // a line each; empty for a sound library; at most max_findings
};

inline constexpr int max_findings = 100;

// Nothing when the library cannot be read to its end, with the reason. `file` is a native path.
[[nodiscard]] std::optional<LibraryCheck> CheckLibrary(const QString& file, LibraryProblem& problem);

} // namespace partkeep
