#include "partlibrary/tool/tool_output.h"

#include "partlibrary/library/library_text.h"

#include <QJsonDocument>

#include <iomanip>
#include <ostream>

namespace partkeep {

std::atomic<bool> stop_asked{false};

namespace {

constexpr std::chrono::milliseconds progress_pause{250};

const char* EventOfEnd(ToolEnd end)
{
    static constexpr const char* names[] = {"done", "found",   "command-line", "refused", "not-there",
                                            "busy", "damaged", "system",       "stopped"};
    return names[static_cast<int>(end)];
}

// JSON may hold all control characters but the first 32 as they are: a terminal that shows it would obey them.
QByteArray HarmlessJson(const QJsonObject& fields)
{
    const QByteArray text = QJsonDocument(fields).toJson(QJsonDocument::Compact);
    QByteArray harmless;
    qsizetype kept = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const qsizetype length = byte == 0x7F ? 1 : byte == 0xC2 ? 2 : byte == 0xE2 ? 3 : 0;
        const QString unit =
            length > 0 ? FromUtf8({text.constData() + at, static_cast<std::size_t>(length)}) : QString();
        if (!unit.isEmpty() && IsControlOfTerminal(unit.front())) {
            harmless += text.sliced(kept, at - kept);
            harmless += "\\u" + QByteArray::number(unit.front().unicode(), 16).rightJustified(4, '0');
            kept = at + length;
        }
    }
    return kept == 0 ? text : harmless + text.sliced(kept);
}

} // namespace

ToolEnd EndOf(LibraryFault fault)
{
    switch (fault) {
    case LibraryFault::None:
        return ToolEnd::Done;
    case LibraryFault::AlreadyThere:
    case LibraryFault::NameRefused:
    case LibraryFault::PathTooLong:
    case LibraryFault::BadInput:
        return ToolEnd::Refused;
    case LibraryFault::NotFound:
    case LibraryFault::NoFolder:
    case LibraryFault::NoPart:
        return ToolEnd::NotThere;
    case LibraryFault::Busy:
    case LibraryFault::NoAnswer:
    case LibraryFault::Replaced:
        return ToolEnd::Busy;
    case LibraryFault::NotALibrary:
    case LibraryFault::OtherVersion:
    case LibraryFault::Damaged:
    case LibraryFault::Unfinished:
        return ToolEnd::Damaged;
    case LibraryFault::Stopped:
        return ToolEnd::Stopped;
    case LibraryFault::CannotOpen:
    case LibraryFault::Refused:
    case LibraryFault::ReadOnly:
    case LibraryFault::DiskFull:
    case LibraryFault::ReadFailed:
    case LibraryFault::WriteFailed:
    case LibraryFault::NoMemory:
    case LibraryFault::Failed:
        break;
    }
    return ToolEnd::System;
}

void CToolOutput::Tell(const char* event, const std::string& line, QJsonObject fields)
{
    ClearProgress();
    if (!json_) {
        streams_.out << line << '\n';
        return;
    }
    fields[QLatin1String("event")] = QLatin1String(event);
    const QByteArray object = HarmlessJson(fields);
    streams_.out.write(object.constData(), object.size()) << '\n';
}

void CToolOutput::Warn(const char* event, const QString& text, QJsonObject fields)
{
    if (json_) {
        fields[QLatin1String("text")] = text;
        Tell(event, {}, std::move(fields));
        return;
    }
    ClearProgress();
    streams_.err << "partkeep-library: " << Printable(text) << '\n';
}

int CToolOutput::Fail(const LibraryProblem& problem)
{
    return End(EndOf(problem.fault), FromUtf8(ProblemText(problem)), problem.subject);
}

int CToolOutput::EndWithout(qint64 refused)
{
    if (refused == 0) {
        return static_cast<int>(ToolEnd::Done);
    }
    Warn("warning", QStringLiteral("%1 folders or parts with names that are refused").arg(refused), {});
    return static_cast<int>(ToolEnd::Found);
}

int CToolOutput::Misunderstand(const QString& text)
{
    return End(ToolEnd::CommandLine, text + QStringLiteral("; --help tells all"), {});
}

int CToolOutput::End(ToolEnd end, const QString& text, const QString& subject)
{
    Warn("error", text,
         {{QStringLiteral("reason"), QLatin1String(EventOfEnd(end))}, {QStringLiteral("subject"), subject}});
    return static_cast<int>(end);
}

WorkProgress CToolOutput::Progress(const char* unit)
{
    return [this, unit, start = Start()](qint64 done, qint64 total) mutable {
        if (streams_.watched) {
            if (total != start.total || done < start.done) { // what went before tells nothing of this
                start = {done, total, Clock::now()};
            }
            if (Clock::now() - shown_at_ >= progress_pause) {
                ShowProgress(unit, done, start);
            }
        }
        return !stop_asked;
    };
}

void CToolOutput::ShowProgress(const char* unit, qint64 done, const Start& start)
{
    shown_at_ = Clock::now();
    progress_shown_ = true;
    streams_.err << "\r\x1B[K" << done;
    if (start.total <= 0 || done > start.total) {
        streams_.err << ' ' << unit;
    } else {
        streams_.err << " of " << start.total << ' ' << unit << "  " << done * 100 / start.total << " %";
        if (done > start.done) {
            const std::chrono::duration<double> spent = shown_at_ - start.at;
            const auto left = static_cast<qint64>(spent.count() * static_cast<double>(start.total - done) /
                                                  static_cast<double>(done - start.done));
            streams_.err << "  " << left / 60 << ':' << std::setw(2) << std::setfill('0') << left % 60 << " left";
        }
    }
    streams_.err.flush();
}

void CToolOutput::ClearProgress()
{
    if (std::exchange(progress_shown_, false)) {
        streams_.err << "\r\x1B[K";
        streams_.err.flush();
    }
}

} // namespace partkeep
