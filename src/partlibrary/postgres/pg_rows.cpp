#include "partlibrary/postgres/pg_rows.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/postgres/pg_schema.h"

#include <algorithm>
#include <array>

namespace partkeep {

namespace {

constexpr qint64 all_slots = (qint64{1} << file_kinds.size()) - 1;

} // namespace

PgRowFault ReadFolder(const CPgResult& result, int row, FolderRow& folder, int column)
{
    folder = {result.Integer(row, column), result.Text(row, column + 1), result.Text(row, column + 2),
              result.Integer(row, column + 3), result.Integer(row, column + 4) != 0};
    const bool root = folder.id == postgres_root_folder;
    const bool fits =
        root ? folder.path.isEmpty() : folder.path == folder.name || folder.path.endsWith(u'\\' + folder.name);
    const bool sound = fits && folder.path.isEmpty() == root && CheckFolderPath(folder.path) == NameFault::None &&
                       (root || CheckName(folder.name) == NameFault::None);
    return folder.parts < 0 || folder.id <= 0 ? PgRowFault::Damaged : sound ? PgRowFault::None : PgRowFault::Refused;
}

PgRowFault ReadPart(const CPgResult& result, int row, PartRow& part, int column)
{
    const qint64 slots = result.Integer(row, column + 2);
    part = {result.Integer(row, column),  result.Integer(row, column + 1),
            static_cast<SlotSet>(slots),  static_cast<std::int32_t>(result.Integer(row, column + 3)),
            result.Text(row, column + 4), result.Text(row, column + 5),
            result.Text(row, column + 6), result.Text(row, column + 7)};
    if (slots < 0 || slots > all_slots || part.id <= 0) {
        return PgRowFault::Damaged;
    }
    const std::array texts{&part.material, &part.machine, &part.comment};
    const bool sound = CheckName(part.name) == NameFault::None &&
                       std::all_of(texts.begin(), texts.end(),
                                   [](const QString* text) { return CheckAttribute(*text) == NameFault::None; });
    return sound ? PgRowFault::None : PgRowFault::Refused;
}

std::optional<PartFile> ReadPartFile(const CPgResult& result, int row, PartId part, int column)
{
    const qint64 slot = result.Integer(row, column);
    const qint64 bytes = result.Integer(row, column + 1);
    const bool sound = slot >= 0 && slot < static_cast<qint64>(file_kinds.size()) && bytes >= 0 &&
                       bytes <= postgres_max_file_bytes && !result.IsNull(row, column);
    return sound ? std::optional(PartFile{part, static_cast<FileSlot>(slot), bytes, result.Bytes(row, column + 2)})
                 : std::nullopt;
}

} // namespace partkeep
