#include "partlibrary/library_import.h"

#include "partlibrary/attribute_table.h"
#include "partlibrary/file_kinds.h"
#include "partlibrary/library_writer.h"

#include <QFile>

#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

using PartKey = std::pair<QString, QString>; // folder, name

struct SourcePart {
    std::map<FileSlot, QString> files;
    std::optional<PartAttributes> attributes;
};

using SourceParts = std::map<PartKey, SourcePart>;

QString JoinFolders(const QString& left, const QString& right)
{
    return left.isEmpty() || right.isEmpty() ? left + right : left + u'\\' + right;
}

std::optional<QByteArray> ReadWholeFile(const QString& path, LibraryProblem& problem)
{
    QFile file(path);
    QByteArray content;
    if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        content = file.readAll();
    }
    if (file.error() != QFileDevice::NoError) {
        problem = {LibraryFault::ReadFailed, path, file.errorString()};
        return std::nullopt;
    }
    return content;
}

bool AddSourceFile(const fs::path& file, const ImportOptions& options, SourceParts& parts, ImportReport& report,
                   LibraryProblem& problem)
{
    const QString path = QString::fromStdString(file.string());
    const QString name = QString::fromStdString(file.filename().string());
    const auto import_name = ParseImportName(name);
    if (!import_name) {
        report.skipped += path;
        return true;
    }
    // By text alone, as the path was put together: the source may be given relative to anything.
    const fs::path inner = file.lexically_relative(options.source.toStdString()).parent_path();
    const QString folder = JoinFolders(options.target, QString::fromStdString(inner.string()).replace(u'/', u'\\'));
    if (!parts[{folder, import_name->part.toString()}].files.emplace(import_name->slot, path).second) {
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
    fs::recursive_directory_iterator entry(options.source.toStdString(), error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const fs::file_status status = entry->status(error);
        if (fs::is_other(status)) {
            report.skipped += QString::fromStdString(entry->path().string()); // a pipe or a device
        } else if (!fs::is_directory(status) && !AddSourceFile(entry->path(), options, parts, report, problem)) {
            return false;
        }
    }
    if (error) {
        problem = {LibraryFault::BadInput, options.source,
                   QStringLiteral("a folder cannot be read: ") + QString::fromStdString(error.message())};
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
    const auto text = ReadWholeFile(options.attribute_table, problem);
    const auto rows = text ? ParseAttributeTable(*text, problem) : std::nullopt;
    if (!rows) {
        problem.subject = problem.subject.isEmpty() ? options.attribute_table
                                                    : options.attribute_table + QStringLiteral(", ") + problem.subject;
        return false;
    }
    for (const AttributeRow& row : *rows) {
        const auto part = parts.find({JoinFolders(options.target, row.folder), row.part});
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

bool PutParts(CLibraryWriter& writer, const SourceParts& parts, ImportReport& report, LibraryProblem& problem)
{
    for (const auto& [key, source] : parts) {
        const auto folder = writer.MakeFolder(key.first);
        const auto part = folder ? writer.PutPart(*folder, key.second, source.attributes) : std::nullopt;
        if (!part) {
            problem = writer.Problem();
            return false;
        }
        ++report.parts;
        for (const auto& [slot, path] : source.files) {
            const auto content = ReadWholeFile(path, problem);
            if (!content) {
                return false;
            }
            if (!writer.PutFile(*part, slot, *content)) {
                problem = writer.Problem();
                problem.subject = problem.subject.isEmpty() ? path : problem.subject;
                return false;
            }
            ++report.files;
        }
    }
    return true;
}

} // namespace

bool ImportFolder(CLibraryWriter& writer, const ImportOptions& options, ImportReport& report, LibraryProblem& problem)
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
