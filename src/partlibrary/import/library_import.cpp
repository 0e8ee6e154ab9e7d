#include "partlibrary/import/library_import.h"

#include "partlibrary/import/attribute_table.h"
#include "partlibrary/library/file_kinds.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_writer.h"

#include <QFile>

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

using PartKey = std::pair<QString, QString>; // folder, name

struct SourceFile {
    QString path;
    StoredContent content;
};

struct SourcePart {
    std::map<FileSlot, SourceFile> files;
    std::optional<PartAttributes> attributes;
};

using SourceParts = std::map<PartKey, SourcePart>;

QString JoinFolders(const QString& left, const QString& right)
{
    return left.isEmpty() || right.isEmpty() ? left + right : left + u'\\' + right;
}

bool ReadTable(const QString& path, QByteArray& content, LibraryProblem& problem)
{
    QFile file(path);
    content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        problem = {LibraryFault::ReadFailed, path, file.errorString()};
    }
    return !problem;
}

// Names are looked at before anything is written.
bool CheckSource(const QString& folder, const QString& part, LibraryProblem& problem)
{
    const NameFault of_folder = CheckFolderPath(folder);
    const NameFault fault = of_folder != NameFault::None ? of_folder : CheckName(part);
    if (fault != NameFault::None) {
        problem = {LibraryFault::NameRefused, of_folder != NameFault::None ? folder : part, NameFaultText(fault)};
    }
    return !problem;
}

bool AddSourceFile(const fs::path& file, const ImportOptions& options, SourceParts& parts, ImportReport& report,
                   LibraryProblem& problem)
{
    const QString path = FromUtf8(file.string());
    const QString name = FromUtf8(file.filename().string());
    const auto import_name = ParseImportName(name);
    if (!import_name) {
        report.skipped += path;
        return true;
    }
    // By text alone, as the path was put together: the source may be given relative to anything.
    const std::string inner = file.lexically_relative(ToUtf8(options.source)).parent_path().string();
    if (inner.find('\\') != std::string::npos) {
        problem = {LibraryFault::NameRefused, FromUtf8(inner), NameFaultText(NameFault::ReservedCharacter)};
        return false;
    }
    const QString folder = JoinFolders(options.target, FromUtf8(inner).replace(u'/', u'\\'));
    if (!CheckSource(folder, import_name->part.toString(), problem)) {
        return false;
    }
    if (!parts[{folder, import_name->part.toString()}].files.emplace(import_name->slot, SourceFile{path, {}}).second) {
        problem = {LibraryFault::BadInput, path, QStringLiteral("a second file of the same kind, beside letter case")};
        return false;
    }
    return true;
}

// Nothing is passed over in silence: a folder that cannot be read is an error here, a link that leads nowhere when
// its file is read. Links to folders are not followed.
bool CollectFiles(const ImportOptions& options, SourceParts& parts, ImportReport& report, LibraryProblem& problem)
{
    std::error_code error;
    fs::recursive_directory_iterator entry(ToUtf8(options.source), error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const fs::file_status status = entry->status(error);
        if (fs::is_other(status)) {
            report.skipped += FromUtf8(entry->path().string()); // a pipe or a device
        } else if (!fs::is_directory(status) && !AddSourceFile(entry->path(), options, parts, report, problem)) {
            return false;
        }
    }
    if (error) {
        problem = {LibraryFault::BadInput, options.source,
                   QStringLiteral("a folder cannot be read: ") + FromUtf8(error.message())};
        return false;
    }
    report.skipped.sort();
    return true;
}

bool AddAttributes(const ImportOptions& options, SourceParts& parts, LibraryProblem& problem)
{
    if (options.attribute_table.isEmpty()) {
        return true;
    }
    QByteArray text;
    const bool read = ReadTable(options.attribute_table, text, problem);
    const auto rows = read ? ParseAttributeTable(text, problem) : std::nullopt;
    if (!rows) {
        problem.subject = problem.subject.isEmpty() ? options.attribute_table
                                                    : options.attribute_table + QStringLiteral(", ") + problem.subject;
        return false;
    }
    for (const AttributeRow& row : *rows) {
        const auto part = parts.find({JoinFolders(options.target, FolderPath(row.folder)), row.part});
        if (part == parts.end()) {
            problem = {LibraryFault::BadInput, options.attribute_table + QStringLiteral(", line %1").arg(row.line),
                       QStringLiteral("no file of a part ") + row.part};
            return false;
        }
        if (part->second.attributes) {
            problem = {LibraryFault::BadInput, options.attribute_table + QStringLiteral(", line %1").arg(row.line),
                       QStringLiteral("a second line for the part ") + row.part};
            return false;
        }
        part->second.attributes = row.attributes;
    }
    return true;
}

bool StoreFile(ILibraryWriter& writer, FileSlot slot, SourceFile& source, LibraryProblem& problem)
{
    QFile file(source.path);
    const auto fill = [&file](std::span<char> buffer) {
        qint64 filled = 0;
        const auto size = static_cast<qint64>(buffer.size());
        for (qint64 got = 1; got > 0 && filled < size; filled += std::max<qint64>(got, 0)) {
            got = file.read(buffer.data() + filled, size - filled);
        }
        return file.error() == QFileDevice::NoError ? filled : -1;
    };
    const bool open = file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    const auto stored = open ? writer.Store(slot, fill) : std::nullopt;
    if (file.error() != QFileDevice::NoError) {
        problem = {LibraryFault::ReadFailed, source.path, file.errorString()};
    } else if (!stored) {
        problem = writer.Problem();
        problem.subject = problem.subject.isEmpty() ? source.path : problem.subject;
    } else {
        source.content = *stored;
    }
    return !problem;
}

// All content first: nobody sees it before the rows.
bool PutParts(ILibraryWriter& writer, SourceParts& parts, ImportReport& report, LibraryProblem& problem)
{
    for (auto& [key, source] : parts) {
        for (auto& [slot, file] : source.files) {
            if (!StoreFile(writer, slot, file, problem)) {
                return false;
            }
        }
    }
    for (const auto& [key, source] : parts) {
        const auto folder = writer.MakeFolder(key.first);
        const auto part = folder ? writer.PutPart(*folder, key.second, source.attributes) : std::nullopt;
        bool put = part.has_value();
        for (const auto& [slot, file] : source.files) {
            put = put && writer.PutFile(*part, slot, file.content);
            ++report.files;
        }
        if (!put) {
            problem = writer.Problem();
            return false;
        }
        ++report.parts;
    }
    return true;
}

} // namespace

bool ImportFolder(ILibraryWriter& writer, const ImportOptions& options, ImportReport& report, LibraryProblem& problem)
{
    SourceParts parts;
    if (!CollectFiles(options, parts, report, problem) || !AddAttributes(options, parts, problem)) {
        return false;
    }
    if (!writer.Begin()) {
        problem = writer.Problem();
        return false;
    }
    const bool put = PutParts(writer, parts, report, problem);
    if (put && writer.Commit()) {
        return true;
    }
    if (put) {
        problem = writer.Problem();
    }
    writer.Rollback();
    return false;
}

} // namespace partkeep
