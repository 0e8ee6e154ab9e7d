// What the pane tells its user: the count, the empty list, trouble, and the copy that is under way.
#include "desktop/pane/browser_pane.h"

#include "desktop/pane/pane_widgets.h"

#include <QFrame>
#include <QLabel>
#include <QLocale>

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

QString Number(qint64 value)
{
    return QLocale(QLocale::English).toString(value);
}

} // namespace

void CBrowserPane::UpdateTexts()
{
    status_->setText(StatusText());
    list_->SetEmptyText(EmptyText());
    const QString problem = ProblemText();
    problem_text_->setText(problem);
    problem_text_->setToolTip(problem);
    problem_line_->setAccessibleName(problem);
    if (!list_->Pressed()) {
        problem_line_->setVisible(!problem.isEmpty());
    }
    export_button_->setEnabled(model_->rowCount() > 0);
}

QString CBrowserPane::StatusText() const
{
    if (!model_->Started()) {
        return {};
    }
    const bool growing = !model_->Complete() && !model_->Failed();
    QString text = Text(growing ? PaneText::PartCountSoFar : PaneText::PartCount).arg(Number(model_->rowCount()));
    if (!session_->Selection().empty()) {
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
    if (folder_.Path().isEmpty()) {
        return Text(PaneText::EmptyNoFolder);
    }
    if (session_->Servers().isEmpty() && session_->OtherServers().isEmpty()) {
        return Text(PaneText::EmptyNoServers).arg(folder_.Path());
    }
    if (!model_->Started()) {
        return Text(PaneText::EmptyChooseServer);
    }
    const QString search = session_->ListView().search;
    if (!search.trimmed().isEmpty()) {
        return Text(PaneText::EmptySearch).arg(search);
    }
    return Text(session_->CurrentFolder().parts > 0 ? PaneText::EmptyFilter : PaneText::EmptyFolder);
}

// What the session met, what reading rows met, and a library whose file has gone while it was open.
LibraryProblem CBrowserPane::ShownProblem() const
{
    if (session_->Problem()) {
        return session_->Problem();
    }
    if (model_->Failed() && shown_library_ != nullptr && shown_library_ == session_->Library()) {
        return shown_library_->Problem();
    }
    return library_gone_ ? LibraryProblem{LibraryFault::NotFound, session_->CurrentServer(), {}} : LibraryProblem{};
}

QString CBrowserPane::ProblemText() const
{
    const LibraryProblem problem = ShownProblem();
    if (!problem) {
        return {};
    }
    const PaneText text = TextOfFault(problem.fault);
    const bool of_server = problem.fault == LibraryFault::NotFound && !problem.subject.isEmpty();
    const bool of_part = text == PaneText::CopyFailed;
    const QString server = of_server ? ServerOfFile(problem.subject) : session_->CurrentServer();
    const QString line = Text(text);
    return line.contains(QStringLiteral("%1")) ? line.arg(of_part ? problem.subject : server) : line;
}

// Painted from inside the copy: no event is run, and the next text comes with the next paint. The pictures of a part
// that the user has just clicked come as copies too, and would only flicker.
void CBrowserPane::CopyStarted(const QString& part)
{
    if (actions_ > 0 || (copy_shown_.isValid() && copy_shown_.elapsed() < copy_line_ms)) {
        return;
    }
    status_->setText(Text(PaneText::Copying).arg(part));
    status_->repaint();
    copy_shown_.start();
}

void CBrowserPane::CopyEnded()
{
    if (actions_ == 0) {
        status_->setText(StatusText());
    }
}

} // namespace partkeep
