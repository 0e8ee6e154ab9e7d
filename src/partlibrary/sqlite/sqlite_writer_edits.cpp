// Changes to what stands in a library already.
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "partlibrary/sqlite/sqlite_writer.h"

#include <algorithm>

namespace partkeep {

namespace {

// Columns to be set. Only those that change: an index is left alone whose columns do.
class CColumns {
public:
    void Add(const char* column, SqlValue value)
    {
        sql_ += sql_.empty() ? "UPDATE part SET " : ", ";
        sql_ += column;
        sql_ += " = ?";
        values_.push_back(std::move(value));
    }
    void AddText(const char* column, const char* key, const QString& old, const QString& now)
    {
        if (old != now) {
            Add(column, now);
            Add(key, SortKey(now));
        }
    }
    template <typename Number>
    void AddNumber(const char* column, Number old, Number now)
    {
        if (old != now) {
            Add(column, qint64{now});
        }
    }
    [[nodiscard]] bool Save(CConnection& connection, PartId part)
    {
        values_.emplace_back(part);
        CStatement statement(connection, sql_ + " WHERE id = ?");
        return statement.WithAll(values_).Done();
    }
    [[nodiscard]] bool IsEmpty() const { return values_.empty(); }

private:
    std::string sql_;
    std::vector<SqlValue> values_;
};

} // namespace

// The index has no copy of the text and must be told what to forget.
bool CSqliteWriter::ForgetSearch(PartId part, const QString& search_text)
{
    return connection_->Execute("INSERT INTO part_search(part_search, rowid, pairs) VALUES('delete', ?, ?)", part,
                                SearchPairs(search_text));
}

bool CSqliteWriter::SaveChanges(const PendingPart& part)
{
    const PartRow& old = *part.old;
    const PartRow& row = part.row;
    CColumns columns;
    columns.AddNumber("slots", old.slots, row.slots);
    columns.AddNumber("folder", old.folder, row.folder);
    columns.AddNumber("thickness", old.thickness, row.thickness);
    columns.AddText("name", "name_key", old.name, row.name);
    columns.AddText("material", "material_key", old.material, row.material);
    columns.AddText("machine", "machine_key", old.machine, row.machine);
    columns.AddText("comment", "comment_key", old.comment, row.comment);
    if (columns.IsEmpty()) {
        return true;
    }
    columns.Add("sum", PartSum(connection_->Salt(), row));
    const QString search_text = SearchText(row);
    const bool searched_alike = search_text == part.old_search;
    if (!searched_alike) {
        columns.Add("search_text", search_text);
    }
    return columns.Save(*connection_, row.id) &&
           (searched_alike || (ForgetSearch(row.id, part.old_search) &&
                               connection_->Execute("INSERT INTO part_search(rowid, pairs) VALUES(?, ?)", row.id,
                                                    SearchPairs(search_text))));
}

// Parts.

bool CSqliteWriter::SetAttributes(PartId part, const PartAttributes& attributes)
{
    changed_ = true;
    if (!Take(part) || !CheckAttributes(pending_->row.name, attributes)) {
        return false;
    }
    PartRow& row = pending_->row;
    row = {row.id,   row.folder,          row.slots,          attributes.thickness,
           row.name, attributes.material, attributes.machine, attributes.comment};
    return true;
}

bool CSqliteWriter::MovePart(PartId part, qint64 folder, const QString& name)
{
    changed_ = true;
    if (const NameFault fault = CheckName(name); fault != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, name, NameFaultText(fault));
    }
    if (!Take(part)) {
        return false;
    }
    CStatement find(*connection_, "SELECT id FROM part WHERE folder = ? AND name = ?");
    if (find.With(folder, name).Next() && find.Integer(0) != part) {
        return Refuse(LibraryFault::AlreadyThere, name);
    }
    --new_parts_[pending_->row.folder];
    ++new_parts_[folder];
    pending_->row.folder = folder;
    pending_->row.name = name;
    return !find.Failed();
}

bool CSqliteWriter::RemoveParts(std::span<const PartId> parts)
{
    changed_ = true;
    return SavePending() && std::all_of(parts.begin(), parts.end(), [this](PartId part) { return RemovePart(part); });
}

bool CSqliteWriter::RemovePart(PartId part)
{
    if (!Take(part)) {
        return false;
    }
    const PendingPart gone = *std::exchange(pending_, std::nullopt);
    --new_parts_[gone.row.folder];
    return RemoveFiles(part * slots_per_part, part * slots_per_part + slots_per_part - 1) &&
           ForgetSearch(part, gone.old_search) && connection_->Execute("DELETE FROM part WHERE id = ?", part);
}

// Folders.

bool CSqliteWriter::MoveFolder(const QString& path, const QString& new_path)
{
    changed_ = true;
    if (const NameFault fault = CheckFolderPath(new_path); fault != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, new_path, NameFaultText(fault));
    }
    if (path.isEmpty() || new_path.isEmpty() || new_path.startsWith(path + u'\\')) {
        return Refuse(LibraryFault::BadInput, path, QStringLiteral("a folder does not go into itself"));
    }
    const auto folder = Library().FindFolder(path);
    if (!folder || path == new_path) {
        return folder.has_value();
    }
    if (library_.FindFolder(new_path)) {
        return Refuse(LibraryFault::AlreadyThere, new_path);
    }
    if (Problem().fault != LibraryFault::NoFolder) {
        return false;
    }
    const auto parent = MakeFolder(new_path.left(std::max<qsizetype>(new_path.lastIndexOf(u'\\'), 0)));
    folders_.clear();
    return parent && MoveFolderRow(*folder, *parent, new_path) && MoveFoldersInside(*folder, new_path);
}

bool CSqliteWriter::MoveFolderRow(const FolderRow& row, qint64 parent, const QString& path)
{
    if (const NameFault fault = CheckFolderPath(path); fault != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, path, NameFaultText(fault));
    }
    const QString name = path.mid(path.lastIndexOf(u'\\') + 1);
    return connection_->Execute("UPDATE folder SET parent = ?, name = ?, path = ?, sort_key = ?, sum = ? WHERE id = ?",
                                parent, name, path, SortKey(name),
                                FolderSum(connection_->Salt(), row.id, parent, ToUtf8(name), ToUtf8(path)), row.id);
}

// Their paths begin with the folder's and a separator, which the next character bounds.
bool CSqliteWriter::MoveFoldersInside(const FolderRow& folder, const QString& new_path)
{
    std::vector<std::pair<FolderRow, qint64>> inside;
    {
        CStatement find(*connection_,
                        std::string("SELECT ") + folder_row_columns + " FROM folder WHERE path > ? AND path < ?");
        FolderRow row;
        for (find.With(folder.path + u'\\', folder.path + u']'); find.Next();) {
            if (const RowFault fault = ReadFolderRow(find, row); fault != RowFault::None) {
                return fault == RowFault::Damaged ? (connection_->SetProblem(DamagedRow(*connection_)), false)
                                                  : Refuse(LibraryFault::NameRefused, row.path);
            }
            inside.emplace_back(row, find.Integer(1));
        }
        if (find.Failed()) {
            return false;
        }
    }
    return std::all_of(inside.begin(), inside.end(), [&](const auto& row) {
        return MoveFolderRow(row.first, row.second, new_path + row.first.path.sliced(folder.path.size()));
    });
}

bool CSqliteWriter::RemoveFolder(const QString& path)
{
    changed_ = true;
    const auto folder = Library().FindFolder(path);
    if (!folder) {
        return false;
    }
    CStatement held(*connection_, "SELECT 1 WHERE ?1 = ?2 OR EXISTS(SELECT 1 FROM folder WHERE parent = ?1) "
                                  "OR EXISTS(SELECT 1 FROM part WHERE folder = ?1)");
    if (held.With(folder->id, root_folder).Next()) {
        return Refuse(LibraryFault::BadInput, path, QStringLiteral("the folder is not empty"));
    }
    folders_.clear();
    return !held.Failed() && connection_->Execute("DELETE FROM folder WHERE id = ?", folder->id);
}

} // namespace partkeep
