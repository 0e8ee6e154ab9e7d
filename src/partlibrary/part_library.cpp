#include "partlibrary/part_library.h"

#include "partlibrary/part_query.h"

#include <algorithm>
#include <array>
#include <utility>

namespace partkeep {

namespace {

const QString part_columns = QStringLiteral("SELECT ") + part_row_columns + QStringLiteral(" FROM part ");

const QString folder_columns =
    QStringLiteral("SELECT id, name, path, parts, EXISTS(SELECT 1 FROM folder child WHERE child.parent = folder.id) "
                   "FROM folder ");

FolderRow ReadFolder(const CStatement& statement)
{
    return {statement.Integer(0), statement.Text(1), statement.Text(2), statement.Integer(3),
            statement.Integer(4) != 0};
}

} // namespace

CPartLibrary::CPartLibrary(std::unique_ptr<CLibraryConnection> connection, std::unique_ptr<CContentCopy> contents)
    : connection_(std::move(connection)), contents_(std::move(contents)),
      part_by_name_(*connection_, part_columns + QStringLiteral("WHERE folder = (SELECT id FROM folder WHERE path = ?) "
                                                                "AND name = ?")),
      parts_(*connection_)
{
}

CPartLibrary::~CPartLibrary() = default;

std::unique_ptr<CPartLibrary> CPartLibrary::Open(const QString& file, LibraryProblem& problem)
{
    auto connection = CLibraryConnection::Open(file, OpenMode::Read, problem);
    auto contents = connection != nullptr ? CContentCopy::Open(file, problem) : nullptr;
    if (contents == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<CPartLibrary>(new CPartLibrary(std::move(connection), std::move(contents)));
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
    part_by_name_.Run({folder, name});
    auto part = ReadPart(part_by_name_, folder + u'\\' + name);
    part_by_name_.Finish();
    return part;
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
    return ReadPartRow(statement);
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

bool CPartLibrary::Take(const LibraryProblem& problem)
{
    if (problem) {
        connection_->SetProblem(problem);
    }
    return !problem;
}

bool CPartLibrary::CopyFiles(PartId part, SlotSet slots, const ContentSink& sink)
{
    return Take(contents_->ReadShared(part, slots, sink));
}

bool CPartLibrary::ReadFiles(PartId part, SlotSet slots, const FileReader& reader)
{
    std::array<QByteArray, file_kinds.size()> contents;
    const auto gather = [&contents](FileSlot slot, qint64, std::span<const char> block) {
        contents[static_cast<std::size_t>(slot)].append(block.data(), static_cast<qsizetype>(block.size()));
        return LibraryProblem{};
    };
    if (!Take(contents_->ReadInOrder(part, slots, gather))) {
        return false;
    }
    return std::all_of(file_kinds.begin(), file_kinds.end(), [&](const FileKind& kind) {
        return (slots & SetOf(kind.slot)) == 0 || reader(kind.slot, contents[static_cast<std::size_t>(kind.slot)]);
    });
}

} // namespace partkeep
