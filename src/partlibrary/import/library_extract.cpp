#include "partlibrary/import/library_extract.h"

#include "partlibrary/import/attribute_table.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/library/part_library.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <bit>
#include <filesystem>
#include <numeric>
#include <system_error>
#include <vector>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

// Gathers what is extracted beside its place, and clears it away again unless it has been put there.
class CExtraction {
public:
    CExtraction(IPartLibrary& library, const ExtractOptions& options, ExtractReport& report, LibraryProblem& problem)
        : library_(library), options_(options), report_(report), problem_(problem),
          mark_(u'~' + QString::number(QRandomGenerator::system()->generate64(), 16)),
          folder_(ToUtf8(options.target + mark_)), table_(options.table + mark_)
    {
    }
    ~CExtraction()
    {
        std::error_code ignored;
        if (begun_) {
            fs::remove_all(folder_, ignored);
            fs::remove(ToUtf8(table_.fileName()), ignored); // QFile's own leaves a file that a full disk does not take
        }
    }
    CExtraction(const CExtraction&) = delete;
    CExtraction& operator=(const CExtraction&) = delete;

    bool Begin()
    {
        std::error_code error;
        const fs::path target(ToUtf8(options_.target));
        if (fs::exists(fs::symlink_status(target)) && !(fs::is_directory(target) && fs::is_empty(target, error))) {
            return Refuse(LibraryFault::AlreadyThere, options_.target, QStringLiteral("a folder with something in it"));
        }
        if (QFileInfo::exists(options_.table)) {
            return Refuse(LibraryFault::AlreadyThere, options_.table);
        }
        if (options_.dry_run) {
            return true;
        }
        begun_ = fs::create_directory(folder_, error);
        if (!begun_) {
            return Refuse(LibraryFault::WriteFailed, options_.target, FromUtf8(error.message()));
        }
        return (table_.open(QIODevice::WriteOnly | QIODevice::NewOnly) || RefuseTable()) &&
               PutLine({QStringLiteral("folder"), QStringLiteral("part"), QStringLiteral("thickness"),
                        QStringLiteral("material"), QStringLiteral("machine"), QStringLiteral("comment"),
                        QStringLiteral("files")});
    }

    void Expect(const std::vector<FolderRow>& folders)
    {
        total_ = std::accumulate(folders.begin(), folders.end(), qint64{0},
                                 [](qint64 sum, const FolderRow& folder) { return sum + folder.parts; });
    }
    bool Folder(const FolderRow& folder)
    {
        if (folder.parts == 0 && !folder.has_folders && !Inside(folder.path).isEmpty()) {
            return options_.dry_run || EmptyFolder(Inside(folder.path));
        }
        const auto part = [&](const PartRow& row) { return Part(Inside(folder.path), row); };
        return ForEachPart(library_, folder.id, part) || (!problem_ && Refuse(library_.Problem()));
    }

    bool Finish()
    {
        if (options_.dry_run) {
            return true;
        }
        if (!table_.flush()) {
            return RefuseTable();
        }
        table_.close();
        if (!table_.rename(options_.table)) { // first, since one file is easily taken back
            return RefuseTable();
        }
        std::error_code error;
        fs::rename(folder_, fs::path(ToUtf8(options_.target)), error);
        if (error) {
            return Refuse(LibraryFault::WriteFailed, options_.target, FromUtf8(error.message()));
        }
        begun_ = false;
        return true;
    }

    bool Refuse(LibraryProblem problem)
    {
        problem_ = std::move(problem);
        return false;
    }

private:
    bool Refuse(LibraryFault fault, const QString& subject, const QString& detail = {})
    {
        return Refuse(LibraryProblem{fault, subject, detail});
    }
    bool RefuseTable() { return Refuse(LibraryFault::WriteFailed, options_.table, table_.errorString()); }
    bool PutLine(const QStringList& fields)
    {
        const std::string line = TableLine(fields);
        return table_.write(line.data(), static_cast<qint64>(line.size())) >= 0 || RefuseTable();
    }

    [[nodiscard]] QString Inside(const QString& path) const
    {
        return path == options_.folder     ? QString()
               : options_.folder.isEmpty() ? path
                                           : path.sliced(options_.folder.size() + 1);
    }

    bool EmptyFolder(const QString& inside)
    {
        MakeFolder(inside);
        return PutLine({inside, {}, {}, {}, {}, {}, {}});
    }
    bool Part(const QString& inside, const PartRow& part)
    {
        ++report_.parts;
        if (options_.progress && !options_.progress(report_.parts, total_)) {
            return Refuse(LibraryFault::Stopped, {});
        }
        if (options_.dry_run) {
            return Count(part);
        }
        return CopyFiles(inside, part) &&
               PutLine({inside, part.name, QString::number(part.thickness / 10000.0, 'f', 4), part.material,
                        part.machine, part.comment, QString::number(std::popcount(part.slots))});
    }
    bool Count(const PartRow& part)
    {
        const auto files = library_.Files(std::array{part.id});
        if (!files) {
            return Refuse(library_.Problem());
        }
        for (const PartFile& file : *files) {
            ++report_.files;
            report_.bytes += file.bytes;
        }
        return true;
    }

    // Where that fails, the first file in it tells why.
    fs::path MakeFolder(const QString& inside)
    {
        std::error_code ignored;
        fs::path folder = folder_ / ToUtf8(QString(inside).replace(u'\\', u'/'));
        if (made_ != folder) {
            fs::create_directories(folder, ignored);
            made_ = folder;
        }
        return folder;
    }

    bool CopyFiles(const QString& inside, const PartRow& part)
    {
        const fs::path folder = MakeFolder(inside);
        QFile file;
        const auto sink = [&](FileSlot slot, std::span<const char> block) {
            const QString path = FromUtf8((folder / ToUtf8(part.name + FromWide(KindOf(slot).import_end))).string());
            const auto failed = [&] { // told by the name that the folder is to have
                return LibraryProblem{LibraryFault::WriteFailed, QString(path).remove(mark_), file.errorString()};
            };
            if (!file.isOpen() || file.fileName() != path) {
                file.close();
                file.setFileName(path);
                ++report_.files;
                if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
                    return failed();
                }
            }
            const auto size = static_cast<qint64>(block.size());
            report_.bytes += size;
            return file.write(block.data(), size) == size ? LibraryProblem{} : failed();
        };
        return library_.CopyFiles(part.id, part.slots, sink) || Refuse(library_.Problem());
    }

    IPartLibrary& library_;
    const ExtractOptions& options_;
    ExtractReport& report_;
    LibraryProblem& problem_;
    QString mark_;
    fs::path folder_;
    QFile table_;
    fs::path made_;
    qint64 total_ = 0;
    bool begun_ = false;
};

} // namespace

bool ExtractLibrary(IPartLibrary& library, const ExtractOptions& options, ExtractReport& report,
                    LibraryProblem& problem)
{
    CExtraction extraction(library, options, report, problem);
    const auto before = library.Revision();
    const auto folders = before && extraction.Begin() ? AllFolders(library, options.folder) : std::nullopt;
    if (!folders) {
        return !problem && extraction.Refuse(library.Problem());
    }
    extraction.Expect(*folders);
    if (!std::all_of(folders->begin(), folders->end(), [&](const FolderRow& row) { return extraction.Folder(row); })) {
        return false;
    }
    if (library.Revision() != before) {
        return extraction.Refuse({LibraryFault::Busy, options.target,
                                  QStringLiteral("the library was changed meanwhile: extract from a backup")});
    }
    return extraction.Finish();
}

} // namespace partkeep
