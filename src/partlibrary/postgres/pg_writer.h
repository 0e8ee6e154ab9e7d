// Changes a part library in a database. Rows are gathered and go in by COPY, some thousand at a time; a row that
// changes is taken out and put in anew. What a change looks up is read ahead, so that an import of many parts in the
// order of their names takes few round trips.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/library/library_writer.h"
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_library.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace partkeep {

class CPgWriter : public ILibraryWriter {
public:
    // Null on failure, with the reason.
    [[nodiscard]] static std::unique_ptr<CPgWriter> Open(const PgPlace& place, LibraryProblem& problem);
    ~CPgWriter() override;
    CPgWriter(const CPgWriter&) = delete;
    CPgWriter& operator=(const CPgWriter&) = delete;

    // Makes all keys, search texts and their pairs anew, by the rules of now, in a transaction of its own.
    bool Rebuild(const WorkProgress& progress);

    bool Begin() override;
    bool Commit() override;
    void Rollback() override;
    [[nodiscard]] IPartLibrary& Library() override;
    [[nodiscard]] std::optional<StoredContent> Store(FileSlot slot, const ContentSource& source) override;
    [[nodiscard]] std::optional<qint64> MakeFolder(const QString& path) override;
    [[nodiscard]] std::optional<PartId> PutPart(qint64 folder, const QString& name,
                                                const std::optional<PartAttributes>& attributes) override;
    bool PutFile(PartId part, FileSlot slot, const StoredContent& content) override;
    using ILibraryWriter::PutFile;
    bool SetAttributes(PartId part, const PartAttributes& attributes) override;
    bool MovePart(PartId part, qint64 folder, const QString& name) override;
    bool RemoveParts(std::span<const PartId> parts) override;
    using ILibraryWriter::RemovePart;
    bool MoveFolder(const QString& path, const QString& new_path) override;
    bool RemoveFolder(const QString& path) override;
    [[nodiscard]] const LibraryProblem& Problem() const override { return connection_->Problem(); }

private:
    using Place = std::pair<qint64, QString>; // a name in a folder
    struct HeldPart {
        PartRow row;
        std::optional<PartRow> old; // as it stands in the table
        bool changed = false;
        QString changed_by; // kept, where it is not empty
        qint64 changed_at = 0;
    };
    // Names of a folder that were read, from one on: what is not among them is not there.
    struct ReadNames {
        qint64 folder = 0;
        QString from;
        QString to; // empty: to the end
        qint64 rows = 0;
    };

    explicit CPgWriter(std::shared_ptr<CPgConnection> connection);
    bool Refuse(LibraryFault fault, const QString& subject, const QString& detail = {});
    bool Start(bool rebuilding);
    bool Flush();
    bool EndPieces();
    bool SendPieces();
    bool PutPieces(FileSlot slot, const ContentSource& source, StoredContent& stored);
    bool FlushFolders();
    bool FlushParts();
    bool FlushFiles();
    bool FlushCounts();
    void AppendPart(std::string& rows, const HeldPart& part) const;
    void CountPairs(const QString& search_text, qint64 step);
    bool ReadFolders();
    HeldPart* Hold(PartId part);
    bool Find(qint64 folder, const QString& name, HeldPart*& found);
    bool ReadAhead(qint64 folder, const QString& name);
    void Take(const CPgResult& result, int row);
    bool CheckAttributes(const QString& name, const PartAttributes& attributes);
    bool MoveFolderRow(const FolderRow& row, qint64 parent, const QString& path);
    bool RebuildParts(const WorkProgress& progress);
    bool CountAllPairs();
    void AppendFolder(qint64 id, qint64 parent, const QString& name, const QString& path);

    std::shared_ptr<CPgConnection> connection_;
    CPgLibrary library_; // on the same connection
    std::map<QString, qint64> folders_;
    bool folders_read_ = false;
    std::set<qint64> bare_folders_; // new ones, of whose parts none is in the table yet
    std::string new_folders_;       // rows of theirs
    std::unordered_map<PartId, HeldPart> parts_;
    std::map<Place, PartId> names_; // 0: nobody has it any more
    ReadNames read_;
    std::map<std::pair<PartId, std::int32_t>, StoredContent> files_;
    std::vector<std::pair<PartId, std::int32_t>> old_files_;
    std::vector<qint64> replaced_;                   // contents that a file had a moment ago
    std::unordered_map<std::int32_t, qint64> pairs_; // how many parts more have them
    std::map<qint64, qint64> new_parts_;             // by folder
    std::vector<char> piece_;
    std::string piece_rows_; // that wait to be sent together
    std::size_t changed_parts_ = 0;
    qint64 next_folder_ = 0;
    qint64 next_part_ = 0;
    qint64 next_content_ = 0;
    qint64 revision_ = 0; // before this change
    qint64 now_ = 0;      // microseconds, as the server counts them
    QString user_;
    bool in_pieces_ = false; // a COPY is under way
    bool broken_ = false;    // a change that was gathered has failed
};

} // namespace partkeep
