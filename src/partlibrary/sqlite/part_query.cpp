#include "partlibrary/sqlite/part_query.h"

#include "controls/part_browser_contract.h"
#include "partlibrary/library/sort_text.h"

#include <array>

namespace partkeep {

namespace {

constexpr std::array<const char*, 5> key_columns{"name_key", "thickness", "material_key", "machine_key", "comment_key"};

const char* KeyColumn(PartColumn column)
{
    return key_columns[static_cast<std::size_t>(column)];
}

std::string Keys(PartColumn column, const std::string& end = {})
{
    const std::string behind = "name_key" + end + ", part.id" + end; // a list of ids has an id of its own
    return column == PartColumn::Name ? behind : KeyColumn(column) + end + ", " + behind;
}

} // namespace

std::string PositionColumns(PartColumn sort)
{
    return KeyColumn(sort) + std::string(", name_key, part.id");
}

PartPosition ReadPosition(const CStatement& statement, int column, PartColumn sort)
{
    const bool number = sort == PartColumn::Thickness;
    return {number ? SqlValue(statement.Integer(column)) : SqlValue(statement.Bytes(column)),
            statement.Bytes(column + 1), statement.Integer(column + 2)};
}

bool Precedes(const PartListView& view, const PartPosition& left, const PartPosition& right)
{
    const PartPosition& low = view.descending ? right : left;
    const PartPosition& high = view.descending ? left : right;
    if (view.sort != PartColumn::Name && low.column_key != high.column_key) {
        return low.column_key < high.column_key;
    }
    return low.name_key != high.name_key ? low.name_key < high.name_key : low.id < high.id;
}

CPartQuery::CPartQuery(const PartListView& view, const std::string& columns) : view_(view), sql_("SELECT " + columns) {}

CPartQuery& CPartQuery::Folder()
{
    sql_ += " FROM part WHERE folder = ?";
    values_.emplace_back(view_.folder);
    return *this;
}

// Here and below a look-up by id drives the query; the index on the folder, which may hold a million, must not.
CPartQuery& CPartQuery::Among(const std::vector<PartId>& ids)
{
    QStringList list;
    for (const PartId id : ids) {
        list += QString::number(id);
    }
    sql_ += " FROM json_each(?) AS wanted CROSS JOIN part ON part.id = wanted.value WHERE +folder = ?";
    values_.emplace_back(QString(u'[' + list.join(u',') + u']'));
    values_.emplace_back(view_.folder);
    return *this;
}

CPartQuery& CPartQuery::One(PartId part)
{
    sql_ += " FROM part WHERE id = ? AND +folder = ?";
    values_.emplace_back(part);
    values_.emplace_back(view_.folder);
    return *this;
}

CPartQuery& CPartQuery::Shown(const QStringList& words)
{
    if (view_.filter != all_data_kinds) {
        sql_ += " AND (slots & ?) <> 0";
        values_.emplace_back(qint64{SlotsOfMask(view_.filter)});
    }
    for (const QString& word : words) {
        sql_ += " AND instr(search_text, ?) > 0";
        values_.emplace_back(word);
    }
    sql_ += " AND part_is_sound(part.id, name, material, machine, comment)"; // the dearest comes last
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
    sql_ += " AND (" + Keys(view_.sort) + ") " + sign + (by_name ? " (?, ?)" : " (?, ?, ?)");
    if (!by_name) {
        values_.push_back(position->column_key);
    }
    values_.emplace_back(position->name_key);
    values_.emplace_back(position->id);
    return *this;
}

CPartQuery& CPartQuery::Ordered()
{
    sql_ += " ORDER BY " + Keys(view_.sort, view_.descending ? " DESC" : "");
    return *this;
}

CPartQuery& CPartQuery::Part(qint64 offset, qint64 limit)
{
    sql_ += " LIMIT ? OFFSET ?";
    values_.emplace_back(limit);
    values_.emplace_back(offset);
    return *this;
}

} // namespace partkeep
