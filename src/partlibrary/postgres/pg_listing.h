// The rows of a list by number. A slice asks for one window of the list, in one round trip: the first for a page, the
// next ones for more, since they only tell how many there are. Rows of the first windows pass the gate as they come; of
// those behind, of which the ids alone are read, when they are shown.
//
// A search in very many parts asks first how many of them have its pairs of characters: one that nobody has finds
// nothing, a rare one is looked up in the index, a frequent one fills a page soon enough in a walk. The server would
// guess, and be wrong for what does not occur.
//
// Where the library's keys are by other rules than those of now, all rows are read, ordered and searched here.
#pragma once

#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_query.h"

#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace partkeep {

class CPgListing : public IPartListing {
public:
    // `parts` is what the folder counts; `refused` is told of each row that does not pass.
    CPgListing(std::shared_ptr<CPgConnection> connection, PartListView view, qint64 parts,
               std::function<void(qint64 part)> refused);

    bool Step() override;
    [[nodiscard]] bool Complete() const override { return phase_ == Phase::Complete; }
    [[nodiscard]] bool Failed() const override { return phase_ == Phase::Failed; }
    [[nodiscard]] qint64 Count() const override { return static_cast<qint64>(ids_.size()); }
    [[nodiscard]] const PartListView& View() const override { return view_; }
    [[nodiscard]] std::vector<PartRow> Rows(qint64 first, qint64 limit) override;
    [[nodiscard]] std::vector<PartId> Ids(qint64 first, qint64 limit) override;
    [[nodiscard]] std::optional<qint64> RowOf(PartId part) override;

private:
    using Clock = std::chrono::steady_clock;
    enum class Phase { Count, Candidates, Walk, Complete, Failed };

    void StepCount();
    [[nodiscard]] bool IsRare(const CPgResult& counts, qint64 parts);
    void StepCandidates();
    void StepWalk();
    [[nodiscard]] CSql WindowStatement(bool whole_rows) const;
    bool TakeRow(const CPgResult& result, int row, PartRow& part);
    void TakeWindow(const CPgResult& result, bool whole_rows);
    void TakePosition(const CPgResult& result, int row, int column);
    bool IsShownHere(const PartRow& part) const;
    void TakeOrder();
    void Damage(const QString& what);

    std::shared_ptr<CPgConnection> connection_;
    PartListView view_;
    std::function<void(qint64 part)> refused_;
    QStringList words_;
    std::vector<std::int32_t> codes_; // that the index is asked for
    Phase phase_;
    qint64 window_;
    bool begun_ = false;
    bool other_keys_ = false;
    std::optional<PgPosition> at_;
    std::vector<PartId> ids_;
    std::vector<PartRow> rows_; // the first of them, as they were read
    Clock::time_point rows_read_;
    std::vector<PgPosition> ordered_;
};

} // namespace partkeep
