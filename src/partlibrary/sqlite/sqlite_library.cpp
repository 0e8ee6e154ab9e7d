#include "partlibrary/sqlite/sqlite_library.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/sqlite/part_pages.h"
#include "partlibrary/sqlite/part_values.h"
#include "partlibrary/sqlite/schema.h"

#include <algorithm>
#include <unordered_set>

namespace partkeep {

namespace {

const std::string select_folders = std::string("SELECT ") + folder_row_columns + " FROM folder ";
const std::string select_parts = std::string("SELECT ") + part_row_columns + " FROM part ";
const std::string find_part = std::string("SELECT ") + part_row_columns +
                              ", folder.id, folder.parent, folder.name, folder.path, folder.sum, 0, 0 "
                              "FROM folder CROSS JOIN part ON part.folder = folder.id "
                              "WHERE folder.path = ? AND part.name = ?";

std::optional<std::vector<PartId>> ReadIds(CConnection& connection, const CPartQuery& query)
{
    CPartResult statement(connection, query);
    std::vector<PartId> ids;
    while (statement.Next()) {
        ids.push_back(statement.Integer(0));
    }
    return statement.Failed() ? std::nullopt : std::optional(std::move(ids));
}

// Few pages at hand while this lives.
class CStreaming {
public:
    explicit CStreaming(CConnection& connection) : connection_(connection) { connection_.StreamContent(true); }
    ~CStreaming() { connection_.StreamContent(false); }
    CStreaming(const CStreaming&) = delete;
    CStreaming& operator=(const CStreaming&) = delete;

private:
    CConnection& connection_;
};

} // namespace

std::unique_ptr<CSqliteLibrary> CSqliteLibrary::Open(const QString& file, LibraryProblem& problem, OpenMode mode)
{
    auto connection = CConnection::Open(file, mode, problem);
    if (connection == nullptr) {
        return nullptr;
    }
    auto library = std::make_unique<CSqliteLibrary>(std::move(connection));
    static_cast<void>(library->LookForChange()); // from here on
    return library;
}

std::nullopt_t CSqliteLibrary::RefuseDamaged()
{
    connection_->SetProblem(DamagedRow(*connection_));
    return std::nullopt;
}

std::nullopt_t CSqliteLibrary::Refuse(LibraryFault fault, const QString& subject)
{
    connection_->SetProblem({fault, subject, {}});
    return std::nullopt;
}

// A name that the gate would hold back is not looked for. An index that is damaged may lead to another row.
std::optional<FolderRow> CSqliteLibrary::FindFolder(const QString& path)
{
    if (CheckFolderPath(path) != NameFault::None) {
        return Refuse(LibraryFault::NoFolder, path);
    }
    CStatement statement(*connection_, select_folders + "WHERE path = ?");
    const auto row = ReadFolder(statement.With(path), path);
    return !row || row->path == path ? row : RefuseDamaged();
}

std::optional<FolderRow> CSqliteLibrary::FindFolder(qint64 id)
{
    CStatement statement(*connection_, select_folders + "WHERE id = ?");
    return ReadFolder(statement.With(id), QString::number(id));
}

std::optional<FolderRow> CSqliteLibrary::ReadFolder(CStatement& statement, const QString& subject)
{
    FolderRow row;
    if (!statement.Next()) {
        return statement.Failed() ? std::nullopt : Refuse(LibraryFault::NoFolder, subject);
    }
    const RowFault fault = ReadFolderRow(statement, row);
    if (fault == RowFault::Damaged) {
        return RefuseDamaged();
    }
    return fault == RowFault::None ? std::optional(row) : Refuse(LibraryFault::NameRefused, subject);
}

std::optional<PartRow> CSqliteLibrary::FindPart(const QString& folder, const QString& name)
{
    if (CheckFolderPath(folder) != NameFault::None || CheckName(name) != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, JoinPath(folder, name));
    }
    CStatement statement(*connection_, find_part);
    auto row = ReadPart(statement.With(folder, name), JoinPath(folder, name));
    FolderRow inside;
    if (!row) {
        return row;
    }
    const RowFault fault = ReadFolderRow(statement, inside, part_row_column_count);
    if (fault == RowFault::Refused) {
        return Refuse(LibraryFault::NameRefused, row->name);
    }
    return fault == RowFault::None && inside.path == folder && row->name == name ? row : RefuseDamaged();
}

std::optional<PartRow> CSqliteLibrary::FindPart(PartId id)
{
    CStatement statement(*connection_, select_parts + "WHERE id = ?");
    return ReadPart(statement.With(id), QString::number(id));
}

std::optional<PartRow> CSqliteLibrary::ReadPart(CStatement& statement, const QString& subject)
{
    PartRow row;
    if (!statement.Next()) {
        return statement.Failed() ? std::nullopt : Refuse(LibraryFault::NoPart, subject);
    }
    const RowFault fault = ReadPartRow(statement, row);
    if (fault == RowFault::Damaged) {
        return RefuseDamaged();
    }
    return fault == RowFault::None ? std::optional(row) : Refuse(LibraryFault::NameRefused, subject);
}

// A row that claims to lie here has to have the path of this place.
std::optional<std::vector<FolderRow>> CSqliteLibrary::Folders(const QString& path)
{
    CStatement statement(*connection_, select_folders + "WHERE parent = (SELECT id FROM folder WHERE path = ?) "
                                                        "ORDER BY sort_key, name");
    std::vector<FolderRow> rows;
    FolderRow row;
    for (statement.With(path); statement.Next();) {
        const RowFault fault = ReadFolderRow(statement, row);
        if (fault == RowFault::Damaged) {
            return RefuseDamaged();
        }
        if (fault == RowFault::None && row.path == (path.isEmpty() ? row.name : path + u'\\' + row.name)) {
            rows.push_back(row);
        } else {
            connection_->CountRefused(-row.id);
        }
    }
    if (statement.Failed()) {
        return std::nullopt;
    }
    if (LookAtKeys()) {
        std::stable_sort(rows.begin(), rows.end(), [](const FolderRow& left, const FolderRow& right) {
            return SortKey(left.name) < SortKey(right.name);
        });
    }
    return rows;
}

// Each time, since another program may make them anew.
bool CSqliteLibrary::LookAtKeys()
{
    CStatement keys(*connection_, "SELECT 1 FROM library WHERE keys = ?");
    other_keys_ = !keys.With(KeysVersion()).Next() && !keys.Failed();
    return other_keys_;
}

std::unique_ptr<IPartListing> CSqliteLibrary::List(const PartListView& view, qint64 parts_in_folder,
                                                   const IPartListing* wider)
{
    auto folders = FoldersOf(view);
    const qint64 parts = folders != nullptr ? folders->Parts() : parts_in_folder;
    auto pages = std::make_unique<CPartPages>(connection_, view, parts, std::move(folders), LookAtKeys());
    if (const auto* const known = dynamic_cast<const CPartPages*>(wider); known != nullptr) {
        pages->NarrowFrom(*known);
    }
    return pages;
}

// A search may be rare, and then its index is quicker than the folder.
std::optional<std::vector<PartId>> CSqliteLibrary::Ids(const PartListView& view)
{
    if (!LookAtKeys() && SearchWords(view.search).isEmpty() && view.folder != all_folders) {
        return ReadIds(*connection_, CPartQuery(view, "part.id").Folder().Shown({}).Ordered());
    }
    CStatement count(*connection_, "SELECT parts FROM folder WHERE id = ?");
    const auto pages = List(view, count.With(view.folder).Next() ? count.Integer(0) : 0, nullptr);
    pages->Finish();
    auto ids = pages->Ids(0, pages->Count());
    const bool whole = pages->Complete() && static_cast<qint64>(ids.size()) == pages->Count();
    return whole ? std::optional(std::move(ids)) : std::nullopt;
}

std::optional<std::vector<PartId>> CSqliteLibrary::Visible(const PartListView& view, const std::vector<PartId>& ids)
{
    if (ids.empty()) {
        return ids;
    }
    if (LookAtKeys()) {
        auto all = Ids(view);
        const std::unordered_set<PartId> wanted(ids.begin(), ids.end());
        if (all) {
            std::erase_if(*all, [&wanted](PartId id) { return !wanted.contains(id); });
        }
        return all;
    }
    const ShownRows shown{SearchWords(view.search), FoldersOf(view)};
    if (view.folder == all_folders && shown.folders == nullptr) {
        return std::nullopt;
    }
    return ReadIds(*connection_, CPartQuery(view, "part.id").Among(ids).Shown(shown).Ordered());
}

std::optional<std::vector<ColumnValue>> CSqliteLibrary::Values(const PartListView& view, PartColumn column,
                                                               std::size_t most)
{
    CStatement count(*connection_, "SELECT parts FROM folder WHERE id = ?");
    const auto list = List(view, count.With(view.folder).Next() ? count.Integer(0) : 0, nullptr);
    return list->Failed() ? std::nullopt : ReadValues(*connection_, *list, column, other_keys_, most);
}

std::shared_ptr<const CServerFolders> CSqliteLibrary::FoldersOf(const PartListView& view)
{
    if (view.folder != all_folders) {
        return nullptr;
    }
    server_folders_ = CServerFolders::Read(*connection_, std::move(server_folders_));
    return server_folders_;
}

// The whole.

std::optional<std::vector<PartRow>> CSqliteLibrary::PartsBehind(qint64 folder, const QString& after, qint64 limit)
{
    CStatement statement(*connection_, select_parts + "WHERE folder = ? AND name > ? AND "
                                                      "part_is_sound(id, name, material, machine, comment) "
                                                      "ORDER BY name LIMIT ?");
    std::vector<PartRow> rows;
    PartRow row;
    std::string last = ToUtf8(after);
    for (statement.With(folder, after, limit); statement.Next();) {
        const bool sound = ReadPartRow(statement, row) == RowFault::None;
        std::string name = ToUtf8(row.name);
        if (!sound || name <= last) { // an index out of order would be walked through for ever
            return RefuseDamaged();
        }
        last = std::move(name);
        rows.push_back(row);
    }
    return statement.Failed() ? std::nullopt : std::optional(std::move(rows));
}

std::optional<qint64> CSqliteLibrary::Revision()
{
    return connection_->State();
}

bool CSqliteLibrary::LookForChange()
{
    const CConnection::CWithoutWaiting without_waiting(*connection_);
    const auto now = Revision();
    const bool changed = now && now != seen_revision_;
    seen_revision_ = now ? now : seen_revision_;
    return changed;
}

// Content.

std::optional<std::vector<FileRow>> CSqliteLibrary::FileRows(PartId part)
{
    CStatement statement(*connection_, std::string("SELECT ") + file_row_columns +
                                           " FROM part_file WHERE id BETWEEN ? AND ? ORDER BY id");
    std::vector<FileRow> files;
    qint64 next = part * slots_per_part;
    const qint64 last = next + slots_per_part - 1;
    for (statement.With(next, last); statement.Next();) {
        FileRow file;
        const qint64 id = statement.Integer(0); // a tree that is out of order gives rows that nobody asked for
        if (id < next || id > last || ReadFileRow(statement, file) != RowFault::None) {
            return RefuseDamaged();
        }
        next = id + 1;
        files.push_back(std::move(file));
    }
    return statement.Failed() ? std::nullopt : std::optional(std::move(files));
}

std::optional<std::vector<FileRow>> CSqliteLibrary::Files(PartId part, SlotSet slots)
{
    auto files = FileRows(part);
    if (!files) {
        return std::nullopt;
    }
    SlotSet found = 0;
    std::erase_if(*files, [&](const FileRow& file) {
        found |= SetOf(file.slot) & slots;
        return (slots & SetOf(file.slot)) == 0;
    });
    if (found != slots) {
        connection_->SetProblem({LibraryFault::Damaged, connection_->File(), QStringLiteral("a file is missing")});
        return std::nullopt;
    }
    return files;
}

std::optional<std::vector<PartFile>> CSqliteLibrary::Files(std::span<const PartId> parts)
{
    const CReadTransaction one_state(*connection_);
    std::vector<PartFile> files;
    for (const PartId part : parts) {
        const auto rows = one_state ? FileRows(part) : std::nullopt;
        if (!rows) {
            return std::nullopt;
        }
        for (const FileRow& row : *rows) {
            files.push_back({part, row.slot, row.bytes, row.hash});
        }
    }
    return files;
}

bool CSqliteLibrary::CopyFiles(PartId part, SlotSet slots, const ContentSink& sink)
{
    const CStreaming few_pages(*connection_);
    const CReadTransaction one_state(*connection_);
    const auto row = one_state ? FindPart(part) : std::nullopt;
    const auto files = row ? Files(part, slots & row->slots) : std::nullopt;
    if (!files) {
        return false;
    }
    for (const FileRow& file : *files) {
        if (LibraryProblem problem = CopyPieces(file, sink)) {
            connection_->SetProblem(std::move(problem));
            return false;
        }
    }
    const auto now = Files({&part, 1});
    if (now && !steps_.Agree(part, slots, *now)) {
        connection_->SetProblem(CCopySteps::Trouble());
        return false;
    }
    return now.has_value();
}

LibraryProblem CSqliteLibrary::CopyPieces(const FileRow& file, const ContentSink& sink)
{
    const qint64 first = file.content * pieces_per_content;
    const auto damage = [this] {
        return LibraryProblem{LibraryFault::Damaged, connection_->File(), QStringLiteral("a file's content")};
    };
    CStatement pieces(*connection_, "SELECT id, sum, content FROM piece WHERE id BETWEEN ? AND ? ORDER BY id");
    pieces.With(first, first + pieces_per_content - 1);
    qint64 at = 0;
    do { // an empty file begins too
        const qint64 size = std::min<qint64>(piece_bytes, file.bytes - at);
        const qint64 id = first + at / piece_bytes;
        if (size > 0 && !pieces.Next()) {
            return pieces.Failed() ? connection_->Problem() : damage();
        }
        const std::string_view piece = size > 0 ? pieces.Raw(2) : std::string_view();
        const bool sound = size == 0 || (pieces.Integer(0) == id && static_cast<qint64>(piece.size()) == size &&
                                         pieces.Integer(1) == PieceSum(connection_->Salt(), id, piece));
        if (!sound) {
            return damage();
        }
        if (LibraryProblem problem = sink(file.slot, piece)) {
            return problem;
        }
        at += size;
    } while (at < file.bytes);
    return {};
}

} // namespace partkeep
