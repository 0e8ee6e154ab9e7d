#include "partlibrary/library_writer.h"

#include "partlibrary/bitmap_file.h"
#include "partlibrary/file_chunks.h"
#include "partlibrary/library_names.h"
#include "partlibrary/sort_text.h"

#include <QFile>
#include <QRandomGenerator>

namespace partkeep {

namespace {

// A line end keeps the words of two attributes apart.
QString SearchText(const QString& name, const PartAttributes& attributes)
{
    return FoldText(name + u'\n' + attributes.material + u'\n' + attributes.machine + u'\n' + attributes.comment);
}

QVariantList KeyValues(const QString& name, const PartAttributes& attributes)
{
    return {SearchText(name, attributes), NaturalKey(FoldText(name)), NaturalKey(FoldText(attributes.material)),
            NaturalKey(FoldText(attributes.machine)), NaturalKey(FoldText(attributes.comment))};
}

} // namespace

// Prepared once: an import runs each of them thousands of times.
struct CLibraryWriter::Statements {
    explicit Statements(CLibraryConnection& connection)
        : find_part(connection, QStringLiteral("SELECT id, search_text FROM part WHERE folder = ? AND name = ?")),
          add_part(connection,
                   QStringLiteral("INSERT INTO part(folder, slots, thickness, name, material, machine, comment, "
                                  "search_text, name_key, material_key, machine_key, comment_key) "
                                  "VALUES(?, 0, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")),
          add_slot(connection, QStringLiteral("UPDATE part SET slots = slots | ? WHERE id = ?")),
          remove_files(connection, QStringLiteral("DELETE FROM part_file WHERE id BETWEEN ? AND ?")),
          put_chunk(connection, QStringLiteral("INSERT INTO part_file(id, rest, hash, content) VALUES(?, ?, ?, ?)")),
          add_search(connection, QStringLiteral("INSERT INTO part_search(rowid, pairs) VALUES(?, ?)"))
    {
    }

    CStatement find_part;
    CStatement add_part;
    CStatement add_slot;
    CStatement remove_files;
    CStatement put_chunk;
    CStatement add_search;
};

bool CLibraryWriter::Create(const QString& file, LibraryProblem& problem)
{
    if (QFile::exists(file)) {
        problem = {LibraryFault::AlreadyThere, file, {}};
        return false;
    }
    const QString temporary = file + u'~' + QString::number(QRandomGenerator::system()->generate64(), 16);
    const bool made = CLibraryConnection::Open(temporary, OpenMode::Create, problem) != nullptr;
    if (made && QFile::rename(temporary, file)) {
        return true;
    }
    if (made) {
        problem = {QFile::exists(file) ? LibraryFault::AlreadyThere : LibraryFault::WriteFailed, file, {}};
    }
    problem.subject = file;
    QFile::remove(temporary);
    QFile::remove(temporary + QStringLiteral("-journal"));
    return false;
}

std::unique_ptr<CLibraryWriter> CLibraryWriter::Open(const QString& file, LibraryProblem& problem)
{
    auto connection = CLibraryConnection::Open(file, OpenMode::Write, problem);
    if (connection == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<CLibraryWriter>(new CLibraryWriter(std::move(connection)));
}

CLibraryWriter::CLibraryWriter(std::unique_ptr<CLibraryConnection> connection)
    : connection_(std::move(connection)), statements_(std::make_unique<Statements>(*connection_))
{
}

CLibraryWriter::~CLibraryWriter()
{
    Rollback();
}

// Keeps the problem that led here.
void CLibraryWriter::Rollback()
{
    if (!open_) {
        return;
    }
    const LibraryProblem problem = Problem();
    statements_ = std::make_unique<Statements>(*connection_);
    connection_->Execute(QStringLiteral("ROLLBACK"));
    connection_->SetProblem(problem);
    folders_.clear();
    new_parts_.clear();
    open_ = false;
}

bool CLibraryWriter::Begin()
{
    open_ = connection_->Execute(QStringLiteral("BEGIN IMMEDIATE"));
    return open_;
}

bool CLibraryWriter::Commit()
{
    for (const auto& [folder, count] : new_parts_) {
        if (!connection_->Execute(QStringLiteral("UPDATE folder SET parts = parts + ? WHERE id = ?"),
                                  {count, folder})) {
            return false;
        }
    }
    new_parts_.clear();
    open_ = !connection_->Execute(QStringLiteral("COMMIT"));
    return !open_;
}

bool CLibraryWriter::Refuse(LibraryFault fault, const QString& subject, const QString& detail)
{
    connection_->SetProblem({fault, subject, detail});
    return false;
}

std::optional<qint64> CLibraryWriter::MakeFolder(const QString& path)
{
    if (const NameFault fault = CheckFolderPath(path); fault != NameFault::None) {
        Refuse(LibraryFault::NameRefused, path, NameFaultText(fault));
        return std::nullopt;
    }
    if (const auto known = folders_.find(path); known != folders_.end()) {
        return known->second;
    }
    CStatement find(*connection_, QStringLiteral("SELECT id FROM folder WHERE path = ?"));
    const bool there = find.Run({path}) && find.Next();
    if (find.Failed()) {
        return std::nullopt;
    }
    const std::optional<qint64> folder = there ? std::optional(find.Integer(0)) : AddFolder(path);
    if (folder) {
        folders_[path] = *folder;
    }
    return folder;
}

// The depth is bounded by the length of a path.
std::optional<qint64> CLibraryWriter::AddFolder(const QString& path) // NOLINT(misc-no-recursion)
{
    const qsizetype separator = path.lastIndexOf(u'\\');
    const std::optional<qint64> parent = MakeFolder(path.left(std::max<qsizetype>(separator, 0)));
    if (!parent) {
        return std::nullopt;
    }
    const QString name = path.sliced(separator + 1);
    CStatement add(*connection_, QStringLiteral("INSERT INTO folder(parent, name, path, sort_key) VALUES(?, ?, ?, ?)"));
    if (!add.Run({*parent, name, path, NaturalKey(FoldText(name))})) {
        return std::nullopt;
    }
    return add.InsertedId();
}

bool CLibraryWriter::CheckAttributes(const QString& name, const PartAttributes& attributes)
{
    for (const QString* text : {&attributes.material, &attributes.machine, &attributes.comment}) {
        if (const NameFault fault = CheckAttribute(*text); fault != NameFault::None) {
            return Refuse(LibraryFault::BadInput, name, QStringLiteral("attribute: ") + NameFaultText(fault));
        }
    }
    return true;
}

std::optional<PartId> CLibraryWriter::PutPart(qint64 folder, const QString& name,
                                              const std::optional<PartAttributes>& attributes)
{
    if (const NameFault fault = CheckName(name); fault != NameFault::None) {
        Refuse(LibraryFault::NameRefused, name, NameFaultText(fault));
        return std::nullopt;
    }
    if (attributes && !CheckAttributes(name, *attributes)) {
        return std::nullopt;
    }
    CStatement& find = statements_->find_part;
    if (!find.Run({folder, name})) {
        return std::nullopt;
    }
    if (!find.Next()) {
        return find.Failed() ? std::nullopt : AddPart(folder, name, attributes.value_or(PartAttributes{}));
    }
    const PartId part = find.Integer(0);
    const QString old_search = find.Text(1);
    find.Finish();
    if (attributes && !UpdatePart(part, name, *attributes, old_search)) {
        return std::nullopt;
    }
    return part;
}

std::optional<PartId> CLibraryWriter::AddPart(qint64 folder, const QString& name, const PartAttributes& attributes)
{
    const QVariantList keys = KeyValues(name, attributes);
    const QVariantList values =
        QVariantList{folder, attributes.thickness, name, attributes.material, attributes.machine, attributes.comment} +
        keys;
    if (!statements_->add_part.RunWith(values)) {
        return std::nullopt;
    }
    const PartId part = statements_->add_part.InsertedId();
    if (!AddToIndex(part, keys.front().toString())) {
        return std::nullopt;
    }
    ++new_parts_[folder];
    return part;
}

bool CLibraryWriter::UpdatePart(PartId part, const QString& name, const PartAttributes& attributes,
                                const QString& old_search)
{
    const QVariantList keys = KeyValues(name, attributes);
    CStatement update(*connection_, QStringLiteral("UPDATE part SET thickness = ?, material = ?, machine = ?, "
                                                   "comment = ?, search_text = ?, name_key = ?, material_key = ?, "
                                                   "machine_key = ?, comment_key = ? WHERE id = ?"));
    const QVariantList values =
        QVariantList{attributes.thickness, attributes.material, attributes.machine, attributes.comment} + keys +
        QVariantList{part};
    return RemoveFromIndex(part, old_search) && update.RunWith(values) && AddToIndex(part, keys.front().toString());
}

bool CLibraryWriter::AddToIndex(PartId part, const QString& search_text)
{
    return statements_->add_search.Run({part, SearchPairs(search_text)});
}

// The index has no copy of the text and must be told what to forget.
bool CLibraryWriter::RemoveFromIndex(PartId part, const QString& search_text)
{
    return connection_->Execute(
        QStringLiteral("INSERT INTO part_search(part_search, rowid, pairs) VALUES('delete', ?, ?)"),
        {part, SearchPairs(search_text)});
}

bool CLibraryWriter::PutFile(PartId part, FileSlot slot, const QByteArray& content)
{
    if (const char* reason = PictureFault(slot, content); reason != nullptr) {
        return Refuse(LibraryFault::BadInput, {}, QString::fromLatin1(reason));
    }
    if (content.size() > max_file_bytes) {
        return Refuse(LibraryFault::BadInput, {}, QStringLiteral("a file of more than 4 GB"));
    }
    const qint64 first = FirstChunk(part, slot);
    return statements_->remove_files.Run({first, first + slot_id_step - 1}) && PutChunks(first, content) &&
           statements_->add_slot.Run({SetOf(slot), part});
}

bool CLibraryWriter::PutChunks(qint64 id, const QByteArray& content)
{
    qsizetype at = 0;
    do {
        const qsizetype size = std::min(chunk_bytes, content.size() - at);
        const QByteArray piece = QByteArray::fromRawData(content.constData() + at, size);
        at += size;
        if (!statements_->put_chunk.Run({id++, content.size() - at, ContentHash(piece), piece})) {
            return false;
        }
    } while (at < content.size());
    return true;
}

bool CLibraryWriter::RemovePart(qint64 folder, const QString& name)
{
    CStatement& find = statements_->find_part;
    if (!find.Run({folder, name}) || !find.Next()) {
        return Refuse(LibraryFault::NoPart, name, {});
    }
    const PartId part = find.Integer(0);
    const QString search_text = find.Text(1);
    find.Finish();
    --new_parts_[folder];
    return RemoveFromIndex(part, search_text) &&
           statements_->remove_files.Run({part * file_id_step, part * file_id_step + file_id_step - 1}) &&
           connection_->Execute(QStringLiteral("DELETE FROM part WHERE id = ?"), {part});
}

} // namespace partkeep
