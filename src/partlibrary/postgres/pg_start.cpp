#include "partlibrary/postgres/pg_start.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_problem.h"

#include <algorithm>
#include <string>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace partkeep {

namespace {

constexpr int most_patience = 5; // times; each step of a handshake takes a round trip, and there are several

} // namespace

CPgStart::CPgStart(const PqDriver& pq, PgPlace place, bool browses, Clock::time_point until)
    : pq_(pq), place_(std::move(place)), browses_(browses), until_(until),
      latest_(until + (most_patience - 1) * (until - Clock::now())), connection_(nullptr, CPqFinish{&pq})
{
    Begin();
    if (state_ != State::Pending) {
        return;
    }
    hosts_ = {pq_, connection_.get()};
    if (hosts_.LeaveOutSilent()) {
        Begin();
    }
    SetShare();
}

void CPgStart::SetShare()
{
    share_until_ = hosts_.ShareUntil(until_);
    share_ = share_until_ - Clock::now();
}

void CPgStart::Begin()
{
    const std::string service = ToUtf8(place_.service);
    const auto places = hosts_.Values();
    std::vector<const char*> names{"service", "client_encoding", "fallback_application_name", "keepalives",
                                   "keepalives_idle"};
    std::vector<const char*> values{service.c_str(), "UTF8", "partkeep", "1", "5"};
    const auto set = [&](const char* name, const char* value) {
        names.push_back(name);
        values.push_back(value);
    };
    if (!browses_) {
        set("tcp_user_timeout", "30000");
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (!places[i].empty()) {
            set(CPgHosts::names[i], places[i].c_str());
        }
    }
    set(nullptr, nullptr);
    connection_.reset(pq_.PQconnectStartParams(names.data(), values.data(), 0));
    answer_.Begin();
    polling_ = PGRES_POLLING_WRITING;
    refused_ = false;
    if (connection_ == nullptr) {
        problem_ = {LibraryFault::NoMemory, place_.Text(), {}};
        state_ = State::Failed;
    } else if (pq_.PQstatus(connection_.get()) == CONNECTION_BAD) {
        refused_ = *pq_.PQhost(connection_.get()) == '\0'; // by what the service says: there is nobody to ask
        Fail();
    } else {
        pq_.PQsetErrorVerbosity(connection_.get(), PQERRORS_VERBOSE); // the one way to learn an SQLSTATE by now
        pq_.PQsetNoticeProcessor(
            connection_.get(), [](void*, const char*) {}, nullptr);
    }
}

void CPgStart::Fail()
{
    problem_ = PgConnectProblem(pq_.PQerrorMessage(connection_.get()), place_, refused_);
    state_ = State::Failed;
}

pollfd CPgStart::Awaited() const
{
    const short events = polling_ == PGRES_POLLING_READING ? POLLIN : POLLOUT;
    return {pq_.PQsocket(connection_.get()), events, 0};
}

CPgStart::State CPgStart::GoOn()
{
    while (state_ == State::Pending) {
        pollfd socket = Awaited();
        if (Clock::now() >= share_until_ || answer_.IsEndless()) {
            PassOver();
        } else if (poll(&socket, 1, 0) > 0) {
            Step();
        } else {
            break;
        }
    }
    if (state_ == State::Failed || state_ == State::Late) {
        connection_.reset();
    }
    return state_;
}

void CPgStart::PassOver()
{
    if (hosts_.Count() <= 1 || Clock::now() >= until_) {
        state_ = State::Late;
        return;
    }
    hosts_.LeaveOut(pq_, connection_.get());
    Begin();
    SetShare();
}

// Something has come for which it was waiting, and not the end of the line. Before that a look would take away the
// error of a host that refuses.
bool CPgStart::HasBytes() const
{
    char byte = 0;
    return polling_ == PGRES_POLLING_READING &&
           recv(pq_.PQsocket(connection_.get()), &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

// After a refusal it goes on to the next host by itself. Later than these there is nothing left to refuse but a server
// that does not write, which may be another one in a moment.
void CPgStart::Step()
{
    const ConnStatusType status = pq_.PQstatus(connection_.get());
    const bool has_bytes = HasBytes();
    const bool spoken_to = has_bytes && (status == CONNECTION_SSL_STARTUP || status == CONNECTION_AWAITING_RESPONSE);
    if (has_bytes) {
        share_until_ = std::min(std::max(share_until_, Clock::now() + share_), latest_);
        until_ = std::max(until_, share_until_);
    }
    polling_ = answer_.Count(pq_.PQsocket(connection_.get()), [this] { return pq_.PQconnectPoll(connection_.get()); });
    const bool failed = polling_ == PGRES_POLLING_FAILED;
    refused_ = refused_ || (spoken_to && (failed || pq_.PQstatus(connection_.get()) == CONNECTION_STARTED));
    if (failed) {
        Fail();
    } else if (polling_ == PGRES_POLLING_OK) {
        pq_.PQsetErrorVerbosity(connection_.get(), PQERRORS_DEFAULT);
        state_ = State::Open;
    }
}

} // namespace partkeep
