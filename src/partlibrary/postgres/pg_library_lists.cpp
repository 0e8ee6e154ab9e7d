// Lists, and what is asked of their rows.
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_library.h"
#include "partlibrary/postgres/pg_listing.h"

#include <algorithm>
#include <array>
#include <utility>

namespace partkeep {

namespace {

constexpr qint64 few_rows = 20000;

} // namespace

std::unique_ptr<IPartListing> CPgLibrary::List(const PartListView& view, qint64 parts, const IPartListing* /*wider*/)
{
    return std::make_unique<CPgListing>(connection_, view, parts, [this](qint64 part) { CountRefused(part); });
}

std::optional<std::vector<PartId>> CPgLibrary::Ids(const PartListView& view)
{
    const bool counts = view.folder != all_folders && !view.search.isEmpty(); // for the way to look for a text
    const auto folder = counts ? FindFolder(view.folder) : std::nullopt;
    const auto list = List(view, folder ? folder->parts : 0, nullptr);
    list->Finish();
    return list->Complete() ? std::optional(list->Ids(0, list->Count())) : std::nullopt;
}

std::optional<std::vector<PartId>> CPgLibrary::Visible(const PartListView& view, const std::vector<PartId>& ids)
{
    if (ids.empty()) {
        return ids;
    }
    if (HasOtherKeys()) {
        auto all = Ids(view);
        const std::unordered_set<PartId> wanted(ids.begin(), ids.end());
        if (all) {
            std::erase_if(*all, [&wanted](PartId id) { return !wanted.contains(id); });
        }
        return all;
    }
    CSql sql("SELECT ");
    sql.Add(pg_part_columns).Add(" FROM part WHERE id = ANY(").Value(std::span(ids)).Add(") AND ");
    AddFolder(sql, view);
    sql.Add(" AND ");
    AddShown(sql, view, SearchWords(view.search), false);
    sql.Add(" ORDER BY ");
    AddOrder(sql, view);
    const auto result = connection_->Ask(sql);
    if (!result) {
        return std::nullopt;
    }
    std::vector<PartId> visible;
    PartRow row;
    for (int i = 0; i < result->Rows(); ++i) {
        if (ReadPart(*result, i, row) == PgRowFault::None) {
            visible.push_back(row.id);
        }
    }
    return visible;
}

namespace {

// From one value to the next by the index, however many parts have it; once for each folder.
CSql ValuesByIndex(const PartListView& view, PartColumn column)
{
    const auto step = [&](CSql& sql, SqlText behind) {
        sql.Add("(SELECT ").Add(PgTextColumn(column)).Add(" AS text, ").Add(PgKeyColumn(column));
        sql.Add(" AS key, folder AS place FROM part WHERE ").Add(behind).Add(" ORDER BY folder, ");
        sql.Add(PgKeyColumn(column)).Add(" LIMIT 1)");
    };
    static constexpr std::array<SqlText, 5> next{
        "FALSE", "(folder, thickness) > (v.place, v.key)", "(folder, material_key) > (v.place, v.key)",
        "(folder, machine_key) > (v.place, v.key)", "(folder, comment_key) > (v.place, v.key)"};
    CSql sql("WITH RECURSIVE v AS (");
    const bool one = view.folder != all_folders;
    sql.Add("(SELECT f.* FROM (SELECT ").Value(view.folder).Add(" AS wanted) AS w, LATERAL ");
    step(sql, one ? SqlText("folder = w.wanted") : SqlText("TRUE"));
    sql.Add(" AS f) UNION ALL SELECT n.* FROM v, LATERAL ");
    step(sql, next[static_cast<std::size_t>(column)]);
    sql.Add(" AS n WHERE ").Add(one ? SqlText("n.place = v.place") : SqlText("TRUE"));
    sql.Add(") SELECT text FROM v LIMIT 100000");
    return sql;
}

CSql ValuesOfRows(const PartListView& view, PartColumn column)
{
    CSql sql("SELECT DISTINCT ");
    sql.Add(PgTextColumn(column)).Add(" FROM part WHERE ");
    AddFolder(sql, view);
    sql.Add(" AND ");
    AddShown(sql, view, SearchWords(view.search), false);
    sql.Add(" LIMIT 100000");
    return sql;
}

} // namespace

std::optional<std::vector<ColumnValue>> CPgLibrary::Values(const PartListView& view, PartColumn column,
                                                           std::size_t most)
{
    const auto count =
        connection_->Ask(view.folder == all_folders ? CSql("SELECT coalesce(sum(parts), 0)::int8 FROM folder")
                                                    : CSql("SELECT parts FROM folder WHERE id = ").Value(view.folder));
    if (!count || column == PartColumn::Name) {
        return std::nullopt;
    }
    const bool few = count->Rows() == 0 || count->Integer(0, 0) <= few_rows;
    if (!few && HasOtherKeys()) {
        return std::nullopt;
    }
    PartListView known = view;
    if (HasOtherKeys()) { // the rest of the view cannot be asked for
        known.search.clear();
        known.only.clear();
    }
    const auto result = connection_->Ask(few ? ValuesOfRows(known, column) : ValuesByIndex(view, column));
    if (!result) {
        return std::nullopt;
    }
    const bool number = column == PartColumn::Thickness;
    std::vector<ColumnValue> values;
    for (int row = 0; row < result->Rows(); ++row) {
        const QString text = result->Text(row, 0);
        values.push_back({text, number ? text.toUtf8() : SortKey(text)});
    }
    std::sort(values.begin(), values.end(), [number](const ColumnValue& a, const ColumnValue& b) {
        return number ? a.key.toLongLong() < b.key.toLongLong() : std::pair(a.key, a.text) < std::pair(b.key, b.text);
    });
    const auto same = [](const ColumnValue& a, const ColumnValue& b) { return a.key == b.key; };
    values.erase(std::unique(values.begin(), values.end(), same), values.end());
    values.resize(std::min(values.size(), most));
    return values;
}

} // namespace partkeep
