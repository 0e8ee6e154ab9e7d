// Rows as a stranger may write them: well formed, with sums that are right, and made to do harm.
#pragma once

#include <QString>

#include <random>

namespace partkeep {

// One to four changes of a library whose parts have the ids 1 to `parts`.
void ForgeRows(const QString& file, int parts, std::mt19937& random);

} // namespace partkeep
