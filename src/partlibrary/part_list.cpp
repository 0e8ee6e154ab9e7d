#include "partlibrary/part_list.h"

#include "partlibrary/library_connection.h"
#include "partlibrary/part_query.h"
#include "partlibrary/sort_text.h"

namespace partkeep {

namespace {

// A folder up to this size is searched by walking its rows, a larger one through the search index, unless
// more parts than this match: then a page is full after few rows of a walk.
constexpr int walk_limit = 20000;

std::optional<std::vector<PartId>> ReadIds(CStatement statement)
{
    std::vector<PartId> ids;
    while (statement.Next()) {
        ids.push_back(statement.Integer(0));
    }
    return statement.Failed() ? std::nullopt : std::optional(std::move(ids));
}

} // namespace

CPartQuery CPartList::Begin(const PartListView& view, const QString& columns)
{
    const QStringList words = SearchWords(view.search);
    CPartQuery query(view, columns);
    if (!words.isEmpty() && UseSearchIndex(view, words)) {
        query.Found(words);
    } else {
        query.Folder();
    }
    return query.Shown(words);
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
    const QString columns = part_row_columns + QStringLiteral(", ") + PositionColumns(view.sort);
    CStatement statement = Begin(view, columns).Beyond(after).Ordered().Part(0, limit).Run(connection_);
    PartPage page;
    while (statement.Next()) {
        page.rows.push_back(ReadPartRow(statement));
        page.positions.push_back(ReadPosition(statement, part_row_column_count));
    }
    return statement.Failed() ? std::nullopt : std::optional(std::move(page));
}

std::optional<std::vector<PartId>> CPartList::Ids(const PartListView& view)
{
    return ReadIds(Begin(view, QStringLiteral("part.id")).Ordered().Run(connection_));
}

std::optional<std::vector<PartId>> CPartList::Visible(const PartListView& view, const std::vector<PartId>& ids)
{
    if (ids.empty()) {
        return ids;
    }
    const QStringList words = SearchWords(view.search);
    return ReadIds(CPartQuery(view, QStringLiteral("part.id")).Among(ids).Shown(words).Ordered().Run(connection_));
}

} // namespace partkeep
