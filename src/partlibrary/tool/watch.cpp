// Imports what arrives in a folder. A file counts as whole when it has not changed from one look to the next and nobody
// has it open for writing; what stands in the library already is left alone.

#include "partlibrary/import/library_import.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/tool/place_pattern.h"
#include "partlibrary/tool/whole_commands.h"
#include "platform/posix/file_handle.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <thread>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds nap{100}; // as long as a signal may wait

struct FileState {
    std::uintmax_t bytes = 0;
    fs::file_time_type changed;

    friend bool operator==(const FileState&, const FileState&) = default;
};
using FileStates = std::map<QString, FileState>;

// A lease for reading is refused while somebody may write (fcntl(2)); to others than the owner it always is.
bool IsBeingWritten(const QString& path)
{
    const CFileHandle file = CFileHandle::Open(ToUtf8(path), O_RDONLY | O_NONBLOCK);
    const bool refused = file.IsOpen() && fcntl(file.Descriptor(), F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
    return refused;
}

class CWatch {
public:
    CWatch(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
        : library_(library), options_(options),
          output_(output), source_{FromUtf8(options.other), CPlacePattern(FromUtf8(options.folder)).Text(), {}}
    {
        source_.dry_run = options.dry_run;
        source_.follow_links = false; // who may write into the folder is not to have read what the user may read
        source_.progress = output.Progress("files");
    }

    int Run()
    {
        if (LibraryProblem problem; library_.Open(problem) == nullptr) {
            return output_.Fail(problem);
        }
        if (!fs::is_directory(ToUtf8(source_.source))) {
            return output_.Fail({LibraryFault::NoFolder, source_.source, {}});
        }
        std::signal(SIGIO, SIG_IGN); // of who comes to write while a lease is held: it would end the process
        seen_ = Look();
        do {
            Sleep();
            FileStates now = Look();
            Import(Ready(now));
            seen_ = std::move(now);
        } while (!stop_asked && !(options_.once && (done_ == seen_ || !CanWait(trouble_))));
        if (options_.once && trouble_ != LibraryFault::None && !stop_asked) {
            return static_cast<int>(EndOf(trouble_));
        }
        return static_cast<int>(refused_.empty() ? ToolEnd::Done : ToolEnd::Found);
    }

private:
    // Of the library: whether it may pass by itself.
    static bool CanWait(LibraryFault trouble)
    {
        return trouble == LibraryFault::None || trouble == LibraryFault::DiskFull || EndOf(trouble) == ToolEnd::Busy;
    }

    void Sleep() const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(options_.seconds);
        while (!stop_asked && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(nap);
        }
    }

    // A folder or file that cannot be read now may be later, and a folder that is away may come back.
    [[nodiscard]] FileStates Look()
    {
        FileStates states;
        std::error_code error;
        const bool there = fs::is_directory(ToUtf8(source_.source), error);
        if (!there && !away_) {
            static_cast<void>(output_.Fail({LibraryFault::NoFolder, source_.source, {}}));
        }
        away_ = !there;
        fs::recursive_directory_iterator entry(ToUtf8(source_.source), fs::directory_options::skip_permission_denied,
                                               error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            std::error_code gone;
            const FileState state{entry->is_regular_file(gone) ? entry->file_size(gone) : 0,
                                  entry->last_write_time(gone)};
            const QString path = FromUtf8(entry->path().string());
            if (!gone && entry->is_regular_file(gone) && !entry->is_symlink(gone) && ParseImportName(path)) {
                states[path] = state;
            }
        }
        return states;
    }

    [[nodiscard]] QStringList Ready(const FileStates& now)
    {
        std::erase_if(done_, [&now](const auto& known) { return !now.contains(known.first); });
        std::erase_if(refused_, [&now](const QString& known) { return !now.contains(known); });
        QStringList ready;
        for (const auto& [path, state] : now) {
            const auto before = seen_.find(path);
            const auto done = done_.find(path);
            const bool quiet = before != seen_.end() && before->second == state;
            if (quiet && (done == done_.end() || done->second != state) && !IsBeingWritten(path)) {
                ready += path;
                states_[path] = state;
            }
        }
        return ready;
    }

    // Where one of several is refused, the others are found by halves.
    void Import(const QStringList& files)
    {
        LibraryProblem problem;
        if (files.empty() || stop_asked) {
            return;
        }
        if (ImportSome(files, problem)) {
            trouble_ = LibraryFault::None;
            return;
        }
        if (EndOf(problem.fault) != ToolEnd::Refused && problem.fault != LibraryFault::ReadFailed) {
            Trouble(problem); // they are tried again
            return;
        }
        if (files.size() > 1) {
            Import(files.first(files.size() / 2));
            Import(files.sliced(files.size() / 2));
            return;
        }
        static_cast<void>(output_.Fail(problem));
        refused_.insert(files.front());
        done_[files.front()] = states_[files.front()];
    }
    // Of the library: told once, until it has passed.
    void Trouble(const LibraryProblem& problem)
    {
        if (problem.fault != LibraryFault::Stopped && problem.fault != trouble_) {
            static_cast<void>(output_.Fail(problem));
            trouble_ = problem.fault;
        }
    }

    bool ImportSome(const QStringList& files, LibraryProblem& problem)
    {
        problem = {};
        QStringList others = files;
        if (!DropKnown(others, problem)) {
            return false;
        }
        source_.files = others;
        ImportReport report;
        const auto writer = others.empty() ? nullptr : library_.Edit(problem);
        const bool arrived = others.empty() || (writer != nullptr && ImportFolder(*writer, source_, report, problem));
        if (!arrived) {
            return false;
        }
        for (const QString& file : files) {
            done_[file] = states_[file];
            refused_.erase(file);
        }
        if (report.files > 0) {
            output_.Tell("imported",
                         (options_.dry_run ? "would have imported " : "imported ") + std::to_string(report.parts) +
                             " parts with " + std::to_string(report.files) + " files",
                         {{QStringLiteral("parts"), report.parts},
                          {QStringLiteral("files"), report.files},
                          {QStringLiteral("dry_run"), options_.dry_run}});
        }
        return true;
    }

    // Those whose content the library has already.
    bool DropKnown(QStringList& files, LibraryProblem& problem)
    {
        const auto library = library_.Open(problem);
        if (library == nullptr) {
            return false;
        }
        files.removeIf([&](const QString& file) {
            LibraryProblem refused; // told when it is imported
            const auto target = TargetOf(file, source_, refused);
            const auto part = target ? library->FindPart(target->folder, target->part) : std::nullopt;
            const auto known = part ? library->Files(std::array{part->id}) : std::nullopt;
            return known && std::any_of(known->begin(), known->end(), [&](const PartFile& row) {
                       return row.slot == target->slot && row.bytes == QFileInfo(file).size() &&
                              row.hash == HashOf(file);
                   });
        });
        return true;
    }
    [[nodiscard]] QByteArray HashOf(const QString& path) const
    {
        LibraryProblem problem; // told when it is imported
        const CFileHandle opened = OpenSource(path, source_, problem);
        QFile file;
        CContentHash hash;
        QByteArray block;
        if (!opened.IsOpen() || !file.open(opened.Descriptor(), QIODevice::ReadOnly)) {
            return {};
        }
        while (!(block = file.read(1 << 20)).isEmpty()) {
            hash.Add({block.constData(), static_cast<std::size_t>(block.size())});
        }
        return hash.Hash();
    }

    ILibraryAdmin& library_;
    const ToolOptions& options_;
    CToolOutput& output_;
    ImportOptions source_;
    FileStates seen_;   // at the last look
    FileStates done_;   // imported, or refused, in that state
    FileStates states_; // in which they were found ready
    std::set<QString> refused_;
    LibraryFault trouble_ = LibraryFault::None; // of the library, at the last import
    bool away_ = false;                         // the folder is not there
};

} // namespace

int Watch(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return CWatch(library, options, output).Run();
}

} // namespace partkeep
