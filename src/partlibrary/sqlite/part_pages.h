// The rows of a list by number, for a pane that shows a few of very many. Nothing is read whole: a scan walks the
// list in slices of a few milliseconds, between events, and keeps the ids of the first rows and, for what lies
// behind them, a position every few thousand rows. So any page is near a known one, and what is held does not grow
// with the folder beyond that.
//
// A rare search text in a large folder is found through the search index first; a frequent one fills the first
// page within a few slices of the walk.
//
// Where the library's keys are by other rules than those of now, they only lead the walk through all rows, each of
// which gets keys of now: the order is known at the end, and all ids are held.
#pragma once

#include "partlibrary/sqlite/part_query.h"

#include <QStringList>

#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace partkeep {

class CPartPages : public IPartListing {
public:
    // Parts in the folder as it counts them: tells small from large. A view of all folders gets them, too; without them
    // it has failed.
    CPartPages(std::shared_ptr<CConnection> connection, PartListView view, qint64 parts_in_folder,
               std::shared_ptr<const CServerFolders> folders = nullptr, bool other_keys = false);

    // Looks only among the rows of a list that this one's search narrows. False when that list does not hold
    // all its ids, shows something else, or is of an earlier state. To be called before the first step.
    bool NarrowFrom(const CPartPages& wider);

    bool Step() override;
    [[nodiscard]] bool Complete() const override { return phase_ == Phase::Complete; }
    [[nodiscard]] bool Failed() const override { return phase_ == Phase::Failed; }
    [[nodiscard]] qint64 Count() const override { return count_; }
    [[nodiscard]] const PartListView& View() const override { return view_; }
    [[nodiscard]] std::vector<PartRow> Rows(qint64 first, qint64 limit) override;
    [[nodiscard]] std::vector<PartId> Ids(qint64 first, qint64 limit) override;
    [[nodiscard]] std::optional<qint64> RowOf(PartId part) override;

private:
    enum class Phase { Narrow, Among, Sample, Candidates, Walk, Complete, Failed };
    struct Anchor {
        std::optional<PartPosition> position; // the last row before; nothing: the start
        qint64 rows = 0;                      // shown rows up to there
    };

    struct InOrder {
        const PartListView* view;
        bool operator()(const PartPosition& a, const PartPosition& b) const { return Precedes(*view, a, b); }
    };

    void StepNarrow();
    void StepAmong();
    void TakeIds(const CPartQuery& query);
    void StepSample();
    void StepCandidates();
    void StepWalk();
    [[nodiscard]] std::optional<PartPosition> WindowEnd();
    void TakeWindow(const std::optional<PartPosition>& end);
    void OrderWindow(const std::optional<PartPosition>& end);
    void TakeOrder();
    void Fail() { phase_ = Phase::Failed; }
    [[nodiscard]] const Anchor& AnchorBefore(qint64 row) const;
    [[nodiscard]] CPartQuery From(qint64 first, qint64 limit, const std::string& columns) const;
    bool TakeRow(const CStatement& statement, PartRow& row) const;
    [[nodiscard]] std::vector<PartRow> RowsByIds(qint64 first, qint64 limit);
    [[nodiscard]] std::optional<PartPosition> PositionOf(PartId part);

    std::shared_ptr<CConnection> connection_;
    PartListView view_;
    std::optional<qint64> state_; // of the library when the list began
    ShownRows shown_;
    QStringList index_words_; // those of their pairs that the index is asked for
    Phase phase_;
    qint64 count_ = 0;
    qint64 window_;
    qint64 candidate_window_;
    std::vector<PartId> ids_;        // of the first rows
    std::vector<Anchor> anchors_;    // by rising rows; the first is the start
    std::optional<PartPosition> at_; // where the walk stands
    std::vector<PartId> candidates_;
    qint64 narrowed_ = 0;                     // so many of them have been looked at
    qint64 candidates_to_ = 0;                // ids up to here have been looked up in the index
    qint64 last_id_ = 0;                      // of the table
    std::set<PartPosition, InOrder> ordered_; // by keys of now
};

} // namespace partkeep
