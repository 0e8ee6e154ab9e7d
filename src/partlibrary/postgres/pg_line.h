// The line to a database server: owns the client library's connection, and knows what went wrong last, and since when
// nobody answers. No call waits without end: each wait for the server ends two seconds after its last byte (for a tool
// a minute), a browser's at the limits of a whole answer as well, and after that, for ten seconds, nothing is asked at
// all.
//
// Nothing of the client library that waits by itself is used, but for the look-up of a host's name.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/postgres/pg_answer.h"
#include "partlibrary/postgres/pg_place.h"
#include "partlibrary/postgres/pg_result.h"
#include "partlibrary/postgres/sql.h"

#include <QDateTime>
#include <QString>

#include <chrono>
#include <string_view>
#include <utility>

namespace partkeep {

// Whole is for who looks through a library, all of one state. Administer does not look whether the schema is there.
enum class PgUse { Browse, Whole, Write, Administer };

class CPgLine {
public:
    CPgLine(const CPgLine&) = delete;
    CPgLine& operator=(const CPgLine&) = delete;

    // Drops the connection; the next call makes another.
    void Disconnect() { connection_.reset(); }
    // The same as if it had not answered in time, or had refused: known from another line to the same place.
    void FallSilent(const LibraryProblem& why);
    // It answers there: the next call asks.
    void TryAgain() { silent_until_ = {}; }
    // The server, or something between here and there, has ended the connection, or there is none.
    [[nodiscard]] bool IsCut() const;

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }
    void SetProblem(LibraryProblem problem) { problem_ = std::move(problem); }
    [[nodiscard]] const PqDriver& Driver() const { return pq_; }
    [[nodiscard]] const PgPlace& Place() const { return place_; }
    [[nodiscard]] PgUse Use() const { return use_; }
    [[nodiscard]] QDateTime SilentSince() const { return silent_since_; }    // invalid while it answers
    [[nodiscard]] const LibraryProblem& Silence() const { return silence_; } // none while it answers
    [[nodiscard]] LibraryProblem NoAnswer(std::string_view why) const;

protected:
    using Clock = std::chrono::steady_clock;

    CPgLine(const PqDriver& driver, PgPlace place, PgUse use);
    ~CPgLine() = default;

    [[nodiscard]] PGconn* Get() const { return connection_.get(); } // null: there is none
    [[nodiscard]] bool Reads() const { return use_ == PgUse::Browse || use_ == PgUse::Whole; }

    // A wait begins, from which the time counts until the first byte comes, and until the last one has.
    Clock::time_point BeginWait()
    {
        answer_.Begin();
        return last_byte_ = Clock::now();
    }
    // What is there now, or was told to be, is waited for when it goes.
    void Expect() { expected_ = true; }
    // It answers.
    void EndSilence();
    // False while the server counts as silent.
    [[nodiscard]] bool MayAsk();
    // Whether the last failure was of the line, and may be over in a moment. Waits for that moment.
    [[nodiscard]] bool MayRetry(Clock::time_point began);
    [[nodiscard]] bool IsLost() const { return lost_; }

    // Each is false by trouble, which is the problem then; there may be no connection any more.
    bool StartUp();
    bool EnterPipeline();
    bool SendOne(const CSql& statement, const char* prepared = nullptr);
    bool SendSync();
    bool SendAll();
    bool Wait(short events);
    [[nodiscard]] PGresult* GetResult();
    // Always false.
    bool Fail(const CPgResult& result);
    bool Lose(std::string_view why = {});

private:
    bool Read();
    bool GiveUp(std::string_view why);
    [[nodiscard]] std::chrono::milliseconds Patience() const;

    const PqDriver& pq_;
    PgPlace place_;
    PgUse use_;
    PqConnection connection_;
    LibraryProblem problem_;
    LibraryProblem silence_;
    QDateTime silent_since_;
    Clock::time_point silent_until_;
    Clock::time_point last_byte_;
    CPgAnswer answer_;
    bool lost_ = false;
    bool expected_ = false;
};

// Sends one in the extended protocol, values in binary both ways; only its values where the server keeps it under the
// name `prepared`. False when the client library fails.
[[nodiscard]] bool SendStatement(const PqDriver& pq, PGconn* connection, const CSql& statement,
                                 const char* prepared = nullptr);

} // namespace partkeep
