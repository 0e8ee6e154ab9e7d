#include "partlibrary/part_library.h"

#include "partlibrary/file_chunks.h"
#include "partlibrary/part_query.h"

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

CPartLibrary::CPartLibrary(std::unique_ptr<CLibraryConnection> connection, std::unique_ptr<CLibraryConnection> contents)
    : connection_(std::move(connection)), contents_(std::move(contents)), parts_(*connection_)
{
}

CPartLibrary::~CPartLibrary() = default;

std::unique_ptr<CPartLibrary> CPartLibrary::Open(const QString& file, LibraryProblem& problem)
{
    auto connection = CLibraryConnection::Open(file, OpenMode::Read, problem);
    auto contents = connection != nullptr ? CLibraryConnection::Open(file, OpenMode::ReadContent, problem) : nullptr;
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

// Neighbouring slots are read in one go; what is not asked for is not read at all.
bool CPartLibrary::ReadChunks(PartId part, SlotSet slots, const ChunkReader& reader)
{
    for (std::size_t first = 0; first < file_kinds.size(); ++first) {
        if ((slots & SetOf(file_kinds[first].slot)) == 0) {
            continue;
        }
        std::size_t last = first;
        while (last + 1 < file_kinds.size() && (slots & SetOf(file_kinds[last + 1].slot)) != 0) {
            ++last;
        }
        if (!ReadRun(part, file_kinds[first].slot, file_kinds[last].slot, reader)) {
            return false;
        }
        first = last;
    }
    return true;
}

bool CPartLibrary::ReadRun(PartId part, FileSlot first, FileSlot last, const ChunkReader& reader)
{
    if (read_run_ == nullptr || read_run_->Failed()) {
        read_run_ =
            std::make_unique<CStatement>(*contents_, QStringLiteral("SELECT id, rest, hash, content FROM part_file "
                                                                    "WHERE id BETWEEN ? AND ? ORDER BY id"));
    }
    read_run_->Run({FirstChunk(part, first), FirstChunk(part, last) + slot_id_step - 1});
    const bool read = ReadRows(*read_run_, reader);
    if (read_run_->Failed()) {
        connection_->SetProblem(contents_->Problem());
    }
    read_run_->Finish();
    return read;
}

bool CPartLibrary::ReadRows(CStatement& statement, const ChunkReader& reader)
{
    CChunkOrder order;
    while (statement.Next()) {
        const ChunkRow row{statement.Integer(0), statement.Integer(1), statement.Integer(2), statement.Bytes(3)};
        if (const char* fault = order.Take(row); fault != nullptr) {
            return SetDamaged(fault);
        }
        const auto slot = static_cast<FileSlot>(row.id % file_id_step / slot_id_step);
        if (!reader(slot, row.content, row.rest == 0)) {
            return false;
        }
    }
    return !statement.Failed() && (order.Complete() || SetDamaged("a piece of a file is missing"));
}

bool CPartLibrary::SetDamaged(const char* detail)
{
    connection_->SetProblem({LibraryFault::Damaged, connection_->File(), QString::fromLatin1(detail)});
    return false;
}

bool CPartLibrary::ReadFiles(PartId part, SlotSet slots, const FileReader& reader)
{
    QByteArray content;
    return ReadChunks(part, slots, [&content, &reader](FileSlot slot, const QByteArray& piece, bool last) {
        content += piece;
        return !last || reader(slot, std::exchange(content, {}));
    });
}

} // namespace partkeep
