#include "partlibrary/postgres/pg_servers.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_answer.h"
#include "partlibrary/postgres/pg_line.h"
#include "partlibrary/postgres/pg_problem.h"
#include "partlibrary/postgres/pg_start.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace partkeep {

namespace {

using Clock = CPgStart::Clock;

QStringList ReadNames(const CPgResult& rows, QStringList& barred)
{
    std::vector<std::pair<QByteArray, QString>> found;
    for (int row = 0; row < rows.Rows(); ++row) {
        const QString server = rows.Text(row, 0);
        if (CheckName(server) != NameFault::None) {
            continue;
        }
        if (rows.Integer(row, 1) == 0) {
            barred += server;
        } else {
            found.emplace_back(SortKey(server), server);
        }
    }
    std::sort(found.begin(), found.end());
    QStringList names;
    for (const auto& entry : found) {
        names += entry.second;
    }
    return names;
}

// What one service is asked, from the connection to the answer. Nothing is waited for.
class CQuestion {
public:
    CQuestion(const PqDriver& pq, const QString& service, Clock::time_point until)
        : pq_(pq), place_{service, {}}, until_(until), connection_(nullptr, CPqFinish{&pq})
    {
        start_.emplace(pq_, place_, true, until_);
    }

    // False when it has come to its end.
    bool GoOn()
    {
        if (!over_ && connection_ == nullptr && Clock::now() >= again_) {
            Connect();
        }
        if (!over_ && connection_ != nullptr) {
            Receive();
        }
        return !over_;
    }

    [[nodiscard]] pollfd Awaited() const
    {
        const short events = static_cast<short>(POLLIN | (unsent_ ? POLLOUT : 0));
        return connection_ != nullptr ? pollfd{pq_.PQsocket(connection_.get()), events, 0}
               : start_               ? start_->Awaited()
                                      : pollfd{-1, 0, 0};
    }
    [[nodiscard]] Clock::time_point Until() const
    {
        return connection_ != nullptr ? until_ : start_ ? start_->Until() : again_;
    }
    [[nodiscard]] PgServers Answer() { return std::move(answer_); }

private:
    void Connect()
    {
        if (!start_) {
            start_.emplace(pq_, place_, true, until_);
        }
        const auto state = start_->GoOn();
        if (state == CPgStart::State::Late) {
            End(NoAnswer(too_late));
        } else if (state == CPgStart::State::Failed) {
            Lose(LibraryProblem(start_->Problem()));
        } else if (state == CPgStart::State::Open) {
            connection_ = start_->Take();
            if (!asked_) { // or a server that breaks off each time would be asked for ever
                until_ = std::max(until_, Clock::now() + browse_patience);
            }
            Ask();
        }
    }

    // Where names are looked up is the service's to say yet. A library that is unsafe to look at is named as a damaged
    // one is, and told about when somebody asks for it: one that vanished would leave them to guess.
    void Ask()
    {
        const CSql sql("SELECT n.nspname::pg_catalog.text, pg_catalog.has_schema_privilege(n.oid, "
                       "'USAGE'::pg_catalog.text) FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n "
                       "ON n.oid OPERATOR(pg_catalog.=) c.relnamespace "
                       "WHERE c.relname OPERATOR(pg_catalog.=) 'partkeep_library'");
        asked_ = true;
        answer_so_far_.Begin();
        if (pq_.PQsetnonblocking(connection_.get(), 1) != 0 || !SendStatement(pq_, connection_.get(), sql)) {
            Lose(LineProblem());
        }
    }

    void Receive()
    {
        const int unsent = pq_.PQflush(connection_.get());
        unsent_ = unsent > 0;
        pollfd socket = Awaited();
        const auto read = [this] { return pq_.PQconsumeInput(connection_.get()); };
        if (unsent < 0 || (poll(&socket, 1, 0) > 0 && answer_so_far_.Count(socket.fd, read) == 0)) {
            Lose(LineProblem());
            return;
        }
        if (answer_so_far_.IsEndless()) {
            End(NoAnswer(CPgAnswer::endless));
            return;
        }
        while (!over_ && connection_ != nullptr && pq_.PQisBusy(connection_.get()) == 0) {
            Take(CPgResult(pq_, pq_.PQgetResult(connection_.get())));
        }
        if (!over_ && Clock::now() >= until_) {
            End(NoAnswer(too_late));
        }
    }

    // The first result tells all.
    void Take(const CPgResult& result)
    {
        if (!result) {
            Lose(LineProblem());
        } else if (result.Status() == PGRES_TUPLES_OK) {
            answer_.names = ReadNames(result, answer_.barred);
            End({});
        } else {
            Lose(PgProblem(result, place_, true, pq_.PQerrorMessage(connection_.get())));
        }
    }

    // What was there a moment ago may be starting anew: it is asked once more, as long as there is time.
    void Lose(const LibraryProblem& problem)
    {
        unsent_ = false;
        connection_.reset();
        start_.reset();
        again_ = Clock::now() + between_attempts;
        if (!asked_ || problem.fault != LibraryFault::NoAnswer || again_ >= until_) {
            End(problem);
        }
    }

    void End(const LibraryProblem& problem)
    {
        over_ = true;
        answer_.problem = problem;
    }

    [[nodiscard]] LibraryProblem NoAnswer(std::string_view why) const
    {
        return {LibraryFault::NoAnswer, place_.Text(), OneLine(why)};
    }
    [[nodiscard]] LibraryProblem LineProblem() const { return NoAnswer(pq_.PQerrorMessage(connection_.get())); }

    const PqDriver& pq_;
    PgPlace place_;
    Clock::time_point until_;
    Clock::time_point again_;
    std::optional<CPgStart> start_; // while it is connecting
    PqConnection connection_;
    CPgAnswer answer_so_far_; // by bytes: it has two seconds in all
    PgServers answer_;
    bool asked_ = false;
    bool unsent_ = false;
    bool over_ = false;
};

// Until something has come for one of them, or one has waited long enough.
void WaitForAny(std::span<const CQuestion* const> questions)
{
    std::vector<pollfd> sockets;
    auto until = Clock::time_point::max();
    for (const CQuestion* const question : questions) {
        sockets.push_back(question->Awaited());
        until = std::min(until, question->Until());
    }
    static_cast<void>(PollUntil(sockets, until)); // each finds out by itself
}

} // namespace

std::vector<PgServers> ReadPgServers(std::span<const QString> services)
{
    LibraryProblem problem;
    const PqDriver* const pq = LoadPqDriver(problem);
    if (pq == nullptr) {
        std::vector<PgServers> answers;
        for (const QString& service : services) {
            answers.push_back({std::nullopt, {}, {problem.fault, PgPlace{service, {}}.Text(), problem.detail}});
        }
        return answers;
    }
    const auto until = Clock::now() + browse_patience;
    std::vector<std::unique_ptr<CQuestion>> questions;
    for (const QString& service : services) {
        questions.push_back(std::make_unique<CQuestion>(*pq, service, until));
    }
    for (;;) {
        std::vector<const CQuestion*> open;
        for (const auto& question : questions) {
            if (question->GoOn()) {
                open.push_back(question.get());
            }
        }
        if (open.empty()) {
            break;
        }
        WaitForAny(open);
    }
    std::vector<PgServers> answers;
    answers.reserve(questions.size());
    for (const auto& question : questions) {
        answers.push_back(question->Answer());
    }
    return answers;
}

} // namespace partkeep
