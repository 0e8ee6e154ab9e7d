#include "partlibrary/part_list.h"

#include "controls/part_browser_contract.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/sort_text.h"

#include <array>

namespace partkeep {

namespace {

// A folder up to this size is searched by walking its rows, a larger one through the search index, unless
// more parts than this match: then a page is full after few rows of a walk.
constexpr int walk_limit = 20000;

constexpr std::array<const char*, 5> key_columns{"name_key", "thickness", "material_key", "machine_key", "comment_key"};

const char* KeyColumn(PartColumn column)
{
    return key_columns[static_cast<std::size_t>(column)];
}

QString OrderText(const PartListView& view)
{
    const QString direction = view.descending ? QStringLiteral(" DESC") : QString();
    QString order;
    if (view.sort != PartColumn::Name) {
        order = QLatin1String(KeyColumn(view.sort)) + direction + QStringLiteral(", ");
    }
    return QStringLiteral(" ORDER BY ") + order + QStringLiteral("name_key") + direction + QStringLiteral(", id") +
           direction;
}

} // namespace

struct CPartList::Query {
    QString sql;
    QVariantList values;

    void Add(const QString& text, const QVariant& value)
    {
        sql += text;
        values += value;
    }

    void AddShown(const PartListView& view, const QStringList& words)
    {
        if (view.filter != all_data_kinds) {
            Add(QStringLiteral(" AND (slots & ?) <> 0"), SlotsOfMask(view.filter));
        }
        for (const QString& word : words) {
            Add(QStringLiteral(" AND instr(search_text, ?) > 0"), word);
        }
    }
};

CPartList::Query CPartList::Begin(const PartListView& view, const char* columns)
{
    const QStringList words = SearchWords(view.search);
    Query query;
    query.sql = QStringLiteral("SELECT ") + QLatin1String(columns);
    if (!words.isEmpty() && UseSearchIndex(view, words)) {
        query.Add(QStringLiteral(" FROM part_search CROSS JOIN part ON part.id = part_search.rowid"
                                 " WHERE part_search MATCH ?"),
                  PairQuery(words));
        query.Add(QStringLiteral(" AND +folder = ?"), view.folder);
    } else {
        query.Add(QStringLiteral(" FROM part WHERE folder = ?"), view.folder);
    }
    query.AddShown(view, words);
    return query;
}

bool CPartList::UseSearchIndex(const PartListView& view, const QStringList& words)
{
    CStatement folder(connection_, QStringLiteral("SELECT parts FROM folder WHERE id = ?"));
    if (!folder.Run({view.folder}) || !folder.Next() || folder.Integer(0) <= walk_limit) {
        return false;
    }
    folder.Finish();
    CStatement matches(connection_, QStringLiteral("SELECT count(*) FROM (SELECT 1 FROM part_search "
                                                   "WHERE part_search MATCH ? LIMIT ?)"));
    return matches.Run({PairQuery(words), walk_limit}) && matches.Next() && matches.Integer(0) < walk_limit;
}

std::optional<PartPage> CPartList::Page(const PartListView& view, const std::optional<PartPosition>& after, int limit)
{
    const bool by_name = view.sort == PartColumn::Name;
    const QString key = QLatin1String(KeyColumn(view.sort));
    const QString columns =
        QStringLiteral("id, folder, slots, thickness, name, material, machine, comment, name_key, ") + key;
    Query query = Begin(view, columns.toLatin1().constData());
    if (after) {
        const QString compare = view.descending ? QStringLiteral(" < ") : QStringLiteral(" > ");
        if (by_name) {
            query.sql += QStringLiteral(" AND (name_key, id)") + compare + QStringLiteral("(?, ?)");
        } else {
            query.Add(QStringLiteral(" AND (") + key + QStringLiteral(", name_key, id)") + compare +
                          QStringLiteral("(?, ?, ?)"),
                      after->column_key);
        }
        query.values += after->name_key;
        query.values += after->id;
    }
    query.Add(OrderText(view) + QStringLiteral(" LIMIT ?"), limit);

    CStatement statement(connection_, query.sql);
    PartPage page;
    for (statement.RunWith(query.values); statement.Next();) {
        page.rows.push_back({statement.Integer(0), statement.Integer(1), static_cast<SlotSet>(statement.Integer(2)),
                             static_cast<std::int32_t>(statement.Integer(3)), statement.Text(4), statement.Text(5),
                             statement.Text(6), statement.Text(7)});
        page.positions.push_back({statement.Value(9), statement.Bytes(8), statement.Integer(0)});
    }
    if (statement.Failed()) {
        return std::nullopt;
    }
    return page;
}

std::optional<qint64> CPartList::Count(const PartListView& view)
{
    const Query query = Begin(view, "count(*)");
    CStatement statement(connection_, query.sql);
    if (!statement.RunWith(query.values) || !statement.Next()) {
        return std::nullopt;
    }
    return statement.Integer(0);
}

std::optional<std::vector<PartId>> CPartList::Ids(const PartListView& view)
{
    Query query = Begin(view, "id");
    query.sql += OrderText(view);
    return ReadIds(query);
}

// The ids lead to the rows: neither the search index nor the folder's, which may hold a million, is asked.
std::optional<std::vector<PartId>> CPartList::Visible(const PartListView& view, const std::vector<PartId>& ids)
{
    if (ids.empty()) {
        return ids;
    }
    QString list;
    for (const PartId id : ids) {
        list += list.isEmpty() ? QStringLiteral("[") : QStringLiteral(",");
        list += QString::number(id);
    }
    Query query{QStringLiteral("SELECT id FROM part"), {}};
    query.Add(QStringLiteral(" WHERE id IN (SELECT value FROM json_each(?))"), list + QStringLiteral("]"));
    query.Add(QStringLiteral(" AND +folder = ?"), view.folder);
    query.AddShown(view, SearchWords(view.search));
    query.sql += OrderText(view);
    return ReadIds(query);
}

std::optional<std::vector<PartId>> CPartList::ReadIds(const Query& query)
{
    CStatement statement(connection_, query.sql);
    std::vector<PartId> ids;
    for (statement.RunWith(query.values); statement.Next();) {
        ids.push_back(statement.Integer(0));
    }
    if (statement.Failed()) {
        return std::nullopt;
    }
    return ids;
}

} // namespace partkeep
