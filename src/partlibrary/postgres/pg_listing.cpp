#include "partlibrary/postgres/pg_listing.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_schema.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace partkeep {

namespace {

constexpr qint64 first_window = 256;
constexpr qint64 first_search_window = 2048;
constexpr qint64 largest_window = 16384;
constexpr qint64 window_growth = 8;
constexpr std::size_t whole_rows_held = 20000; // pass the gate while the list is read
constexpr qint64 small_list = 20000;           // is walked at once, faster than the index answers
constexpr qint64 index_limit = 5000;           // more matches than this fill a page soon enough in a walk
constexpr qint64 most_read = 400000;           // entries of the index
constexpr int most_codes = 4;
constexpr std::size_t most_parts = 10'000'000; // more than any library has
constexpr std::chrono::milliseconds rows_fresh{1000};

} // namespace

CPgListing::CPgListing(std::shared_ptr<CPgConnection> connection, PartListView view, qint64 parts,
                       std::function<void(qint64 part)> refused)
    : connection_(std::move(connection)), view_(std::move(view)), refused_(std::move(refused)),
      words_(SearchWords(view_.search)),
      phase_(!words_.isEmpty() && (parts > small_list || view_.folder == all_folders) ? Phase::Count : Phase::Walk),
      window_(words_.isEmpty() && view_.filter < 0 && view_.only.empty() ? first_window : first_search_window)
{
}

bool CPgListing::Step()
{
    switch (phase_) {
    case Phase::Count:
        StepCount();
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

void CPgListing::StepCount()
{
    codes_ = WordCodes(words_);
    const std::array statements{CPgConnection::LibraryRow(), CSql("SELECT coalesce(sum(parts), 0)::int8 FROM folder"),
                                CSql("SELECT pair, parts FROM pair WHERE pair = ANY(")
                                    .Value(std::span<const std::int32_t>(codes_))
                                    .Add(") ORDER BY parts")};
    const auto results = connection_->AskAll(statements);
    if (!results || !connection_->TakeLibraryRow(results->front())) {
        phase_ = Phase::Failed;
        return;
    }
    const CPgResult& counts = results->back();
    if (connection_->HasOtherKeys()) {
        phase_ = Phase::Walk;
    } else if (counts.Rows() < static_cast<int>(codes_.size())) { // nobody has one of them
        phase_ = Phase::Complete;
    } else {
        phase_ = IsRare(counts, (*results)[1].Integer(0, 0)) ? Phase::Candidates : Phase::Walk;
    }
}

// As if they had nothing to do with each other. The index is asked for the rarest alone.
bool CPgListing::IsRare(const CPgResult& counts, qint64 parts)
{
    const auto all = static_cast<double>(std::max<qint64>(parts, 1));
    double expected = all;
    double read = 0;
    codes_.clear();
    for (int row = 0; row < std::min(counts.Rows(), most_codes); ++row) {
        codes_.push_back(static_cast<std::int32_t>(counts.Integer(row, 0)));
        expected *= static_cast<double>(counts.Integer(row, 1)) / all;
        read += static_cast<double>(counts.Integer(row, 1));
    }
    return expected <= static_cast<double>(index_limit) && read <= static_cast<double>(most_read);
}

// The index is read first, and once, whatever the server would rather do; where it finds too many after all, a walk
// fills a page soon enough.
void CPgListing::StepCandidates()
{
    CSql sql("WITH found AS MATERIALIZED (SELECT *, folder AS folder_of FROM part WHERE pairs @> ");
    sql.Value(std::span<const std::int32_t>(codes_)).Add(" AND ");
    AddFolder(sql, view_);
    sql.Add(" LIMIT ").Value(index_limit + 1).Add(") SELECT total.parts, ");
    AddPartColumns(sql, view_);
    sql.Add(" FROM (SELECT count(*) AS parts FROM found) AS total LEFT JOIN (SELECT * FROM found WHERE ");
    AddShown(sql, view_, words_, false);
    sql.Add(") AS shown ON TRUE ORDER BY ");
    AddOrder(sql, view_);
    const auto found = connection_->Ask(sql);
    if (!found) {
        phase_ = Phase::Failed;
        return;
    }
    if (found->Integer(0, 0) > index_limit) {
        phase_ = Phase::Walk;
        return;
    }
    PartRow part;
    for (int row = 0; row < found->Rows() && !found->IsNull(row, 1); ++row) {
        if (TakeRow(*found, row, part)) {
            ids_.push_back(part.id);
            rows_.push_back(part);
        }
    }
    rows_read_ = Clock::now();
    phase_ = phase_ == Phase::Failed ? phase_ : Phase::Complete;
}

// The last row of a window comes in any case: it tells where the next one begins.
CSql CPgListing::WindowStatement(bool whole_rows) const
{
    CSql sql("SELECT ");
    const auto shown = [&] { AddShown(sql, view_, words_, other_keys_); };
    const auto last = [&](SqlText column) {
        sql.Add(", CASE WHEN nr = ").Value(window_).Add(" THEN ").Add(column).Add(" END");
    };
    sql.Add("nr = ").Value(window_).Add(", ");
    shown();
    last("folder_of");
    last(view_.sort == PartColumn::Name ? SqlText("NULL") : PgKeyColumn(view_.sort));
    last("name_key");
    sql.Add(", ");
    if (whole_rows) {
        AddPartColumns(sql, view_);
    } else {
        sql.Add("id");
    }
    sql.Add(" FROM (SELECT *, folder AS folder_of, row_number() OVER (ORDER BY ");
    AddOrder(sql, view_);
    sql.Add(") AS nr FROM part WHERE ");
    AddFolder(sql, view_);
    if (at_) {
        AddBehind(sql, view_, *at_);
    }
    sql.Add(" ORDER BY ");
    AddOrder(sql, view_);
    sql.Add(" LIMIT ").Value(window_).Add(") AS page WHERE (");
    shown();
    sql.Add(") OR nr = ").Value(window_);
    return sql;
}

// What the library says of its keys comes along with the first rows: where it is not what it was, they are asked for
// once more. One that says now this and now that has no order.
void CPgListing::StepWalk()
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        other_keys_ = begun_ ? other_keys_ : connection_->HasOtherKeys();
        const bool whole_rows = other_keys_ || ids_.size() < whole_rows_held;
        const std::array statements{CPgConnection::LibraryRow(), WindowStatement(whole_rows)};
        const auto results = connection_->AskAll(std::span(statements).subspan(begun_ ? 1 : 0));
        if (!results || (!begun_ && !connection_->TakeLibraryRow(results->front()))) {
            phase_ = Phase::Failed;
            return;
        }
        if (begun_ || other_keys_ == connection_->HasOtherKeys()) {
            begun_ = true;
            TakeWindow(results->back(), whole_rows);
            return;
        }
    }
    Damage(QStringLiteral("its keys"));
}

void CPgListing::Damage(const QString& what)
{
    connection_->SetProblem({LibraryFault::Damaged, connection_->Place().Text(), what});
    phase_ = Phase::Failed;
}

void CPgListing::TakePosition(const CPgResult& result, int row, int column)
{
    const bool by_thickness = view_.sort == PartColumn::Thickness;
    const bool by_name = view_.sort == PartColumn::Name;
    at_ = PgPosition{result.Integer(row, 2), by_thickness ? result.Integer(row, 3) : 0,
                     by_thickness || by_name ? QByteArray() : result.Bytes(row, 3), result.Bytes(row, 4),
                     result.Integer(row, column)};
}

// A window that does not begin behind the last one would be followed by others without end.
void CPgListing::TakeWindow(const CPgResult& result, bool whole_rows)
{
    constexpr int row_column = 5;
    const auto before = at_;
    bool more = false;
    PartRow part;
    for (int row = 0; row < result.Rows() && phase_ != Phase::Failed; ++row) {
        if (result.Integer(row, 0) != 0) {
            more = true;
            TakePosition(result, row, row_column);
        }
        if (result.Integer(row, 1) == 0) {
            continue;
        }
        if (!whole_rows) {
            ids_.push_back(result.Integer(row, row_column));
        } else if (TakeRow(result, row, part) && IsShownHere(part)) {
            if (other_keys_) {
                const QString* const texts[] = {&part.name, nullptr, &part.material, &part.machine, &part.comment};
                const QString* const text = texts[static_cast<std::size_t>(view_.sort)];
                ordered_.push_back({part.folder, part.thickness, text != nullptr ? SortKey(*text) : QByteArray(),
                                    SortKey(part.name), part.id});
                continue;
            }
            ids_.push_back(part.id);
            if (rows_.size() + 1 == ids_.size() && rows_.size() < static_cast<std::size_t>(first_search_window)) {
                rows_.push_back(part);
            }
        }
    }
    rows_read_ = Clock::now();
    window_ = std::min(window_ * window_growth, largest_window);
    const bool onward = !before || !more || Precedes(view_, *before, *at_);
    if (phase_ != Phase::Failed && (!onward || ids_.size() + ordered_.size() > most_parts)) {
        Damage(QStringLiteral("the order of its parts"));
    }
    if (!more && phase_ != Phase::Failed) {
        TakeOrder();
        phase_ = Phase::Complete;
    }
}

bool CPgListing::TakeRow(const CPgResult& result, int row, PartRow& part)
{
    const bool all = view_.folder == all_folders;
    const int column = phase_ == Phase::Walk ? 5 : 1;
    const PgRowFault fault = ReadPart(result, row, part, column);
    if (fault == PgRowFault::Damaged) {
        Damage(part.name);
        return false;
    }
    if (all) {
        part.folder_path = result.Text(row, column + pg_part_column_count);
    }
    const bool sound = fault == PgRowFault::None && (!all || CheckFolderPath(part.folder_path) == NameFault::None);
    if (!sound) {
        refused_(part.id);
    }
    return sound;
}

// What the server cannot be asked where its keys and search texts are not believed.
bool CPgListing::IsShownHere(const PartRow& part) const
{
    if (!other_keys_) {
        return true;
    }
    const QString text = SearchText(part);
    return std::all_of(words_.begin(), words_.end(), [&](const QString& word) { return text.contains(word); }) &&
           std::all_of(view_.only.begin(), view_.only.end(), [&](const auto& only) {
               const QString* const texts[] = {&part.name, nullptr, &part.material, &part.machine, &part.comment};
               const QString* const own = texts[static_cast<std::size_t>(only.first)];
               return own != nullptr ? SortKey(*own) == only.second.key
                                     : part.thickness == only.second.key.toLongLong();
           });
}

void CPgListing::TakeOrder()
{
    std::sort(ordered_.begin(), ordered_.end(),
              [this](const PgPosition& a, const PgPosition& b) { return Precedes(view_, a, b); });
    for (const PgPosition& entry : ordered_) {
        ids_.push_back(entry.id);
    }
    ordered_.clear();
}

// What has just been read is not asked for again.
std::vector<PartRow> CPgListing::Rows(qint64 first, qint64 limit)
{
    std::vector<PartRow> rows;
    const std::vector<PartId> ids = Ids(first, limit);
    const auto end = first + static_cast<qint64>(ids.size());
    if (end <= static_cast<qint64>(rows_.size()) && Clock::now() - rows_read_ < rows_fresh) {
        return {rows_.begin() + first, rows_.begin() + end};
    }
    CSql sql("SELECT ");
    AddPartColumns(sql, view_);
    sql.Add(" FROM (SELECT *, folder AS folder_of FROM part WHERE id = ANY(").Value(std::span<const PartId>(ids));
    sql.Add(")) AS wanted WHERE ");
    AddFolder(sql, view_);
    const auto result = connection_->Ask(sql);
    if (!result) {
        return rows;
    }
    std::unordered_map<PartId, PartRow> found;
    for (int row = 0; row < result->Rows(); ++row) {
        PartRow part;
        const PgRowFault fault = ReadPart(*result, row, part);
        const bool all = view_.folder == all_folders;
        part.folder_path = all ? result->Text(row, pg_part_column_count) : QString();
        if (fault == PgRowFault::None && CheckFolderPath(part.folder_path) == NameFault::None) {
            found.emplace(part.id, std::move(part));
        } else {
            refused_(part.id);
        }
    }
    for (const PartId id : ids) {
        const auto part = found.find(id);
        rows.push_back(part != found.end()
                           ? part->second
                           : PartRow{.id = id, .name = {}, .material = {}, .machine = {}, .comment = {}});
    }
    return rows;
}

std::vector<PartId> CPgListing::Ids(qint64 first, qint64 limit)
{
    const qint64 begin = std::clamp<qint64>(first, 0, Count());
    const qint64 known = std::clamp<qint64>(Count() - begin, 0, limit);
    return {ids_.begin() + begin, ids_.begin() + begin + known};
}

std::optional<qint64> CPgListing::RowOf(PartId part)
{
    const auto held = std::find(ids_.begin(), ids_.end(), part);
    return held != ids_.end() ? std::optional<qint64>(held - ids_.begin()) : std::nullopt;
}

} // namespace partkeep
