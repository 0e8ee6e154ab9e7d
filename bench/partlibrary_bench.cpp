// The part library beside `cp`, and beside itself at two sizes. Each copying benchmark runs both sides by turns
// in every iteration and reports the medians and their quotient. Everything lies in one temporary folder.
#include "partlibrary/import/library_import.h"
#include "partlibrary/session/browser_session.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "platform/files.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int parts_per_folder = 100;

void Require(bool done, const LibraryProblem& problem)
{
    if (!done) {
        std::cerr << ProblemText(problem) << std::endl;
        std::exit(1);
    }
}

// No dot in the path, and gone at the end.
class CBenchFolder {
public:
    CBenchFolder() : path_(fs::temp_directory_path() / ("partkeep-bench-" + std::to_string(std::random_device{}())))
    {
        fs::create_directories(path_);
    }
    ~CBenchFolder()
    {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    CBenchFolder(const CBenchFolder&) = delete;
    CBenchFolder& operator=(const CBenchFolder&) = delete;

    // Empty and existing.
    [[nodiscard]] fs::path Fresh(const std::string& name) const
    {
        fs::remove_all(path_ / name);
        fs::create_directories(path_ / name);
        return path_ / name;
    }
    // New every time. What was written before is on the disk then, and nothing was deleted just now: a file system
    // may pass over what has just been freed, and the next run would pay for the last.
    [[nodiscard]] fs::path Next(const std::string& name) const
    {
        static int count = 0;
        const fs::path made = Fresh("targets/" + name + std::to_string(++count));
        sync();
        return made;
    }
    void RemoveTargets() const { fs::remove_all(path_ / "targets"); }
    [[nodiscard]] fs::path Path(const std::string& name) const { return path_ / name; }

private:
    fs::path path_;
};

const CBenchFolder& Folder()
{
    static const CBenchFolder folder;
    return folder;
}

QString Native(const fs::path& path)
{
    return QString::fromStdString(path.string());
}

double Milliseconds(const std::function<void()>& action)
{
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

// A folder of parts with four files each, of sizes spread evenly between the two.
fs::path MakeSource(int parts, int least_kb, int most_kb)
{
    const fs::path source = Folder().Fresh("source");
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::size_t> size(static_cast<std::size_t>(least_kb) * 1024,
                                                    static_cast<std::size_t>(most_kb) * 1024);
    std::vector<std::uint64_t> content(static_cast<std::size_t>(most_kb) * 1024 / 8);
    for (int part = 0; part < parts; ++part) {
        std::generate(content.begin(), content.end(), std::ref(random));
        for (const char* extension : {".iga", ".bmf", ".SY5", ".NCD"}) {
            std::ofstream file(source / ("P" + std::to_string(part) + extension), std::ios::binary);
            file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(size(random)));
        }
    }
    return source;
}

QString MakeEmptyLibrary(const fs::path& path)
{
    const QString file = Native(path) + QStringLiteral(".kpl");
    LibraryProblem problem;
    Require(CSqliteWriter::Create(file, problem), problem);
    return file;
}

void Import(const QString& file, const fs::path& source)
{
    LibraryProblem problem;
    ImportReport report;
    const auto writer = CSqliteWriter::Open(file, problem);
    Require(writer != nullptr && ImportFolder(*writer, {Native(source), {}, {}}, report, problem), problem);
}

void RunCp(const fs::path& source, const fs::path& target)
{
    const std::string command = "cp -r '" + source.string() + "/.' '" + target.string() + "'";
    if (std::system(command.c_str()) != 0) {
        std::exit(1);
    }
}

// Runs both sides in every iteration, in turn first.
void Compare(benchmark::State& state, const std::function<double()>& library, const std::function<double()>& cp)
{
    std::vector<double> library_ms;
    std::vector<double> cp_ms;
    bool library_first = true;
    for (auto _ : state) {
        if (!library_first) {
            cp_ms.push_back(cp());
        }
        library_ms.push_back(library());
        if (library_first) {
            cp_ms.push_back(cp());
        }
        library_first = !library_first;
        state.SetIterationTime(library_ms.back() / 1000);
    }
    state.counters["library_ms"] = Median(library_ms);
    state.counters["cp_ms"] = Median(cp_ms);
    state.counters["times_cp"] = Median(library_ms) / Median(cp_ms);
}

// As the component copies without a machine filter: all that a part has.
void CopyParts(CBrowserSession& session, int parts, const fs::path& target)
{
    session.SetTargetFolder(CorePath(target.string()));
    session.SetDataKind(all_data_kinds);
    for (int part = 0; part < parts; ++part) {
        const std::u16string path = u"\\P" + QString::number(part).toStdU16String();
        Require(session.CopyPartFiles(u"copy", path), session.Problem());
    }
}

// Out of the page cache, as at the first Load of a day. What is written already can always be let go.
void Forget(const fs::path& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 || posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) != 0) {
        std::cerr << "cannot let go of " << path << std::endl;
        std::exit(1);
    }
    close(file);
}

void BM_CopyFilesBesideCp(benchmark::State& state)
{
    const int parts = static_cast<int>(state.range(0));
    const bool cached = state.range(1) != 0;
    const fs::path source = MakeSource(parts, 10, 500);
    fs::remove(Folder().Path("copy.kpl"));
    Import(MakeEmptyLibrary(Folder().Path("copy")), source);
    CBrowserSession session{CLibraryFolder(Native(Folder().Path("")))};
    Require(session.ConnectServer(u"copy"), session.Problem());
    Compare(
        state,
        [&] {
            const fs::path target = Folder().Next("by-library");
            if (!cached) {
                Forget(Folder().Path("copy.kpl"));
            }
            return Milliseconds([&] { CopyParts(session, parts, target); });
        },
        [&] {
            const fs::path target = Folder().Next("by-cp");
            for (const auto& file : fs::directory_iterator(source)) {
                if (!cached) {
                    Forget(file.path());
                }
            }
            return Milliseconds([&] { RunCp(source, target); });
        });
    fs::remove_all(source);
    Folder().RemoveTargets();
}
BENCHMARK(BM_CopyFilesBesideCp)
    ->ArgNames({"parts", "cached"})
    ->Args({256, 1})
    ->Args({256, 0})
    ->Iterations(15)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void BM_ImportBesideCp(benchmark::State& state)
{
    const fs::path source = MakeSource(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                                       static_cast<int>(state.range(2)));
    Compare(
        state,
        [&] {
            const QString file = MakeEmptyLibrary(Folder().Next("import"));
            return Milliseconds([&] { Import(file, source); });
        },
        [&] {
            const fs::path target = Folder().Next("by-cp");
            return Milliseconds([&] { RunCp(source, target); });
        });
    fs::remove_all(source);
    Folder().RemoveTargets();
}
BENCHMARK(BM_ImportBesideCp)
    ->ArgNames({"parts", "least_kb", "most_kb"})
    ->Args({10000, 1, 10})
    ->Args({1000, 10, 500})
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

QString PartName(int part)
{
    return QStringLiteral("BRK-%1-%2").arg(part % 977).arg(part);
}

QString FolderName(int folder)
{
    return QStringLiteral("Plates\\%1").arg(folder);
}

// Parts without files, in folders of a hundred.
const QString& LibraryOfSize(int parts)
{
    static std::map<int, QString> made;
    QString& server = made[parts];
    if (!server.isEmpty()) {
        return server;
    }
    server = QStringLiteral("parts%1").arg(parts);
    LibraryProblem problem;
    const auto writer = CSqliteWriter::Open(MakeEmptyLibrary(Folder().Path(server.toStdString())), problem);
    Require(writer != nullptr && writer->Begin(), problem);
    for (int part = 0; part < parts; ++part) {
        const auto folder = writer->MakeFolder(FolderName(part / parts_per_folder));
        const PartAttributes attributes{part % 300 * 100, QStringLiteral("SPCC"), QStringLiteral("TURRET-30"),
                                        QStringLiteral("bracket %1").arg(part % 1000)};
        Require(folder && writer->PutPart(*folder, PartName(part), attributes), writer->Problem());
    }
    Require(writer->Commit(), writer->Problem());
    return server;
}

void BM_PartByName(benchmark::State& state)
{
    const int parts = static_cast<int>(state.range(0));
    const std::u16string server = LibraryOfSize(parts).toStdU16String();
    CBrowserSession session{CLibraryFolder(Native(Folder().Path("")))};
    Require(session.ConnectServer(server), session.Problem());
    std::mt19937 random(3);
    for (auto _ : state) {
        const int part = static_cast<int>(random() % static_cast<unsigned>(parts));
        const QString path = FolderName(part / parts_per_folder) + u'\\' + PartName(part);
        const auto row = session.ReadPartAttributes(server, path.toStdU16String());
        Require(row.has_value(), session.Problem());
    }
}
BENCHMARK(BM_PartByName)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_ListFolder(benchmark::State& state)
{
    const int parts = static_cast<int>(state.range(0));
    const std::u16string server = LibraryOfSize(parts).toStdU16String();
    CBrowserSession session{CLibraryFolder(Native(Folder().Path("")))};
    Require(session.ConnectServer(server), session.Problem());
    std::mt19937 random(4);
    for (auto _ : state) {
        const int folder = static_cast<int>(random() % static_cast<unsigned>(parts / parts_per_folder));
        session.SetCurrentFolder(FolderName(folder).toStdU16String());
        const auto list = session.Library()->List(session.ListView(), parts_per_folder, nullptr);
        list->Finish();
        Require(list->Rows(0, parts_per_folder).size() == parts_per_folder, session.Library()->Problem());
    }
}
BENCHMARK(BM_ListFolder)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace partkeep

BENCHMARK_MAIN();
