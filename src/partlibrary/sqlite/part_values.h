// What the parts of a list have in one column, for a choice among them.
#pragma once

#include "partlibrary/sqlite/part_query.h"

#include <optional>
#include <vector>

namespace partkeep {

// In order, at most `most`. A list that is known within a moment is read as it is, in which time it takes its steps;
// of a long one those of its folders are taken, by the index of the column, if its keys are believed. Nothing on an
// error.
[[nodiscard]] std::optional<std::vector<ColumnValue>> ReadValues(CConnection& connection, IPartListing& list,
                                                                 PartColumn column, bool other_keys, std::size_t most);

} // namespace partkeep
