// Looks a whole library over: the engine's own structure, names, the sets of slots, and every file's content
// against what was stored.
#pragma once

#include "partlibrary/library_problem.h"

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
