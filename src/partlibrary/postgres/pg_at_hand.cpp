#include "partlibrary/postgres/pg_at_hand.h"

#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/postgres/pg_rows.h"

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr std::size_t most_known = 20000; // of about a kilobyte each
constexpr int folder_path = pg_part_column_count;
constexpr int revision = folder_path + 1;
constexpr int slot = revision + 1;

template <typename AddWhich>
CSql AskFor(const AddWhich& which)
{
    CSql sql("SELECT ");
    sql.Add(pg_part_columns);
    sql.Add(
        ", path, (SELECT revision FROM partkeep_library), part_file.slot, part_file.bytes, part_file.hash FROM "
        "(SELECT part.*, (SELECT left(path, 256) FROM folder WHERE folder.id = part.folder) AS path FROM part WHERE ");
    which(sql);
    sql.Add(") AS wanted LEFT JOIN part_file ON part_file.part = wanted.id ORDER BY id");
    return sql;
}

} // namespace

CSql CPgAtHand::Statement(std::span<const PartId> parts)
{
    return AskFor([parts](CSql& sql) { sql.Add("id = ANY(").Value(parts).Add(")"); });
}

CSql CPgAtHand::Statement(const QString& folder, const QString& name)
{
    return AskFor([&](CSql& sql) {
        sql.Add("folder = (SELECT folder.id FROM folder WHERE path = ").Value(folder).Add(") AND name = ").Value(name);
    });
}

void CPgAtHand::Forget()
{
    known_.clear();
    places_.clear();
}

// Revisions only grow, unless another server has taken over; then the next confirmation tells.
bool CPgAtHand::Enter(qint64 told)
{
    if (revision_ && told < *revision_) {
        return false;
    }
    if (revision_ != told || known_.size() >= most_known) {
        Forget();
        as_of_ = QDateTime::currentDateTime();
    }
    revision_ = told;
    return true;
}

void CPgAtHand::Take(const CPgResult& result)
{
    if (result.Rows() == 0 || !Enter(result.Integer(0, revision))) {
        return;
    }
    PartId last = 0; // a row that is passed over begins none: its part is without that file, which is asked for then
    for (int row = 0; row < result.Rows(); ++row) {
        Known known;
        const bool sound = ReadPart(result, row, known.row) == PgRowFault::None && !result.IsNull(row, folder_path);
        known.row.folder_path = sound ? result.Text(row, folder_path) : QString();
        if (!sound || CheckFolderPath(known.row.folder_path) != NameFault::None) {
            continue;
        }
        const PartId id = known.row.id;
        if (std::exchange(last, id) != id) {
            places_[JoinPath(known.row.folder_path, known.row.name)] = id;
            known.told = Clock::now();
            known_[id] = std::move(known);
        }
        if (auto file = ReadPartFile(result, row, id, slot)) {
            known_[id].files.push_back(*std::move(file));
        }
    }
}

void CPgAtHand::Confirm(qint64 told)
{
    if (revision_ != told) {
        Forget();
    }
    revision_ = told;
    confirmed_ = Clock::now();
    as_of_ = QDateTime::currentDateTime();
}

const CPgAtHand::Known* CPgAtHand::Find(PartId part) const
{
    const auto found = known_.find(part);
    return found != known_.end() ? &found->second : nullptr;
}

const CPgAtHand::Known* CPgAtHand::JustTold(PartId part, std::chrono::milliseconds within) const
{
    const Known* const known = Find(part);
    return known != nullptr && Clock::now() - known->told < within ? known : nullptr;
}

const CPgAtHand::Known* CPgAtHand::Find(const QString& folder, const QString& name) const
{
    const auto found = places_.find(JoinPath(folder, name));
    return found != places_.end() ? Find(found->second) : nullptr;
}

std::optional<CPgAtHand::Need> CPgAtHand::NeedOf(PartId part, SlotSet slots,
                                                 const std::set<QByteArray>& asked_for) const
{
    const Known* const known = Find(part);
    if (known == nullptr || cache_ == nullptr) {
        return std::nullopt;
    }
    Need need;
    for (const PartFile& file : known->files) {
        if ((slots & SetOf(file.slot)) == 0) {
            continue;
        }
        if (file.hash.size() == hash_bytes && (asked_for.contains(file.hash) || cache_->Has(file.hash, file.bytes))) {
            need.kept.push_back(file.hash);
            continue;
        }
        need.bytes += file.bytes;
        if (cache_->Takes(file.bytes)) {
            need.coming.push_back(file.hash);
        }
    }
    return need;
}

// What the sink has taken cannot be taken back: a content that turns out not to be kept ends the copy. Where a part and
// its files do not agree, neither is believed.
bool CPgAtHand::Copy(PartId part, SlotSet slots, const ContentSink& sink, LibraryProblem& problem) const
{
    const Known* const known = Find(part);
    if (known == nullptr || cache_ == nullptr) {
        return false;
    }
    SlotSet told = 0;
    SlotSet there = 0;
    for (const PartFile& file : known->files) {
        told |= SetOf(file.slot);
        const bool kept = (slots & SetOf(file.slot)) != 0 && cache_->Has(file.hash, file.bytes);
        there |= kept ? SetOf(file.slot) : SlotSet{0};
    }
    if (told != known->row.slots || there != (slots & told)) {
        return false;
    }
    for (const PartFile& file : known->files) {
        if ((there & SetOf(file.slot)) != 0) {
            auto given = HandOverKept(*cache_, file, sink);
            problem = given ? *given : LibraryProblem{LibraryFault::NoAnswer, known->row.name, {}};
            if (problem) {
                break;
            }
        }
    }
    return true;
}

// Where the file fails the sink is to find out why.
std::optional<LibraryProblem> HandOverKept(CContentCache& cache, const PartFile& file, const ContentSink& sink)
{
    if (const int target = sink.File(file); target >= 0 && cache.CopyTo(target, file.hash, file.bytes)) {
        return LibraryProblem{};
    }
    const auto content = cache.Read(file.hash, file.bytes);
    return content ? std::optional(sink(file.slot, {content->constData(), static_cast<std::size_t>(content->size())}))
                   : std::nullopt;
}

} // namespace partkeep
