// A part library in a database, for reading. Parts that somebody adds or deletes meanwhile show at the next call.
#pragma once

#include "partlibrary/library/copy_steps.h"
#include "partlibrary/postgres/pg_ahead.h"
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_rows.h"
#include "partlibrary/postgres/pg_watch.h"

#include <memory>
#include <span>
#include <unordered_set>

namespace partkeep {

class CPgLibrary : public IPartLibrary {
public:
    // Null on failure, with the reason.
    [[nodiscard]] static std::unique_ptr<CPgLibrary> Open(const PgPlace& place, PgUse use, LibraryProblem& problem,
                                                          std::shared_ptr<CContentCache> cache = nullptr);

    explicit CPgLibrary(std::shared_ptr<CPgConnection> connection, std::shared_ptr<CContentCache> cache = nullptr);

    [[nodiscard]] const LibraryProblem& Problem() const override { return connection_->Problem(); }
    [[nodiscard]] std::optional<FolderRow> FindFolder(const QString& path) override;
    [[nodiscard]] std::optional<FolderRow> FindFolder(qint64 id) override;
    [[nodiscard]] std::optional<PartRow> FindPart(const QString& folder, const QString& name) override;
    [[nodiscard]] std::optional<PartRow> FindPart(PartId id) override;
    [[nodiscard]] std::optional<std::vector<PartRow>> FindParts(std::span<const PartId> ids) override;
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
    bool CopyFiles(PartId part, SlotSet slots, const ContentSink& sink) override;
    void Expect(std::span<const PartCopy> copies) override;
    [[nodiscard]] bool LookForChange() override
    {
        ahead_.Rest();
        return watch_.Look();
    }
    [[nodiscard]] int ChangeSocket() const override { return watch_.Socket(); }
    void ReadAhead(std::span<const PartId> parts) override { watch_.Want(parts); }
    [[nodiscard]] std::optional<QByteArray> PictureAtHand(PartId part, FileSlot slot) override
    {
        return watch_.Picture(part, slot);
    }
    [[nodiscard]] bool PicturesCame() override { return watch_.TakeArrival(); }
    [[nodiscard]] LibraryPlace Place() const override { return connection_->State(); }
    [[nodiscard]] const QByteArray& Id() const override { return connection_->Id(); }
    [[nodiscard]] qint64 Refused() const override { return static_cast<qint64>(refused_.size()); }
    [[nodiscard]] bool HasOtherKeys() const override { return connection_->HasOtherKeys(); }
    [[nodiscard]] QDateTime SilentSince() const override { return connection_->SilentSince(); }
    [[nodiscard]] QDateTime AsOf() const override
    {
        return connection_->Silence().fault == LibraryFault::NoAnswer ? at_hand_.AsOf() : QDateTime();
    }

private:
    std::nullopt_t Refuse(LibraryFault fault, const QString& subject);
    std::nullopt_t Damaged(const QString& what);
    void CountRefused(qint64 key);
    [[nodiscard]] std::optional<FolderRow> TakeFolder(const CPgResult& result, const QString& subject);
    [[nodiscard]] std::optional<PartRow> TakePart(const std::optional<CPgResult>& result, const QString& subject);
    [[nodiscard]] bool LookUpFor(PartId part);
    [[nodiscard]] bool Agree(PartId part, SlotSet slots, std::span<const PartFile> files);
    [[nodiscard]] std::optional<bool> CopyKept(PartId part, SlotSet slots, const ContentSink& sink);
    [[nodiscard]] std::optional<std::vector<PartRow>> FindAtHand(std::span<const PartId> ids) const;
    [[nodiscard]] std::optional<PartRow> Known(const CPgAtHand::Known* known, const CSql& statement,
                                               const QString& subject);
    [[nodiscard]] std::optional<PartRow> Gate(const PartRow& part, PgRowFault fault, const QString& subject);

    std::shared_ptr<CPgConnection> connection_;
    CPgAtHand at_hand_;
    CPgAhead ahead_;
    CPgWatch watch_;
    CCopySteps steps_;
    PartId numbered_ = 0;                // was asked for by its number last; 0: none was
    PartId looked_up_ = 0;               // for the next copy; 0: none was
    std::unordered_set<qint64> refused_; // ids of parts, and of folders below 0
};

} // namespace partkeep
