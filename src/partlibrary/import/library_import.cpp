#include "partlibrary/import/library_import.h"

#include "partlibrary/import/attribute_table.h"
#include "partlibrary/library/bitmap_file.h"
#include "partlibrary/library/file_kinds.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_writer.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t most_looked_at = 1 << 16; // bytes of a picture: more than one may have

using PartKey = std::pair<QString, QString>; // folder, name

struct SourceFile {
    QString path;
    StoredContent content;
};

struct SourcePart {
    std::map<FileSlot, SourceFile> files;
    std::optional<PartAttributes> attributes;
};

using SourceParts = std::map<PartKey, SourcePart>; // one without a name stands for its folder alone

// Names are looked at before anything is written.
bool CheckSource(const QString& folder, const QString& part, LibraryProblem& problem)
{
    const NameFault of_folder = CheckFolderPath(folder);
    const NameFault of_part = part.isEmpty() ? NameFault::None : CheckName(part);
    const NameFault fault = of_folder != NameFault::None ? of_folder : of_part;
    if (fault != NameFault::None) {
        problem = {LibraryFault::NameRefused, of_folder != NameFault::None ? folder : part, NameFaultText(fault)};
    }
    return !problem;
}

bool AddSourceFile(const fs::path& file, const ImportOptions& options, SourceParts& parts, ImportReport& report,
                   LibraryProblem& problem)
{
    const QString path = FromUtf8(file.string());
    const auto target = TargetOf(path, options, problem);
    if (!target) {
        problem.subject = problem ? path : QString(); // a name that is refused is told with its place
        report.skipped += path;
        return !problem;
    }
    if (!parts[{target->folder, target->part}].files.emplace(target->slot, SourceFile{path, {}}).second) {
        problem = {LibraryFault::BadInput, path, QStringLiteral("a second file of the same kind, beside letter case")};
        return false;
    }
    return true;
}

// Nothing is passed over in silence: a folder that cannot be read is an error here, a link that leads nowhere when
// its file is read. Links to folders are not followed.
bool CollectFiles(const ImportOptions& options, SourceParts& parts, ImportReport& report, LibraryProblem& problem)
{
    if (options.files) {
        return std::all_of(options.files->begin(), options.files->end(), [&](const QString& file) {
            return AddSourceFile(ToUtf8(file), options, parts, report, problem);
        });
    }
    std::error_code error;
    if (!fs::is_directory(ToUtf8(options.source), error) && !error) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        problem = {LibraryFault::NoFolder, options.source, {}};
        return false;
    }
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
        problem = {LibraryFault::ReadFailed, options.source,
                   QStringLiteral("a folder cannot be read: ") + FromUtf8(error.message())};
        return false;
    }
    report.skipped.sort();
    return true;
}

// A part of which no file came is taken for a slip, unless the table says that it has none.
bool AddRow(const AttributeRow& row, const ImportOptions& options, SourceParts& parts, LibraryProblem& problem)
{
    const auto refuse = [&](const QString& reason) {
        problem = {LibraryFault::BadInput, QStringLiteral("line %1").arg(row.line), reason};
        return false;
    };
    const PartKey key(JoinPath(options.target, FolderPath(row.folder)), row.part);
    if (row.part.isEmpty() || row.files == 0) {
        if (!CheckSource(key.first, key.second, problem)) {
            problem.subject = QStringLiteral("line %1, ").arg(row.line) + problem.subject;
            return false;
        }
        parts.try_emplace(key);
    }
    const auto part = parts.find(key);
    if (part == parts.end()) {
        return refuse(QStringLiteral("no file of a part ") + row.part);
    }
    if (part->second.attributes) {
        return refuse(QStringLiteral("a second line for ") + (row.part.isEmpty()
                                                                  ? QStringLiteral("the folder ") + row.folder
                                                                  : QStringLiteral("the part ") + row.part));
    }
    const auto files = static_cast<qsizetype>(part->second.files.size());
    if (row.files.value_or(files) != files) {
        return refuse(
            QStringLiteral("%1 files of the part %2 in place of %3").arg(files).arg(row.part).arg(*row.files));
    }
    part->second.attributes = row.attributes;
    return true;
}

bool AddAttributes(const ImportOptions& options, SourceParts& parts, LibraryProblem& problem)
{
    if (options.attribute_table.isEmpty()) {
        return true;
    }
    const auto table = ReadAttributeTable(options.attribute_table, problem);
    if (!table) {
        return false;
    }
    const auto add = [&](const AttributeRow& row) { return AddRow(row, options, parts, problem); };
    if (!std::all_of(table->rows.begin(), table->rows.end(), add)) {
        problem.subject = options.attribute_table + QStringLiteral(", ") + problem.subject;
        return false;
    }
    return true;
}

ContentSource SourceOf(QFile& file)
{
    return [&file](std::span<char> buffer) {
        qint64 filled = 0;
        const auto size = static_cast<qint64>(buffer.size());
        for (qint64 got = 1; got > 0 && filled < size; filled += std::max<qint64>(got, 0)) {
            got = file.read(buffer.data() + filled, size - filled);
        }
        return file.error() == QFileDevice::NoError ? filled : -1;
    };
}

// As a writer would store it, as far as that can be told without one.
LibraryProblem TryContent(FileSlot slot, const ContentSource& source)
{
    std::vector<char> buffer(most_looked_at);
    const qint64 size = source(buffer);
    const char* const fault = PictureFault(slot, QByteArray::fromRawData(buffer.data(), std::max<qint64>(size, 0)));
    return fault != nullptr ? LibraryProblem{LibraryFault::BadInput, {}, QString::fromLatin1(fault)} : LibraryProblem{};
}

bool StoreFile(ILibraryWriter& writer, FileSlot slot, SourceFile& source, const ImportOptions& options,
               LibraryProblem& problem)
{
    const CFileHandle opened = OpenSource(source.path, options, problem);
    QFile file;
    if (opened.IsOpen() && file.open(opened.Descriptor(), QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (options.dry_run) {
            problem = TryContent(slot, SourceOf(file));
        } else if (const auto stored = writer.Store(slot, SourceOf(file))) {
            source.content = *stored;
        } else {
            problem = writer.Problem();
        }
    }
    if (file.error() != QFileDevice::NoError) {
        problem = {LibraryFault::ReadFailed, source.path, file.errorString()};
    }
    problem.subject = problem.subject.isEmpty() ? source.path : problem.subject;
    return !problem;
}

bool Advance(const ImportOptions& options, const ImportReport& report, qint64 total, LibraryProblem& problem)
{
    if (options.progress && !options.progress(report.files + report.parts, total)) {
        problem = {LibraryFault::Stopped, {}, {}};
    }
    return !problem;
}

// All content first: nobody sees it before the rows.
bool StoreFiles(ILibraryWriter& writer, const ImportOptions& options, SourceParts& parts, qint64 total,
                ImportReport& report, LibraryProblem& problem)
{
    for (auto& [key, source] : parts) {
        for (auto& [slot, file] : source.files) {
            if (!StoreFile(writer, slot, file, options, problem)) {
                return false;
            }
            ++report.files;
            if (!Advance(options, report, total, problem)) {
                return false;
            }
        }
    }
    return true;
}

bool PutParts(ILibraryWriter& writer, const ImportOptions& options, SourceParts& parts, ImportReport& report,
              LibraryProblem& problem)
{
    auto total = static_cast<qint64>(parts.size());
    for (const auto& [key, source] : parts) {
        total += static_cast<qint64>(source.files.size());
    }
    if (!StoreFiles(writer, options, parts, total, report, problem)) {
        return false;
    }
    for (const auto& [key, source] : parts) {
        const auto folder = writer.MakeFolder(key.first);
        if (folder && key.second.isEmpty()) {
            continue;
        }
        const auto part = folder ? writer.PutPart(*folder, key.second, source.attributes) : std::nullopt;
        bool put = part.has_value();
        for (const auto& [slot, file] : source.files) {
            put = put && (options.dry_run || writer.PutFile(*part, slot, file.content));
        }
        if (!put) {
            problem = writer.Problem();
            return false;
        }
        ++report.parts;
        if (!Advance(options, report, total, problem)) {
            return false;
        }
    }
    return true;
}

} // namespace

CFileHandle OpenSource(const QString& file, const ImportOptions& options, LibraryProblem& problem)
{
    CFileHandle opened =
        CFileHandle::Open(ToUtf8(file), O_RDONLY | O_NONBLOCK | (options.follow_links ? 0 : O_NOFOLLOW));
    struct stat status = {};
    if (!opened.IsOpen()) {
        problem = {LibraryFault::ReadFailed, file, qt_error_string(errno)};
    } else if (fstat(opened.Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) {
        problem = {LibraryFault::ReadFailed, file, QStringLiteral("not a file")};
        return CFileHandle();
    }
    return opened;
}

// By text alone, as the path was put together: the source may be given relative to anything.
std::optional<ImportTarget> TargetOf(const QString& file, const ImportOptions& options, LibraryProblem& problem)
{
    const fs::path path(ToUtf8(file));
    const QString name = FromUtf8(path.filename().string());
    const auto import_name = ParseImportName(name);
    if (!import_name) {
        return std::nullopt;
    }
    const std::string inner = path.lexically_relative(ToUtf8(options.source)).parent_path().string();
    if (inner.find('\\') != std::string::npos) {
        problem = {LibraryFault::NameRefused, FromUtf8(inner), NameFaultText(NameFault::ReservedCharacter)};
        return std::nullopt;
    }
    ImportTarget target{JoinPath(options.target, FromUtf8(inner).replace(u'/', u'\\')), import_name->part.toString(),
                        import_name->slot};
    return CheckSource(target.folder, target.part, problem) ? std::optional(std::move(target)) : std::nullopt;
}

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
    const bool put = PutParts(writer, options, parts, report, problem);
    if (put && !options.dry_run && writer.Commit()) {
        return true;
    }
    if (put && !options.dry_run) {
        problem = writer.Problem();
    }
    writer.Rollback();
    return put && options.dry_run;
}

} // namespace partkeep
