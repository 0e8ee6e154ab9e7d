#include "partlibrary/sqlite/part_pages.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"

#include <QElapsedTimer>

#include <algorithm>

namespace partkeep {

namespace {

constexpr qint64 held_ids = 20000;        // of the first rows
constexpr qint64 small_folder = 20000;    // is walked at once, faster than the index answers
constexpr std::size_t index_limit = 8192; // more matches than this fill a page soon enough in a walk
constexpr int sample_parts = 32;          // tell frequent terms from rare ones
constexpr qsizetype index_terms = 4;      // the rest of a long text is compared, not looked up
constexpr qint64 anchor_distance = 4096;
constexpr qint64 smallest_window = 256;
constexpr qint64 smallest_candidate_window = 50000; // ids, which may lie far apart
constexpr qint64 largest_window = 16384;
constexpr qint64 slice_nanoseconds = 5'000'000;

// So that a slice takes its time, and no more.
qint64 Adapted(qint64 window, qint64 nanoseconds, qint64 smallest, qint64 largest)
{
    if (nanoseconds > slice_nanoseconds * 3 / 2) {
        return std::max(smallest, window / 2);
    }
    return nanoseconds < slice_nanoseconds / 2 && window < largest ? std::min(largest, window * 2) : window;
}

} // namespace

CPartPages::CPartPages(std::shared_ptr<CConnection> connection, PartListView view, qint64 parts_in_folder,
                       std::shared_ptr<const CServerFolders> folders, bool other_keys)
    : connection_(std::move(connection)), view_(std::move(view)),
      state_(connection_->State()), shown_{SearchWords(view_.search), std::move(folders), other_keys},
      phase_(parts_in_folder > small_folder && !shown_.words.isEmpty() && !other_keys ? Phase::Sample : Phase::Walk),
      window_(smallest_window * 4), candidate_window_(smallest_candidate_window), anchors_(1), ordered_({&view_})
{
    if (!state_ || (view_.folder == all_folders && shown_.folders == nullptr)) {
        Fail();
    }
}

bool CPartPages::NarrowFrom(const CPartPages& wider)
{
    PartListView same = wider.view_;
    same.search = view_.search;
    const auto& words = shown_.words;
    const bool narrows =
        std::all_of(wider.shown_.words.begin(), wider.shown_.words.end(), [&words](const QString& old) {
            return std::any_of(words.begin(), words.end(), [&old](const QString& word) { return word.contains(old); });
        });
    const bool of_now = wider.connection_ == connection_ && state_ && wider.state_ == state_;
    if (!of_now || !wider.Complete() || static_cast<qint64>(wider.ids_.size()) != wider.count_ || same != view_ ||
        !narrows || Failed() || shown_.other_keys) {
        return false;
    }
    candidates_ = wider.ids_;
    phase_ = Phase::Narrow;
    return true;
}

bool CPartPages::Step()
{
    switch (phase_) {
    case Phase::Narrow:
        StepNarrow();
        break;
    case Phase::Among:
        StepAmong();
        break;
    case Phase::Sample:
        StepSample();
        break;
    case Phase::Candidates:
        StepCandidates();
        break;
    case Phase::Walk:
        StepWalk();
        break;
    default:
        break;
    }
    return !Complete() && !Failed();
}

// The wider list's rows are in order already, so the first of them are known before the last ones are looked at.
void CPartPages::StepNarrow()
{
    QElapsedTimer timer;
    timer.start();
    const auto begin = candidates_.begin() + narrowed_;
    const std::vector<PartId> next(begin, begin + std::min<std::ptrdiff_t>(window_, candidates_.end() - begin));
    TakeIds(CPartQuery(view_, "part.id").Among(next).Shown(shown_).AsGiven());
    if (Failed()) {
        return;
    }
    narrowed_ += static_cast<qint64>(next.size());
    window_ = Adapted(window_, timer.nsecsElapsed(), smallest_window, largest_window);
    if (narrowed_ == static_cast<qint64>(candidates_.size())) {
        candidates_ = {};
        phase_ = Phase::Complete;
    }
}

// Those of the candidates that the list shows, in its order.
void CPartPages::StepAmong()
{
    TakeIds(CPartQuery(view_, "part.id").Among(candidates_).Shown(shown_).Ordered());
    if (!Failed()) {
        candidates_ = {};
        phase_ = Phase::Complete;
    }
}

void CPartPages::TakeIds(const CPartQuery& query)
{
    CPartResult statement(*connection_, query);
    while (statement.Next()) {
        ids_.push_back(statement.Integer(0));
    }
    if (statement.Failed()) {
        Fail();
    }
    count_ = static_cast<qint64>(ids_.size());
}

// The index goes through every part that has a term, so it is asked for the rarest ones, and not at all when even
// those are frequent: then a walk fills the page sooner.
void CPartPages::StepSample()
{
    CStatement last(*connection_, "SELECT coalesce(max(id), 0) FROM part");
    if (!last.Next()) {
        Fail();
        return;
    }
    last_id_ = std::min(last.Integer(0), max_part_id);
    std::vector<std::pair<int, QString>> terms;
    for (const QString& term : IndexTerms(shown_.words)) {
        terms.emplace_back(0, term);
    }
    CStatement part(*connection_, "SELECT search_text FROM part WHERE id >= ? LIMIT 1");
    for (int sample = 0; sample < sample_parts && !part.Failed(); ++sample) {
        part.With(1 + last_id_ / sample_parts * sample);
        const QString text = part.Next() ? part.Text(0) : QString();
        for (auto& [count, term] : terms) {
            count += text.contains(term) ? 1 : 0;
        }
    }
    if (part.Failed()) {
        Fail();
        return;
    }
    std::stable_sort(terms.begin(), terms.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    const bool frequent = terms.front().first > sample_parts / 4;
    for (const auto& [count, term] : terms) {
        // A frequent word of one character would be put together from all the pairs that begin with it.
        if (index_words_.size() < index_terms && (term.size() > 1 || count == 0)) {
            index_words_ += term;
        }
    }
    phase_ = frequent || index_words_.isEmpty() ? Phase::Walk : Phase::Candidates;
}

void CPartPages::StepCandidates()
{
    CStatement statement(*connection_, "SELECT rowid FROM part_search WHERE part_search MATCH ? "
                                       "AND rowid > ? AND rowid <= ? LIMIT ?");
    const qint64 to = candidates_to_ + std::min(candidate_window_, last_id_ - candidates_to_);
    QElapsedTimer timer;
    timer.start();
    const qint64 limit = static_cast<qint64>(index_limit + 1 - candidates_.size());
    for (statement.With(PairQuery(index_words_), candidates_to_, to, limit); statement.Next();) {
        candidates_.push_back(statement.Integer(0));
    }
    candidates_to_ = to;
    candidate_window_ = Adapted(candidate_window_, timer.nsecsElapsed(), smallest_candidate_window, last_id_);
    if (statement.Failed()) {
        Fail();
    } else if (candidates_.size() > index_limit) {
        candidates_.clear();
        phase_ = Phase::Walk;
    } else if (candidates_to_ >= last_id_) {
        phase_ = Phase::Among;
    }
}

void CPartPages::StepWalk()
{
    QElapsedTimer timer;
    timer.start();
    const auto end = WindowEnd();
    if (!Failed()) {
        shown_.other_keys ? OrderWindow(end) : TakeWindow(end);
    }
    if (Failed()) {
        return;
    }
    const bool onward = !at_ || !end || Precedes(view_, *at_, *end);
    at_ = end;
    if (!onward) { // an index out of order would be walked through for ever
        connection_->SetProblem(DamagedRow(*connection_));
        Fail();
        return;
    }
    if (!end) {
        TakeOrder();
        phase_ = Phase::Complete;
        return;
    }
    if (count_ - anchors_.back().rows >= anchor_distance) {
        anchors_.push_back({at_, count_});
    }
    window_ = Adapted(window_, timer.nsecsElapsed(), smallest_window, largest_window);
}

// Where the next window of rows ends, shown or not; nothing when it is the last one.
std::optional<PartPosition> CPartPages::WindowEnd()
{
    CPartResult statement(
        *connection_,
        CPartQuery(view_, PositionColumns(view_.sort)).Folder().Beyond(at_).Ordered().Part(window_ - 1, 1));
    if (statement.Next()) {
        return ReadPosition(statement, 0, view_.sort);
    }
    if (statement.Failed()) {
        Fail();
    }
    return std::nullopt;
}

void CPartPages::TakeWindow(const std::optional<PartPosition>& end)
{
    const bool listed = static_cast<qint64>(ids_.size()) == count_ && count_ < held_ids;
    CPartQuery query(view_, listed ? "part.id" : "count(*)");
    query.Folder().Beyond(at_).UpTo(end).Shown(shown_);
    if (listed) {
        TakeIds(query.Ordered());
        return;
    }
    CPartResult statement(*connection_, query);
    while (statement.Next()) {
        count_ += statement.Integer(0);
    }
    if (statement.Failed()) {
        Fail();
    }
}

void CPartPages::OrderWindow(const std::optional<PartPosition>& end)
{
    CPartResult statement(
        *connection_,
        CPartQuery(view_, PositionColumns(view_.sort, true)).Folder().Beyond(at_).UpTo(end).Shown(shown_));
    while (statement.Next()) {
        ordered_.insert(ReadPosition(statement, 0, view_.sort));
    }
    if (statement.Failed()) {
        Fail();
    }
}

void CPartPages::TakeOrder()
{
    for (const PartPosition& place : ordered_) {
        ids_.push_back(place.id);
    }
    ordered_.clear();
    count_ = std::max(count_, static_cast<qint64>(ids_.size()));
}

const CPartPages::Anchor& CPartPages::AnchorBefore(qint64 row) const
{
    const auto behind = std::upper_bound(anchors_.begin(), anchors_.end(), row,
                                         [](qint64 wanted, const Anchor& anchor) { return wanted < anchor.rows; });
    return *std::prev(behind);
}

// Rows by number, from the nearest position on.
CPartQuery CPartPages::From(qint64 first, qint64 limit, const std::string& columns) const
{
    const Anchor& anchor = AnchorBefore(first);
    return CPartQuery(view_, columns)
        .Folder()
        .Beyond(anchor.position)
        .Shown(shown_)
        .Ordered()
        .Part(first - anchor.rows, limit);
}

std::vector<PartRow> CPartPages::Rows(qint64 first, qint64 limit)
{
    const qint64 known = std::clamp<qint64>(count_ - first, 0, limit);
    if (first + known <= static_cast<qint64>(ids_.size())) {
        return RowsByIds(first, known);
    }
    std::vector<PartRow> rows;
    PartRow row;
    for (CPartResult statement(*connection_, From(first, known, part_row_columns)); statement.Next();) {
        if (!TakeRow(statement, row)) {
            break;
        }
        rows.push_back(row);
    }
    return rows;
}

// A folder that has come since the list began counts as gone until the next one.
bool CPartPages::TakeRow(const CStatement& statement, PartRow& row) const
{
    if (ReadPartRow(statement, row) != RowFault::None) {
        connection_->SetProblem(DamagedRow(*connection_));
        return false;
    }
    if (shown_.folders != nullptr) {
        const QString* path = shown_.folders->Path(row.folder);
        row.folder_path = path != nullptr ? *path : QString();
        row.name = path != nullptr ? row.name : QString();
    }
    return true;
}

std::vector<PartRow> CPartPages::RowsByIds(qint64 first, qint64 limit)
{
    const auto begin = ids_.begin() + first;
    const std::vector<PartId> ids(begin, begin + limit);
    std::vector<PartRow> rows(ids.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i].id = ids[i];
    }
    const ShownRows searched_already{{}, nullptr, shown_.other_keys};
    CPartResult statement(
        *connection_,
        CPartQuery(view_, std::string(part_row_columns) + ", wanted.key").Among(ids).Shown(searched_already));
    while (statement.Next()) {
        PartRow& row = rows[static_cast<std::size_t>(statement.Integer(part_row_column_count))];
        if (!TakeRow(statement, row)) {
            return {};
        }
    }
    return statement.Failed() ? std::vector<PartRow>{} : rows;
}

std::vector<PartId> CPartPages::Ids(qint64 first, qint64 limit)
{
    const qint64 known = std::clamp<qint64>(count_ - first, 0, limit);
    if (first + known <= static_cast<qint64>(ids_.size())) {
        const auto begin = ids_.begin() + first;
        return {begin, begin + known};
    }
    std::vector<PartId> ids;
    for (CPartResult statement(*connection_, From(first, known, "part.id")); statement.Next();) {
        ids.push_back(statement.Integer(0));
    }
    return ids;
}

std::optional<PartPosition> CPartPages::PositionOf(PartId part)
{
    CPartResult statement(*connection_, CPartQuery(view_, PositionColumns(view_.sort)).One(part).Shown(shown_));
    return statement.Next() ? std::optional(ReadPosition(statement, 0, view_.sort)) : std::nullopt;
}

std::optional<qint64> CPartPages::RowOf(PartId part)
{
    const auto held = std::find(ids_.begin(), ids_.end(), part);
    if (held != ids_.end()) {
        return held - ids_.begin();
    }
    const auto position = static_cast<qint64>(ids_.size()) < count_ ? PositionOf(part) : std::nullopt;
    if (!position) {
        return std::nullopt;
    }
    const auto behind = std::partition_point(anchors_.begin(), anchors_.end(), [&](const Anchor& anchor) {
        return !anchor.position || Precedes(view_, *anchor.position, *position);
    });
    const Anchor& anchor = *std::prev(behind);
    CPartResult statement(*connection_,
                          CPartQuery(view_, "count(*)").Folder().Beyond(anchor.position).UpTo(position).Shown(shown_));
    if (!statement.Next()) {
        return std::nullopt;
    }
    const qint64 row = anchor.rows + statement.Integer(0) - 1;
    return row < count_ ? std::optional(row) : std::nullopt;
}

} // namespace partkeep
