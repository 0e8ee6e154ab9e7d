// A connection that is being made: the hosts of a service in turn, each with its share of the time, so that one that
// swallows everything does not take that of the next. Nothing is waited for here but the look-up of a host's name: who
// makes the connection waits for its socket, and for those of others with it.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/postgres/pg_answer.h"
#include "partlibrary/postgres/pg_hosts.h"
#include "partlibrary/postgres/pg_place.h"
#include "partlibrary/postgres/pq_functions.h"

#include <chrono>
#include <poll.h>

namespace partkeep {

class CPgStart {
public:
    using Clock = std::chrono::steady_clock;
    enum class State { Pending, Open, Failed, Late };

    // By when the first byte must have come, or the next one in as long a time; up to five times as long in all. A
    // browser leaves it to its own deadlines when the line is lost.
    CPgStart(const PqDriver& pq, PgPlace place, bool browses, Clock::time_point until);

    // As far as it goes without waiting.
    State GoOn();
    // While it is pending: what to wait for, and how long before it goes on at another host, or is late.
    [[nodiscard]] pollfd Awaited() const;
    [[nodiscard]] Clock::time_point Until() const { return share_until_; }

    [[nodiscard]] PqConnection Take() { return std::move(connection_); }
    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; } // unless it is late

private:
    void Begin();
    void PassOver();
    void Step();
    void Fail();
    [[nodiscard]] bool HasBytes() const;
    void SetShare();

    const PqDriver& pq_;
    PgPlace place_;
    bool browses_;
    Clock::time_point until_;
    Clock::time_point latest_;
    Clock::time_point share_until_;
    Clock::duration share_{};
    CPgHosts hosts_;
    PqConnection connection_;
    CPgAnswer answer_; // by bytes
    PostgresPollingStatusType polling_ = PGRES_POLLING_WRITING;
    State state_ = State::Pending;
    bool refused_ = false; // after the server had spoken
    LibraryProblem problem_;
};

} // namespace partkeep
