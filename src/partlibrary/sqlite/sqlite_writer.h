// Changes a part library in a SQLite file.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/library/library_writer.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/sqlite_library.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace partkeep {

inline const std::string part_with_search = std::string("SELECT ") + part_row_columns + ", search_text FROM part ";

class CSqliteWriter : public ILibraryWriter {
public:
    // Makes an empty library, which appears under its name only when it is whole. A file that is there already is left
    // alone.
    static bool Create(const QString& file, LibraryProblem& problem);

    // The bytes of an empty library, each time another one. Empty on failure, with the reason.
    [[nodiscard]] static std::string EmptyLibrary(LibraryProblem& problem);

    // Null on failure, with the reason.
    [[nodiscard]] static std::unique_ptr<CSqliteWriter> Open(const QString& file, LibraryProblem& problem);

    // For a file that nobody else knows yet, and that goes when it does not become whole: without a journal beside it.
    bool KeepJournalInMemory();

    ~CSqliteWriter() override;
    CSqliteWriter(const CSqliteWriter&) = delete;
    CSqliteWriter& operator=(const CSqliteWriter&) = delete;

    // Makes all keys, search texts and their index anew, by the rules of now, in a transaction of its own. Tells of it
    // by parts.
    bool Rebuild(const WorkProgress& progress = {});

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
    // The part that was put last: saved once its files are known.
    struct PendingPart {
        PartRow row;
        std::optional<PartRow> old; // of a part that is there already
        QString old_search;
    };

    explicit CSqliteWriter(std::shared_ptr<CConnection> connection);
    bool Refuse(LibraryFault fault, const QString& subject, const QString& detail = {});
    bool BeginChange();
    bool Reserve();
    bool Flush();
    bool RemoveLeftovers();
    bool SaveNumbers();
    bool PutPieces(qint64 content, FileSlot slot, const ContentSource& source, StoredContent& stored);
    std::optional<qint64> AddFolder(const QString& path);
    bool Take(CStatement& statement);
    bool Take(qint64 folder, const QString& name);
    bool Take(PartId part);
    bool CheckAttributes(const QString& name, const PartAttributes& attributes);
    bool SavePending();
    bool SaveChanges(const PendingPart& part);
    bool SaveWhole(const PartRow& row, bool there);
    bool ForgetSearch(PartId part, const QString& search_text);
    bool RemovePart(PartId part);
    bool RemoveFiles(qint64 first, qint64 last);
    bool MoveFolderRow(const FolderRow& row, qint64 parent, const QString& path);
    bool MoveFoldersInside(const FolderRow& folder, const QString& new_path);

    std::shared_ptr<CConnection> connection_;
    CSqliteLibrary library_; // on the same connection
    const qint64 importer_;  // number of this writer among all
    std::map<QString, qint64> folders_;
    std::map<qint64, qint64> new_parts_; // by folder
    std::optional<PendingPart> pending_;
    std::vector<char> piece_;
    qint64 next_folder_ = 0;
    qint64 next_part_ = 0;
    qint64 next_content_ = 0;
    qint64 unsaved_bytes_ = 0; // of content, since the last commit
    bool changed_ = false;     // more than content since Begin
    bool broken_ = false;      // a change that was gathered has failed
    bool rebuilding_ = false;
    bool early_ = false; // content has reached the disk before the commit
};

} // namespace partkeep
