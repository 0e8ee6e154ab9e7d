#include "partlibrary/postgres/pg_writer.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_copy_row.h"
#include "partlibrary/postgres/pg_schema.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>

namespace partkeep {

namespace {

constexpr std::size_t analyzed_from = 500; // parts that make the server's statistics old
constexpr int longest_step = 1 << 30;      // of revisions: by how it steps, each change knows its own

} // namespace

std::unique_ptr<CPgWriter> CPgWriter::Open(const PgPlace& place, LibraryProblem& problem)
{
    auto connection = CPgConnection::Open(place, PgUse::Write, problem);
    return connection != nullptr ? std::unique_ptr<CPgWriter>(new CPgWriter(std::move(connection))) : nullptr;
}

CPgWriter::CPgWriter(std::shared_ptr<CPgConnection> connection)
    : connection_(std::move(connection)), library_(connection_), piece_(postgres_piece_bytes)
{
}

CPgWriter::~CPgWriter()
{
    Rollback();
}

bool CPgWriter::Refuse(LibraryFault fault, const QString& subject, const QString& detail)
{
    connection_->SetProblem({fault, subject, detail});
    return false;
}

// Transactions.

bool CPgWriter::Begin()
{
    return Start(false);
}

bool CPgWriter::Start(bool rebuilding)
{
    Rollback();
    broken_ = false;
    const std::array first{
        CSql("SELECT keys, next_folder, next_part, next_content, mark, revision FROM partkeep_library FOR UPDATE"),
        CSql("SELECT now(), session_user::text")};
    std::vector<CPgResult> results;
    if (!connection_->Begin(first, results)) {
        if (connection_->Problem().fault == LibraryFault::Busy) {
            Refuse(LibraryFault::Busy, connection_->Place().Text(), QStringLiteral("another import is under way"));
        }
        return false;
    }
    const CPgResult& numbers = results.front();
    if (numbers.Rows() != 1 || numbers.Bytes(0, 4) != connection_->Id()) {
        Refuse(LibraryFault::Replaced, connection_->Place().Text());
    } else if (!rebuilding && numbers.Text(0, 0) != KeysVersion()) {
        Refuse(LibraryFault::OtherVersion, connection_->Place().Text(),
               QStringLiteral("its keys: check --rebuild makes them anew"));
    } else {
        next_folder_ = numbers.Integer(0, 1);
        next_part_ = numbers.Integer(0, 2);
        next_content_ = numbers.Integer(0, 3);
        revision_ = numbers.Integer(0, 5);
        now_ = results.back().Integer(0, 0);
        user_ = results.back().Text(0, 1);
        return true;
    }
    Rollback();
    return false;
}

bool CPgWriter::Commit()
{
    if (!Flush() || broken_ || !FlushCounts()) {
        return false;
    }
    const qint64 revision = revision_ + 1 + QRandomGenerator::system()->bounded(longest_step);
    const std::array last{CSql("SELECT pg_notify('partkeep', current_schema()::text)"),
                          CSql("UPDATE partkeep_library SET revision = ")
                              .Value(revision)
                              .Add(", next_folder = ")
                              .Value(next_folder_)
                              .Add(", next_part = ")
                              .Value(next_part_)
                              .Add(", next_content = ")
                              .Value(next_content_)};
    const CSql look = std::move(CSql("SELECT CASE revision WHEN ")
                                    .Value(revision)
                                    .Add(" THEN TRUE WHEN ")
                                    .Value(revision_)
                                    .Add(" THEN FALSE END FROM partkeep_library WHERE mark = ")
                                    .Value(FromUtf8(connection_->Id().toStdString())));
    const bool done = connection_->Commit(last, look);
    if (done && changed_parts_ > analyzed_from) { // not before long would the server do so by itself
        connection_->Run(CSql("ANALYZE folder, part, part_file"));
    }
    changed_parts_ = done ? 0 : changed_parts_;
    return done;
}

void CPgWriter::Rollback()
{
    connection_->Rollback();
    in_pieces_ = false;
    piece_rows_.clear();
    folders_.clear();
    folders_read_ = false;
    bare_folders_.clear();
    new_folders_.clear();
    parts_.clear();
    names_.clear();
    read_ = {};
    files_.clear();
    old_files_.clear();
    replaced_.clear();
    pairs_.clear();
    new_parts_.clear();
    changed_parts_ = 0;
}

IPartLibrary& CPgWriter::Library()
{
    broken_ = !Flush() || broken_;
    return library_;
}

// What was gathered.

bool CPgWriter::Flush()
{
    if (!EndPieces() || !FlushFolders() || !FlushParts() || !FlushFiles()) {
        return false;
    }
    parts_.clear();
    names_.clear();
    bare_folders_.clear();
    read_ = {};
    return true;
}

bool CPgWriter::FlushFolders()
{
    const std::string rows = std::exchange(new_folders_, {});
    return rows.empty() || (connection_->BeginCopy(CSql("COPY folder FROM STDIN (FORMAT binary)")) &&
                            connection_->PutCopy(rows) && connection_->EndCopy());
}

void CPgWriter::AppendFolder(qint64 id, qint64 parent, const QString& name, const QString& path)
{
    CCopyRow(new_folders_, 6).Put(id).Put(parent).Put(name).Put(path).Put(SortKey(name)).Put(qint64{0});
}

void CPgWriter::CountPairs(const QString& search_text, qint64 step)
{
    for (const std::int32_t code : PairCodes(search_text)) {
        pairs_[code] += step;
    }
}

void CPgWriter::AppendPart(std::string& rows, const HeldPart& part) const
{
    const PartRow& row = part.row;
    const QString search_text = SearchText(row);
    const std::vector<std::int32_t> codes = PairCodes(search_text);
    std::string pairs = CSql::ArrayHead(SqlType::Int4, codes.size());
    for (const std::int32_t code : codes) {
        AppendNumber(pairs, std::int32_t{sizeof code});
        AppendNumber(pairs, code);
    }
    CCopyRow(rows, 16)
        .Put(row.id)
        .Put(row.folder)
        .Put(static_cast<std::int32_t>(row.slots))
        .Put(row.thickness)
        .Put(row.name)
        .Put(row.material)
        .Put(row.machine)
        .Put(row.comment)
        .Put(search_text)
        .Put(SortKey(row.name))
        .Put(SortKey(row.material))
        .Put(SortKey(row.machine))
        .Put(SortKey(row.comment))
        .Put(std::string_view(pairs))
        .Put(part.changed_by.isEmpty() ? user_ : part.changed_by)
        .Put(part.changed_by.isEmpty() ? now_ : part.changed_at);
}

bool CPgWriter::FlushParts()
{
    std::vector<qint64> old;
    std::string rows;
    for (const auto& [id, part] : parts_) {
        if (!part.changed) {
            continue;
        }
        if (part.old) {
            old.push_back(id);
            CountPairs(SearchText(*part.old), -1);
        }
        CountPairs(SearchText(part.row), 1);
        AppendPart(rows, part);
        ++changed_parts_;
    }
    if (rows.empty()) {
        return true;
    }
    return (old.empty() ||
            connection_->Run(CSql("DELETE FROM part WHERE id = ANY(").Value(std::span<const qint64>(old)).Add(")"))) &&
           connection_->BeginCopy(CSql("COPY part FROM STDIN (FORMAT binary)")) && connection_->PutCopy(rows) &&
           connection_->EndCopy();
}

bool CPgWriter::FlushFiles()
{
    std::vector<qint64> parts;
    std::vector<std::int32_t> slots;
    for (const auto& [part, slot] : std::exchange(old_files_, {})) {
        parts.push_back(part);
        slots.push_back(slot);
    }
    if (!parts.empty() &&
        !connection_->Run(
            CSql("WITH gone AS (DELETE FROM part_file USING unnest(")
                .Value(std::span<const qint64>(parts))
                .Add(", ")
                .Value(std::span<const std::int32_t>(slots))
                .Add(") AS old(part, slot) WHERE part_file.part = old.part AND part_file.slot = old.slot "
                     "RETURNING content) DELETE FROM piece USING gone WHERE piece.content = gone.content"))) {
        return false;
    }
    const std::vector<qint64> replaced = std::exchange(replaced_, {});
    if (!replaced.empty() &&
        !connection_->Run(
            CSql("DELETE FROM piece WHERE content = ANY(").Value(std::span<const qint64>(replaced)).Add(")"))) {
        return false;
    }
    std::string rows;
    for (const auto& [place, content] : std::exchange(files_, {})) {
        CCopyRow(rows, 5).Put(place.first).Put(place.second).Put(content.id).Put(content.bytes).Put(content.hash);
    }
    return rows.empty() || (connection_->BeginCopy(CSql("COPY part_file FROM STDIN (FORMAT binary)")) &&
                            connection_->PutCopy(rows) && connection_->EndCopy());
}

bool CPgWriter::FlushCounts()
{
    std::vector<std::int32_t> codes;
    std::vector<qint64> steps;
    for (const auto& [code, step] : std::exchange(pairs_, {})) {
        if (step != 0) {
            codes.push_back(code);
            steps.push_back(step);
        }
    }
    std::vector<qint64> folders;
    std::vector<qint64> counts;
    for (const auto& [folder, count] : std::exchange(new_parts_, {})) {
        folders.push_back(folder);
        counts.push_back(count);
    }
    const std::array statements{
        CSql("INSERT INTO pair SELECT * FROM unnest(")
            .Value(std::span<const std::int32_t>(codes))
            .Add(", ")
            .Value(std::span<const qint64>(steps))
            .Add(") ON CONFLICT (pair) DO UPDATE SET parts = pair.parts + excluded.parts"),
        CSql("DELETE FROM pair WHERE parts <= 0 AND pair = ANY(").Value(std::span<const std::int32_t>(codes)).Add(")"),
        CSql("UPDATE folder SET parts = folder.parts + more.parts FROM unnest(")
            .Value(std::span<const qint64>(folders))
            .Add(", ")
            .Value(std::span<const qint64>(counts))
            .Add(") AS more(id, parts) WHERE folder.id = more.id")};
    return connection_->AskAll(statements).has_value();
}

} // namespace partkeep
