// Folders, and changes to what stands in a library already.
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_schema.h"
#include "partlibrary/postgres/pg_writer.h"

#include <algorithm>
#include <array>

namespace partkeep {

namespace {

constexpr std::size_t most_held = 4096; // parts that wait
constexpr qint64 rebuilt_at_once = 2048;

QString ParentOf(const QString& path)
{
    return path.left(std::max<qsizetype>(path.lastIndexOf(u'\\'), 0));
}

} // namespace

// Folders.

bool CPgWriter::ReadFolders()
{
    if (folders_read_) {
        return true;
    }
    const auto rows = EndPieces() ? connection_->Ask(CSql("SELECT id, path FROM folder")) : std::nullopt;
    if (!rows) {
        return false;
    }
    for (int row = 0; row < rows->Rows(); ++row) {
        folders_[rows->Text(row, 1)] = rows->Integer(row, 0);
    }
    folders_read_ = folders_.contains(QString()); // or its parents would be looked for without end
    return folders_read_ ||
           Refuse(LibraryFault::Damaged, connection_->Place().Text(), QStringLiteral("the root is missing"));
}

// The depth is bounded by the length of a path.
std::optional<qint64> CPgWriter::MakeFolder(const QString& path) // NOLINT(misc-no-recursion)
{
    if (const NameFault fault = CheckFolderPath(path); fault != NameFault::None) {
        Refuse(LibraryFault::NameRefused, path, NameFaultText(fault));
        return std::nullopt;
    }
    if (!ReadFolders()) {
        return std::nullopt;
    }
    if (const auto known = folders_.find(path); known != folders_.end()) {
        return known->second;
    }
    const auto parent = MakeFolder(ParentOf(path));
    if (!parent) {
        return std::nullopt;
    }
    const qint64 id = next_folder_++;
    const QString name = path.sliced(path.lastIndexOf(u'\\') + 1);
    AppendFolder(id, *parent, name, path);
    folders_[path] = id;
    bare_folders_.insert(id);
    return id;
}

bool CPgWriter::MoveFolder(const QString& path, const QString& new_path)
{
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
    const auto parent = MakeFolder(ParentOf(new_path));
    if (!parent || !Flush()) {
        return false;
    }
    // Their paths begin with the folder's and a separator, which the next character bounds.
    const auto inside = connection_->Ask(CSql("SELECT ")
                                             .Add(pg_folder_columns)
                                             .Add(", parent FROM folder WHERE path > ")
                                             .Value(path + u'\\')
                                             .Add(" AND path < ")
                                             .Value(path + u']'));
    bool moved = inside && MoveFolderRow(*folder, *parent, new_path);
    for (int i = 0; moved && i < inside->Rows(); ++i) {
        FolderRow row;
        moved = ReadFolder(*inside, i, row) == PgRowFault::None
                    ? MoveFolderRow(row, inside->Integer(i, 5), new_path + row.path.sliced(path.size()))
                    : Refuse(LibraryFault::NameRefused, row.path);
    }
    folders_.clear();
    folders_read_ = false;
    return moved;
}

bool CPgWriter::MoveFolderRow(const FolderRow& row, qint64 parent, const QString& path)
{
    if (const NameFault fault = CheckFolderPath(path); fault != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, path, NameFaultText(fault));
    }
    const QString name = path.mid(path.lastIndexOf(u'\\') + 1);
    return connection_->Run(CSql("UPDATE folder SET parent = ")
                                .Value(parent)
                                .Add(", name = ")
                                .Value(name)
                                .Add(", path = ")
                                .Value(path)
                                .Add(", sort_key = ")
                                .Value(SortKey(name))
                                .Add(" WHERE id = ")
                                .Value(row.id));
}

bool CPgWriter::RemoveFolder(const QString& path)
{
    const auto folder = Library().FindFolder(path);
    if (!folder) {
        return false;
    }
    const auto held = connection_->Ask(CSql("SELECT 1 FROM part WHERE folder = ").Value(folder->id).Add(" LIMIT 1"));
    if (!held) {
        return false;
    }
    if (folder->id == postgres_root_folder || folder->has_folders || held->Rows() > 0) {
        return Refuse(LibraryFault::BadInput, path, QStringLiteral("the folder is not empty"));
    }
    folders_.clear();
    folders_read_ = false;
    return connection_->Run(CSql("DELETE FROM folder WHERE id = ").Value(folder->id));
}

// Parts.

bool CPgWriter::CheckAttributes(const QString& name, const PartAttributes& attributes)
{
    for (const QString* text : {&attributes.material, &attributes.machine, &attributes.comment}) {
        if (const NameFault fault = CheckAttribute(*text); fault != NameFault::None) {
            return Refuse(LibraryFault::BadInput, name, QStringLiteral("attribute: ") + NameFaultText(fault));
        }
    }
    return true;
}

std::optional<PartId> CPgWriter::PutPart(qint64 folder, const QString& name,
                                         const std::optional<PartAttributes>& attributes)
{
    HeldPart* part = nullptr;
    if (const NameFault fault = CheckName(name); fault != NameFault::None) {
        Refuse(LibraryFault::NameRefused, name, NameFaultText(fault));
        return std::nullopt;
    }
    const bool room = parts_.size() < most_held || Flush();
    if (!room || (attributes && !CheckAttributes(name, *attributes)) || !Find(folder, name, part)) {
        return std::nullopt;
    }
    if (part == nullptr) {
        const PartId id = next_part_++;
        part = &parts_[id];
        *part = {{id, folder, 0, 0, name, {}, {}, {}}, std::nullopt, true, {}, 0};
        names_[{folder, name}] = id;
        ++new_parts_[folder];
    }
    const PartId id = part->row.id;
    return !attributes || SetAttributes(id, *attributes) ? std::optional(id) : std::nullopt;
}

bool CPgWriter::SetAttributes(PartId part, const PartAttributes& attributes)
{
    const bool room = parts_.size() < 2 * most_held || Flush();
    HeldPart* const held = room ? Hold(part) : nullptr;
    if (held == nullptr || !CheckAttributes(held->row.name, attributes)) {
        return false;
    }
    PartRow& row = held->row;
    const bool same = row.thickness == attributes.thickness && row.material == attributes.material &&
                      row.machine == attributes.machine && row.comment == attributes.comment;
    row = {row.id,   row.folder,          row.slots,          attributes.thickness,
           row.name, attributes.material, attributes.machine, attributes.comment};
    held->changed = held->changed || !same;
    return true;
}

bool CPgWriter::MovePart(PartId part, qint64 folder, const QString& name)
{
    if (const NameFault fault = CheckName(name); fault != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, name, NameFaultText(fault));
    }
    HeldPart* other = nullptr;
    const bool room = parts_.size() < 2 * most_held || Flush();
    if (!room || Hold(part) == nullptr || !Find(folder, name, other)) {
        return false;
    }
    if (other != nullptr && other->row.id != part) {
        return Refuse(LibraryFault::AlreadyThere, name);
    }
    HeldPart* const held = Hold(part); // looking up may have let go of it
    if (held == nullptr || other == held) {
        return held != nullptr;
    }
    names_[{held->row.folder, held->row.name}] = 0;
    names_[{folder, name}] = part;
    --new_parts_[held->row.folder];
    ++new_parts_[folder];
    held->row.folder = folder;
    held->row.name = name;
    held->changed = true;
    return true;
}

bool CPgWriter::RemoveParts(std::span<const PartId> parts)
{
    if (!Flush()) {
        return false;
    }
    const std::array statements{
        CSql("WITH gone AS (DELETE FROM part_file WHERE part = ANY(")
            .Value(parts)
            .Add(") RETURNING content) DELETE FROM piece USING gone WHERE piece.content = gone.content"),
        CSql("DELETE FROM part WHERE id = ANY(").Value(parts).Add(") RETURNING id, folder, search_text")};
    const auto results = connection_->AskAll(statements);
    if (!results) {
        return false;
    }
    const CPgResult& gone = results->back();
    std::set<PartId> left(parts.begin(), parts.end());
    for (int row = 0; row < gone.Rows(); ++row) {
        left.erase(gone.Integer(row, 0));
        --new_parts_[gone.Integer(row, 1)];
        CountPairs(gone.Text(row, 2), -1);
    }
    changed_parts_ += parts.size();
    return left.empty() || Refuse(LibraryFault::NoPart, QString::number(*left.begin()));
}

// All anew.

bool CPgWriter::Rebuild(const WorkProgress& progress)
{
    bool done = Start(true) && connection_->Run(CSql("DELETE FROM pair"));
    const auto folders = done ? connection_->Ask(CSql("SELECT id, name FROM folder WHERE id <> 1")) : std::nullopt;
    std::vector<qint64> ids;
    std::vector<QByteArray> keys;
    for (int row = 0; folders && row < folders->Rows(); ++row) {
        ids.push_back(folders->Integer(row, 0));
        keys.push_back(SortKey(folders->Text(row, 1)));
    }
    done = folders && connection_->Run(CSql("UPDATE folder SET sort_key = made.key FROM unnest(")
                                           .Value(std::span<const qint64>(ids))
                                           .Add(", ")
                                           .Value(std::span<const QByteArray>(keys))
                                           .Add(") AS made(id, key) WHERE folder.id = made.id"));
    done = done && RebuildParts(progress) &&
           connection_->Run(CSql("UPDATE partkeep_library SET keys = ").Value(KeysVersion())) && Commit();
    Rollback();
    return done;
}

// Who changed a part last is not whoever makes its keys anew.
bool CPgWriter::RebuildParts(const WorkProgress& progress)
{
    qint64 made = 0;
    for (PartId last = 0;;) {
        const auto rows = connection_->Ask(CSql("SELECT ")
                                               .Add(pg_part_columns)
                                               .Add(", changed_by, changed_at FROM part WHERE id > ")
                                               .Value(last)
                                               .Add(" ORDER BY id LIMIT ")
                                               .Value(rebuilt_at_once));
        if (!rows) {
            return false;
        }
        for (int i = 0; i < rows->Rows(); ++i) {
            PartRow row;
            if (ReadPart(*rows, i, row) == PgRowFault::Damaged || row.id <= last) {
                return Refuse(LibraryFault::Damaged, connection_->Place().Text(), row.name);
            }
            last = row.id;
            parts_[row.id] = {row, row, true, rows->Text(i, pg_part_column_count),
                              rows->Integer(i, pg_part_column_count + 1)};
        }
        if (!Flush()) {
            return false;
        }
        made += rows->Rows();
        if (progress && !progress(made, 0)) {
            return Refuse(LibraryFault::Stopped, {});
        }
        if (rows->Rows() < rebuilt_at_once) {
            break;
        }
    }
    pairs_.clear(); // those that changed tell nothing
    return CountAllPairs();
}

bool CPgWriter::CountAllPairs()
{
    return connection_->Run(
        CSql("INSERT INTO pair SELECT code, count(*) FROM part, unnest(pairs) AS code GROUP BY code"));
}

} // namespace partkeep
