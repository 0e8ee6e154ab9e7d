#include "partlibrary/sqlite/part_query.h"

#include "controls/part_browser_contract.h"
#include "partlibrary/library/sort_text.h"

#include <array>

namespace partkeep {

namespace {

std::string Keys(const PartListView& view, const std::string& end = {})
{
    const std::string folder = view.folder == all_folders ? "folder" + end + ", " : std::string();
    const std::string behind = "name_key" + end + ", part.id" + end; // a list of ids has an id of its own
    return folder + (view.sort == PartColumn::Name ? behind : KeyColumn(view.sort) + end + ", " + behind);
}

} // namespace

const char* TextColumn(PartColumn column)
{
    static constexpr std::array columns{"name", "thickness", "material", "machine", "comment"};
    return columns[static_cast<std::size_t>(column)];
}

std::string KeyColumn(PartColumn column, bool other_keys)
{
    const std::string text = TextColumn(column);
    return column == PartColumn::Thickness ? text : other_keys ? "sort_key(" + text + ")" : text + "_key";
}

std::string PositionColumns(PartColumn sort, bool other_keys)
{
    return "folder, " + KeyColumn(sort, other_keys) + ", " + KeyColumn(PartColumn::Name, other_keys) + ", part.id";
}

PartPosition ReadPosition(const CStatement& statement, int column, PartColumn sort)
{
    const bool number = sort == PartColumn::Thickness;
    return {statement.Integer(column),
            number ? SqlValue(statement.Integer(column + 1)) : SqlValue(statement.Bytes(column + 1)),
            statement.Bytes(column + 2), statement.Integer(column + 3)};
}

bool Precedes(const PartListView& view, const PartPosition& left, const PartPosition& right)
{
    const PartPosition& low = view.descending ? right : left;
    const PartPosition& high = view.descending ? left : right;
    if (view.folder == all_folders && low.folder != high.folder) {
        return low.folder < high.folder;
    }
    if (view.sort != PartColumn::Name && low.column_key != high.column_key) {
        return low.column_key < high.column_key;
    }
    return low.name_key != high.name_key ? low.name_key < high.name_key : low.id < high.id;
}

CPartQuery::CPartQuery(const PartListView& view, const std::string& columns) : view_(view), sql_("SELECT " + columns) {}

CPartQuery& CPartQuery::Folder()
{
    sql_ += " FROM part WHERE ";
    InFolder("folder");
    return *this;
}

// Here and below a look-up by id drives the query; the index on the folder, which may hold a million, must not.
CPartQuery& CPartQuery::Among(const std::vector<PartId>& ids)
{
    QStringList list;
    for (const PartId id : ids) {
        list += QString::number(id);
    }
    sql_ += " FROM json_each(?) AS wanted CROSS JOIN part ON part.id = wanted.value WHERE ";
    values_.emplace_back(QString(u'[' + list.join(u',') + u']'));
    InFolder("+folder");
    return *this;
}

CPartQuery& CPartQuery::One(PartId part)
{
    sql_ += " FROM part WHERE id = ? AND ";
    values_.emplace_back(part);
    InFolder("+folder");
    return *this;
}

void CPartQuery::InFolder(const char* column)
{
    if (view_.folder == all_folders) {
        sql_ += "TRUE";
    } else {
        sql_ += column + std::string(" = ?");
        values_.emplace_back(view_.folder);
    }
}

// The order of the rows drives a list, so a column that is kept to one value does not offer its index.
CPartQuery& CPartQuery::Shown(const ShownRows& rows)
{
    if (rows.folders != nullptr && !rows.folders->Refused().isEmpty()) {
        sql_ += " AND folder NOT IN (SELECT value FROM json_each(?))";
        values_.emplace_back(rows.folders->Refused());
    }
    for (const auto& [column, value] : view_.only) {
        const bool number = column == PartColumn::Thickness;
        sql_ += " AND +" + KeyColumn(column, rows.other_keys) + " = ?";
        values_.push_back(number ? SqlValue(value.key.toLongLong()) : SqlValue(value.key));
    }
    if (view_.filter != all_data_kinds) {
        sql_ += " AND (slots & ?) <> 0";
        values_.emplace_back(qint64{SlotsOfMask(view_.filter)});
    }
    for (const QString& word : rows.words) {
        sql_ += rows.other_keys ? " AND instr(search_text_of(name, material, machine, comment), ?) > 0"
                                : " AND instr(search_text, ?) > 0";
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
    const bool one_folder = view_.folder != all_folders;
    sql_ += " AND (" + Keys(view_) + ") " + sign + (one_folder ? " (" : " (?, ") + (by_name ? "?, ?)" : "?, ?, ?)");
    if (!one_folder) {
        values_.emplace_back(position->folder);
    }
    if (!by_name) {
        values_.push_back(position->column_key);
    }
    values_.emplace_back(position->name_key);
    values_.emplace_back(position->id);
    return *this;
}

CPartQuery& CPartQuery::Ordered()
{
    sql_ += " ORDER BY " + Keys(view_, view_.descending ? " DESC" : "");
    return *this;
}

CPartQuery& CPartQuery::AsGiven()
{
    sql_ += " ORDER BY wanted.key";
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
