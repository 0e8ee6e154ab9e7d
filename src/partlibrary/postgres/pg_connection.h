// One connection to a part library in a database: owns the client library's connection, runs statements and keeps the
// last problem. No call waits without end: each wait for the server ends two seconds after its last byte (for a tool a
// minute), and after that, for ten seconds, nothing is asked at all. What only reads is asked again, on a new
// connection, as long as that time lasts; what belongs to a transaction never.
//
// Nothing of the client library that waits by itself is used, but for the look-up of a host's name.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_library.h"
#include "partlibrary/postgres/pg_place.h"
#include "partlibrary/postgres/pg_result.h"
#include "partlibrary/postgres/sql.h"

#include <QByteArray>
#include <QString>
#include <QTime>

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace partkeep {

// Whole is for who looks through a library, all of one state. Administer does not look whether the schema is there.
enum class PgUse { Browse, Whole, Write, Administer };

inline constexpr qint64 postgres_library_version = 1;
inline constexpr std::size_t longest_schema = 63; // bytes of a name

class CPgConnection {
public:
    // Null on failure, with the reason.
    [[nodiscard]] static std::shared_ptr<CPgConnection> Open(const PgPlace& place, PgUse use, LibraryProblem& problem);
    ~CPgConnection();
    CPgConnection(const CPgConnection&) = delete;
    CPgConnection& operator=(const CPgConnection&) = delete;

    // Runs statements in one round trip, and as one transaction where none is open. Nothing on a failure of any.
    [[nodiscard]] std::optional<std::vector<CPgResult>> AskAll(std::span<const CSql> statements);
    [[nodiscard]] std::optional<CPgResult> Ask(const CSql& statement);
    bool Run(const CSql& statement) { return Ask(statement).has_value(); }

    // For results that come row by row, in the order in which their statements were sent.
    enum class Next { Row, End, Failed };
    bool Send(const CSql& statement);
    [[nodiscard]] Next Receive(CPgResult& row);
    [[nodiscard]] Next SendForFirst(const CSql& statement, CPgResult& row); // as often as it takes to have one

    // For many rows on their way in: `statement` is a COPY ... FROM STDIN in binary, whose rows follow.
    bool BeginCopy(const CSql& statement);
    bool PutCopy(std::string_view bytes);
    bool EndCopy();

    // Drops the connection; the next call makes another.
    void Disconnect();
    // The same as if it had not answered in time, or had refused: known from another connection to the same place.
    void FallSilent(const LibraryProblem& why);
    // The server, or something between here and there, has ended the connection, or there is none.
    [[nodiscard]] bool IsCut() const;
    // It answers there: the next call asks.
    void TryAgain() { silent_until_ = {}; }

    // Between these two nothing is asked again.
    bool Begin(std::span<const CSql> first, std::vector<CPgResult>& results);
    // A commit of which no answer came is looked for on another connection, and never made again.
    bool Commit(std::span<const CSql> last);
    void Rollback();

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }
    void SetProblem(LibraryProblem problem) { problem_ = std::move(problem); }
    [[nodiscard]] const PgPlace& Place() const { return place_; }
    [[nodiscard]] PgUse Use() const { return use_; }
    [[nodiscard]] const QByteArray& Id() const { return id_; }
    [[nodiscard]] bool HasOtherKeys() const { return other_keys_; }
    [[nodiscard]] LibraryPlace State() const { return state_; }
    [[nodiscard]] QTime SilentSince() const { return silent_since_; }        // invalid while it answers
    [[nodiscard]] const LibraryProblem& Silence() const { return silence_; } // none while it answers
    [[nodiscard]] LibraryProblem TooLate() const;
    [[nodiscard]] qint64 Revision() const { return revision_; } // as it was told last

    // For another connection to the same library.
    [[nodiscard]] const PqDriver& Driver() const { return pq_; }
    [[nodiscard]] std::vector<std::pair<QString, QString>> Settings() const;

    // What tells which library it is, and by whose rules its keys are; taken from a result that asked for it.
    [[nodiscard]] static CSql LibraryRow();
    bool TakeLibraryRow(const CPgResult& result);

private:
    using Clock = std::chrono::steady_clock;

    CPgConnection(const PqDriver& driver, PgPlace place, PgUse use);
    bool Connect();
    bool StartUp();
    bool Prepare();
    bool Ready();
    void TellMissingRight();
    bool SendOne(const CSql& statement);
    [[nodiscard]] std::optional<std::vector<CPgResult>> TryAll(std::span<const CSql> statements);
    bool TakeResults(std::vector<CPgResult>& results);
    [[nodiscard]] bool MayRetry(Clock::time_point began);
    bool SendAll();
    PGresult* GetResult();
    bool Wait(short events);
    bool Fail(const CPgResult& result);
    bool Lose();
    bool MissDeadline();
    bool EnterPipeline();
    [[nodiscard]] bool LookForCommit();
    [[nodiscard]] std::chrono::milliseconds Patience() const;
    [[nodiscard]] QString ConnectionText() const;

    const PqDriver& pq_;
    PgPlace place_;
    PgUse use_;
    PqConnection connection_;
    LibraryProblem problem_;
    QByteArray id_;
    qint64 revision_ = 0;
    QByteArray transaction_; // its number, as text
    LibraryPlace state_ = LibraryPlace::Same;
    QTime silent_since_;
    LibraryProblem silence_;
    Clock::time_point silent_until_;
    Clock::time_point last_byte_;
    bool other_keys_ = false;
    bool in_transaction_ = false;
    bool copying_ = false;
    bool lost_ = false;      // the last failure was of the connection
    bool ever_open_ = false; // or told to be there a moment ago: it is waited for
    bool single_rows_ = false;
};

// Sends one in the extended protocol, values in binary both ways. False when the client library fails.
[[nodiscard]] bool SendStatement(const PqDriver& pq, PGconn* connection, const CSql& statement);

} // namespace partkeep
