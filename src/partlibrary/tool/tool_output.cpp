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
    const QByteArray object = QJsonDocument(fields).toJson(QJsonDocument::Compact);
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
    return [this, unit, began = Clock::now()](qint64 done, qint64 total) {
        if (streams_.watched && Clock::now() - shown_at_ >= progress_pause) {
            ShowProgress(unit, done, total, began);
        }
        return !stop_asked;
    };
}

void CToolOutput::ShowProgress(const char* unit, qint64 done, qint64 total, Clock::time_point began)
{
    shown_at_ = Clock::now();
    progress_shown_ = true;
    streams_.err << "\r\x1B[K" << done;
    if (total > 0 && done > 0 && done <= total) {
        const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(shown_at_ - began).count();
        const auto left = static_cast<qint64>(static_cast<double>(spent) / 1000.0 * static_cast<double>(total - done) /
                                              static_cast<double>(done));
        streams_.err << " of " << total << ' ' << unit << "  " << done * 100 / total << " %  " << left / 60 << ':'
                     << std::setw(2) << std::setfill('0') << left % 60 << " left";
    } else {
        streams_.err << ' ' << unit;
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
