// Statements and their results, as many as go together in one round trip.
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_problem.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <thread>
#include <utility>

namespace partkeep {

bool SendStatement(const PqDriver& pq, PGconn* connection, const CSql& statement)
{
    std::vector<Oid> types;
    std::vector<const char*> values;
    std::vector<int> lengths;
    for (const CSql::Parameter& parameter : statement.Parameters()) {
        types.push_back(static_cast<Oid>(parameter.type));
        values.push_back(parameter.bytes.data());
        lengths.push_back(static_cast<int>(parameter.bytes.size()));
    }
    const std::vector<int> binary(values.size(), 1);
    return pq.PQsendQueryParams(connection, statement.Text().c_str(), static_cast<int>(values.size()), types.data(),
                                values.data(), lengths.data(), binary.data(), 1) == 1;
}

bool CPgConnection::SendOne(const CSql& statement)
{
    return SendStatement(pq_, connection_.get(), statement) || Lose();
}

// Null where the client library has none to give, and when the connection is lost.
PGresult* CPgConnection::GetResult()
{
    while (true) {
        const int unsent = pq_.PQflush(connection_.get());
        if (unsent < 0) {
            Lose();
            return nullptr;
        }
        if (pq_.PQisBusy(connection_.get()) == 0) {
            return pq_.PQgetResult(connection_.get());
        }
        if (!Wait(static_cast<short>(POLLIN | (unsent > 0 ? POLLOUT : 0)))) {
            return nullptr;
        }
        last_byte_ = Clock::now();
        if (pq_.PQconsumeInput(connection_.get()) == 0) {
            Lose();
            return nullptr;
        }
    }
}

bool CPgConnection::Fail(const CPgResult& result)
{
    const std::string_view state = result.ErrorField(PG_DIAG_SQLSTATE);
    const bool reads = use_ == PgUse::Browse || use_ == PgUse::Whole;
    const LibraryProblem problem = PgProblem(result, place_, reads, pq_.PQerrorMessage(connection_.get()));
    if (IsLoss(state)) {
        Lose();
    } else if (use_ == PgUse::Browse && IsTimeOut(state)) {
        FallSilent(problem);
    }
    problem_ = problem;
    return false;
}

// Up to the end of what was sent together.
bool CPgConnection::TakeResults(std::vector<CPgResult>& results)
{
    bool sound = true;
    for (;;) {
        CPgResult result(pq_, GetResult());
        if (connection_ == nullptr) {
            return false;
        }
        if (!result) {
            if (pq_.PQstatus(connection_.get()) == CONNECTION_BAD) {
                return sound ? Lose() : (Disconnect(), false);
            }
            continue;
        }
        switch (result.Status()) {
        case PGRES_PIPELINE_SYNC:
            return sound;
        case PGRES_TUPLES_OK:
        case PGRES_COMMAND_OK:
            results.push_back(std::move(result));
            break;
        case PGRES_PIPELINE_ABORTED:
            break;
        default:
            sound = sound && Fail(result);
            if (connection_ == nullptr) {
                return false;
            }
        }
    }
}

// Where memory runs out in between, answers would be left for the next question.
std::optional<std::vector<CPgResult>> CPgConnection::TryAll(std::span<const CSql> statements)
try {
    std::vector<CPgResult> results;
    const bool sent =
        std::all_of(statements.begin(), statements.end(), [this](const CSql& sql) { return SendOne(sql); });
    if (!sent || (pq_.PQpipelineSync(connection_.get()) != 1 && !Lose()) || !TakeResults(results)) {
        return std::nullopt;
    }
    return results;
} catch (...) {
    Disconnect();
    throw;
}

// What was there a moment ago may be starting anew.
bool CPgConnection::MayRetry(Clock::time_point began)
{
    const auto now = Clock::now();
    if (!lost_ || in_transaction_ || !ever_open_ || now < silent_until_) {
        return false;
    }
    if (now + between_attempts >= began + browse_patience) {
        FallSilent(problem_);
        return false;
    }
    std::this_thread::sleep_for(between_attempts);
    return true;
}

// A schema that may not be used the server passes over, and misses what is in it.
void CPgConnection::TellMissingRight()
{
    if (problem_.fault != LibraryFault::NotFound || connection_ == nullptr || in_transaction_) {
        return;
    }
    const LibraryProblem problem = problem_;
    const auto told = TryAll(std::array{std::move(CSql("SELECT 1 FROM pg_catalog.pg_namespace WHERE nspname = ")
                                                      .Value(place_.server)
                                                      .Add(" AND NOT has_schema_privilege(oid, 'USAGE')"))});
    if (told && told->front().Rows() == 1) {
        problem_ = {LibraryFault::Refused, place_.Text(),
                    QStringLiteral("permission denied for schema ") + place_.server};
    } else if (told) {
        problem_ = problem;
    }
}

std::optional<std::vector<CPgResult>> CPgConnection::AskAll(std::span<const CSql> statements)
{
    const auto began = Clock::now();
    last_byte_ = began;
    do {
        if (!Ready()) {
            continue;
        }
        if (auto results = TryAll(statements)) {
            return results;
        }
        TellMissingRight();
    } while (MayRetry(began));
    return std::nullopt;
}

std::optional<CPgResult> CPgConnection::Ask(const CSql& statement)
{
    auto results = AskAll({&statement, 1});
    return results ? std::optional(std::move(results->back())) : std::nullopt;
}

} // namespace partkeep
