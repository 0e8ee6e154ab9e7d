#include "partlibrary/library/library_problem.h"

#include "partlibrary/library/library_text.h"

#include <cerrno>
#include <system_error>

namespace partkeep {

namespace {

const char* FaultText(LibraryFault fault)
{
    switch (fault) {
    case LibraryFault::None:
        return "no problem";
    case LibraryFault::NotFound:
        return "there is no such library";
    case LibraryFault::CannotOpen:
        return "the library cannot be opened";
    case LibraryFault::NotALibrary:
        return "the file is no part library";
    case LibraryFault::OtherVersion:
        return "the library has a version that is not known here";
    case LibraryFault::Damaged:
        return "the library is damaged";
    case LibraryFault::Busy:
        return "the library is in use by another program";
    case LibraryFault::NoAnswer:
        return "the server of the library does not answer";
    case LibraryFault::Refused:
        return "access to the library is refused";
    case LibraryFault::Unfinished:
        return "a program was cut off while it changed the library, and its changes cannot be taken back from here";
    case LibraryFault::Replaced:
        return "the library was replaced by another one";
    case LibraryFault::ReadOnly:
        return "the library cannot be written";
    case LibraryFault::DiskFull:
        return "the disk is full";
    case LibraryFault::ReadFailed:
        return "reading failed";
    case LibraryFault::WriteFailed:
        return "writing failed";
    case LibraryFault::NoMemory:
        return "out of memory";
    case LibraryFault::AlreadyThere:
        return "it exists already";
    case LibraryFault::NoFolder:
        return "there is no such folder";
    case LibraryFault::NoPart:
        return "there is no such part";
    case LibraryFault::NameRefused:
        return "the name is refused";
    case LibraryFault::PathTooLong:
        return "the path is too long";
    case LibraryFault::BadInput:
        return "the input cannot be used";
    case LibraryFault::Stopped:
        return "stopped before the end";
    case LibraryFault::Failed:
        break;
    }
    return "the library operation failed";
}

LibraryFault FaultOfError(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return LibraryFault::DiskFull;
    case ENAMETOOLONG:
        return LibraryFault::PathTooLong;
    case EEXIST:
        return LibraryFault::AlreadyThere;
    default:
        return LibraryFault::WriteFailed;
    }
}

} // namespace

LibraryProblem WriteProblem(int error, const QString& subject)
{
    return {FaultOfError(error), subject, FromUtf8(std::generic_category().message(error))};
}

std::string ProblemText(const LibraryProblem& problem)
{
    if (!problem) {
        return {};
    }
    QString text = problem.subject;
    if (!text.isEmpty()) {
        text += QStringLiteral(": ");
    }
    text += QLatin1String(FaultText(problem.fault));
    if (!problem.detail.isEmpty()) {
        text += QStringLiteral(" (") + problem.detail + QStringLiteral(")");
    }
    return Printable(text);
}

} // namespace partkeep
