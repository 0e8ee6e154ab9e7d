#include "partlibrary/postgres/pg_library.h"

#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_content.h"
#include "partlibrary/postgres/pg_schema.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

namespace partkeep {

namespace {

constexpr std::size_t most_refused = 100000; // are told apart
constexpr std::size_t most_told_together = 1024;

CSql SelectFolders()
{
    return std::move(CSql("SELECT ").Add(pg_folder_columns).Add(" FROM folder WHERE "));
}

CSql SelectParts()
{
    return std::move(CSql("SELECT ").Add(pg_part_columns).Add(" FROM part WHERE "));
}

} // namespace

std::unique_ptr<CPgLibrary> CPgLibrary::Open(const PgPlace& place, PgUse use, LibraryProblem& problem,
                                             std::shared_ptr<CContentCache> cache)
{
    auto connection = CPgConnection::Open(place, use, problem);
    return connection != nullptr ? std::make_unique<CPgLibrary>(std::move(connection), std::move(cache)) : nullptr;
}

CPgLibrary::CPgLibrary(std::shared_ptr<CPgConnection> connection, std::shared_ptr<CContentCache> cache)
    : connection_(std::move(connection)), at_hand_(std::move(cache)), ahead_(connection_, at_hand_),
      watch_(connection_, at_hand_)
{
}

std::nullopt_t CPgLibrary::Refuse(LibraryFault fault, const QString& subject)
{
    connection_->SetProblem({fault, subject, {}});
    return std::nullopt;
}

std::nullopt_t CPgLibrary::Damaged(const QString& what)
{
    connection_->SetProblem({LibraryFault::Damaged, connection_->Place().Text(), what});
    return std::nullopt;
}

void CPgLibrary::CountRefused(qint64 key)
{
    if (refused_.size() < most_refused) {
        refused_.insert(key);
    }
}

// Folders.

std::optional<FolderRow> CPgLibrary::TakeFolder(const CPgResult& result, const QString& subject)
{
    if (result.Rows() == 0) {
        return Refuse(LibraryFault::NoFolder, subject);
    }
    FolderRow row;
    const PgRowFault fault = ReadFolder(result, 0, row);
    if (fault == PgRowFault::Damaged) {
        return Damaged(row.path);
    }
    return fault == PgRowFault::None ? std::optional(row) : Refuse(LibraryFault::NameRefused, subject);
}

// Whether it is still the same library is asked along.
std::optional<FolderRow> CPgLibrary::FindFolder(const QString& path)
{
    if (CheckFolderPath(path) != NameFault::None) {
        return Refuse(LibraryFault::NoFolder, path);
    }
    const std::array statements{CPgConnection::LibraryRow(), std::move(SelectFolders().Add("path = ").Value(path))};
    const auto results = connection_->AskAll(statements);
    return results && connection_->TakeLibraryRow(results->front()) ? TakeFolder(results->back(), path) : std::nullopt;
}

std::optional<FolderRow> CPgLibrary::FindFolder(qint64 id)
{
    const auto result = connection_->Ask(SelectFolders().Add("id = ").Value(id));
    return result ? TakeFolder(*result, QString::number(id)) : std::nullopt;
}

// A row that claims to lie here has to have the path of this place.
std::optional<std::vector<FolderRow>> CPgLibrary::Folders(const QString& path)
{
    const auto result = connection_->Ask(SelectFolders()
                                             .Add("parent = (SELECT id FROM folder above WHERE above.path = ")
                                             .Value(path)
                                             .Add(") ORDER BY sort_key, name"));
    if (!result) {
        return std::nullopt;
    }
    std::vector<FolderRow> rows;
    FolderRow row;
    for (int i = 0; i < result->Rows(); ++i) {
        const PgRowFault fault = ReadFolder(*result, i, row);
        if (fault == PgRowFault::Damaged) {
            return Damaged(row.path);
        }
        if (fault == PgRowFault::None && row.path == JoinPath(path, row.name)) {
            rows.push_back(row);
        } else {
            CountRefused(-row.id);
        }
    }
    if (HasOtherKeys()) {
        std::stable_sort(rows.begin(), rows.end(), [](const FolderRow& left, const FolderRow& right) {
            return SortKey(left.name) < SortKey(right.name);
        });
    }
    return rows;
}

// Parts.

std::optional<PartRow> CPgLibrary::Gate(const PartRow& part, PgRowFault fault, const QString& subject)
{
    if (fault == PgRowFault::Damaged) {
        return Damaged(part.name);
    }
    return fault == PgRowFault::None ? std::optional(part) : Refuse(LibraryFault::NameRefused, subject);
}

std::optional<PartRow> CPgLibrary::TakePart(const std::optional<CPgResult>& result, const QString& subject)
{
    if (!result) {
        return std::nullopt;
    }
    if (result->Rows() == 0) {
        return Refuse(LibraryFault::NoPart, subject);
    }
    PartRow row;
    const PgRowFault fault = ReadPart(*result, 0, row);
    return Gate(row, fault, subject);
}

std::optional<PartRow> CPgLibrary::FindPart(const QString& folder, const QString& name)
{
    if (CheckFolderPath(folder) != NameFault::None || CheckName(name) != NameFault::None) {
        return Refuse(LibraryFault::NameRefused, JoinPath(folder, name));
    }
    if (const PartRow* const known = ahead_.Find(folder, name)) {
        return *known;
    }
    const CPgAtHand::Known* const known = at_hand_.Find(folder, name);
    const bool numbered = known != nullptr && known->row.id == numbered_; // by whoever loads it, just now
    if (numbered && at_hand_.JustTold(numbered_) != nullptr) {
        return known->row;
    }
    return Known(known, CPgAtHand::Statement(folder, name), JoinPath(folder, name));
}

// While the server does not answer, what it told before is all there is.
std::optional<PartRow> CPgLibrary::Known(const CPgAtHand::Known* known, const CSql& statement, const QString& subject)
{
    auto row = known != nullptr ? std::optional(known->row) : std::nullopt;
    if (row && at_hand_.IsFresh()) {
        return row;
    }
    const auto told = connection_->Ask(statement);
    if (told && at_hand_.Cache() != nullptr) {
        at_hand_.Take(*told);
    }
    auto part = TakePart(told, subject);
    looked_up_ = part ? part->id : 0;
    if (told && !part && row) {
        at_hand_.Forget(row->id);
    }
    return !part && row && Problem().fault == LibraryFault::NoAnswer ? row : part;
}

std::optional<PartRow> CPgLibrary::FindPart(PartId id)
{
    if (const PartRow* const known = ahead_.Find(id)) {
        return *known;
    }
    auto row = Known(at_hand_.Find(id), CPgAtHand::Statement({&id, 1}), QString::number(id));
    numbered_ = row ? id : 0;
    return row;
}

std::optional<std::vector<PartRow>> CPgLibrary::FindAtHand(std::span<const PartId> ids) const
{
    std::vector<PartRow> rows;
    for (const PartId id : ids) {
        const CPgAtHand::Known* const known = at_hand_.IsFresh() ? at_hand_.Find(id) : at_hand_.JustTold(id);
        if (known == nullptr) {
            return std::nullopt;
        }
        rows.push_back(known->row);
    }
    return rows;
}

// What is copied next is told with its hashes, so that nothing more is asked before the copies.
std::optional<std::vector<PartRow>> CPgLibrary::FindParts(std::span<const PartId> ids)
{
    if (auto rows = FindAtHand(ids)) {
        return rows;
    }
    const bool keep = at_hand_.Cache() != nullptr && ids.size() <= most_told_together;
    const auto result = connection_->Ask(keep ? CPgAtHand::Statement(ids)
                                              : std::move(SelectParts().Add("id = ANY(").Value(ids).Add(")")));
    if (!result) {
        return std::nullopt;
    }
    if (keep) {
        at_hand_.Take(*result);
    }
    std::vector<PartRow> rows;
    std::unordered_map<PartId, PartRow> found;
    PartRow row;
    for (int i = 0; i < result->Rows(); ++i) {
        if (ReadPart(*result, i, row) == PgRowFault::None) {
            found.emplace(row.id, row);
        }
    }
    for (const PartId id : ids) {
        const auto part = found.find(id);
        rows.push_back(part != found.end() ? part->second : PartRow());
    }
    return rows;
}

// The whole.

// Rows that do not go on would be asked for ever. A name that is refused may be longer than what comes of it, and so
// come again.
std::optional<std::vector<PartRow>> CPgLibrary::PartsBehind(qint64 folder, const QString& after, qint64 limit)
{
    std::vector<PartRow> rows;
    for (QString behind = after;;) {
        const auto result = connection_->Ask(SelectParts()
                                                 .Add("folder = ")
                                                 .Value(folder)
                                                 .Add(" AND name > ")
                                                 .Value(behind)
                                                 .Add(" ORDER BY name LIMIT ")
                                                 .Value(limit));
        if (!result) {
            return std::nullopt;
        }
        PartRow row;
        const std::string asked_behind = ToUtf8(behind);
        for (int i = 0; i < result->Rows() && static_cast<qint64>(rows.size()) < limit; ++i) {
            const PgRowFault fault = ReadPart(*result, i, row);
            const int order = ToUtf8(row.name).compare(ToUtf8(behind));
            if (fault == PgRowFault::Damaged || order < 0 || (order == 0 && fault == PgRowFault::None)) {
                return Damaged(row.name);
            }
            behind = row.name;
            if (fault == PgRowFault::None) {
                rows.push_back(row);
            } else {
                CountRefused(row.id);
            }
        }
        if (result->Rows() < limit || static_cast<qint64>(rows.size()) == limit) {
            return rows;
        }
        if (ToUtf8(behind) == asked_behind) {
            return Damaged(behind);
        }
    }
}

// Whoever wants to know this wants to know it now, also from a server that counts as silent.
std::optional<qint64> CPgLibrary::Revision()
{
    connection_->TryAgain();
    const auto result = connection_->Ask(CSql("SELECT revision FROM partkeep_library"));
    return result && result->Rows() == 1 ? std::optional(result->Integer(0, 0)) : std::nullopt;
}

std::optional<std::vector<PartFile>> CPgLibrary::Files(std::span<const PartId> parts)
{
    const auto result = connection_->Ask(CSql("SELECT part, slot, bytes, hash FROM part_file JOIN unnest(")
                                             .Value(parts)
                                             .Add(") WITH ORDINALITY AS wanted(id, nr) ON part = wanted.id "
                                                  "ORDER BY wanted.nr, slot"));
    if (!result) {
        return std::nullopt;
    }
    std::vector<PartFile> files;
    for (int row = 0; row < result->Rows(); ++row) {
        auto file = ReadPartFile(*result, row, result->Integer(row, 0), 1);
        if (!file || file->hash.size() != hash_bytes) {
            return Damaged(QStringLiteral("the row of a file"));
        }
        files.push_back(*std::move(file));
    }
    return files;
}

// Content.

// A look-up of this part alone, which is made for each copy: what parts are worked by is not of a moment ago, nor is it
// given under a name that the part no longer has.
bool CPgLibrary::LookUpFor(PartId part)
{
    if (std::exchange(looked_up_, 0) == part && at_hand_.JustTold(part) != nullptr) {
        return true;
    }
    const CPgAtHand::Known* known = at_hand_.Find(part);
    const QString before = known != nullptr ? JoinPath(known->row.folder_path, known->row.name) : QString();
    const auto told = connection_->Ask(CPgAtHand::Statement({&part, 1}));
    if (!told) {
        return Problem().fault == LibraryFault::NoAnswer;
    }
    at_hand_.Take(*told);
    known = at_hand_.Find(part);
    const QString now = known != nullptr ? JoinPath(known->row.folder_path, known->row.name) : before;
    if (told->Rows() == 0 || (now != before && !before.isEmpty())) {
        connection_->SetProblem({LibraryFault::NoPart, before, {}});
        at_hand_.Forget(part);
        return false;
    }
    return true;
}

// A part that is all kept costs a look-up alone. Pictures may be of a moment ago.
std::optional<bool> CPgLibrary::CopyKept(PartId part, SlotSet slots, const ContentSink& sink)
{
    const bool told = at_hand_.JustTold(part) != nullptr || (at_hand_.IsFresh() && at_hand_.Find(part) != nullptr);
    const bool pictures = (slots & SlotsOfMask(-1)) == 0;
    if (!(pictures && told) && !LookUpFor(part)) {
        return false;
    }
    LibraryProblem problem;
    const bool there = at_hand_.Copy(part, slots, sink, problem);
    if (problem) {
        connection_->SetProblem(problem);
    }
    const CPgAtHand::Known* const known = at_hand_.Find(part);
    return there && known != nullptr ? std::optional(!problem && Agree(part, slots, known->files)) : std::nullopt;
}

bool CPgLibrary::Agree(PartId part, SlotSet slots, std::span<const PartFile> files)
{
    if (steps_.Agree(part, slots, files)) {
        return true;
    }
    connection_->SetProblem(CCopySteps::Trouble());
    return false;
}

bool CPgLibrary::CopyFiles(PartId part, SlotSet slots, const ContentSink& sink)
{
    auto copied = ahead_.Copy(part, slots, sink);
    if (copied) {
        return *copied && Agree(part, slots, ahead_.Files());
    }
    if (at_hand_.Cache() != nullptr) {
        copied = CopyKept(part, slots, sink);
    }
    if (copied) {
        return *copied;
    }
    CPgContent content(*connection_, at_hand_.Cache(), at_hand_.NeedOf(part, slots).value_or(CPgAtHand::Need()).kept);
    if (!content.Begin(part, slots)) {
        return false;
    }
    if (content.Fault() != PgRowFault::None) {
        static_cast<void>(Gate(content.Part(), content.Fault(), content.Part().name));
        return false;
    }
    return content.HandOver(slots, sink, *connection_) && Agree(part, slots, content.Files());
}

void CPgLibrary::Expect(std::span<const PartCopy> copies)
{
    if (connection_->Use() == PgUse::Browse) { // another connection sees another state
        ahead_.Expect(copies);
    }
}

} // namespace partkeep
