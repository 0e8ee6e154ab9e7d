// The content of one part on its way from the server, row by row: a part and its files are of one statement, so they
// are of one state. That goes for what is kept on this machine, too: the statement tells which contents need not come,
// and its answer which contents the files have.
#pragma once

#include "partlibrary/cache/content_cache.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_rows.h"

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace partkeep {

class CPgContent {
public:
    // Nothing is kept without a cache.
    explicit CPgContent(CPgConnection& connection, CContentCache* cache = nullptr, std::vector<QByteArray> kept = {})
        : connection_(connection), cache_(cache), kept_hashes_(std::move(kept))
    {
    }
    ~CPgContent(); // drops the connection where rows are still to come
    CPgContent(const CPgContent&) = delete;
    CPgContent& operator=(const CPgContent&) = delete;

    // `once`: a content that several of these files have comes with the first of them alone, for who keeps it.
    [[nodiscard]] static CSql Statement(PartId part, SlotSet slots, std::span<const QByteArray> kept, bool once);

    // Waits for the part itself, of what was sent or is sent now. False on an error, and NoPart where there is none.
    [[nodiscard]] bool Begin(PartId part) { return Take(connection_.Receive(row_), part); }
    [[nodiscard]] bool Begin(PartId part, SlotSet slots)
    {
        return Take(connection_.SendForFirst(Statement(part, slots, kept_hashes_, cache_ != nullptr), row_), part);
    }
    [[nodiscard]] const PartRow& Part() const { return part_; }
    [[nodiscard]] PgRowFault Fault() const { return fault_; }

    // All files that the part has, once it was handed over.
    [[nodiscard]] const std::vector<PartFile>& Files() const { return files_; }

    // Hands the files over that the statement was for, to its end, those that are kept behind the others. `again` is to
    // be idle, and is asked for what turns out not to be kept.
    bool HandOver(SlotSet slots, const ContentSink& sink, CPgConnection& again);

private:
    bool Take(CPgConnection::Next next, PartId part);
    LibraryProblem Take(const CPgResult& row, SlotSet slots, SlotSet& found, const ContentSink& sink);
    LibraryProblem BeginFile(const PartFile& file);
    LibraryProblem EndFile();
    [[nodiscard]] LibraryProblem HandOverKept(const ContentSink& sink, CPgConnection& again) const;
    [[nodiscard]] LibraryProblem Damage() const;

    CPgConnection& connection_;
    CContentCache* cache_;
    std::vector<QByteArray> kept_hashes_;
    std::vector<PartFile> kept_;
    std::vector<PartFile> files_;
    std::unique_ptr<CContentCache::CNewContent> new_; // of the file that is under way, to be kept
    CContentHash sum_;                                // of it
    QByteArray only_;                                 // the hash that a file has to have; empty for any
    QByteArray hash_;                                 // that is told of it
    CPgResult row_;
    PartRow part_;
    PgRowFault fault_ = PgRowFault::None;
    bool rows_to_come_ = false;
    bool no_file_ = false; // was told
    qint64 slot_ = -1;     // that is under way
    qint64 bytes_ = 0;     // of it
    qint64 done_ = 0;
};

} // namespace partkeep
