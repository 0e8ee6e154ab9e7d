#include "partlibrary/postgres/pg_query.h"

#include "controls/part_browser_contract.h"

#include <array>

namespace partkeep {

SqlText PgTextColumn(PartColumn column)
{
    static constexpr std::array<SqlText, 5> columns{"left(name, 256)", "thickness::text", "left(material, 256)",
                                                    "left(machine, 256)", "left(comment, 256)"};
    return columns[static_cast<std::size_t>(column)];
}

SqlText PgKeyColumn(PartColumn column)
{
    static constexpr std::array<SqlText, 5> columns{"name_key", "thickness", "material_key", "machine_key",
                                                    "comment_key"};
    return columns[static_cast<std::size_t>(column)];
}

void AddPartColumns(CSql& sql, const PartListView& view)
{
    sql.Add(pg_part_columns);
    if (view.folder == all_folders) {
        sql.Add(", (SELECT left(path, 256) FROM folder WHERE folder.id = folder_of)");
    }
}

void AddFolder(CSql& sql, const PartListView& view)
{
    if (view.folder == all_folders) {
        sql.Add("TRUE");
    } else {
        sql.Add("folder = ").Value(view.folder);
    }
}

void AddBehind(CSql& sql, const PartListView& view, const PgPosition& position)
{
    const bool all = view.folder == all_folders;
    const bool by_name = view.sort == PartColumn::Name;
    sql.Add(all ? SqlText(" AND (folder, ") : SqlText(" AND ("));
    if (!by_name) {
        sql.Add(PgKeyColumn(view.sort)).Add(", ");
    }
    sql.Add(view.descending ? SqlText("name_key, id) < (") : SqlText("name_key, id) > ("));
    if (all) {
        sql.Value(position.folder).Add(", ");
    }
    if (view.sort == PartColumn::Thickness) {
        sql.Value(static_cast<std::int32_t>(position.thickness)).Add(", ");
    } else if (!by_name) {
        sql.Value(position.column_key).Add(", ");
    }
    sql.Value(position.name_key).Add(", ").Value(position.id).Add(")");
}

void AddShown(CSql& sql, const PartListView& view, const QStringList& words, bool other_keys)
{
    sql.Add("TRUE");
    if (view.filter != all_data_kinds) {
        sql.Add(" AND (slots & ").Value(static_cast<std::int32_t>(SlotsOfMask(view.filter))).Add(") <> 0");
    }
    if (other_keys) {
        return;
    }
    for (const auto& [column, value] : view.only) {
        sql.Add(" AND ").Add(PgKeyColumn(column)).Add(" = ");
        if (column == PartColumn::Thickness) {
            sql.Value(static_cast<std::int32_t>(value.key.toLongLong()));
        } else {
            sql.Value(value.key);
        }
    }
    for (const QString& word : words) {
        sql.Add(" AND strpos(search_text, ").Value(word).Add(") > 0");
    }
}

void AddOrder(CSql& sql, const PartListView& view)
{
    const SqlText next = view.descending ? SqlText(" DESC, ") : SqlText(", ");
    if (view.folder == all_folders) {
        sql.Add("folder").Add(next);
    }
    if (view.sort != PartColumn::Name) {
        sql.Add(PgKeyColumn(view.sort)).Add(next);
    }
    sql.Add("name_key").Add(next).Add(view.descending ? SqlText("id DESC") : SqlText("id"));
}

bool Precedes(const PartListView& view, const PgPosition& left, const PgPosition& right)
{
    const PgPosition& low = view.descending ? right : left;
    const PgPosition& high = view.descending ? left : right;
    if (view.folder == all_folders && low.folder != high.folder) {
        return low.folder < high.folder;
    }
    if (view.sort == PartColumn::Thickness && low.thickness != high.thickness) {
        return low.thickness < high.thickness;
    }
    if (view.sort != PartColumn::Name && low.column_key != high.column_key) {
        return low.column_key < high.column_key;
    }
    return low.name_key != high.name_key ? low.name_key < high.name_key : low.id < high.id;
}

} // namespace partkeep
