#include "partlibrary/sqlite/library_salvage.h"

#include "partlibrary/library/bitmap_file.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "partlibrary/sqlite/sqlite_writer.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>

namespace partkeep {

namespace {

constexpr qint64 longest_skip = 64; // ids, over rows that the engine cannot reach
constexpr int most_again = 1000;    // rows with a number that another has had

const QString& LostFolder()
{
    static const QString name = QStringLiteral("recovered");
    return name;
}

class CSalvage {
public:
    CSalvage(CConnection& damaged, CSqliteWriter& fresh, const WorkProgress& progress, LibraryRepair& repair)
        : damaged_(damaged), fresh_(fresh), progress_(progress), repair_(repair)
    {
    }

    bool Run()
    {
        return fresh_.Begin() && ReadNumbers() &&
               Rows(std::string("SELECT ") + folder_row_columns + " FROM folder", next_folder_,
                    [this](const CStatement& row) { return Folder(row); }) &&
               Rows(std::string("SELECT ") + part_row_columns + " FROM part", next_part_,
                    [this](const CStatement& row) { return Part(row); }) &&
               fresh_.Commit();
    }
    [[nodiscard]] LibraryProblem Problem() const
    {
        return problem_ ? problem_ : fresh_.Problem() ? fresh_.Problem() : damaged_.Problem();
    }

private:
    void Drop(const QString& line)
    {
        if (repair_.dropped.size() < max_findings) {
            repair_.dropped += line;
        }
    }

    // Where the numbers are lost, too, the first row that cannot be reached is the end.
    bool ReadNumbers()
    {
        CStatement numbers(damaged_, "SELECT next_folder, next_part FROM library");
        if (numbers.Next()) {
            next_folder_ = std::clamp(numbers.Integer(0), qint64{0}, max_part_id);
            next_part_ = std::clamp(numbers.Integer(1), qint64{0}, max_part_id);
        }
        return true;
    }

    // Each row by the table's own order alone, since an index may be what is damaged. A number may be damaged, too, and
    // then even that order leads astray whoever looks for the next number: the rows are gone through one by one.
    template <typename Each>
    bool Rows(const std::string& sql, qint64 end, const Each& each)
    {
        qint64 skip = 0;
        int again = 0;
        std::unordered_set<qint64> given;
        for (qint64 id = 0;;) {
            CStatement rows(damaged_, sql + " WHERE id > ? ORDER BY id");
            for (rows.With(id); rows.Next(); skip = 0) {
                id = rows.Integer(0) < end ? std::max(id, rows.Integer(0)) : id;
                again += given.insert(rows.Integer(0)).second ? 0 : 1;
                if (again > most_again) { // pages that lead to each other do so without end
                    Drop(QStringLiteral("rows behind number %1 cannot be reached").arg(id));
                    return true;
                }
                if (!Stop() || !each(rows)) {
                    return false;
                }
            }
            if (!rows.Failed()) {
                return true;
            }
            if (damaged_.Problem().fault != LibraryFault::Damaged) {
                problem_ = damaged_.Problem();
                return false;
            }
            if (!Stop()) {
                return false;
            }
            skip = std::clamp(skip * 2, qint64{1}, longest_skip);
            Drop(QStringLiteral("rows from number %1 to %2 cannot be reached").arg(id + 1).arg(id + skip));
            id += skip;
            if (id >= end) {
                return true;
            }
        }
    }

    bool Folder(const CStatement& statement)
    {
        FolderRow row;
        if (ReadFolderRow(statement, row) != RowFault::None) {
            if (LacksMemory(statement)) {
                return false;
            }
            Drop(QStringLiteral("folder %1: the row is not as it was stored").arg(statement.Text(3)));
            return true;
        }
        paths_[row.id] = row.path;
        return fresh_.MakeFolder(row.path).has_value();
    }

    bool Part(const CStatement& statement)
    {
        PartRow row;
        if (ReadPartRow(statement, row) != RowFault::None) {
            if (LacksMemory(statement)) {
                return false;
            }
            Drop(QStringLiteral("part %1: the row is not as it was stored").arg(statement.Text(4)));
            return true;
        }
        const auto path = paths_.find(row.folder);
        const QString folder = path != paths_.end() ? path->second : LostFolder();
        if (path == paths_.end() && repair_.mended.size() < max_findings) {
            repair_.mended += QStringLiteral("part %1: its folder is lost; it lies in %2").arg(row.name, folder);
        }
        if (!names_.emplace(folder, row.name).second) {
            Drop(QStringLiteral("part %1: another has its name").arg(JoinPath(folder, row.name)));
            return true;
        }
        return Put(folder, row);
    }
    bool Stop()
    {
        const bool on = !progress_ || progress_(repair_.kept.parts, 0);
        problem_ = on ? problem_ : LibraryProblem{LibraryFault::Stopped, {}, {}};
        return on;
    }

    bool Put(const QString& folder, const PartRow& row)
    {
        std::vector<std::pair<FileSlot, StoredContent>> contents;
        for (const FileKind& kind : file_kinds) {
            if ((row.slots & SetOf(kind.slot)) != 0 && !File(row, kind.slot, contents)) {
                return false;
            }
        }
        const auto inside = fresh_.MakeFolder(folder);
        const auto part = inside ? fresh_.PutPart(*inside, row.name,
                                                  PartAttributes{row.thickness, row.material, row.machine, row.comment})
                                 : std::nullopt;
        ++repair_.kept.parts;
        repair_.kept.files += static_cast<qint64>(contents.size());
        return part && std::all_of(contents.begin(), contents.end(), [&](const auto& content) {
                   return fresh_.PutFile(*part, content.first, content.second);
               });
    }

    // What cannot be read for want of memory is not damaged.
    bool LacksMemory(const CStatement& statement)
    {
        const bool lacks = statement.Failed() && damaged_.Problem().fault == LibraryFault::NoMemory;
        problem_ = lacks ? damaged_.Problem() : problem_;
        return lacks;
    }

    // False only where the new library cannot be written, or no longer read what could be read a moment ago.
    bool File(const PartRow& part, FileSlot slot, std::vector<std::pair<FileSlot, StoredContent>>& contents)
    {
        FileRow row;
        CStatement file(damaged_, std::string("SELECT ") + file_row_columns + " FROM part_file WHERE id = ?");
        const bool there = file.With(part.id * slots_per_part + static_cast<qint64>(slot)).Next() &&
                           ReadFileRow(file, row) == RowFault::None;
        if (!there || !IsWhole(row)) {
            if (problem_ || LacksMemory(file)) {
                return false;
            }
            Drop(QStringLiteral("part %1, file %2: the content is not as it was stored")
                     .arg(part.name, QString::number(static_cast<int>(slot))));
            return true;
        }
        CStatement pieces(damaged_, pieces_of_file);
        pieces.With(row.content * pieces_per_content, row.content * pieces_per_content + pieces_per_content - 1);
        const auto stored = fresh_.Store(slot, [&pieces](std::span<char> buffer) {
            const std::string_view piece = pieces.Next() ? pieces.Raw(2) : std::string_view();
            std::copy_n(piece.data(), std::min(piece.size(), buffer.size()), buffer.data());
            return static_cast<qint64>(piece.size());
        });
        if (pieces.Failed()) { // not the end
            problem_ = damaged_.Problem();
            return false;
        }
        if (stored) {
            contents.emplace_back(slot, *stored);
        }
        return stored.has_value();
    }

    bool IsWhole(const FileRow& file)
    {
        CStatement pieces(damaged_, pieces_of_file);
        const qint64 first = file.content * pieces_per_content;
        CContentHash hash;
        QByteArray start;
        qint64 bytes = 0;
        bool sound = true;
        for (pieces.With(first, first + pieces_per_content - 1); sound && pieces.Next();) {
            const std::string_view piece = pieces.Raw(2);
            const qint64 id = first + bytes / piece_bytes;
            start = bytes == 0 ? pieces.Bytes(2) : start;
            sound = pieces.Integer(0) == id && pieces.Integer(1) == PieceSum(damaged_.Salt(), id, piece) &&
                    static_cast<qint64>(piece.size()) == std::min<qint64>(piece_bytes, file.bytes - bytes);
            hash.Add(piece);
            bytes += static_cast<qint64>(piece.size());
        }
        return !LacksMemory(pieces) && sound && !pieces.Failed() && bytes == file.bytes && hash.Hash() == file.hash &&
               PictureFault(file.slot, start) == nullptr;
    }

    static constexpr const char* pieces_of_file =
        "SELECT id, sum, content FROM piece WHERE id BETWEEN ? AND ? ORDER BY id";

    CConnection& damaged_;
    CSqliteWriter& fresh_;
    const WorkProgress& progress_;
    LibraryRepair& repair_;
    LibraryProblem problem_;
    std::map<qint64, QString> paths_;
    std::set<std::pair<QString, QString>> names_; // folder and name of what is kept
    qint64 next_folder_ = 0;
    qint64 next_part_ = 0;
};

} // namespace

std::shared_ptr<CConnection> SalvageLibrary(const QString& file, const QString& target, const WorkProgress& progress,
                                            LibraryRepair& repair, LibraryProblem& problem)
{
    auto damaged = CConnection::Open(file, OpenMode::Write, problem);
    if (damaged == nullptr) {
        return nullptr;
    }
    if (!damaged->Execute("BEGIN IMMEDIATE") && damaged->Problem().fault != LibraryFault::Damaged) {
        problem = damaged->Problem();
        return nullptr;
    }
    const auto fresh = CSqliteWriter::Open(target, problem);
    if (fresh == nullptr || !fresh->KeepJournalInMemory()) {
        problem = fresh != nullptr ? fresh->Problem() : problem;
        return nullptr;
    }
    damaged->SetProblem({});
    CSalvage salvage(*damaged, *fresh, progress, repair);
    if (!salvage.Run()) {
        problem = salvage.Problem();
        return nullptr;
    }
    return damaged;
}

} // namespace partkeep
