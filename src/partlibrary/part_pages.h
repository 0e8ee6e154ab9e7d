// The rows of a list by number, for a pane that shows a few of very many. Nothing is read whole: a scan walks the
// list in slices of a few milliseconds, between events, and keeps the ids of the first rows and, for what lies
// behind them, a position every few thousand rows. So any page is near a known one, and what is held does not grow
// with the folder beyond that.
//
// A rare search text in a large folder is found through the search index first; a frequent one fills the first
// page within a few slices of the walk.
#pragma once

#include "partlibrary/part_list.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace partkeep {

class CLibraryConnection;
class CStatement;

class CPartPages {
public:
    // Parts in the folder as it counts them: tells small from large. `connection` must outlive the pages.
    CPartPages(CLibraryConnection& connection, PartListView view, qint64 parts_in_folder);

    // Looks only among the rows of a list that this one's search narrows. False when that list does not hold
    // all its ids, or shows something else. To be called before the first step.
    bool NarrowFrom(const CPartPages& wider);

    // Scans one slice. False when there is nothing left to scan, or on an error.
    bool Step();
    void Finish(); // all slices

    [[nodiscard]] bool Complete() const { return phase_ == Phase::Complete; }
    [[nodiscard]] bool Failed() const { return phase_ == Phase::Failed; } // the connection holds the problem
    [[nodiscard]] qint64 Count() const { return count_; }                 // rows found so far
    [[nodiscard]] const PartListView& View() const { return view_; }

    // Rows by number. A part that has gone since keeps its row, with an empty name. Fewer on an error.
    [[nodiscard]] std::vector<PartRow> Rows(qint64 first, int limit);
    [[nodiscard]] std::vector<PartId> Ids(qint64 first, qint64 limit);

    // The row of a part; nothing when the list does not show it, or has not come to it yet.
    [[nodiscard]] std::optional<qint64> RowOf(PartId part);

private:
    enum class Phase { Among, Sample, Candidates, Walk, Complete, Failed };
    struct Anchor {
        std::optional<PartPosition> position; // the last row before; nothing: the start
        qint64 rows = 0;                      // shown rows up to there
    };

    void StepAmong();
    void StepSample();
    void StepCandidates();
    void StepWalk();
    [[nodiscard]] std::optional<PartPosition> WindowEnd();
    void TakeWindow(const std::optional<PartPosition>& end);
    void AdaptWindow(qint64 nanoseconds);
    void Fail() { phase_ = Phase::Failed; }
    [[nodiscard]] bool HasCondition() const;
    [[nodiscard]] const Anchor& AnchorBefore(qint64 row) const;
    [[nodiscard]] CStatement ReadFrom(qint64 first, qint64 limit, const QString& columns);
    [[nodiscard]] std::vector<PartRow> RowsByIds(qint64 first, qint64 limit);
    [[nodiscard]] std::optional<PartPosition> PositionOf(PartId part);

    CLibraryConnection& connection_;
    PartListView view_;
    QStringList words_;
    QStringList index_words_; // those of their pairs that the index is asked for
    Phase phase_;
    qint64 count_ = 0;
    qint64 window_;
    std::vector<PartId> ids_;        // of the first rows
    std::vector<Anchor> anchors_;    // by rising rows; the first is the start
    std::optional<PartPosition> at_; // where the walk stands
    std::vector<PartId> candidates_;
    qint64 candidates_to_ = 0; // ids up to here have been looked up in the index
    qint64 last_id_ = 0;       // of the table
};

} // namespace partkeep
