#include "partlibrary/library_check.h"

#include "partlibrary/bitmap_file.h"
#include "partlibrary/content_hash.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/library_names.h"
#include "partlibrary/library_schema.h"

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
                         QStringLiteral("SELECT name, slots, (SELECT coalesce(sum(1 << (f.id % %1)), 0) "
                                        "FROM part_file f WHERE f.id BETWEEN part.id * %1 AND part.id * %1 + %2) "
                                        "FROM part")
                             .arg(file_id_step)
                             .arg(file_id_step - 1));
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

const char* ContentFault(const CStatement& statement)
{
    const QByteArray content = statement.Bytes(2);
    const qint64 slot = statement.Integer(0) % file_id_step;
    if (slot < 0 || slot >= static_cast<qint64>(file_kinds.size())) {
        return "a file of an unknown kind";
    }
    if (ContentHash(content) != statement.Integer(1)) {
        return "the content has changed";
    }
    return PictureFault(static_cast<FileSlot>(slot), content);
}

bool CheckFiles(CLibraryConnection& connection, LibraryCheck& check)
{
    CStatement statement(connection, QStringLiteral("SELECT f.id, f.hash, f.content, part.name FROM part_file f "
                                                    "LEFT JOIN part ON part.id = f.id / %1")
                                         .arg(file_id_step));
    for (statement.Run(); statement.Next(); ++check.files) {
        if (statement.Value(3).isNull()) {
            AddFinding(check, QStringLiteral("file %1: belongs to no part").arg(statement.Integer(0)));
        }
        if (const char* fault = ContentFault(statement); fault != nullptr) {
            AddFinding(check, QStringLiteral("part %1, file %2: %3")
                                  .arg(statement.Text(3))
                                  .arg(statement.Integer(0) % file_id_step)
                                  .arg(QLatin1String(fault)));
        }
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
