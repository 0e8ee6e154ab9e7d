#include "partlibrary/sqlite/library_check.h"

#include "partlibrary/library/bitmap_file.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"

#include <QSet>

#include <algorithm>

namespace partkeep {

namespace {

// Looks at one table after the other, all of one state. Each member is false when the library cannot be read.
class CLibraryCheck {
public:
    CLibraryCheck(CConnection& connection, LibraryCheck& check, const WorkProgress& progress)
        : connection_(connection), check_(check), progress_(progress)
    {
    }

    bool Structure();
    bool Numbers();
    bool Folders();
    bool Parts();
    bool Files();
    bool Pieces();
    bool Index();

private:
    void Add(const QString& finding)
    {
        if (check_.findings.size() < max_findings) {
            check_.findings += finding;
        }
    }
    bool None(const char* sql, const QString& finding);
    void Part(const PartRow& row, const CStatement& statement);
    [[nodiscard]] bool Content(const FileRow& file, const QString& name);

    CConnection& connection_;
    LibraryCheck& check_;
    const WorkProgress& progress_;
    bool other_keys_ = false; // they cannot be judged then, nor search texts
    quint64 expected_ = 0;    // sum over what the search index should hold
};

quint64 IndexSum(PartId part, std::string_view term)
{
    return static_cast<quint64>(CRowSum(0, 'i').Add(part).Add(term).Sum());
}

bool CLibraryCheck::Structure()
{
    CStatement statement(connection_, "PRAGMA integrity_check(" + std::to_string(max_findings) + ")");
    while (statement.Next()) {
        if (statement.Raw(0) != "ok") {
            Add(statement.Text(0));
        }
    }
    return !statement.Failed();
}

// A finding for each row that the statement gives, named by its first column.
bool CLibraryCheck::None(const char* sql, const QString& finding)
{
    CStatement statement(connection_, sql);
    while (statement.Next()) {
        Add(finding.arg(statement.Text(0)));
    }
    return !statement.Failed();
}

bool CLibraryCheck::Numbers()
{
    CStatement statement(connection_,
                         "SELECT count(*), min(next_part), min(next_content), (SELECT coalesce(max(id), 0) "
                         "FROM part), (SELECT coalesce(max(content), 0) FROM part_file), "
                         "sum(keys <> ?), min(next_folder), (SELECT coalesce(max(id), 0) FROM folder) FROM library");
    if (!statement.With(KeysVersion()).Next()) {
        return false;
    }
    const bool ahead = statement.Integer(1) > statement.Integer(3) && statement.Integer(2) > statement.Integer(4) &&
                       statement.Integer(6) > statement.Integer(7);
    if (statement.Integer(0) != 1 || !ahead) {
        Add(QStringLiteral("the numbers to be given next are wrong"));
    }
    other_keys_ = statement.Integer(5) != 0;
    if (other_keys_) {
        Add(QString::fromLatin1(other_keys_text));
    }
    return true;
}

// Each folder hangs below another whose path it continues, so all hang together below the root.
bool CLibraryCheck::Folders()
{
    CStatement statement(connection_, std::string("SELECT ") + folder_row_columns +
                                          ", sort_key, (SELECT count(*) FROM part WHERE part.folder = folder.id), "
                                          "(SELECT path FROM folder above WHERE above.id = folder.parent) FROM folder");
    for (FolderRow row; statement.Next(); ++check_.folders) {
        const RowFault fault = ReadFolderRow(statement, row);
        const QString above = statement.Text(9);
        const auto found = [&](bool wrong, const char* what) {
            if (wrong) {
                Add(QStringLiteral("folder %1: %2").arg(row.path, QLatin1String(what)));
            }
        };
        found(fault == RowFault::Damaged, "the row is not as it was stored");
        found(fault == RowFault::Refused, "its name or path is refused, or they do not fit each other");
        found(row.id != root_folder && row.path != (above.isEmpty() ? row.name : above + u'\\' + row.name),
              "it does not lie in the folder that its path tells");
        found(row.parts != statement.Integer(8), "the count of parts is wrong");
        found(row.id != root_folder && !other_keys_ && statement.Bytes(7) != SortKey(row.name), "its key is wrong");
    }
    return !statement.Failed() &&
           None("SELECT name FROM part WHERE folder NOT IN (SELECT id FROM folder)",
                QStringLiteral("part %1: belongs to no folder")) &&
           None("SELECT 1 WHERE NOT EXISTS(SELECT 1 FROM folder WHERE id = 1)", QStringLiteral("the root is missing"));
}

void CLibraryCheck::Part(const PartRow& row, const CStatement& statement)
{
    const auto found = [&](bool wrong, const char* what) {
        if (wrong) {
            Add(QStringLiteral("part %1: %2").arg(row.name, QLatin1String(what)));
        }
    };
    const QString search = SearchText(row);
    bool keys = true;
    int column = part_row_column_count + 1;
    for (const QString* text : {&row.name, &row.material, &row.machine, &row.comment}) {
        keys = statement.Bytes(column++) == SortKey(*text) && keys;
    }
    found(!keys && !other_keys_, "its keys are wrong");
    found(statement.Text(part_row_column_count) != search && !other_keys_, "its search text is wrong");
    found(statement.Integer(column) != row.slots, "files are missing or left over");
    const QSet<QString> terms = [&] {
        const QStringList all = SearchPairs(search).split(u' ', Qt::SkipEmptyParts);
        return QSet<QString>(all.begin(), all.end());
    }();
    for (const QString& term : terms) {
        expected_ += IndexSum(row.id, ToUtf8(term));
    }
}

bool CLibraryCheck::Parts()
{
    CStatement statement(connection_, std::string("SELECT ") + part_row_columns +
                                          ", search_text, name_key, material_key, machine_key, comment_key, "
                                          "(SELECT coalesce(sum(1 << (f.id % 16)), 0) FROM part_file f "
                                          "WHERE f.id BETWEEN part.id * 16 AND part.id * 16 + 15) FROM part");
    for (; statement.Next(); ++check_.parts) {
        PartRow row;
        const RowFault fault = ReadPartRow(statement, row);
        if (fault == RowFault::None) {
            Part(row, statement);
        } else {
            Add(QStringLiteral("part %1: %2")
                    .arg(statement.Text(4), fault == RowFault::Damaged
                                                ? QStringLiteral("the row is not as it was stored")
                                                : QStringLiteral("its name or an attribute is refused")));
        }
    }
    return !statement.Failed();
}

// False where there is no memory for it, which says nothing of the library.
bool CLibraryCheck::Content(const FileRow& file, const QString& name)
{
    CStatement pieces(connection_, "SELECT id, sum, content FROM piece WHERE id BETWEEN ? AND ? ORDER BY id");
    const qint64 first = file.content * pieces_per_content;
    CContentHash hash;
    qint64 bytes = 0;
    bool sound = true;
    const char* fault = file.bytes == 0 ? PictureFault(file.slot, {}) : nullptr;
    for (pieces.With(first, first + pieces_per_content - 1); pieces.Next();) {
        const std::string_view piece = pieces.Raw(2);
        if (bytes == 0) {
            fault =
                PictureFault(file.slot, QByteArray::fromRawData(piece.data(), static_cast<qsizetype>(piece.size())));
        }
        const qint64 id = first + bytes / piece_bytes;
        const auto size = static_cast<qint64>(piece.size());
        sound = sound && pieces.Integer(0) == id && pieces.Integer(1) == PieceSum(connection_.Salt(), id, piece) &&
                size == std::min<qint64>(piece_bytes, file.bytes - bytes);
        hash.Add(piece);
        bytes += size;
    }
    if (pieces.Failed() && connection_.Problem().fault == LibraryFault::NoMemory) {
        return false;
    }
    sound = sound && !pieces.Failed() && bytes == file.bytes && hash.Hash() == file.hash;
    if (!sound || fault != nullptr) {
        Add(QStringLiteral("part %1, file %2: %3")
                .arg(name, QString::number(static_cast<int>(file.slot)),
                     QLatin1String(sound ? fault : "the content is not as it was stored")));
    }
    return true;
}

bool CLibraryCheck::Files()
{
    CStatement statement(connection_, "SELECT file.id, content, bytes, hash, file.sum, part.name "
                                      "FROM part_file file LEFT JOIN part ON part.id = file.id / 16 ORDER BY file.id");
    CStatement count(connection_, "SELECT count(*) FROM part_file");
    const qint64 total = count.Next() ? count.Integer(0) : 0;
    for (FileRow file; statement.Next(); ++check_.files) {
        if (progress_ && !progress_(check_.files, total)) {
            connection_.SetProblem({LibraryFault::Stopped, {}, {}});
            return false;
        }
        const QString name = statement.Text(5);
        const RowFault fault = ReadFileRow(statement, file);
        if (statement.Failed()) {
            return false;
        }
        if (fault != RowFault::None) {
            Add(QStringLiteral("part %1: the row of a file is not as it was stored").arg(name));
        } else if (!Content(file, name)) {
            return false;
        }
    }
    return !statement.Failed() && None("SELECT id FROM part_file WHERE id / 16 NOT IN (SELECT id FROM part)",
                                       QStringLiteral("file %1: belongs to no part"));
}

// What an importer has put aside and nobody has yet is no fault.
bool CLibraryCheck::Pieces()
{
    return None("SELECT content FROM part_file GROUP BY content HAVING count(*) > 1",
                QStringLiteral("content %1: belongs to two files")) &&
           None("SELECT DISTINCT id / 65536 FROM piece WHERE id / 65536 NOT IN (SELECT content FROM part_file) "
                "AND id / 65536 < (SELECT next_content FROM library)",
                QStringLiteral("content %1: belongs to no file"));
}

// The index has each pair of each part, and nothing else: compared by a sum, since there are millions.
bool CLibraryCheck::Index()
{
    quint64 held = 0;
    {
        CStatement index(connection_, "SELECT doc, term FROM temp.terms");
        while (index.Next()) {
            held += IndexSum(index.Integer(0), index.Raw(1));
        }
        if (index.Failed()) {
            return false;
        }
    }
    if (held != expected_ && !other_keys_) {
        Add(QStringLiteral("the search index does not fit the parts"));
    }
    return true;
}

} // namespace

std::optional<LibraryCheck> CheckLibrary(const QString& file, const WorkProgress& progress, LibraryProblem& problem)
{
    const auto connection = CConnection::Open(file, OpenMode::ReadAll, problem);
    if (connection == nullptr) {
        return std::nullopt;
    }
    LibraryCheck check;
    CLibraryCheck look(*connection, check, progress);
    bool read = connection->Execute("CREATE VIRTUAL TABLE temp.terms USING fts5vocab(main, part_search, instance)");
    const CReadTransaction one_state(*connection);
    // Rows of a file whose structure is broken tell nothing.
    read = read && one_state && look.Structure() &&
           (!check.findings.isEmpty() ||
            (look.Numbers() && look.Folders() && look.Parts() && look.Files() && look.Pieces() && look.Index()));
    if (!read) {
        problem = connection->Problem();
        return std::nullopt;
    }
    return check;
}

} // namespace partkeep
