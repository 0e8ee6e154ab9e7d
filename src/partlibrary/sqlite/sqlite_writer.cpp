#include "partlibrary/sqlite/sqlite_writer.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/sqlite/left_journal.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "platform/posix/whole_file.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace partkeep {

namespace {

constexpr std::chrono::seconds commit_patience{60};
constexpr qint64 importer_seconds = 60; // without a sign of life, and an importer counts as dead

} // namespace

bool CSqliteWriter::Create(const QString& file, LibraryProblem& problem)
{
    if (QFile::exists(file)) {
        problem = {LibraryFault::AlreadyThere, file, {}};
        return false;
    }
    const std::string image = EmptyLibrary(problem);
    if (image.empty() || !SetForeignJournalAside(file, problem)) {
        return false;
    }
    if (!CreateWholeFile(ToUtf8(file), image)) {
        problem = WriteProblem(errno, file);
    }
    return !problem;
}

std::string CSqliteWriter::EmptyLibrary(LibraryProblem& problem)
{
    const auto empty = CConnection::Open({}, OpenMode::Create, problem);
    std::string image = empty != nullptr ? empty->Image() : std::string();
    if (image.empty() && !problem) {
        problem = {LibraryFault::NoMemory, {}, {}};
    }
    return image;
}

std::unique_ptr<CSqliteWriter> CSqliteWriter::Open(const QString& file, LibraryProblem& problem)
{
    auto connection = CConnection::Open(file, OpenMode::Write, problem);
    return connection != nullptr ? std::unique_ptr<CSqliteWriter>(new CSqliteWriter(std::move(connection))) : nullptr;
}

bool CSqliteWriter::KeepJournalInMemory()
{
    return connection_->Execute("PRAGMA journal_mode=MEMORY");
}

CSqliteWriter::CSqliteWriter(std::shared_ptr<CConnection> connection)
    : connection_(std::move(connection)), library_(connection_),
      importer_(static_cast<qint64>(QRandomGenerator::system()->generate64() >> 1) | 1), piece_(piece_bytes)
{
}

CSqliteWriter::~CSqliteWriter()
{
    Rollback();
}

bool CSqliteWriter::Refuse(LibraryFault fault, const QString& subject, const QString& detail)
{
    connection_->SetProblem({fault, subject, detail});
    return false;
}

// Transactions.

// The first page is changed before any other: the journal then begins with it, and tells whose it is.
bool CSqliteWriter::BeginChange()
{
    return connection_->BeginChange() && connection_->Execute("PRAGMA user_version=" + std::to_string(library_version));
}

bool CSqliteWriter::Reserve()
{
    if (!BeginChange()) {
        return false;
    }
    CStatement numbers(*connection_,
                       "SELECT importer, importer_seen, next_part, next_content, keys, next_folder FROM library");
    if (!numbers.Next()) {
        return numbers.Failed() ? false : Refuse(LibraryFault::Damaged, connection_->File(), {});
    }
    const qint64 other = numbers.Integer(0);
    const qint64 silent = std::time(nullptr) - numbers.Integer(1);
    if (early_ ? other != importer_ : other != 0 && silent >= 0 && silent < importer_seconds) {
        return Refuse(LibraryFault::Busy, connection_->File(), QStringLiteral("another import is under way"));
    }
    if (!rebuilding_ && numbers.Text(4) != KeysVersion()) {
        return Refuse(LibraryFault::OtherVersion, connection_->File(),
                      QStringLiteral("its keys: check --rebuild makes them anew"));
    }
    next_part_ = numbers.Integer(2);
    next_folder_ = numbers.Integer(5);
    next_content_ = early_ ? next_content_ : numbers.Integer(3);
    if (next_folder_ <= root_folder || next_folder_ > max_part_id || next_part_ <= 0 || next_part_ > max_part_id ||
        next_content_ <= 0 || next_content_ > max_content_id) {
        return Refuse(LibraryFault::Damaged, connection_->File(), QStringLiteral("its numbers are out of range"));
    }
    return early_ || RemoveLeftovers();
}

// What an importer had put aside when it was cut off.
bool CSqliteWriter::RemoveLeftovers()
{
    return connection_->Execute("DELETE FROM piece WHERE id >= ?", next_content_ * pieces_per_content);
}

bool CSqliteWriter::Begin()
{
    early_ = false;
    changed_ = false;
    broken_ = false;
    unsaved_bytes_ = 0;
    if (Reserve()) {
        return true;
    }
    Rollback();
    return false;
}

// Content reaches the disk before the rest. The library's numbers stay behind it, so that it counts as left over until
// the commit.
bool CSqliteWriter::Flush()
{
    early_ = true;
    unsaved_bytes_ = 0;
    connection_->SetPatience(commit_patience);
    const bool kept = connection_->Execute("UPDATE library SET importer = ?, importer_seen = ?", importer_,
                                           qint64{std::time(nullptr)}) &&
                      connection_->CommitChange();
    connection_->SetPatience(usual_patience);
    return kept && Reserve();
}

bool CSqliteWriter::SaveNumbers()
{
    return connection_->Execute("UPDATE library SET importer = 0, next_folder = ?, next_part = ?, next_content = ?",
                                next_folder_, next_part_, next_content_);
}

bool CSqliteWriter::Commit()
{
    bool saved = SavePending() && !broken_;
    for (const auto& [folder, count] : new_parts_) {
        saved = saved && connection_->Execute("UPDATE folder SET parts = parts + ? WHERE id = ?", count, folder);
    }
    new_parts_.clear();
    connection_->SetPatience(commit_patience);
    const bool done = saved && SaveNumbers() && connection_->CommitChange();
    connection_->SetPatience(usual_patience);
    early_ = early_ && !done;
    return done;
}

IPartLibrary& CSqliteWriter::Library()
{
    broken_ = !SavePending() || broken_;
    return library_;
}

// Keeps the problem that led here.
void CSqliteWriter::Rollback()
{
    const LibraryProblem problem = Problem();
    connection_->RollBackChange();
    if (std::exchange(early_, false) && BeginChange()) {
        const bool ours = connection_->Execute("UPDATE library SET importer = 0 WHERE importer = ?", importer_);
        {
            CStatement next(*connection_, "SELECT next_content FROM library WHERE importer = 0");
            next_content_ = ours && next.Next() ? next.Integer(0) : max_content_id;
        }
        if (!RemoveLeftovers() || !connection_->CommitChange()) {
            connection_->RollBackChange();
        }
    }
    connection_->SetProblem(problem);
    pending_.reset();
    folders_.clear();
    new_parts_.clear();
}

bool CSqliteWriter::Rebuild(const WorkProgress& progress)
{
    rebuilding_ = true;
    qint64 made = 0;
    qint64 total = 0;
    bool done = Begin() && connection_->Execute("INSERT INTO part_search(part_search) VALUES('delete-all')") &&
                connection_->Execute("UPDATE library SET keys = ?", KeysVersion());
    {
        CStatement folders(*connection_, "SELECT id, name FROM folder WHERE id <> ?");
        for (folders.With(root_folder); done && folders.Next();) {
            done = connection_->Execute("UPDATE folder SET sort_key = ? WHERE id = ?", SortKey(folders.Text(1)),
                                        folders.Integer(0));
        }
        CStatement counted(*connection_, "SELECT sum(parts) FROM folder");
        total = counted.Next() ? counted.Integer(0) : 0;
        done = done && !folders.Failed() && !counted.Failed();
    }
    const auto next = [this](PartRow& row) { // a row of its own each time, since the table changes
        CStatement part(*connection_, part_with_search + "WHERE id > ? ORDER BY id LIMIT 1");
        return part.With(row.id).Next() ? ReadPartRow(part, row) : RowFault::Refused;
    };
    for (PartRow row; done;) {
        const PartId last = row.id;
        const RowFault fault = next(row);
        if (fault == RowFault::Damaged) {
            connection_->SetProblem(DamagedRow(*connection_));
        }
        if (row.id == last || fault == RowFault::Damaged) {
            done = !Problem();
            break;
        }
        done = SaveWhole(row, true) && (!progress || progress(++made, total) || Refuse(LibraryFault::Stopped, {}));
    }
    done = done && Commit();
    Rollback();
    return done;
}

// Folders and parts.

std::optional<qint64> CSqliteWriter::MakeFolder(const QString& path)
{
    changed_ = true;
    if (const NameFault fault = CheckFolderPath(path); fault != NameFault::None) {
        Refuse(LibraryFault::NameRefused, path, NameFaultText(fault));
        return std::nullopt;
    }
    if (const auto known = folders_.find(path); known != folders_.end()) {
        return known->second;
    }
    std::optional<qint64> folder;
    {
        CStatement find(*connection_, "SELECT id FROM folder WHERE path = ?");
        folder = find.With(path).Next() ? std::optional(find.Integer(0)) : std::nullopt;
        if (find.Failed()) {
            return std::nullopt;
        }
    }
    if (!folder && path.isEmpty()) {
        Refuse(LibraryFault::Damaged, connection_->File(), QStringLiteral("the root is missing"));
        return std::nullopt;
    }
    folder = folder ? folder : AddFolder(path);
    if (folder) {
        folders_[path] = *folder;
    }
    return folder;
}

// The depth is bounded by the length of a path.
std::optional<qint64> CSqliteWriter::AddFolder(const QString& path) // NOLINT(misc-no-recursion)
{
    const qsizetype separator = path.lastIndexOf(u'\\');
    const std::optional<qint64> parent = MakeFolder(path.left(std::max<qsizetype>(separator, 0)));
    if (!parent) {
        return std::nullopt;
    }
    const qint64 id = next_folder_++;
    const QString name = path.sliced(separator + 1);
    const bool added =
        connection_->Execute("INSERT INTO folder VALUES(?, ?, ?, ?, ?, ?, 0)", id, *parent, name, path, SortKey(name),
                             FolderSum(connection_->Salt(), id, *parent, ToUtf8(name), ToUtf8(path)));
    return added ? std::optional(id) : std::nullopt;
}

// The part of the statement's first row becomes the pending one, none where there is no row. False on an error.
bool CSqliteWriter::Take(CStatement& statement)
{
    PartRow row;
    pending_.reset();
    if (!statement.Next()) {
        return !statement.Failed();
    }
    if (ReadPartRow(statement, row) == RowFault::Damaged) {
        connection_->SetProblem(DamagedRow(*connection_));
        return false;
    }
    pending_ = {row, row, statement.Text(part_row_column_count)};
    return true;
}

bool CSqliteWriter::Take(qint64 folder, const QString& name)
{
    CStatement find(*connection_, part_with_search + "WHERE folder = ? AND name = ?");
    return SavePending() && Take(find.With(folder, name));
}

bool CSqliteWriter::Take(PartId part)
{
    if (pending_ && pending_->row.id == part) {
        return true;
    }
    CStatement find(*connection_, part_with_search + "WHERE id = ?");
    return SavePending() && Take(find.With(part)) && (pending_ || Refuse(LibraryFault::NoPart, QString::number(part)));
}

bool CSqliteWriter::CheckAttributes(const QString& name, const PartAttributes& attributes)
{
    for (const QString* text : {&attributes.material, &attributes.machine, &attributes.comment}) {
        if (const NameFault fault = CheckAttribute(*text); fault != NameFault::None) {
            return Refuse(LibraryFault::BadInput, name, QStringLiteral("attribute: ") + NameFaultText(fault));
        }
    }
    return true;
}

std::optional<PartId> CSqliteWriter::PutPart(qint64 folder, const QString& name,
                                             const std::optional<PartAttributes>& attributes)
{
    changed_ = true;
    if (const NameFault fault = CheckName(name); fault != NameFault::None) {
        Refuse(LibraryFault::NameRefused, name, NameFaultText(fault));
        return std::nullopt;
    }
    if ((attributes && !CheckAttributes(name, *attributes)) || !Take(folder, name)) {
        return std::nullopt;
    }
    if (!pending_) {
        pending_ = {{next_part_++, folder, 0, 0, name, {}, {}, {}}, std::nullopt, {}};
        ++new_parts_[folder];
    }
    const PartId part = pending_->row.id;
    return !attributes || SetAttributes(part, *attributes) ? std::optional(part) : std::nullopt;
}

bool CSqliteWriter::SavePending()
{
    if (!pending_) {
        return true;
    }
    const PendingPart part = *std::exchange(pending_, std::nullopt);
    return part.old ? SaveChanges(part) : SaveWhole(part.row, false);
}

bool CSqliteWriter::SaveWhole(const PartRow& row, bool there)
{
    const QString search_text = SearchText(row);
    return connection_->Execute(std::string(there ? "REPLACE" : "INSERT") +
                                    " INTO part VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                                row.id, row.folder, qint64{row.slots}, qint64{row.thickness}, row.name, row.material,
                                row.machine, row.comment, PartSum(connection_->Salt(), row), search_text,
                                SortKey(row.name), SortKey(row.material), SortKey(row.machine), SortKey(row.comment)) &&
           connection_->Execute("INSERT INTO part_search(rowid, pairs) VALUES(?, ?)", row.id, SearchPairs(search_text));
}

} // namespace partkeep
