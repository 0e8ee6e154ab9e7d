// What the pane tells its user: the count, the empty list, trouble, and the copy that is under way.
#include "desktop/pane/browser_pane.h"

#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/search_line.h"
#include "desktop/pane/status_line.h"

#include <QDateTime>
#include <QFrame>
#include <QLabel>
#include <QLocale>
#include <QStringList>
#include <QTextDocument>

#include <algorithm>

namespace partkeep {

namespace {

constexpr qint64 copy_line_ms = 40; // a line that changes faster cannot be read

PaneText TextOfFault(LibraryFault fault)
{
    switch (fault) {
    case LibraryFault::NotFound:
        return PaneText::ServerGone;
    case LibraryFault::Busy:
        return PaneText::ServerBusy;
    case LibraryFault::NoAnswer:
        return PaneText::ServerSilent;
    case LibraryFault::Refused:
        return PaneText::ServerBars;
    case LibraryFault::Unfinished:
        return PaneText::ServerUnfinished;
    case LibraryFault::Replaced:
        return PaneText::ServerReplaced;
    case LibraryFault::Damaged:
    case LibraryFault::NotALibrary:
        return PaneText::ServerDamaged;
    case LibraryFault::OtherVersion:
        return PaneText::ServerForeign;
    case LibraryFault::CannotOpen:
        return PaneText::ServerRefused;
    case LibraryFault::NoFolder:
        return PaneText::FolderGone;
    case LibraryFault::NoPart:
        return PaneText::PartMissing;
    case LibraryFault::ReadOnly:
    case LibraryFault::DiskFull:
    case LibraryFault::WriteFailed:
    case LibraryFault::NameRefused:
    case LibraryFault::PathTooLong:
        return PaneText::CopyFailed;
    default:
        return PaneText::OtherTrouble;
    }
}

// The time, with its date where that is not today's.
QString MomentText(const QLocale& locale, const QDateTime& moment)
{
    const bool today = moment.date() == QDate::currentDate();
    return today ? locale.toString(moment.time(), QLocale::ShortFormat) : locale.toString(moment, QLocale::ShortFormat);
}

} // namespace

void CBrowserPane::UpdateTexts()
{
    status_->setText(StatusText());
    list_->SetEmptyText(EmptyText());
    list_->SetFaded(IsAway(ShownProblem().fault) || !AsOfText().isEmpty());
    const QString problem = ProblemText();
    problem_text_->setText(problem);
    problem_text_->setToolTip(Qt::convertFromPlainText(problem)); // a server may say anything
    problem_line_->setAccessibleName(problem);
    if (!list_->Pressed()) {
        problem_line_->setVisible(!problem.isEmpty());
    }
    export_button_->setEnabled(model_->rowCount() > 0);
    search_line_->ShowState();
}

QString CBrowserPane::StatusText() const
{
    if (!note_.isEmpty() || !model_->Started()) {
        return note_;
    }
    const bool growing = !model_->Complete() && !model_->Failed();
    const bool results = session_->ShowsResults();
    const PaneText found = results ? PaneText::ResultCount : PaneText::PartCount;
    const PaneText found_so_far = results ? PaneText::ResultCountSoFar : PaneText::PartCountSoFar;
    QString text = Text(growing ? found_so_far : found).arg(Number(model_->rowCount()));
    if (results && model_->rowCount() > 0) {
        text += QStringLiteral("   ·   ") + Text(PaneText::ResultHelp);
    } else if (!session_->Selection().empty()) {
        text += QStringLiteral("   ·   ") +
                Text(PaneText::SelectedCount).arg(Number(static_cast<qint64>(session_->Selection().size())));
    }
    return text;
}

QString CBrowserPane::EmptyText() const
{
    if (model_->rowCount() > 0 || (model_->Started() && !model_->Complete())) {
        return {};
    }
    if (!session_->LibraryFolder().IsConfigured()) {
        return Text(PaneText::EmptyNoFolder);
    }
    if (session_->Servers().isEmpty() && session_->OtherServers().isEmpty()) {
        const CLibraryFolder& folder = session_->LibraryFolder();
        const bool in_folder = !folder.Path().isEmpty() || folder.Services() == nullptr;
        return Text(PaneText::EmptyNoServers)
            .arg(in_folder ? folder.Path() : folder.Services()->Names().join(QStringLiteral(", ")));
    }
    if (!model_->Started()) {
        return Text(PaneText::EmptyChooseServer);
    }
    const QString search = session_->ListView().search;
    if (!search.trimmed().isEmpty()) {
        const bool elsewhere = session_->SearchesServers() && session_->Scope() == SearchScope::Folder;
        return Text(elsewhere ? PaneText::EmptySearchFolder : PaneText::EmptySearch).arg(search);
    }
    if (!session_->ListView().only.empty()) {
        return Text(PaneText::EmptyNarrowed);
    }
    return Text(session_->CurrentFolder().parts > 0 ? PaneText::EmptyFilter : PaneText::EmptyFolder);
}

// What the session met, and what reading rows met.
LibraryProblem CBrowserPane::ShownProblem() const
{
    const LibraryProblem problem = session_->Problem();
    const CServiceServers* const services = session_->LibraryFolder().Services();
    if (!problem && services != nullptr && session_->CurrentServer().isEmpty()) {
        return services->Problem(); // which is why there is none to choose
    }
    const bool rows_failed =
        model_->Failed() && model_->Library() != nullptr && model_->Library() == session_->Library();
    return problem || !rows_failed ? problem : model_->Library()->Problem();
}

// Of what is at hand while a server is away.
QString CBrowserPane::AsOfText() const
{
    const QDateTime as_of = session_->Library() != nullptr ? session_->Library()->AsOf() : QDateTime();
    return as_of.isValid() ? Text(PaneText::AsOf).arg(MomentText(LocaleOf(settings_.language), as_of)) : QString();
}

// What is no trouble, but less than there could be.
QString CBrowserPane::Remarks() const
{
    const IPartLibrary* const library = session_->Library();
    QStringList remarks;
    if (library != nullptr && library->Refused() > 0) {
        remarks += Text(PaneText::EntriesRefused).arg(Number(library->Refused()));
    }
    if (library != nullptr && library->HasOtherKeys()) {
        remarks += Text(PaneText::ServerSlow).arg(session_->CurrentServer());
    }
    if (library != nullptr && session_->IsTwice()) {
        remarks += Text(PaneText::ServerTwice).arg(session_->CurrentServer());
    }
    if (const QString as_of = AsOfText(); !as_of.isEmpty()) {
        remarks += as_of;
    }
    return remarks.join(u' ');
}

QString CBrowserPane::ProblemText() const
{
    const LibraryProblem problem = ShownProblem();
    if (!problem) {
        return Remarks();
    }
    const PaneText text = TextOfFault(problem.fault);
    const bool of_server = problem.fault == LibraryFault::NotFound && !problem.subject.isEmpty();
    const bool of_part = text == PaneText::CopyFailed;
    const bool of_service = session_->CurrentServer().isEmpty();
    const QString server = of_server    ? ServerOfFile(problem.subject)
                           : of_service ? problem.subject
                                        : session_->CurrentServer();
    QString line = Text(text);
    if (text == PaneText::ServerBars) {
        line = line.arg(server, problem.detail);
    } else if (line.contains(QStringLiteral("%1"))) {
        line = line.arg(of_part ? problem.subject : server);
    }
    if (problem.fault == LibraryFault::CannotOpen && !problem.detail.isEmpty()) {
        line += QStringLiteral(" (%1)").arg(problem.detail);
    }
    const QDateTime since = session_->FailsSince();
    line +=
        since.isValid()
            ? QStringLiteral(" (%1)").arg(Text(PaneText::Since).arg(MomentText(LocaleOf(settings_.language), since)))
            : QString();
    const QString as_of = AsOfText();
    return as_of.isEmpty() ? line : line + u' ' + as_of;
}

// Painted from inside the copy: no event is run, and the next text comes with the next paint.
void CBrowserPane::CopyStarted(const CopyProgress& copy)
{
    RememberPlace();
    CopyProgressed(copy);
}

void CBrowserPane::CopyProgressed(const CopyProgress& copy)
{
    if (copy_shown_.isValid() && copy_shown_.elapsed() < copy_line_ms) {
        return;
    }
    const QLocale locale = LocaleOf(settings_.language);
    status_->setText(Text(PaneText::Copying)
                         .arg(copy.part, Number(static_cast<qint64>(copy.number)), Number(static_cast<qint64>(copy.of)),
                              locale.formattedDataSize(copy.bytes)));
    status_->ShowShare(static_cast<double>(copy.number) / static_cast<double>(std::max<std::size_t>(copy.of, 1)));
    status_->repaint();
    copy_shown_.start();
}

void CBrowserPane::CopyEnded()
{
    status_->setText(StatusText());
    status_->ShowShare(0);
}

} // namespace partkeep
