#include "partlibrary/part_query.h"

#include "controls/part_browser_contract.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/sort_text.h"

#include <array>

namespace partkeep {

namespace {

constexpr std::array<const char*, 5> key_columns{"name_key", "thickness", "material_key", "machine_key", "comment_key"};

QString KeyColumn(PartColumn column)
{
    return QLatin1String(key_columns[static_cast<std::size_t>(column)]);
}

QString Keys(PartColumn column)
{
    const QString behind = QStringLiteral("name_key, part.id"); // a list of ids has an id of its own
    return column == PartColumn::Name ? behind : KeyColumn(column) + QStringLiteral(", ") + behind;
}

} // namespace

PartRow ReadPartRow(const CStatement& statement)
{
    return {statement.Integer(0),
            statement.Integer(1),
            static_cast<SlotSet>(statement.Integer(2)),
            static_cast<std::int32_t>(statement.Integer(3)),
            statement.Text(4),
            statement.Text(5),
            statement.Text(6),
            statement.Text(7)};
}

QString PositionColumns(PartColumn sort)
{
    return KeyColumn(sort) + QStringLiteral(", name_key, part.id");
}

PartPosition ReadPosition(const CStatement& statement, int column)
{
    return {statement.Value(column), statement.Bytes(column + 1), statement.Integer(column + 2)};
}

bool Precedes(const PartListView& view, const PartPosition& left, const PartPosition& right)
{
    const PartPosition& low = view.descending ? right : left;
    const PartPosition& high = view.descending ? left : right;
    if (view.sort == PartColumn::Thickness && low.column_key != high.column_key) {
        return low.column_key.toLongLong() < high.column_key.toLongLong();
    }
    if (view.sort != PartColumn::Name && low.column_key != high.column_key) {
        return low.column_key.toByteArray() < high.column_key.toByteArray();
    }
    return low.name_key != high.name_key ? low.name_key < high.name_key : low.id < high.id;
}

CPartQuery::CPartQuery(const PartListView& view, const QString& columns)
    : view_(view), sql_(QStringLiteral("SELECT ") + columns)
{
}

CPartQuery& CPartQuery::Folder()
{
    sql_ += QStringLiteral(" FROM part WHERE folder = ?");
    values_ += view_.folder;
    return *this;
}

// Here and below a look-up by id drives the query; the index on the folder, which may hold a million, must not.
CPartQuery& CPartQuery::Among(const std::vector<PartId>& ids)
{
    QStringList list;
    for (const PartId id : ids) {
        list += QString::number(id);
    }
    sql_ += QStringLiteral(" FROM json_each(?) AS wanted CROSS JOIN part ON part.id = wanted.value WHERE +folder = ?");
    values_ << QString(u'[' + list.join(u',') + u']') << view_.folder;
    return *this;
}

CPartQuery& CPartQuery::Found(const QStringList& words)
{
    sql_ += QStringLiteral(" FROM part_search CROSS JOIN part ON part.id = part_search.rowid"
                           " WHERE part_search MATCH ? AND +folder = ?");
    values_ << PairQuery(words) << view_.folder;
    return *this;
}

CPartQuery& CPartQuery::One(PartId part)
{
    sql_ += QStringLiteral(" FROM part WHERE id = ? AND +folder = ?");
    values_ << part << view_.folder;
    return *this;
}

CPartQuery& CPartQuery::Shown(const QStringList& words)
{
    if (view_.filter != all_data_kinds) {
        sql_ += QStringLiteral(" AND (slots & ?) <> 0");
        values_ += SlotsOfMask(view_.filter);
    }
    for (const QString& word : words) {
        sql_ += QStringLiteral(" AND instr(search_text, ?) > 0");
        values_ += word;
    }
    return *this;
}

CPartQuery& CPartQuery::Beyond(const std::optional<PartPosition>& position)
{
    return Compare(position, view_.descending ? "<" : ">");
}

CPartQuery& CPartQuery::UpTo(const std::optional<PartPosition>& position)
{
    return Compare(position, view_.descending ? ">=" : "<=");
}

CPartQuery& CPartQuery::Compare(const std::optional<PartPosition>& position, const char* sign)
{
    if (!position) {
        return *this;
    }
    const bool by_name = view_.sort == PartColumn::Name;
    sql_ +=
        QStringLiteral(" AND (%1) %2 (%3)")
            .arg(Keys(view_.sort), QLatin1String(sign), by_name ? QStringLiteral("?, ?") : QStringLiteral("?, ?, ?"));
    if (!by_name) {
        values_ += position->column_key;
    }
    values_ << position->name_key << position->id;
    return *this;
}

CPartQuery& CPartQuery::Ordered()
{
    const QString end = view_.descending ? QStringLiteral(" DESC") : QString();
    sql_ += QStringLiteral(" ORDER BY ") + Keys(view_.sort).replace(u',', end + u',') + end;
    return *this;
}

CPartQuery& CPartQuery::Part(qint64 offset, qint64 limit)
{
    sql_ += QStringLiteral(" LIMIT ? OFFSET ?");
    values_ << limit << offset;
    return *this;
}

CStatement CPartQuery::Run(CLibraryConnection& connection) const
{
    CStatement statement(connection, sql_);
    statement.RunWith(values_);
    return statement;
}

} // namespace partkeep
