// Statements and their results, as many as go together in one round trip.
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_safe_schema.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <array>
#include <utility>

namespace partkeep {

namespace {

CSql TimeLimit()
{
    CSql limit("SELECT pg_catalog.set_config('statement_timeout', ");
    limit.Value(QString::number(browse_patience.count())).Add(", true)");
    return limit;
}

} // namespace

// Up to the end of what was sent together.
bool CPgConnection::TakeResults(std::vector<CPgResult>& results)
{
    bool sound = true;
    for (;;) {
        CPgResult result(Driver(), GetResult());
        if (Get() == nullptr) {
            return false;
        }
        if (!result) {
            if (Driver().PQstatus(Get()) == CONNECTION_BAD) {
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
            if (Get() == nullptr) {
                return false;
            }
        }
    }
}

// The server ends what a browser would not wait for; not so rows that are sent one by one, since it counts the time
// that a slow line or their reader takes. Where memory runs out in between, answers would be left for the next
// question.
std::optional<std::vector<CPgResult>> CPgConnection::TryAll(std::span<const CSql> statements,
                                                            std::span<const CSql> settings)
try {
    const bool limited = Use() == PgUse::Browse;
    static const CSql limit = TimeLimit();
    std::vector<CPgResult> results;
    const auto send = [this](const CSql& sql) { return SendOne(sql); };
    if (!settings.empty() && (!std::ranges::all_of(settings, send) || !SendSync())) {
        return std::nullopt;
    }
    if ((limited && !SendOne(limit)) || !std::ranges::all_of(statements, send) || !SendSync()) {
        return std::nullopt;
    }
    if (!settings.empty() && !TakeResults(results)) {
        Disconnect();
        return std::nullopt;
    }
    results.clear();
    if (!TakeResults(results)) {
        return std::nullopt;
    }
    if (results.size() != statements.size() + (limited ? 1 : 0)) { // nobody knows what the next ones would belong to
        Lose("an answer to something else");
        return std::nullopt;
    }
    results.erase(results.begin(), results.begin() + (limited ? 1 : 0));
    return results;
} catch (...) {
    Disconnect();
    throw;
}

// A schema that may not be used the server passes over, and this line one that is unsafe: what is in it is not found.
void CPgConnection::TellWhyNotFound()
{
    if (Problem().fault != LibraryFault::NotFound || Get() == nullptr || in_transaction_) {
        return;
    }
    const LibraryProblem problem = Problem();
    CSql in_catalogue("SELECT pg_catalog.set_config('search_path', '");
    CSql barred("SELECT 1 FROM pg_catalog.pg_namespace WHERE nspname = ");
    const auto told =
        TryAll(std::array{std::move(in_catalogue.Add(pg_catalogue_path).Add("', true)")),
                          std::move(barred.Value(Place().server).Add(" AND NOT has_schema_privilege(oid, 'USAGE')")),
                          UnsafeInPgSchema(Place().server)});
    if (told && (*told)[1].Rows() == 1) {
        FallSilent(
            {LibraryFault::Refused, Place().Text(), QStringLiteral("permission denied for schema ") + Place().server});
    } else if (told && told->back().Rows() > 0) {
        SetProblem({LibraryFault::Damaged, Place().Text(), told->back().Text(0, 0)});
    } else if (told) {
        SetProblem(problem);
    }
}

std::optional<std::vector<CPgResult>> CPgConnection::AskAll(std::span<const CSql> statements)
{
    const auto began = BeginWait();
    do {
        if (!Ready()) {
            continue;
        }
        if (auto results = TryAll(statements)) {
            return results;
        }
        TellWhyNotFound();
    } while (!in_transaction_ && MayRetry(began));
    return std::nullopt;
}

std::optional<CPgResult> CPgConnection::Ask(const CSql& statement)
{
    auto results = AskAll({&statement, 1});
    return results ? std::optional(std::move(results->back())) : std::nullopt;
}

} // namespace partkeep
