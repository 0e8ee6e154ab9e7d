// The part browser's pane in folders of 10,000 and of 1,000,000 parts, as an operator meets it: time from a key or a
// click to painted rows, on the offscreen platform. Each benchmark reports the 95th percentile and the slowest, in
// milliseconds. The library takes minutes to fill; it stays in the temporary folder for the next run.
#include "desktop/pane/browser_pane.h"
#include "desktop/pane/pane_widgets.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "tests/desktop/own_child.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <malloc.h>
#include <random>
#include <vector>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int small_folder = 10'000;
constexpr int large_folder = 1'000'000;

void Require(bool done, const LibraryProblem& problem)
{
    if (!done) {
        std::cerr << ProblemText(problem) << std::endl;
        std::exit(1);
    }
}

QString LibraryFolder()
{
    return QString::fromStdString((fs::temp_directory_path() / "partkeep-pane-bench").string());
}

QString FolderName(int parts)
{
    return QStringLiteral("parts%1").arg(parts);
}

// Names in the order of import, as a shop numbers them, with attributes that repeat.
void FillFolder(ILibraryWriter& writer, int parts)
{
    static const char* materials[] = {"SPCC", "SUS304", "AL5052", "SECC", "SPHC", "Cu"};
    const auto folder = writer.MakeFolder(FolderName(parts));
    Require(folder.has_value(), writer.Problem());
    for (int i = 0; i < parts; ++i) {
        const PartAttributes attributes{8000 + i % 40 * 1000, QString::fromLatin1(materials[i % 6]),
                                        QStringLiteral("EM-%1").arg(i % 5),
                                        QStringLiteral("order %1 sheet %2").arg(i % 9973).arg(i % 31)};
        const auto part = writer.PutPart(*folder, QStringLiteral("BRK-%1").arg(i), attributes);
        Require(part && writer.PutFile(*part, FileSlot::Iga, QByteArray("x")), writer.Problem());
    }
}

void MakeLibrary()
{
    const QString file = LibraryFolder() + QStringLiteral("/BENCH.kpl");
    LibraryProblem problem;
    if (CSqliteLibrary::Open(file, problem) != nullptr) {
        return;
    }
    fs::create_directories(LibraryFolder().toStdString());
    const QString unfinished = LibraryFolder() + QStringLiteral("/unfinished");
    fs::remove(unfinished.toStdString());
    Require(CSqliteWriter::Create(unfinished, problem), problem);
    {
        const auto writer = CSqliteWriter::Open(unfinished, problem);
        Require(writer != nullptr, problem);
        Require(writer->Begin(), writer->Problem());
        FillFolder(*writer, small_folder);
        FillFolder(*writer, large_folder);
        Require(writer->Commit(), writer->Problem());
    }
    fs::rename(unfinished.toStdString(), file.toStdString());
}

class CShownPane {
public:
    CShownPane()
        : session_(std::make_shared<CBrowserSession>(CLibraryFolder(LibraryFolder()))), pane_(session_, {}, nullptr)
    {
        pane_.resize(802, 330);
        pane_.show();
        session_->SetPartFilter(part_data_kind);
        session_->SetServerList({});
        session_->ConnectServer(u"BENCH");
        Settle();
    }

    void Open(int parts)
    {
        session_->Go(QStringLiteral("BENCH"), FolderName(parts));
        FirstRows();
    }
    void Settle()
    {
        do {
            QCoreApplication::processEvents();
        } while (pane_.HasWork());
    }
    // Until the list shows rows of what was asked for, or is known to have none.
    void FirstRows()
    {
        while (Waiting()) {
            QCoreApplication::processEvents();
        }
        pane_.List().viewport()->repaint();
    }
    void Press(int key, const QString& text = {})
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&Search(), &event);
    }
    [[nodiscard]] CSearchBox& Search() { return OwnChild<CSearchBox>(pane_); }
    [[nodiscard]] CBrowserPane& Pane() { return pane_; }
    [[nodiscard]] CBrowserSession& Session() { return *session_; }

private:
    [[nodiscard]] bool Waiting()
    {
        const CPartListModel& model = pane_.Model();
        return session_->ListView().search != Search().text() || (model.rowCount() == 0 && !model.Complete());
    }

    std::shared_ptr<CBrowserSession> session_;
    CBrowserPane pane_;
};

class CTimes {
public:
    template <typename Action>
    void Measure(const Action& action)
    {
        const auto start = std::chrono::steady_clock::now();
        action();
        times_.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    void Report(benchmark::State& state, const std::string& name)
    {
        std::sort(times_.begin(), times_.end());
        state.counters[name + "_p95_ms"] = times_[times_.size() * 95 / 100];
        state.counters[name + "_max_ms"] = times_.back();
    }

private:
    std::vector<double> times_;
};

const char* const typed_texts[] = {"BRK-99",   "brk", "7",       "sus304 77",   "0000",  "order 123",
                                   "BRK-9999", "xyz", "sheet 3", "al5052 em-3", "12345", "k-5"};

// Each key of each text, and the key that takes it away again. `hurried`: the next key comes while the list is
// still being scanned for the last one.
void Keys(benchmark::State& state, bool hurried, SearchScope scope = SearchScope::Folder)
{
    CShownPane pane;
    pane.Session().SearchIn(scope);
    pane.Open(static_cast<int>(state.range(0)));
    pane.Settle();
    CTimes echo;
    CTimes rows;
    // A whole server is still being searched when the next key comes, in practice; to its end it takes seconds.
    const auto settle = [&] { scope == SearchScope::Folder ? pane.Settle() : void(); };
    for (auto _ : state) {
        for (const char* text : typed_texts) {
            for (const QChar letter : QString::fromLatin1(text)) {
                echo.Measure([&] {
                    if (hurried) {
                        QCoreApplication::processEvents(); // the slice that the key has to wait for
                    }
                    pane.Press(Qt::Key_unknown, letter);
                });
                if (hurried) {
                    continue;
                }
                rows.Measure([&] { pane.FirstRows(); });
                settle();
            }
            pane.Search().clear();
            pane.FirstRows();
            settle();
        }
    }
    echo.Report(state, "echo");
    if (!hurried) {
        rows.Report(state, "rows");
    }
}

void KeyInSearch(benchmark::State& state)
{
    Keys(state, false);
}
BENCHMARK(KeyInSearch)->Arg(small_folder)->Arg(large_folder)->Iterations(3)->Unit(benchmark::kMillisecond);

void HurriedKeys(benchmark::State& state)
{
    Keys(state, true);
}
BENCHMARK(HurriedKeys)->Arg(small_folder)->Arg(large_folder)->Iterations(3)->Unit(benchmark::kMillisecond);

// In all folders, whichever is open.
void KeyInWholeServer(benchmark::State& state)
{
    Keys(state, false, SearchScope::Server);
}
BENCHMARK(KeyInWholeServer)->Arg(small_folder)->Iterations(1)->Unit(benchmark::kMillisecond);

void HurriedKeysInWholeServer(benchmark::State& state)
{
    Keys(state, true, SearchScope::Server);
}
BENCHMARK(HurriedKeysInWholeServer)->Arg(small_folder)->Iterations(1)->Unit(benchmark::kMillisecond);

void KeyWithASelectedPart(benchmark::State& state)
{
    CShownPane pane;
    pane.Open(static_cast<int>(state.range(0)));
    pane.Settle();
    CTimes rows;
    for (auto _ : state) {
        for (const char* text : typed_texts) {
            pane.Session().Select(pane.Pane().Model().Ids(0, 1));
            for (const QChar letter : QString::fromLatin1(text)) {
                rows.Measure([&] {
                    pane.Press(Qt::Key_unknown, letter);
                    pane.FirstRows();
                });
                pane.Settle();
            }
            pane.Search().clear();
            pane.Settle();
        }
    }
    rows.Report(state, "rows");
}
BENCHMARK(KeyWithASelectedPart)->Arg(small_folder)->Arg(large_folder)->Iterations(1)->Unit(benchmark::kMillisecond);

void ChooseFolder(benchmark::State& state)
{
    const int parts = static_cast<int>(state.range(0));
    CShownPane pane;
    CTimes first;
    CTimes whole;
    for (auto _ : state) {
        pane.Session().Go(QStringLiteral("BENCH"), {});
        pane.Settle();
        first.Measure([&] { pane.Open(parts); });
        whole.Measure([&] { pane.Settle(); });
    }
    first.Report(state, "first_rows");
    whole.Report(state, "count_known");
}
BENCHMARK(ChooseFolder)->Arg(small_folder)->Arg(large_folder)->Iterations(20)->Unit(benchmark::kMillisecond);

void SortByEachColumn(benchmark::State& state)
{
    CShownPane pane;
    pane.Open(static_cast<int>(state.range(0)));
    CTimes first;
    for (auto _ : state) {
        for (int column = 0; column < part_columns; ++column) {
            for (const bool descending : {false, true}) {
                first.Measure([&] {
                    pane.Session().SortBy(static_cast<PartColumn>(column), descending);
                    pane.FirstRows();
                });
            }
        }
    }
    first.Report(state, "first_rows");
}
BENCHMARK(SortByEachColumn)->Arg(small_folder)->Arg(large_folder)->Iterations(3)->Unit(benchmark::kMillisecond);

void JumpAnywhere(benchmark::State& state)
{
    CShownPane pane;
    pane.Open(static_cast<int>(state.range(0)));
    pane.Settle();
    QScrollBar& bar = *pane.Pane().List().verticalScrollBar();
    std::mt19937 random(1);
    std::uniform_int_distribution<int> place(0, bar.maximum());
    CTimes jump;
    for (auto _ : state) {
        bar.setValue(place(random));
        jump.Measure([&] { pane.Pane().List().viewport()->repaint(); });
    }
    jump.Report(state, "rows");
}
BENCHMARK(JumpAnywhere)->Arg(small_folder)->Arg(large_folder)->Iterations(200)->Unit(benchmark::kMillisecond);

void SelectAll(benchmark::State& state)
{
    CShownPane pane;
    pane.Open(static_cast<int>(state.range(0)));
    pane.Settle();
    for (auto _ : state) {
        pane.Session().SelectAllParts(1);
        pane.Pane().List().viewport()->repaint();
    }
    state.counters["selected"] = pane.Session().GetSelectedPartCount();
}
BENCHMARK(SelectAll)->Arg(small_folder)->Arg(large_folder)->Iterations(3)->Unit(benchmark::kMillisecond);

// What the process holds after a folder was scanned and looked at all over, with the database's own cache held small.
void Memory(benchmark::State& state)
{
    CShownPane pane;
    dynamic_cast<CSqliteLibrary&>(*pane.Session().Library()).Connection().StreamContent(true);
    const auto held = [] {
        const struct mallinfo2 info = mallinfo2();
        return static_cast<double>(info.uordblks + info.hblkhd);
    };
    const double before = held();
    for (auto _ : state) {
        pane.Open(static_cast<int>(state.range(0)));
        pane.Settle();
        QScrollBar& bar = *pane.Pane().List().verticalScrollBar();
        for (int place = 0; place < 1000; ++place) {
            bar.setValue(static_cast<int>(qint64{bar.maximum()} * place / 1000));
            pane.Pane().List().viewport()->repaint();
        }
    }
    state.counters["held_kb"] = (held() - before) / 1024;
}
BENCHMARK(Memory)->Arg(small_folder)->Arg(large_folder)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    partkeep::MakeLibrary();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
