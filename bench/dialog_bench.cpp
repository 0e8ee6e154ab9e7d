// The selection dialog on the sample libraries, as an operator meets it: from the host's call to a dialog that can be
// used, and from a click on a part to its pictures, on the offscreen platform; and what the dialog's own logic takes of
// both, over windows and a browser that do nothing. docs/part-browser.md holds the command and the table.
#include "desktop/pane/browser_pane.h"
#include "desktop/pane/part_browser_factory.h"
#include "desktop/qt_dialog_windows.h"
#include "host/partkeep_read_impl.h"
#include "platform/control.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "resources/resource_ids.h"
#include "samples/sample_library.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/process_values.h"
#include "silent_windows.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>

namespace partkeep {
namespace {

const QString browser_name = QString::number(RES_BROWSER);

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// One folder for everything; the host was on the sample server's brackets the last time.
class CBenchFolder : public IRegistry, public IHiddenControls {
public:
    CBenchFolder()
    {
        QStringList made;
        LibraryProblem problem;
        if (!MakeSampleLibraries(folder_.path(), false, made, problem)) {
            std::abort();
        }
        TheProcessValues().workingFolder = Core() + u"\\";
        TheProcessValues().languageId = 1;
        WriteServers();
    }

    [[nodiscard]] QString Path() const { return folder_.path(); }
    [[nodiscard]] std::u16string Core() const { return CorePath(folder_.path().toStdString()); }
    void WriteServers() const
    {
        std::ofstream(folder_.path().toStdString() + "/kpdservers.ini")
            << "PLATES\r\nBrackets\\L\r\nmetric\r\n-9999\r\n";
    }

    [[nodiscard]] std::optional<std::u16string> ReadValue(RegistryRoot root, std::u16string_view,
                                                          std::u16string_view) const override
    {
        return root == RegistryRoot::LocalMachine ? std::optional(Core()) : std::nullopt;
    }
    std::unique_ptr<IHostedControl> CreateHidden(const ClassId&, std::int32_t, int, int) override { return nullptr; }

private:
    QTemporaryDir folder_{QDir::tempPath() + QStringLiteral("/partkeep-dialog-XXXXXX")};
};

// Runs the real dialog and closes it again.
class CRealRun {
public:
    // `work` gets the pane once the dialog is shown and has nothing left to do. The milliseconds until then.
    double Run(const std::function<void(CBrowserPane&)>& work)
    {
        double usable = -1.0;
        const auto start = Clock::now();
        QTimer idle; // comes when no event, no repaint waits
        QObject::connect(&idle, &QTimer::timeout, &idle, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            auto* pane =
                dialog != nullptr ? dynamic_cast<CBrowserPane*>(dialog->findChild<QWidget*>(browser_name)) : nullptr;
            if (pane == nullptr || !dialog->isVisible() || pane->HasWork()) {
                return;
            }
            idle.stop();
            usable = MillisecondsSince(start);
            work(*pane);
            dialog->close();
        });
        idle.start(0);
        host_.InvokePartkeepMultiSelection(1);
        return usable;
    }

private:
    CBenchFolder folder_;
    CPartBrowserFactory browsers_{CLibraryFolder(folder_.Path()), [] { return 1; },
                                  folder_.Path() + QStringLiteral("/places.json")};
    CQtDialogWindows windows_{&browsers_};
    CSilentMessages messages_;
    PartkeepReadImpl host_{{folder_, messages_, folder_, windows_}};
};

class CTimes {
public:
    void Add(double milliseconds) { times_.push_back(milliseconds); }
    void Report(benchmark::State& state)
    {
        std::sort(times_.begin(), times_.end());
        state.counters["median_ms"] = times_[times_.size() / 2];
        state.counters["p95_ms"] = times_[times_.size() * 95 / 100];
        state.counters["max_ms"] = times_.back();
    }

private:
    std::vector<double> times_;
};

void CallToUsableDialog(benchmark::State& state)
{
    CRealRun run;
    CTimes times;
    for (auto _ : state) {
        times.Add(run.Run([](CBrowserPane&) {}));
    }
    times.Report(state);
}
BENCHMARK(CallToUsableDialog)->Iterations(100)->Unit(benchmark::kMillisecond);

// Until the window has painted what the click brought.
void Click(CBrowserPane& pane, int row)
{
    QWidget* viewport = pane.List().viewport();
    const QPointF place = pane.List().visualRect(pane.Model().index(row, 0)).center();
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, place, viewport->mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(viewport, &event);
    }
    do {
        QCoreApplication::processEvents();
    } while (pane.HasWork());
}

void ClickToPreviews(benchmark::State& state)
{
    CRealRun run;
    CTimes times;
    for (auto _ : state) {
        run.Run([&times](CBrowserPane& pane) {
            for (int row = 0; row < pane.Model().rowCount(); ++row) {
                pane.List().scrollTo(pane.Model().index(row, 0));
                QCoreApplication::processEvents();
                const auto start = Clock::now();
                Click(pane, row);
                times.Add(MillisecondsSince(start));
            }
        });
    }
    times.Report(state);
}
BENCHMARK(ClickToPreviews)->Iterations(20)->Unit(benchmark::kMillisecond);

// Answers yes to everything, at once.
class CWillingBrowser : public IHostedControl {
public:
    explicit CWillingBrowser(std::function<void(std::int32_t)>& sink) : sink_(sink) {}

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind, std::span<const ControlArgument> arguments,
                         ControlType result) override
    {
        if (dispatch_id == static_cast<std::int32_t>(BrowserOperation::GetSelectedPart)) {
            std::strcpy(static_cast<char*>(std::get<void*>(arguments[1].value)), "PLATES");
            std::strcpy(static_cast<char*>(std::get<void*>(arguments[3].value)), "BRK-1");
        }
        switch (result) {
        case ControlType::Text:
            return u"Brackets";
        case ControlType::Int32:
            return std::int32_t{1};
        case ControlType::None:
            return {};
        default:
            return dispatch_id == static_cast<std::int32_t>(BrowserOperation::GetViewStateCount) ? std::int16_t{0}
                                                                                                 : std::int16_t{1};
        }
    }
    void SetEventSink(std::function<void(std::int32_t)> sink) override { sink_ = std::move(sink); }

private:
    std::function<void(std::int32_t)>& sink_;
};

void LogicsShare(benchmark::State& state, bool of_click)
{
    CBenchFolder folder;
    CTimes times;
    std::function<void(std::int32_t)> sink;
    for (auto _ : state) {
        folder.WriteServers();
        auto start = Clock::now();
        CSilentWindows windows;
        windows.makeControl = [&sink] { return std::make_unique<CWillingBrowser>(sink); };
        windows.press = [&](IDialogEvents& events) {
            if (of_click) {
                start = Clock::now();
                sink(static_cast<std::int32_t>(BrowserEvent::Click));
            }
            times.Add(MillisecondsSince(start));
            events.OnCommand(id_cancel);
        };
        CPartkeepReadDlg dialog(windows);
        dialog.installFolder = folder.Core();
        dialog.workingFolder = TheProcessValues().workingFolder;
        dialog.DoModal();
    }
    times.Report(state);
}
BENCHMARK_CAPTURE(LogicsShare, start_up, false)->Iterations(200)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LogicsShare, click, true)->Iterations(200)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
