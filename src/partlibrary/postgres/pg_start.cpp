#include "partlibrary/postgres/pg_start.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace partkeep {

CPgStart::CPgStart(const PqDriver& pq, PgPlace place, bool browses, Clock::time_point until)
    : pq_(pq), place_(std::move(place)), browses_(browses), until_(until), connection_(nullptr, CPqFinish{&pq})
{
    Begin();
    if (state_ != State::Pending) {
        return;
    }
    hosts_ = {pq_, connection_.get()};
    if (hosts_.LeaveOutSilent()) {
        Begin();
    }
    share_until_ = hosts_.ShareUntil(until_);
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
    polling_ = PGRES_POLLING_WRITING;
    if (connection_ == nullptr) {
        problem_ = {LibraryFault::NoMemory, place_.Text(), {}};
        state_ = State::Failed;
    } else if (pq_.PQstatus(connection_.get()) == CONNECTION_BAD) {
        Fail();
    } else {
        pq_.PQsetNoticeProcessor(
            connection_.get(), [](void*, const char*) {}, nullptr);
    }
}

void CPgStart::Fail()
{
    problem_ = {LibraryFault::NoAnswer, place_.Text(), OneLine(pq_.PQerrorMessage(connection_.get()))};
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
        if (Clock::now() >= share_until_) {
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
    share_until_ = hosts_.ShareUntil(until_);
}

void CPgStart::Step()
{
    polling_ = pq_.PQconnectPoll(connection_.get());
    if (polling_ == PGRES_POLLING_FAILED) {
        Fail();
    } else if (polling_ == PGRES_POLLING_OK) {
        state_ = State::Open;
    }
}

} // namespace partkeep
