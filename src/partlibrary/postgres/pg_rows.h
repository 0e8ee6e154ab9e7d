// The gate: every row of a library in a database passes here before anyone sees it. A name that an import would refuse
// is never let through, nor a value out of its range. That a row is as it was stored is the server's affair, which
// has checksums of its own.
#pragma once

#include "partlibrary/library/part_library.h"
#include "partlibrary/postgres/pg_result.h"

#include <optional>

namespace partkeep {

enum class PgRowFault { None, Refused, Damaged };

// No text that is longer than this is sound, and no more of it comes: whoever wrote the row may have stored any amount.
// The row counts only when there is no fault. Columns are read from `column` on.
inline constexpr SqlText pg_folder_columns = "folder.id, left(folder.name, 256), left(folder.path, 256), folder.parts, "
                                             "EXISTS(SELECT 1 FROM folder child WHERE child.parent = folder.id)";
[[nodiscard]] PgRowFault ReadFolder(const CPgResult& result, int row, FolderRow& folder, int column = 0);

inline constexpr SqlText pg_part_columns =
    "id, folder, slots, thickness, left(name, 256), left(material, 256), left(machine, 256), left(comment, 256)";
inline constexpr int pg_part_column_count = 8;
[[nodiscard]] PgRowFault ReadPart(const CPgResult& result, int row, PartRow& part, int column = 0);

// A file of a part, by its slot, bytes and hash. Nothing where there is none, or a number is out of its range.
[[nodiscard]] std::optional<PartFile> ReadPartFile(const CPgResult& result, int row, PartId part, int column);

} // namespace partkeep
