#include "partlibrary/library_check.h"

#include "partlibrary/bitmap_file.h"
#include "partlibrary/file_chunks.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/library_names.h"

namespace partkeep {

namespace {

void AddFinding(LibraryCheck& check, const QString& finding)
{
    if (check.findings.size() < max_findings) {
        check.findings += finding;
    }
}

bool CheckStructure(CLibraryConnection& connection, LibraryCheck& check)
{
    CStatement statement(connection, QStringLiteral("PRAGMA integrity_check(%1)").arg(max_findings));
    for (statement.Run(); statement.Next();) {
        if (statement.Text(0) != QLatin1String("ok")) {
            AddFinding(check, statement.Text(0));
        }
    }
    return !statement.Failed();
}

bool CheckFolders(CLibraryConnection& connection, LibraryCheck& check)
{
    CStatement statement(connection, QStringLiteral("SELECT path, parts, (SELECT count(*) FROM part "
                                                    "WHERE part.folder = folder.id) FROM folder"));
    for (statement.Run(); statement.Next(); ++check.folders) {
        const QString path = statement.Text(0);
        if (const NameFault fault = CheckFolderPath(path); fault != NameFault::None) {
            AddFinding(check, QStringLiteral("folder %1: %2").arg(path, NameFaultText(fault)));
        }
        if (statement.Integer(1) != statement.Integer(2)) {
            AddFinding(check, QStringLiteral("folder %1: the count of parts is wrong").arg(path));
        }
    }
    return !statement.Failed();
}

bool CheckParts(CLibraryConnection& connection, LibraryCheck& check)
{
    CStatement statement(connection,
                         QStringLiteral("SELECT name, slots, (SELECT coalesce(sum(1 << (f.id % %1 / %2)), 0) "
                                        "FROM part_file f WHERE f.id BETWEEN part.id * %1 AND part.id * %1 + %1 - 1 "
                                        "AND f.id % %2 = 0) FROM part")
                             .arg(file_id_step)
                             .arg(slot_id_step));
    for (statement.Run(); statement.Next(); ++check.parts) {
        const QString name = statement.Text(0);
        if (const NameFault fault = CheckName(name); fault != NameFault::None) {
            AddFinding(check, QStringLiteral("part %1: %2").arg(name, NameFaultText(fault)));
        }
        if (statement.Integer(1) != statement.Integer(2)) {
            AddFinding(check, QStringLiteral("part %1: files are missing or left over").arg(name));
        }
    }
    return !statement.Failed();
}

// What is wrong with the file that ends with this piece, as far as its content tells.
const char* KindFault(const ChunkRow& row, const QByteArray& content)
{
    const qint64 slot = row.id % file_id_step / slot_id_step;
    if (slot >= static_cast<qint64>(file_kinds.size())) {
        return "a file of an unknown kind";
    }
    return row.rest == 0 ? PictureFault(static_cast<FileSlot>(slot), content) : nullptr;
}

// Only the beginning of a picture is looked at, so no more of a file is kept.
bool CheckFiles(CLibraryConnection& connection, LibraryCheck& check)
{
    CStatement statement(connection, QStringLiteral("SELECT f.id, f.rest, f.hash, f.content, part.name "
                                                    "FROM part_file f LEFT JOIN part ON part.id = f.id / %1 "
                                                    "ORDER BY f.id")
                                         .arg(file_id_step));
    CChunkOrder order;
    QByteArray beginning;
    for (statement.Run(); statement.Next();) {
        const ChunkRow row{statement.Integer(0), statement.Integer(1), statement.Integer(2), statement.Bytes(3)};
        const bool first = row.id % slot_id_step == 0;
        check.files += first ? 1 : 0;
        beginning = first ? row.content : beginning;
        if (statement.Value(4).isNull()) {
            AddFinding(check, QStringLiteral("file %1: belongs to no part").arg(row.id));
        }
        const char* fault = order.Take(row);
        fault = fault != nullptr ? fault : KindFault(row, beginning);
        if (fault != nullptr) {
            AddFinding(check, QStringLiteral("part %1, file %2: %3")
                                  .arg(statement.Text(4))
                                  .arg(row.id % file_id_step / slot_id_step)
                                  .arg(QLatin1String(fault)));
            order = {};
        }
    }
    if (!order.Complete()) {
        AddFinding(check, QStringLiteral("the last file lacks its end"));
    }
    return !statement.Failed();
}

} // namespace

std::optional<LibraryCheck> CheckLibrary(const QString& file, LibraryProblem& problem)
{
    const auto connection = CLibraryConnection::Open(file, OpenMode::Read, problem);
    if (connection == nullptr) {
        return std::nullopt;
    }
    LibraryCheck check;
    if (!CheckStructure(*connection, check)) {
        problem = connection->Problem();
        return std::nullopt;
    }
    // Rows of a file whose structure is broken tell nothing.
    const bool sound = check.findings.isEmpty();
    if (sound &&
        !(CheckFolders(*connection, check) && CheckParts(*connection, check) && CheckFiles(*connection, check))) {
        problem = connection->Problem();
        return std::nullopt;
    }
    return check;
}

} // namespace partkeep
