// Rows one by one, rows on their way in, and transactions.
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_waits.h"

#include <array>
#include <iterator>
#include <poll.h>
#include <thread>
#include <utility>

namespace partkeep {

namespace {

// Bytes. The server gathers a thousand rows and reads nothing while it stores them.
constexpr std::size_t most_waiting = 8 << 20;

} // namespace

// Row by row.

CPgConnection::Next CPgConnection::SendForFirst(const CSql& statement, CPgResult& row)
{
    const auto began = Clock::now();
    Next next = Next::Failed;
    do {
        next = Send(statement) ? Receive(row) : Next::Failed;
    } while (next == Next::Failed && !in_transaction_ && MayRetry(began));
    return next;
}

CPgConnection::Next CPgConnection::Receive(CPgResult& row)
{
    BeginWait();
    Next next = Next::End;
    while (Get() != nullptr) {
        if (!std::exchange(single_rows_, true) && Driver().PQsetSingleRowMode(Get()) != 1) {
            Lose(); // else they would come all at once
            break;
        }
        CPgResult result(Driver(), GetResult());
        if (Get() == nullptr) {
            break;
        }
        if (!result) {
            if (Driver().PQstatus(Get()) == CONNECTION_BAD) {
                Lose();
            }
            continue;
        }
        if (result.Status() == PGRES_SINGLE_TUPLE) {
            row = std::move(result);
            return Next::Row;
        }
        if (result.Status() == PGRES_PIPELINE_SYNC) {
            single_rows_ = false;
            return next;
        }
        if (result.Status() != PGRES_TUPLES_OK && result.Status() != PGRES_COMMAND_OK) {
            Fail(result);
            next = Next::Failed;
        }
    }
    return Next::Failed;
}

// Rows on their way in.

bool CPgConnection::BeginCopy(const CSql& statement)
{
    BeginWait();
    if (Get() == nullptr || Driver().PQexitPipelineMode(Get()) != 1 || !SendOne(statement)) {
        return Lose();
    }
    const CPgResult result(Driver(), GetResult());
    if (!result) {
        return Get() == nullptr ? false : Lose();
    }
    copying_ = result.Status() == PGRES_COPY_IN;
    waiting_.clear();
    waiting_bytes_ = 0;
    if (!copying_) {
        return Fail(result) || LeaveCopy(false);
    }
    static constexpr std::string_view head("PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0", 19);
    return PutCopy(head);
}

bool CPgConnection::PutCopy(std::string_view bytes)
{
    if (!copying_ || Get() == nullptr) {
        return false;
    }
    waiting_.emplace_back(bytes);
    waiting_bytes_ += bytes.size();
    return SendCopy(most_waiting);
}

// What the socket does not take at once stays here, up to `most` bytes of it, in place of with the client library,
// which moves it about at each attempt.
bool CPgConnection::SendCopy(std::size_t most)
{
    BeginWait();
    while (!waiting_.empty()) {
        const int unsent = Driver().PQflush(Get());
        if (unsent > 0 && waiting_bytes_ <= most) {
            return true;
        }
        const std::string& rows = waiting_.front();
        if ((unsent != 0 && !SendAll()) ||
            (Driver().PQputCopyData(Get(), rows.data(), static_cast<int>(rows.size())) <= 0 && !Lose())) {
            return false;
        }
        waiting_bytes_ -= rows.size();
        waiting_.pop_front();
    }
    return true;
}

bool CPgConnection::EndCopy()
{
    if (!PutCopy({"\xFF\xFF", 2}) || !SendCopy(0)) {
        return false;
    }
    copying_ = false;
    return LeaveCopy(Driver().PQputCopyEnd(Get(), nullptr) == 1 || Lose());
}

// Only then is there a way back from a COPY, whether it has been one or was refused, when all answers have come.
bool CPgConnection::LeaveCopy(bool sound)
{
    while (Get() != nullptr) {
        const CPgResult result(Driver(), GetResult());
        if (!result) {
            break;
        }
        sound = (result.Status() == PGRES_COMMAND_OK || Fail(result)) && sound;
    }
    return Get() != nullptr && EnterPipeline() && sound;
}

// Transactions.

bool CPgConnection::Begin(std::span<const CSql> first, std::vector<CPgResult>& results)
{
    std::vector<CSql> statements{CSql("BEGIN"), CSql("SELECT pg_current_xact_id()::text")};
    statements.insert(statements.end(), first.begin(), first.end());
    auto answers = AskAll(statements);
    in_transaction_ = Get() != nullptr;
    if (!answers) {
        Rollback();
        return false;
    }
    transaction_ = (*answers)[1].Bytes(0, 0);
    results.assign(std::make_move_iterator(answers->begin() + 2), std::make_move_iterator(answers->end()));
    return true;
}

bool CPgConnection::Commit(std::span<const CSql> last, const CSql& look)
{
    if (!last.empty() && !AskAll(last)) {
        return false;
    }
    const bool done = Run(CSql("COMMIT"));
    const bool unknown = !done && IsLost();
    in_transaction_ = !done && !unknown;
    return done || (unknown && LookForCommit(look));
}

// By what it has left in the library. A server that recovers gives the number of a transaction of which nothing had
// reached its disk to another: by the number it is only known whether it may still be under way. So it may be where a
// standby follows.
bool CPgConnection::LookForCommit(const CSql& look)
{
    const LibraryProblem problem = Problem();
    for (const auto until = Clock::now() + tool_patience; Clock::now() < until;) {
        std::this_thread::sleep_for(between_attempts);
        TryAgain();
        const auto told = Ask(CSql("SELECT CASE WHEN pg_is_in_recovery() THEN 'in progress' ELSE pg_xact_status(")
                                  .Value(FromUtf8(transaction_.toStdString()))
                                  .Add("::xid8) END"));
        const bool unheard_of = !told && Problem().fault == LibraryFault::Failed;
        if (told ? !told->IsNull(0, 0) && told->Raw(0, 0) == "in progress" : !unheard_of) {
            continue;
        }
        const auto left = Ask(look);
        const bool known = left && left->Rows() == 1 && !left->IsNull(0, 0);
        if (known || (!left && Problem().fault == LibraryFault::NotFound)) {
            SetProblem(problem);
            return known && left->Raw(0, 0) == "\1";
        }
        if (left || !IsLost()) { // another has come since
            break;
        }
    }
    SetProblem({LibraryFault::NoAnswer, Place().Text(),
                QStringLiteral("the connection was lost at the commit: look whether the change has arrived")});
    return false;
}

// Keeps the problem that led here.
void CPgConnection::Rollback()
{
    if (!in_transaction_) {
        return;
    }
    const LibraryProblem problem = Problem();
    const bool usable = !copying_ && Get() != nullptr;
    if (!usable || !Run(CSql("ROLLBACK"))) {
        Disconnect();
    }
    in_transaction_ = false;
    SetProblem(problem);
}

} // namespace partkeep
