#include "partlibrary/part_pages.h"

#include "controls/part_browser_contract.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/sort_text.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>

namespace partkeep {

namespace {

constexpr qint64 held_ids = 20000;         // of the first rows
constexpr qint64 small_folder = 20000;     // is walked at once, faster than the index answers
constexpr std::size_t index_limit = 8192;  // more matches than this fill a page soon enough in a walk
constexpr qint64 candidate_window = 50000; // ids in one slice
constexpr int sample_parts = 32;           // tell frequent terms from rare ones
constexpr qsizetype index_terms = 4;       // the rest of a long text is compared, not looked up
constexpr qint64 anchor_distance = 4096;
constexpr qint64 smallest_window = 256;
constexpr qint64 largest_window = 16384;
constexpr qint64 slice_nanoseconds = 5'000'000;

constexpr std::array<const char*, 5> key_columns{"name_key", "thickness", "material_key", "machine_key", "comment_key"};

QString KeyColumn(PartColumn column)
{
    return QLatin1String(key_columns[static_cast<std::size_t>(column)]);
}

QString Keys(PartColumn column)
{
    const QString behind = QStringLiteral("name_key, part.id"); // a list of ids has an id of its own
    return column == PartColumn::Name ? behind : KeyColumn(column) + QStringLiteral(", ") + behind;
}

QString IdList(const std::vector<PartId>& ids, std::size_t first, std::size_t limit)
{
    QString list = QStringLiteral("[");
    for (std::size_t i = first; i < first + limit; ++i) {
        list += (i > first ? QStringLiteral(",") : QString()) + QString::number(ids[i]);
    }
    return list + u']';
}

PartRow ReadRow(const CStatement& statement)
{
    return {statement.Integer(0),
            statement.Integer(1),
            static_cast<SlotSet>(statement.Integer(2)),
            static_cast<std::int32_t>(statement.Integer(3)),
            statement.Text(4),
            statement.Text(5),
            statement.Text(6),
            statement.Text(7)};
}

// What the index can be asked for: pairs of neighbouring characters, and words of one character.
QStringList IndexTerms(const QStringList& words)
{
    QStringList terms;
    for (const QString& word : words) {
        const bool plain = std::none_of(word.begin(), word.end(), [](QChar unit) { return unit.isSurrogate(); });
        if (!plain || word.size() == 1) {
            terms += word;
            continue;
        }
        for (qsizetype at = 0; at + 1 < word.size(); ++at) {
            terms += word.mid(at, 2);
        }
    }
    terms.removeDuplicates();
    return terms;
}

const QString row_columns = QStringLiteral("part.id, folder, slots, thickness, name, material, machine, comment");

} // namespace

// A statement about the view's rows, built piece by piece.
struct CPartPages::Query {
    const PartListView& view;
    QString sql;
    QVariantList values;

    Query(const PartListView& of, const QString& columns) : view(of), sql(QStringLiteral("SELECT ") + columns) {}

    Query& Folder()
    {
        sql += QStringLiteral(" FROM part WHERE folder = ?");
        values += view.folder;
        return *this;
    }
    // The lookup by id drives the next two; the index on the folder must not.
    Query& Among(const QString& id_list)
    {
        sql += QStringLiteral(" FROM json_each(?) AS wanted CROSS JOIN part ON part.id = wanted.value"
                              " WHERE +folder = ?");
        values << id_list << view.folder;
        return *this;
    }
    Query& One(PartId part)
    {
        sql += QStringLiteral(" FROM part WHERE id = ? AND +folder = ?");
        values << part << view.folder;
        return *this;
    }
    Query& Shown(const QStringList& words)
    {
        if (view.filter != all_data_kinds) {
            sql += QStringLiteral(" AND (slots & ?) <> 0");
            values += SlotsOfMask(view.filter);
        }
        for (const QString& word : words) {
            sql += QStringLiteral(" AND instr(search_text, ?) > 0");
            values += word;
        }
        return *this;
    }
    Query& Beyond(const std::optional<PartPosition>& position)
    {
        return Compare(position, view.descending ? "<" : ">");
    }
    Query& UpTo(const std::optional<PartPosition>& position)
    {
        return Compare(position, view.descending ? ">=" : "<=");
    }
    Query& Ordered()
    {
        const QString end = view.descending ? QStringLiteral(" DESC") : QString();
        sql += QStringLiteral(" ORDER BY ") + Keys(view.sort).replace(u',', end + u',') + end;
        return *this;
    }
    Query& Part(qint64 offset, qint64 limit)
    {
        sql += QStringLiteral(" LIMIT ? OFFSET ?");
        values += limit;
        values += offset;
        return *this;
    }

private:
    Query& Compare(const std::optional<PartPosition>& position, const char* sign)
    {
        if (!position) {
            return *this;
        }
        const bool by_name = view.sort == PartColumn::Name;
        sql += QStringLiteral(" AND (%1) %2 (%3)")
                   .arg(Keys(view.sort), QLatin1String(sign),
                        by_name ? QStringLiteral("?, ?") : QStringLiteral("?, ?, ?"));
        if (!by_name) {
            values += position->column_key;
        }
        values += position->name_key;
        values += position->id;
        return *this;
    }
};

CPartPages::CPartPages(CLibraryConnection& connection, PartListView view, qint64 parts_in_folder)
    : connection_(connection), view_(std::move(view)), words_(SearchWords(view_.search)),
      phase_(parts_in_folder > small_folder && !words_.isEmpty() ? Phase::Sample : Phase::Walk),
      window_(smallest_window * 4), anchors_(1)
{
}

bool CPartPages::HasCondition() const
{
    return view_.filter != all_data_kinds || !words_.isEmpty();
}

bool CPartPages::NarrowFrom(const CPartPages& wider)
{
    PartListView same = wider.view_;
    same.search = view_.search;
    const bool narrows = std::all_of(wider.words_.begin(), wider.words_.end(), [this](const QString& old) {
        return std::any_of(words_.begin(), words_.end(), [&old](const QString& word) { return word.contains(old); });
    });
    if (!wider.Complete() || static_cast<qint64>(wider.ids_.size()) != wider.count_ || same != view_ || !narrows) {
        return false;
    }
    candidates_ = wider.ids_;
    phase_ = Phase::Among;
    return true;
}

bool CPartPages::Step()
{
    switch (phase_) {
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

void CPartPages::Finish()
{
    while (Step()) {
    }
}

// Those of the candidates that the list shows, in its order.
void CPartPages::StepAmong()
{
    const Query query = Query(view_, QStringLiteral("part.id"))
                            .Among(IdList(candidates_, 0, candidates_.size()))
                            .Shown(words_)
                            .Ordered();
    CStatement statement(connection_, query.sql);
    for (statement.RunWith(query.values); statement.Next();) {
        ids_.push_back(statement.Integer(0));
    }
    if (statement.Failed()) {
        Fail();
        return;
    }
    candidates_.clear();
    candidates_.shrink_to_fit();
    count_ = static_cast<qint64>(ids_.size());
    phase_ = Phase::Complete;
}

// The index goes through every part that has a term, so it is asked for the rarest ones, and not at all when even
// those are frequent: then a walk fills the page sooner.
void CPartPages::StepSample()
{
    CStatement last(connection_, QStringLiteral("SELECT coalesce(max(id), 0) FROM part"));
    if (!last.Run() || !last.Next()) {
        Fail();
        return;
    }
    last_id_ = last.Integer(0);
    last.Finish();
    std::vector<std::pair<int, QString>> terms;
    for (const QString& term : IndexTerms(words_)) {
        terms.emplace_back(0, term);
    }
    CStatement part(connection_, QStringLiteral("SELECT search_text FROM part WHERE id >= ? LIMIT 1"));
    for (int sample = 0; sample < sample_parts && part.Run({1 + last_id_ / sample_parts * sample}); ++sample) {
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
    CStatement statement(connection_, QStringLiteral("SELECT rowid FROM part_search WHERE part_search MATCH ? "
                                                     "AND rowid > ? AND rowid <= ? LIMIT ?"));
    const qint64 to = candidates_to_ + candidate_window;
    const qint64 limit = static_cast<qint64>(index_limit + 1 - candidates_.size());
    for (statement.Run({PairQuery(index_words_), candidates_to_, to, limit}); statement.Next();) {
        candidates_.push_back(statement.Integer(0));
    }
    candidates_to_ = to;
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
        TakeWindow(end);
    }
    if (Failed()) {
        return;
    }
    at_ = end;
    if (!end) {
        phase_ = Phase::Complete;
        return;
    }
    if (count_ - anchors_.back().rows >= anchor_distance) {
        anchors_.push_back({at_, count_});
    }
    AdaptWindow(timer.nsecsElapsed());
}

// Where the next window of rows ends, shown or not; nothing when it is the last one.
std::optional<PartPosition> CPartPages::WindowEnd()
{
    const Query query = Query(view_, KeyColumn(view_.sort) + QStringLiteral(", name_key, id"))
                            .Folder()
                            .Beyond(at_)
                            .Ordered()
                            .Part(window_ - 1, 1);
    CStatement statement(connection_, query.sql);
    statement.RunWith(query.values);
    if (statement.Next()) {
        return PartPosition{statement.Value(0), statement.Bytes(1), statement.Integer(2)};
    }
    if (statement.Failed()) {
        Fail();
    }
    return std::nullopt;
}

void CPartPages::TakeWindow(const std::optional<PartPosition>& end)
{
    const bool listed = static_cast<qint64>(ids_.size()) == count_ && count_ < held_ids;
    if (!listed && !HasCondition() && end) {
        count_ += window_;
        return;
    }
    Query query = Query(view_, listed ? QStringLiteral("id") : QStringLiteral("count(*)"));
    query.Folder().Beyond(at_).UpTo(end).Shown(words_);
    if (listed) {
        query.Ordered();
    }
    CStatement statement(connection_, query.sql);
    for (statement.RunWith(query.values); statement.Next();) {
        if (listed) {
            ids_.push_back(statement.Integer(0));
        } else {
            count_ += statement.Integer(0);
        }
    }
    if (statement.Failed()) {
        Fail();
    }
    if (listed) {
        count_ = static_cast<qint64>(ids_.size());
    }
}

void CPartPages::AdaptWindow(qint64 nanoseconds)
{
    if (nanoseconds > slice_nanoseconds * 3 / 2) {
        window_ = std::max(smallest_window, window_ / 2);
    } else if (nanoseconds < slice_nanoseconds / 2) {
        window_ = std::min(largest_window, window_ * 2);
    }
}

const CPartPages::Anchor& CPartPages::AnchorBefore(qint64 row) const
{
    const auto behind = std::upper_bound(anchors_.begin(), anchors_.end(), row,
                                         [](qint64 wanted, const Anchor& anchor) { return wanted < anchor.rows; });
    return *std::prev(behind);
}

std::vector<PartRow> CPartPages::Rows(qint64 first, int limit)
{
    const qint64 known = std::clamp<qint64>(count_ - first, 0, limit);
    if (first + known <= static_cast<qint64>(ids_.size())) {
        return RowsByIds(first, known);
    }
    const Anchor& anchor = AnchorBefore(first);
    const Query query = Query(view_, row_columns)
                            .Folder()
                            .Beyond(anchor.position)
                            .Shown(words_)
                            .Ordered()
                            .Part(first - anchor.rows, known);
    CStatement statement(connection_, query.sql);
    std::vector<PartRow> rows;
    for (statement.RunWith(query.values); statement.Next();) {
        rows.push_back(ReadRow(statement));
    }
    return rows;
}

std::vector<PartRow> CPartPages::RowsByIds(qint64 first, qint64 limit)
{
    std::vector<PartRow> rows(static_cast<std::size_t>(limit));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i].id = ids_[static_cast<std::size_t>(first) + i];
    }
    const Query query = Query(view_, row_columns + QStringLiteral(", wanted.key"))
                            .Among(IdList(ids_, static_cast<std::size_t>(first), rows.size()));
    CStatement statement(connection_, query.sql);
    for (statement.RunWith(query.values); statement.Next();) {
        rows[static_cast<std::size_t>(statement.Integer(8))] = ReadRow(statement);
    }
    if (statement.Failed()) {
        rows.clear();
    }
    return rows;
}

std::vector<PartId> CPartPages::Ids(qint64 first, qint64 limit)
{
    const qint64 known = std::clamp<qint64>(count_ - first, 0, limit);
    if (first + known <= static_cast<qint64>(ids_.size())) {
        const auto begin = ids_.begin() + first;
        return {begin, begin + known};
    }
    const Anchor& anchor = AnchorBefore(first);
    const Query query = Query(view_, QStringLiteral("id"))
                            .Folder()
                            .Beyond(anchor.position)
                            .Shown(words_)
                            .Ordered()
                            .Part(first - anchor.rows, known);
    CStatement statement(connection_, query.sql);
    std::vector<PartId> ids;
    for (statement.RunWith(query.values); statement.Next();) {
        ids.push_back(statement.Integer(0));
    }
    return ids;
}

std::optional<PartPosition> CPartPages::PositionOf(PartId part)
{
    const Query query = Query(view_, KeyColumn(view_.sort) + QStringLiteral(", name_key")).One(part).Shown(words_);
    CStatement statement(connection_, query.sql);
    if (!statement.RunWith(query.values) || !statement.Next()) {
        return std::nullopt;
    }
    return PartPosition{statement.Value(0), statement.Bytes(1), part};
}

bool CPartPages::Precedes(const PartPosition& left, const PartPosition& right) const
{
    const PartPosition& low = view_.descending ? right : left;
    const PartPosition& high = view_.descending ? left : right;
    if (view_.sort == PartColumn::Thickness && low.column_key != high.column_key) {
        return low.column_key.toLongLong() < high.column_key.toLongLong();
    }
    if (view_.sort != PartColumn::Name && low.column_key != high.column_key) {
        return low.column_key.toByteArray() < high.column_key.toByteArray();
    }
    return low.name_key != high.name_key ? low.name_key < high.name_key : low.id < high.id;
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
        return !anchor.position || Precedes(*anchor.position, *position);
    });
    const Anchor& anchor = *std::prev(behind);
    const Query query =
        Query(view_, QStringLiteral("count(*)")).Folder().Beyond(anchor.position).UpTo(position).Shown(words_);
    CStatement statement(connection_, query.sql);
    if (!statement.RunWith(query.values) || !statement.Next()) {
        return std::nullopt;
    }
    const qint64 row = anchor.rows + statement.Integer(0) - 1;
    return row < count_ ? std::optional(row) : std::nullopt;
}

} // namespace partkeep
