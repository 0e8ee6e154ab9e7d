// What can go wrong with a part library, as a value: a kind that a front end can put into its own language,
// and the subject and the engine's words for whoever has to repair it.
#pragma once

#include <QString>

#include <string>

namespace partkeep {

enum class LibraryFault {
    None,
    NotFound,     // no such library file
    CannotOpen,   // exists, but cannot be opened
    NotALibrary,  // some other file
    OtherVersion, // a library of a version that this build does not know
    Damaged,
    Busy,       // another program holds it, or does not answer in time
    NoAnswer,   // the machine that holds it does not answer, or cannot at the moment
    Refused,    // that machine answers, but lets nobody in from here, or is not the one that is meant
    Unfinished, // a writer was cut off, and who reads may not take its changes back
    Replaced,   // another library stands in its place now
    ReadOnly,
    DiskFull,
    ReadFailed,
    WriteFailed,
    NoMemory,
    AlreadyThere,
    NoFolder,
    NoPart,
    NameRefused, // a server, folder or part name that could leave its place or that no buffer holds
    PathTooLong,
    BadInput, // a file or a table handed in for import, or what was asked for
    Stopped,  // by whoever asked for the work
    Failed,   // anything else
};

struct LibraryProblem {
    LibraryFault fault = LibraryFault::None;
    QString subject; // the file, folder or part in question
    QString detail;  // the reason, in English; may be empty

    explicit operator bool() const { return fault != LibraryFault::None; }
};

// The library may be as it was, and is not to be had now: who shows it keeps what it shows.
[[nodiscard]] constexpr bool IsAway(LibraryFault fault)
{
    return fault == LibraryFault::NoAnswer || fault == LibraryFault::Refused;
}

// What an error of the system was while something was written, and its text.
[[nodiscard]] LibraryProblem WriteProblem(int error, const QString& subject);

// One English line in UTF-8, control characters written out. Empty for no problem.
[[nodiscard]] std::string ProblemText(const LibraryProblem& problem);

} // namespace partkeep
