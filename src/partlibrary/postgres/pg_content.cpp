#include "partlibrary/postgres/pg_content.h"

#include "partlibrary/postgres/pg_at_hand.h"
#include "partlibrary/postgres/pg_schema.h"

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr int folder_path = pg_part_column_count;
constexpr int slot = folder_path + 1;
constexpr int number = slot + 3; // behind bytes and hash
constexpr int data = number + 1;

} // namespace

CSql CPgContent::Statement(PartId part, SlotSet slots, std::span<const QByteArray> kept, bool once)
{
    const auto wanted = static_cast<std::int32_t>(slots);
    CSql sql("SELECT ");
    sql.Add(pg_part_columns);
    sql.Add(", path, part_file.slot, part_file.bytes, part_file.hash, piece.nr, piece.data FROM "
            "(SELECT part.*, (SELECT left(path, 256) FROM folder WHERE folder.id = part.folder) AS path FROM part "
            "WHERE id = ");
    sql.Value(part).Add(") AS one LEFT JOIN part_file ON part_file.part = one.id LEFT JOIN piece ON "
                        "piece.content = part_file.content AND ((1 << part_file.slot) & ");
    sql.Value(wanted).Add(") <> 0 AND part_file.hash <> ALL(").Value(kept).Add(")");
    if (once) {
        sql.Add(" AND NOT EXISTS (SELECT FROM part_file AS first WHERE first.part = one.id AND first.slot < "
                "part_file.slot AND first.hash = part_file.hash AND ((1 << first.slot) & ");
        sql.Value(wanted).Add(") <> 0)");
    }
    sql.Add(" ORDER BY part_file.slot, piece.nr");
    return sql;
}

// Whoever asks next would get them.
CPgContent::~CPgContent()
{
    if (rows_to_come_) {
        connection_.Disconnect();
    }
}

LibraryProblem CPgContent::Damage() const
{
    return {LibraryFault::Damaged, connection_.Place().Text(), QStringLiteral("a file of ") + part_.name};
}

bool CPgContent::Take(CPgConnection::Next next, PartId part)
{
    rows_to_come_ = next == CPgConnection::Next::Row;
    switch (next) {
    case CPgConnection::Next::Row:
        fault_ = ReadPart(row_, 0, part_);
        part_.folder_path = row_.IsNull(0, folder_path) ? QString() : row_.Text(0, folder_path);
        return true;
    case CPgConnection::Next::End:
        connection_.SetProblem({LibraryFault::NoPart, QString::number(part), {}});
        return false;
    default:
        return false;
    }
}

// After trouble of the caller's own the rest still has to come: dropping the connection, at the end, is quicker.
bool CPgContent::HandOver(SlotSet slots, const ContentSink& sink, CPgConnection& again)
{
    SlotSet found = 0;
    auto next = CPgConnection::Next::Row;
    for (; next == CPgConnection::Next::Row; next = connection_.Receive(row_)) {
        if (LibraryProblem problem = Take(row_, slots, found, sink)) {
            connection_.SetProblem(std::move(problem));
            return false;
        }
    }
    rows_to_come_ = false;
    if (next == CPgConnection::Next::Failed) {
        return false;
    }
    LibraryProblem problem = found == (slots & part_.slots) ? EndFile() : Damage();
    problem = problem ? problem : HandOverKept(sink, again);
    if (problem) {
        connection_.SetProblem(problem);
    }
    return !problem;
}

LibraryProblem CPgContent::BeginFile(const PartFile& file)
{
    bytes_ = file.bytes;
    hash_ = file.hash;
    done_ = 0;
    if (!only_.isEmpty() && hash_ != only_) {
        return {LibraryFault::NoAnswer, part_.name, QStringLiteral("it was changed meanwhile")};
    }
    if (std::find(kept_hashes_.begin(), kept_hashes_.end(), hash_) != kept_hashes_.end()) {
        kept_.push_back(file);
        done_ = bytes_;
        return {};
    }
    sum_ = CContentHash();
    new_ = cache_ != nullptr ? cache_->Begin(bytes_) : nullptr;
    return {};
}

LibraryProblem CPgContent::EndFile()
{
    const auto whole = std::move(new_);
    if (done_ != bytes_ || (whole != nullptr && sum_.Hash() != hash_)) {
        return Damage();
    }
    if (whole != nullptr) {
        whole->Keep(hash_);
    }
    if (cache_ != nullptr && slot_ >= 0) {
        kept_hashes_.push_back(hash_); // of it nothing comes again
    }
    return {};
}

// Of files that are not wanted there is a row as well, without a piece. Each row is of a later file than the last one,
// or the next piece: others would come without end.
LibraryProblem CPgContent::Take(const CPgResult& row, SlotSet slots, SlotSet& found, const ContentSink& sink)
{
    const bool no_piece = row.IsNull(0, number);
    if (row.IsNull(0, slot)) {
        return std::exchange(no_file_, true) ? Damage() : LibraryProblem{};
    }
    const auto file = ReadPartFile(row, 0, part_.id, slot);
    const bool again = !files_.empty() && file && files_.back().slot == file->slot;
    if (!file || no_file_ || (again ? no_piece : !files_.empty() && files_.back().slot > file->slot)) {
        return Damage();
    }
    const FileSlot kind = file->slot;
    if (!again) {
        files_.push_back(*file);
    }
    if ((slots & SetOf(kind)) == 0) {
        return no_piece ? LibraryProblem{} : Damage();
    }
    if (!again) {
        LibraryProblem problem = EndFile();
        slot_ = static_cast<qint64>(kind);
        found |= SetOf(kind);
        problem = problem ? problem : BeginFile(*file);
        if (problem) {
            return problem;
        }
    }
    if (!kept_.empty() && kept_.back().slot == kind) {
        return no_piece ? LibraryProblem{} : Damage();
    }
    if (no_piece) {
        return bytes_ == 0 ? sink(kind, {}) : Damage();
    }
    const std::string_view piece = row.Raw(0, data);
    const auto size = static_cast<qint64>(piece.size());
    if (row.Integer(0, number) != done_ / postgres_piece_bytes || size == 0 ||
        size != std::min(postgres_piece_bytes, bytes_ - done_)) {
        return Damage();
    }
    done_ += size;
    if (new_ != nullptr) {
        sum_.Add(piece);
        new_->Add({piece.data(), piece.size()});
    }
    return sink(kind, {piece.data(), piece.size()});
}

// One that is damaged or gone by now is fetched after all: the same content, or none.
LibraryProblem CPgContent::HandOverKept(const ContentSink& sink, CPgConnection& again) const
{
    for (const PartFile& file : kept_) {
        if (const auto given = partkeep::HandOverKept(*cache_, file, sink)) {
            if (*given) {
                return *given;
            }
            continue;
        }
        CPgContent fetched(again, cache_);
        fetched.only_ = file.hash;
        if (!fetched.Begin(part_.id, SetOf(file.slot)) || fetched.Fault() != PgRowFault::None ||
            !fetched.HandOver(SetOf(file.slot), sink, again)) {
            return again.Problem() ? again.Problem() : Damage();
        }
    }
    return {};
}

} // namespace partkeep
