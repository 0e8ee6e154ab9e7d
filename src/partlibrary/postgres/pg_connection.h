// One connection to a part library in a database: runs statements, gives rows as they come, and takes rows and
// transactions. What only reads is asked again, on a new connection, as long as the time lasts for which the line
// waits; what belongs to a transaction never.
#pragma once

#include "partlibrary/library/part_library.h"
#include "partlibrary/postgres/pg_line.h"
#include "partlibrary/postgres/pg_result.h"
#include "partlibrary/postgres/sql.h"

#include <QByteArray>
#include <QString>

#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace partkeep {

inline constexpr qint64 postgres_library_version = 1;

class CPgConnection : public CPgLine {
public:
    // Null on failure, with the reason.
    // `often`: a statement that is sent again and again by this connection alone, and is compiled once.
    [[nodiscard]] static std::shared_ptr<CPgConnection> Open(const PgPlace& place, PgUse use, LibraryProblem& problem,
                                                             std::optional<CSql> often = {});

    // Runs statements in one round trip, and as one transaction where none is open: a result for each, or nothing on a
    // failure of any.
    [[nodiscard]] std::optional<std::vector<CPgResult>> AskAll(std::span<const CSql> statements);
    [[nodiscard]] std::optional<CPgResult> Ask(const CSql& statement);
    bool Run(const CSql& statement) { return Ask(statement).has_value(); }

    // For results that come row by row, in the order in which their statements were sent.
    enum class Next { Row, End, Failed };
    bool Send(const CSql& statement) { return Send(statement, nullptr); }
    bool SendOften(const CSql& values); // the statement of Open with the values of this one
    [[nodiscard]] Next Receive(CPgResult& row);
    [[nodiscard]] Next SendForFirst(const CSql& statement, CPgResult& row); // as often as it takes to have one

    // For many rows on their way in: `statement` is a COPY ... FROM STDIN in binary, whose rows follow.
    bool BeginCopy(const CSql& statement);
    bool PutCopy(std::string_view bytes);
    bool EndCopy();

    // Between these two nothing is asked again.
    bool Begin(std::span<const CSql> first, std::vector<CPgResult>& results);
    // A commit of which no answer came is looked for on another connection, and never made again: `look` gives true
    // where it was made, false where not, and null where that cannot be known any more.
    bool Commit(std::span<const CSql> last, const CSql& look);
    void Rollback();

    [[nodiscard]] const QByteArray& Id() const { return id_; }
    [[nodiscard]] bool HasOtherKeys() const { return other_keys_; }
    [[nodiscard]] LibraryPlace State() const { return state_; }
    [[nodiscard]] qint64 Revision() const { return revision_; } // as it was told last

    // What is sent first on a connection to this library, with a Sync of its own, since that only reads goes for the
    // transactions that follow. The next is to enter the schema.
    [[nodiscard]] std::vector<CSql> Settings() const;

    // What tells which library it is, and by whose rules its keys are; taken from a result that asked for it.
    [[nodiscard]] static CSql LibraryRow();
    bool TakeLibraryRow(const CPgResult& result);

private:
    CPgConnection(const PqDriver& driver, PgPlace place, PgUse use, std::optional<CSql> often)
        : CPgLine(driver, std::move(place), use), often_(std::move(often))
    {
    }
    bool Connect();
    bool Prepare();
    bool Send(const CSql& statement, const char* prepared);
    bool Ready();
    void TellWhyNotFound();
    [[nodiscard]] std::optional<std::vector<CPgResult>> TryAll(std::span<const CSql> statements,
                                                               std::span<const CSql> settings = {});
    bool SendCopy(std::size_t most);
    bool LeaveCopy(bool sound);
    bool TakeResults(std::vector<CPgResult>& results);
    [[nodiscard]] bool LookForCommit(const CSql& look);

    std::optional<CSql> often_;
    QByteArray id_;
    qint64 revision_ = 0;
    QByteArray transaction_;          // its number, as text
    std::deque<std::string> waiting_; // rows on their way in
    std::size_t waiting_bytes_ = 0;
    LibraryPlace state_ = LibraryPlace::Same;
    bool other_keys_ = false;
    bool in_transaction_ = false;
    bool copying_ = false;
    bool single_rows_ = false;
};

} // namespace partkeep
