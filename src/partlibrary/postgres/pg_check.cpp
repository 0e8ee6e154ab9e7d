#include "partlibrary/postgres/pg_check.h"

#include "partlibrary/library/bitmap_file.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_rows.h"
#include "partlibrary/postgres/pg_schema.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace partkeep {

namespace {

constexpr qint64 rows_at_once = 2048;

struct Rule {
    SqlText text;
    const char* finding;
};

class CPgCheck {
public:
    CPgCheck(CPgConnection& connection, LibraryCheck& check, const WorkProgress& progress)
        : connection_(connection), check_(check), progress_(progress)
    {
    }

    bool All() { return Rules() && Folders() && Parts() && Counts() && Files(); }

private:
    void Add(const QString& finding)
    {
        if (check_.findings.size() < max_findings) {
            check_.findings += finding;
        }
    }
    // A finding for each row that a statement gives, named by its first column.
    bool None(SqlText text, const QString& finding)
    {
        const auto rows = connection_.Ask(CSql(text));
        for (int row = 0; rows && row < rows->Rows(); ++row) {
            Add(finding.arg(rows->Text(row, 0)));
        }
        return rows.has_value();
    }

    // Always false: rows that do not go on would be asked for ever.
    bool Circles()
    {
        connection_.SetProblem({LibraryFault::Damaged, connection_.Place().Text(), QStringLiteral("its order")});
        return false;
    }

    bool Rules();
    bool Folders();
    bool Parts();
    void Part(const CPgResult& rows, int row);
    bool Counts();
    bool Files();
    bool Content(const CPgResult& file, int row);

    CPgConnection& connection_;
    LibraryCheck& check_;
    const WorkProgress& progress_;
    std::unordered_map<std::int32_t, qint64> pairs_;
};

// Each must give no row.
bool CPgCheck::Rules()
{
    static constexpr Rule rules[] = {
        {"SELECT 'numbers' FROM partkeep_library WHERE next_folder <= (SELECT max(id) FROM folder) OR next_part <= "
         "(SELECT max(id) FROM part) OR next_content <= (SELECT max(content) FROM part_file)",
         "the %1 to be given next are wrong"},
        {"SELECT name FROM part WHERE NOT EXISTS(SELECT 1 FROM folder WHERE folder.id = part.folder)",
         "part %1: belongs to no folder"},
        {"SELECT 'the root' WHERE NOT EXISTS(SELECT 1 FROM folder WHERE id = 1 AND path = '')", "%1 is missing"},
        {"SELECT path FROM folder WHERE parts <> (SELECT count(*) FROM part WHERE part.folder = folder.id)",
         "folder %1: the count of parts is wrong"},
        {"SELECT f.path FROM folder f LEFT JOIN folder above ON above.id = f.parent WHERE f.id <> 1 AND (above.id IS "
         "NULL OR f.path <> CASE WHEN above.path = '' THEN f.name ELSE above.path || '\\' || f.name END)",
         "folder %1: it does not lie in the folder that its path tells"},
        {"SELECT name FROM part WHERE slots <> (SELECT coalesce(sum(1 << slot), 0) FROM part_file WHERE part_file.part "
         "= part.id)",
         "part %1: files are missing or left over"},
        {"SELECT part::text FROM part_file WHERE NOT EXISTS(SELECT 1 FROM part WHERE part.id = part_file.part)",
         "file of %1: belongs to no part"},
        {"SELECT DISTINCT content::text FROM piece WHERE NOT EXISTS(SELECT 1 FROM part_file WHERE part_file.content = "
         "piece.content)",
         "content %1: belongs to no file"},
    };
    if (connection_.HasOtherKeys()) {
        Add(QString::fromLatin1(other_keys_text));
    }
    return std::all_of(std::begin(rules), std::end(rules),
                       [this](const Rule& rule) { return None(rule.text, QString::fromLatin1(rule.finding)); });
}

bool CPgCheck::Folders()
{
    const auto rows = connection_.Ask(CSql("SELECT ").Add(pg_folder_columns).Add(", sort_key FROM folder ORDER BY id"));
    for (int row = 0; rows && row < rows->Rows(); ++row) {
        FolderRow folder;
        if (ReadFolder(*rows, row, folder) != PgRowFault::None) {
            Add(QStringLiteral("folder %1: its name or path is refused, or they do not fit each other")
                    .arg(folder.path));
        }
        const bool key = folder.id == postgres_root_folder || rows->Bytes(row, 5) == SortKey(folder.name);
        if (!key && !connection_.HasOtherKeys()) {
            Add(QStringLiteral("folder %1: its key is wrong").arg(folder.path));
        }
        ++check_.folders;
    }
    return rows.has_value();
}

bool CPgCheck::Parts()
{
    for (PartId last = 0;;) {
        const auto rows = connection_.Ask(CSql("SELECT ")
                                              .Add(pg_part_columns)
                                              .Add(", search_text, name_key, material_key, machine_key, comment_key, "
                                                   "pairs FROM part WHERE id > ")
                                              .Value(last)
                                              .Add(" ORDER BY id LIMIT ")
                                              .Value(rows_at_once));
        if (!rows) {
            return false;
        }
        for (int row = 0; row < rows->Rows(); ++row) {
            Part(*rows, row);
            const PartId before = std::exchange(last, rows->Integer(row, 0));
            if (before >= last) {
                return Circles();
            }
        }
        if (rows->Rows() < rows_at_once) {
            return true;
        }
    }
}

void CPgCheck::Part(const CPgResult& rows, int row)
{
    PartRow part;
    const PgRowFault fault = ReadPart(rows, row, part);
    const auto found = [&](bool wrong, const char* what) {
        if (wrong) {
            Add(QStringLiteral("part %1: %2").arg(part.name, QLatin1String(what)));
        }
    };
    ++check_.parts;
    found(fault == PgRowFault::Refused, "its name or an attribute is refused");
    found(fault == PgRowFault::Damaged, "a value is out of its range");
    const QString search = SearchText(part);
    const auto codes = PairCodes(search);
    std::string pairs = CSql::ArrayHead(SqlType::Int4, codes.size());
    for (const std::int32_t code : codes) {
        ++pairs_[code];
        AppendNumber(pairs, std::int32_t{sizeof code});
        AppendNumber(pairs, code);
    }
    if (connection_.HasOtherKeys()) {
        return;
    }
    int column = pg_part_column_count;
    found(rows.Text(row, column++) != search, "its search text is wrong");
    bool keys = true;
    for (const QString* text : {&part.name, &part.material, &part.machine, &part.comment}) {
        keys = rows.Bytes(row, column++) == SortKey(*text) && keys;
    }
    found(!keys, "its keys are wrong");
    found(rows.Raw(row, column) != pairs, "the search index does not fit it");
}

bool CPgCheck::Counts()
{
    const auto rows = connection_.Ask(CSql("SELECT pair, parts FROM pair"));
    if (!rows) {
        return false;
    }
    bool same = rows->Rows() == static_cast<int>(pairs_.size());
    for (int row = 0; same && row < rows->Rows(); ++row) {
        const auto counted = pairs_.find(static_cast<std::int32_t>(rows->Integer(row, 0)));
        same = counted != pairs_.end() && counted->second == rows->Integer(row, 1);
    }
    if (!same && !connection_.HasOtherKeys()) {
        Add(QStringLiteral("the counts of the search index do not fit the parts"));
    }
    return true;
}

bool CPgCheck::Files()
{
    const auto total = connection_.Ask(CSql("SELECT count(*) FROM part_file"));
    PartId part = 0;
    qint64 slot = -1;
    for (bool more = total.has_value(); more;) {
        const auto files = connection_.Ask(
            CSql("SELECT part, slot, content, bytes, hash, (SELECT name FROM part WHERE id = part_file.part) FROM "
                 "part_file WHERE (part, slot) > (")
                .Value(part)
                .Add(", ")
                .Value(static_cast<std::int32_t>(slot))
                .Add(") ORDER BY part, slot LIMIT ")
                .Value(rows_at_once));
        if (!files) {
            return false;
        }
        for (int row = 0; row < files->Rows(); ++row, ++check_.files) {
            const std::pair before(part, slot);
            part = files->Integer(row, 0);
            slot = files->Integer(row, 1);
            if (before >= std::pair(part, slot)) {
                return Circles();
            }
            if (progress_ && !progress_(check_.files, total->Integer(0, 0))) {
                connection_.SetProblem({LibraryFault::Stopped, {}, {}});
                return false;
            }
            if (!Content(*files, row)) {
                return false;
            }
        }
        more = files->Rows() == rows_at_once;
    }
    return total.has_value();
}

bool CPgCheck::Content(const CPgResult& file, int row)
{
    const qint64 wanted = file.Integer(row, 3);
    const bool fits = wanted >= 0 && wanted <= postgres_max_file_bytes;
    const auto slot = static_cast<FileSlot>(std::clamp<qint64>(file.Integer(row, 1), 0, file_kinds.size() - 1));
    CPgResult piece;
    CContentHash hash;
    qint64 bytes = 0;
    bool sound = fits;
    const char* fault = wanted == 0 ? PictureFault(slot, {}) : nullptr;
    auto next = connection_.SendForFirst(
        CSql("SELECT nr, data FROM piece WHERE content = ").Value(file.Integer(row, 2)).Add(" ORDER BY nr"), piece);
    for (; next == CPgConnection::Next::Row; next = connection_.Receive(piece)) {
        const std::string_view data = piece.Raw(0, 1);
        const auto size = static_cast<qint64>(data.size());
        fault = bytes == 0 ? PictureFault(slot, QByteArray::fromRawData(data.data(), size)) : fault;
        sound = sound && piece.Integer(0, 0) == bytes / postgres_piece_bytes && size > 0 &&
                size == std::min(postgres_piece_bytes, wanted - bytes);
        hash.Add(data);
        bytes += size;
    }
    sound = sound && bytes == wanted && hash.Hash() == file.Bytes(row, 4);
    if (!sound || fault != nullptr) {
        Add(QStringLiteral("part %1, file %2: %3")
                .arg(file.Text(row, 5), QString::number(file.Integer(row, 1)),
                     QLatin1String(sound ? fault : "the content is not as it was stored")));
    }
    return next == CPgConnection::Next::End;
}

} // namespace

std::optional<LibraryCheck> CheckPgLibrary(const PgPlace& place, const WorkProgress& progress, LibraryProblem& problem)
{
    const auto connection = CPgConnection::Open(place, PgUse::Whole, problem);
    if (connection == nullptr) {
        return std::nullopt;
    }
    LibraryCheck check;
    const qint64 before = connection->Revision();
    if (!CPgCheck(*connection, check, progress).All()) {
        problem = connection->Problem();
        return std::nullopt;
    }
    const auto told = connection->Ask(CPgConnection::LibraryRow()); // a new connection may have had another state
    if (!told || !connection->TakeLibraryRow(*told)) {
        problem = connection->Problem();
    } else if (connection->Revision() != before) {
        problem = {LibraryFault::Busy, place.Text(), QStringLiteral("the library was changed meanwhile")};
    }
    return problem ? std::nullopt : std::optional(std::move(check));
}

} // namespace partkeep
