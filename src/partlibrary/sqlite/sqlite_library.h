// A part library in a SQLite file, open for reading. Parts that somebody adds or deletes meanwhile show at the next
// call.
#pragma once

#include "partlibrary/library/copy_steps.h"
#include "partlibrary/library/part_library.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/server_folders.h"

#include <memory>

namespace partkeep {

class CSqliteLibrary : public IPartLibrary {
public:
    // Null on failure, with the reason. `file` is a native path.
    [[nodiscard]] static std::unique_ptr<CSqliteLibrary> Open(const QString& file, LibraryProblem& problem,
                                                              OpenMode mode = OpenMode::Read);

    explicit CSqliteLibrary(std::shared_ptr<CConnection> connection) : connection_(std::move(connection)) {}

    [[nodiscard]] const LibraryProblem& Problem() const override { return connection_->Problem(); }
    [[nodiscard]] std::optional<FolderRow> FindFolder(const QString& path) override;
    [[nodiscard]] std::optional<FolderRow> FindFolder(qint64 id) override;
    [[nodiscard]] std::optional<PartRow> FindPart(const QString& folder, const QString& name) override;
    [[nodiscard]] std::optional<PartRow> FindPart(PartId id) override;
    [[nodiscard]] std::optional<std::vector<FolderRow>> Folders(const QString& path) override;
    [[nodiscard]] std::unique_ptr<IPartListing> List(const PartListView& view, qint64 parts,
                                                     const IPartListing* wider) override;
    [[nodiscard]] bool ListsAllFolders() const override { return true; }
    [[nodiscard]] std::optional<std::vector<ColumnValue>> Values(const PartListView& view, PartColumn column,
                                                                 std::size_t most) override;
    [[nodiscard]] std::optional<std::vector<PartId>> Ids(const PartListView& view) override;
    [[nodiscard]] std::optional<std::vector<PartId>> Visible(const PartListView& view,
                                                             const std::vector<PartId>& ids) override;
    [[nodiscard]] std::optional<std::vector<PartRow>> PartsBehind(qint64 folder, const QString& after,
                                                                  qint64 limit) override;
    [[nodiscard]] std::optional<std::vector<PartFile>> Files(std::span<const PartId> parts) override;
    [[nodiscard]] std::optional<qint64> Revision() override;
    [[nodiscard]] bool LookForChange() override;
    bool CopyFiles(PartId part, SlotSet slots, const ContentSink& sink) override;
    [[nodiscard]] LibraryPlace Place() const override { return connection_->Place(); }
    [[nodiscard]] const QByteArray& Id() const override { return connection_->Id(); }
    [[nodiscard]] qint64 Refused() const override { return connection_->Refused(); }
    [[nodiscard]] bool HasOtherKeys() const override { return other_keys_; }

    [[nodiscard]] CConnection& Connection() { return *connection_; }
    [[nodiscard]] std::shared_ptr<CConnection> ShareConnection() const { return connection_; }

private:
    std::nullopt_t Refuse(LibraryFault fault, const QString& subject);
    std::nullopt_t RefuseDamaged(); // a row
    [[nodiscard]] std::optional<FolderRow> ReadFolder(CStatement& statement, const QString& subject);
    [[nodiscard]] std::optional<PartRow> ReadPart(CStatement& statement, const QString& subject);
    [[nodiscard]] std::optional<std::vector<FileRow>> FileRows(PartId part);
    [[nodiscard]] std::optional<std::vector<FileRow>> Files(PartId part, SlotSet slots);
    [[nodiscard]] std::shared_ptr<const CServerFolders> FoldersOf(const PartListView& view);
    [[nodiscard]] bool LookAtKeys();
    LibraryProblem CopyPieces(const FileRow& file, const ContentSink& sink);

    std::shared_ptr<CConnection> connection_;
    std::shared_ptr<const CServerFolders> server_folders_; // once they were asked for
    std::optional<qint64> seen_revision_;
    CCopySteps steps_;
    bool other_keys_ = false;
};

} // namespace partkeep
