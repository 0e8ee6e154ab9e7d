// What the commands say: lines for people, or by --json an object a line, as docs/partkeep-library.schema.json has
// them; trouble on the error stream; and how far long work is, where somebody watches.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/library/library_problem.h"

#include <QJsonObject>
#include <QString>

#include <atomic>
#include <chrono>
#include <iosfwd>
#include <string>

namespace partkeep {

// How the tool ends.
enum class ToolEnd {
    Done = 0,
    Found = 1,       // findings of a check, differences, names that are refused
    CommandLine = 2, // that cannot be understood
    Refused = 3,     // a name, an attribute, a table, a picture; what is there already
    NotThere = 4,    // a library, a folder, a part
    Busy = 5,        // somebody else is at it: try again
    Damaged = 6,     // no library, or one that cannot be read to its end
    System = 7,      // the disk, rights, memory
    Stopped = 8,     // by a signal
};

[[nodiscard]] ToolEnd EndOf(LibraryFault fault);

struct ToolStreams {
    std::ostream& out;
    std::ostream& err;
    bool watched = false; // `err` is a terminal
};

// Set from a signal: work ends at its next step, and changes nothing.
extern std::atomic<bool> stop_asked;

class CToolOutput {
public:
    CToolOutput(const ToolStreams& streams, bool json) : streams_(streams), json_(json) {}
    ~CToolOutput() { ClearProgress(); }
    CToolOutput(const CToolOutput&) = delete;
    CToolOutput& operator=(const CToolOutput&) = delete;

    // One thing done or found. `line` has no control characters, but for the tabs between columns.
    void Tell(const char* event, const std::string& line, QJsonObject fields);
    // The same as a line of trouble: on the error stream, unless it is an object.
    void Warn(const char* event, const QString& text, QJsonObject fields);
    [[nodiscard]] int Fail(const LibraryProblem& problem);
    // The end of a command that passed over so many folders or parts.
    [[nodiscard]] int EndWithout(qint64 refused);
    // For a command line that cannot be understood.
    [[nodiscard]] int Misunderstand(const QString& text);

    [[nodiscard]] bool Json() const { return json_; }
    // For work in `unit`, such as "parts".
    [[nodiscard]] WorkProgress Progress(const char* unit);

private:
    int End(ToolEnd end, const QString& text, const QString& subject);
    using Clock = std::chrono::steady_clock;
    struct Start { // from where the time that is left is reckoned
        qint64 done = 0;
        qint64 total = -1;
        Clock::time_point at;
    };
    void ShowProgress(const char* unit, qint64 done, const Start& start);
    void ClearProgress();

    ToolStreams streams_;
    bool json_;
    bool progress_shown_ = false;
    Clock::time_point shown_at_;
};

} // namespace partkeep
