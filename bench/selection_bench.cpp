// A Load of the selection dialog: its own share, over a browser that does nothing, and the whole of it from a part
// library beside `cp` of the same files. docs/selection-run.md holds the command and the table.
#include "partlibrary/session/session_control.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "platform/files.h"
#include "platform/text.h"
#include "resources/resource_ids.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/process_values.h"
#include "silent_windows.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int library_parts = 256;

std::string PartName(int number)
{
    return "P" + std::to_string(number);
}

// The folders of one benchmark; no dot in their paths, which would switch the clearing of old copies off.
class CBenchRun {
public:
    CBenchRun() : path_(fs::temp_directory_path() / ("partkeep-bench-" + std::to_string(std::random_device{}())))
    {
        for (const char* name : {"Install", "Work", "Libraries"}) {
            fs::create_directories(path_ / name);
        }
        TheProcessValues().workingFolder = CorePath(Path("Work").string()) + u"\\";
    }
    ~CBenchRun()
    {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    CBenchRun(const CBenchRun&) = delete;
    CBenchRun& operator=(const CBenchRun&) = delete;

    [[nodiscard]] fs::path Path(const std::string& name) const { return path_ / name; }

    // Milliseconds of the press of Load alone; negative unless `parts` records came of it.
    double Load(const std::function<std::unique_ptr<IHostedControl>()>& make_control,
                const std::function<void()>& before, std::size_t parts)
    {
        double milliseconds = 0.0;
        CSilentWindows windows;
        windows.makeControl = make_control;
        windows.press = [&](IDialogEvents& events) {
            before();
            const auto start = std::chrono::steady_clock::now();
            events.OnCommand(RES_LOAD);
            milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        };
        CPartkeepReadDlg dialog(windows);
        dialog.installFolder = CorePath(Path("Install").string());
        dialog.workingFolder = TheProcessValues().workingFolder;
        dialog.multiSelection = true;
        const bool loaded = dialog.DoModal() == id_ok && dialog.resultParts.size() == parts;
        return loaded && windows.messages.shown == 0 ? milliseconds : -1.0;
    }

private:
    fs::path path_;
};

// Knows its selection and nothing else.
class CIdleBrowser : public IHostedControl {
public:
    explicit CIdleBrowser(int parts) : parts_(parts) {}

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind, std::span<const ControlArgument> arguments,
                         ControlType) override
    {
        switch (static_cast<BrowserOperation>(dispatch_id)) {
        case BrowserOperation::GetSelectedPartCount:
            return parts_;
        case BrowserOperation::GetSelectedPart:
            std::strcpy(static_cast<char*>(std::get<void*>(arguments[3].value)),
                        PartName(std::get<std::int16_t>(arguments[0].value)).c_str());
            return std::int32_t{1};
        default:
            return {};
        }
    }
    void SetEventSink(std::function<void(std::int32_t)>) override {}

private:
    std::int32_t parts_;
};

// The staging folder holds one file of each part, which clearing leaves, and strangers up to the given number.
void OwnShare(benchmark::State& state)
{
    const int parts = static_cast<int>(state.range(0));
    const int files = static_cast<int>(state.range(1));
    CBenchRun run;
    const fs::path staging = run.Path("Work");
    for (int number = 0; number < std::max(files, parts); ++number) {
        std::ofstream(staging / (number < parts ? PartName(number) + ".SY5" : "Q" + std::to_string(number) + ".iga"));
    }
    // Without server and folder the staging folder is the working folder itself.
    for (auto _ : state) {
        const double milliseconds =
            run.Load([parts] { return std::make_unique<CIdleBrowser>(parts); }, [] {}, static_cast<std::size_t>(parts));
        if (milliseconds < 0.0) {
            state.SkipWithError("not all parts loaded");
            return;
        }
        state.SetIterationTime(milliseconds / 1000.0);
        state.counters["ms_per_part"] = milliseconds / parts;
    }
}
BENCHMARK(OwnShare)
    ->ArgNames({"parts", "files"})
    ->ArgsProduct({{16, 64, 256}, {0, 10000}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void Require(bool done, const LibraryProblem& problem)
{
    if (!done) {
        std::cerr << ProblemText(problem) << std::endl;
        std::exit(1);
    }
}

// Parts with a main file and machine data, and the same files in a folder for `cp`.
void MakeLibrary(const CBenchRun& run)
{
    const QString file = QString::fromStdString(run.Path("Libraries/SRV1.kpl").string());
    LibraryProblem problem;
    Require(CSqliteWriter::Create(file, problem), problem);
    const auto writer = CSqliteWriter::Open(file, problem);
    Require(writer != nullptr && writer->Begin(), problem);
    const auto folder = writer->MakeFolder(QStringLiteral("F"));
    fs::create_directories(run.Path("Files"));
    std::minstd_rand random(1);
    for (int number = 0; number < library_parts; ++number) {
        const std::string name = PartName(number);
        const auto part = writer->PutPart(*folder, QString::fromStdString(name), PartAttributes{15000, {}, {}, {}});
        for (const FileSlot slot : {FileSlot::Iga, FileSlot::Bmf}) {
            QByteArray content(static_cast<qsizetype>(5000 + random() % 55000), '\0');
            std::generate(content.begin(), content.end(), [&random] { return static_cast<char>(random() % 256); });
            Require(part && writer->PutFile(*part, slot, content), writer->Problem());
            const QString extension = QString::fromUtf16(KindOf(slot).extension);
            std::ofstream(run.Path("Files") / (name + extension.toStdString()), std::ios::binary)
                .write(content.data(), content.size());
        }
    }
    Require(writer->Commit(), writer->Problem());
}

double MedianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Both sides by turns into a folder that is not there yet. `first` false: over the copies of the turn before.
void LoadBesideCp(benchmark::State& state, bool first)
{
    CBenchRun run;
    MakeLibrary(run);
    std::vector<double> ours;
    std::vector<double> theirs;
    const fs::path target = run.Path("Copied");
    const std::string command = "cp -r " + run.Path("Files").string() + "/. " + target.string();
    for (auto _ : state) {
        if (first) {
            fs::remove_all(run.Path("Work/SRV1F"));
            fs::remove_all(target);
        }
        std::shared_ptr<CBrowserSession> session;
        ours.push_back(run.Load(
            [&] {
                session = std::make_shared<CBrowserSession>(
                    CLibraryFolder(QString::fromStdString(run.Path("Libraries").string())));
                return std::make_unique<CSessionControl>(session);
            },
            [&] {
                session->Go(QStringLiteral("SRV1"), QStringLiteral("F"));
                session->Select(session->Library()->Ids(session->ListView()).value());
            },
            library_parts));
        const auto start = std::chrono::steady_clock::now();
        const int failed = std::system(command.c_str());
        theirs.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
        if (ours.back() < 0.0 || failed != 0) {
            state.SkipWithError("not all parts loaded");
            return;
        }
        state.SetIterationTime(ours.back() / 1000.0);
    }
    state.counters["ours_ms"] = MedianOf(ours);
    state.counters["cp_ms"] = MedianOf(theirs);
    state.counters["times_cp"] = MedianOf(ours) / MedianOf(theirs);
}
BENCHMARK_CAPTURE(LoadBesideCp, new_folder, true)->Iterations(15)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadBesideCp, over_old_copies, false)->Iterations(15)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace partkeep

BENCHMARK_MAIN();
