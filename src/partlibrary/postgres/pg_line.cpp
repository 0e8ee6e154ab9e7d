#include "partlibrary/postgres/pg_line.h"

#include "partlibrary/postgres/pg_problem.h"
#include "partlibrary/postgres/pg_start.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <poll.h>
#include <thread>
#include <utility>
#include <vector>

namespace partkeep {

CPgLine::CPgLine(const PqDriver& driver, PgPlace place, PgUse use)
    : pq_(driver), place_(std::move(place)), use_(use), connection_(nullptr, CPqFinish{&driver})
{
}

std::chrono::milliseconds CPgLine::Patience() const
{
    return use_ == PgUse::Browse || !expected_ ? browse_patience : tool_patience;
}

// Making it.

bool CPgLine::StartUp()
{
    CPgStart start(pq_, place_, use_ == PgUse::Browse, last_byte_ + Patience());
    CPgStart::State state = start.GoOn();
    for (; state == CPgStart::State::Pending; state = start.GoOn()) {
        static_cast<void>(PollUntil(start.Awaited(), start.Until()));
    }
    if (state == CPgStart::State::Open) {
        connection_ = start.Take();
        BeginWait(); // it has answered up to now
        return true;
    }
    if (state == CPgStart::State::Late) {
        return GiveUp(too_late);
    }
    Lose();
    problem_ = start.Problem();
    lost_ = problem_.fault != LibraryFault::Refused; // which nothing changes in a moment
    return false;
}

bool CPgLine::EnterPipeline()
{
    return (pq_.PQsetnonblocking(connection_.get(), 1) == 0 && pq_.PQenterPipelineMode(connection_.get()) == 1) ||
           Lose();
}

// Sending, and what comes.

bool SendStatement(const PqDriver& pq, PGconn* connection, const CSql& statement, const char* prepared)
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
    if (prepared != nullptr) {
        return pq.PQsendQueryPrepared(connection, prepared, static_cast<int>(values.size()), values.data(),
                                      lengths.data(), binary.data(), 1) == 1;
    }
    return pq.PQsendQueryParams(connection, statement.Text().c_str(), static_cast<int>(values.size()), types.data(),
                                values.data(), lengths.data(), binary.data(), 1) == 1;
}

bool CPgLine::SendOne(const CSql& statement, const char* prepared)
{
    return SendStatement(pq_, connection_.get(), statement, prepared) || Lose();
}

bool CPgLine::SendSync()
{
    return pq_.PQpipelineSync(connection_.get()) == 1 || Lose();
}

// Null where the client library has none to give, and when the connection is lost.
PGresult* CPgLine::GetResult()
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
        if (!Wait(static_cast<short>(POLLIN | (unsent > 0 ? POLLOUT : 0))) || !Read()) {
            return nullptr;
        }
    }
}

bool CPgLine::Read()
{
    last_byte_ = Clock::now();
    if (answer_.Count(pq_.PQsocket(connection_.get()), [this] { return pq_.PQconsumeInput(connection_.get()); }) == 0) {
        return Lose();
    }
    return use_ != PgUse::Browse || !answer_.IsEndless() || GiveUp(CPgAnswer::endless);
}

bool CPgLine::Fail(const CPgResult& result)
{
    const std::string_view state = result.ErrorField(PG_DIAG_SQLSTATE);
    const LibraryProblem problem = PgProblem(result, place_, Reads(), pq_.PQerrorMessage(connection_.get()));
    if (IsLoss(state) || (Reads() && IsConflict(state))) {
        Lose();
    } else if (use_ == PgUse::Browse && (IsTimeOut(state) || problem.fault == LibraryFault::Refused)) {
        FallSilent(problem);
    }
    problem_ = problem;
    return false;
}

// What the client library holds back it moves about at each attempt to send: it must not become much.
bool CPgLine::SendAll()
{
    int unsent = 0;
    while ((unsent = pq_.PQflush(connection_.get())) > 0) {
        if (!Wait(POLLIN | POLLOUT) || !Read()) {
            return false;
        }
    }
    return unsent == 0 || Lose();
}

bool CPgLine::Lose(std::string_view why)
{
    const std::string_view told = connection_ != nullptr ? pq_.PQerrorMessage(connection_.get()) : "";
    problem_ = NoAnswer(why.empty() ? told : why);
    lost_ = true;
    Disconnect();
    return false;
}

bool CPgLine::GiveUp(std::string_view why)
{
    lost_ = true;
    FallSilent(NoAnswer(why));
    return false;
}

LibraryProblem CPgLine::NoAnswer(std::string_view why) const
{
    return {LibraryFault::NoAnswer, place_.Text(), OneLine(why)};
}

void CPgLine::FallSilent(const LibraryProblem& why)
{
    problem_ = silence_ = why;
    Disconnect();
    silent_until_ = Clock::now() + impatience;
    silent_since_ = silent_since_.isValid() ? silent_since_ : QDateTime::currentDateTime();
}

bool CPgLine::IsCut() const
{
    if (connection_ == nullptr) {
        return true;
    }
    pollfd socket{pq_.PQsocket(connection_.get()), POLLRDHUP, 0};
    return poll(&socket, 1, 0) > 0;
}

bool CPgLine::Wait(short events)
{
    const auto next_byte = last_byte_ + Patience();
    const auto until = use_ == PgUse::Browse ? std::min(next_byte, answer_.Until()) : next_byte;
    const int ready = PollUntil({pq_.PQsocket(connection_.get()), events, 0}, until);
    return ready > 0 || (ready == 0 ? GiveUp(too_late) : Lose());
}

void CPgLine::EndSilence()
{
    silent_since_ = {};
    silence_ = {};
}

bool CPgLine::MayAsk()
{
    if (Clock::now() < silent_until_) {
        problem_ = silence_;
        return false;
    }
    lost_ = false;
    return true;
}

// What was there a moment ago may be starting anew.
bool CPgLine::MayRetry(Clock::time_point began)
{
    const auto now = Clock::now();
    if (!lost_ || !expected_ || now < silent_until_) {
        return false;
    }
    if (now + between_attempts >= began + browse_patience) {
        FallSilent(problem_);
        return false;
    }
    std::this_thread::sleep_for(between_attempts);
    return true;
}

} // namespace partkeep
