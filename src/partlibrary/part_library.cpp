#include "partlibrary/part_library.h"

#include "partlibrary/content_hash.h"
#include "partlibrary/library_schema.h"

#include <QStringList>

namespace partkeep {

namespace {

const QString part_columns =
    QStringLiteral("SELECT id, folder, slots, thickness, name, material, machine, comment FROM part ");

const QString folder_columns =
    QStringLiteral("SELECT id, name, path, parts, EXISTS(SELECT 1 FROM folder child WHERE child.parent = folder.id) "
                   "FROM folder ");

FolderRow ReadFolder(const CStatement& statement)
{
    return {statement.Integer(0), statement.Text(1), statement.Text(2), statement.Integer(3),
            statement.Integer(4) != 0};
}

QString FileIds(PartId part, SlotSet slots)
{
    QStringList ids;
    for (const FileKind& row : file_kinds) {
        if ((slots & SetOf(row.slot)) != 0) {
            ids += QString::number(part * file_id_step + static_cast<qint64>(row.slot));
        }
    }
    return ids.join(u',');
}

} // namespace

std::unique_ptr<CPartLibrary> CPartLibrary::Open(const QString& file, LibraryProblem& problem)
{
    auto connection = CLibraryConnection::Open(file, OpenMode::Read, problem);
    if (connection == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<CPartLibrary>(new CPartLibrary(std::move(connection)));
}

std::optional<qint64> CPartLibrary::FindFolder(const QString& path)
{
    CStatement statement(*connection_, QStringLiteral("SELECT id FROM folder WHERE path = ?"));
    if (statement.Run({path}) && statement.Next()) {
        return statement.Integer(0);
    }
    if (!statement.Failed()) {
        connection_->SetProblem({LibraryFault::NoFolder, path, {}});
    }
    return std::nullopt;
}

std::optional<PartRow> CPartLibrary::FindPart(const QString& folder, const QString& name)
{
    CStatement statement(*connection_,
                         part_columns + QStringLiteral("WHERE folder = (SELECT id FROM folder WHERE path = ?) "
                                                       "AND name = ?"));
    statement.Run({folder, name});
    return ReadPart(statement, folder + u'\\' + name);
}

std::optional<PartRow> CPartLibrary::FindPart(PartId id)
{
    CStatement statement(*connection_, part_columns + QStringLiteral("WHERE id = ?"));
    statement.Run({id});
    return ReadPart(statement, QString::number(id));
}

std::optional<PartRow> CPartLibrary::ReadPart(CStatement& statement, const QString& subject)
{
    if (!statement.Next()) {
        if (!statement.Failed()) {
            connection_->SetProblem({LibraryFault::NoPart, subject, {}});
        }
        return std::nullopt;
    }
    return PartRow{statement.Integer(0),
                   statement.Integer(1),
                   static_cast<SlotSet>(statement.Integer(2)),
                   static_cast<std::int32_t>(statement.Integer(3)),
                   statement.Text(4),
                   statement.Text(5),
                   statement.Text(6),
                   statement.Text(7)};
}

std::optional<std::vector<FolderRow>> CPartLibrary::Folders(qint64 parent)
{
    CStatement statement(*connection_, folder_columns + QStringLiteral("WHERE parent = ? ORDER BY sort_key, name"));
    std::vector<FolderRow> rows;
    for (statement.Run({parent}); statement.Next();) {
        rows.push_back(ReadFolder(statement));
    }
    if (statement.Failed()) {
        return std::nullopt;
    }
    return rows;
}

std::optional<FolderRow> CPartLibrary::Folder(qint64 id)
{
    CStatement statement(*connection_, folder_columns + QStringLiteral("WHERE id = ?"));
    if (statement.Run({id}) && statement.Next()) {
        return ReadFolder(statement);
    }
    if (!statement.Failed()) {
        connection_->SetProblem({LibraryFault::NoFolder, QString::number(id), {}});
    }
    return std::nullopt;
}

bool CPartLibrary::ReadFiles(PartId part, SlotSet slots, const FileReader& reader)
{
    CStatement statement(*connection_, QStringLiteral("SELECT id, hash, content FROM part_file WHERE id IN (%1) "
                                                      "ORDER BY id")
                                           .arg(FileIds(part, slots)));
    statement.Run();
    while (statement.Next()) {
        const QByteArray content = statement.Bytes(2);
        if (ContentHash(content) != statement.Integer(1)) {
            connection_->SetProblem(
                {LibraryFault::Damaged, connection_->File(), QStringLiteral("the content of a file has changed")});
            return false;
        }
        if (!reader(static_cast<FileSlot>(statement.Integer(0) % file_id_step), content)) {
            return false;
        }
    }
    return !statement.Failed();
}

} // namespace partkeep
