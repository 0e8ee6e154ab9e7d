#include "partlibrary/postgres/pg_watch.h"

#include "partlibrary/postgres/pg_problem.h"
#include "partlibrary/postgres/pg_safe_schema.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <poll.h>
#include <string>
#include <utility>

namespace partkeep {

namespace {

constexpr std::chrono::seconds between_revisions{1};
constexpr int most_results = 24; // at one look
constexpr std::size_t most_questions = 8;
constexpr qint64 most_under_way = 1 << 18; // bytes of pictures, behind which a change would have to wait
constexpr int most_behind = 60;            // looks in a row

bool IsReady(int socket, short events)
{
    pollfd one{socket, events, 0};
    return poll(&one, 1, 0) > 0;
}

bool IsLongAgo(std::chrono::steady_clock::time_point when)
{
    return std::chrono::steady_clock::now() - when > browse_patience;
}

} // namespace

CPgWatch::CPgWatch(std::shared_ptr<CPgConnection> main, CPgAtHand& at_hand)
    : main_(std::move(main)), pictures_(at_hand), connection_(nullptr, CPqFinish{&main_->Driver()}),
      revision_(main_->Revision()), last_byte_(Clock::now()) // of the main line: it gets the time that others get
{
}

int CPgWatch::Socket() const
{
    return connection_ != nullptr ? main_->Driver().PQsocket(connection_.get()) : start_ ? start_->Awaited().fd : -1;
}

bool CPgWatch::Look()
{
    const auto began = Clock::now();
    if (state_ == State::Closed && began - closed_ >= pause_) {
        Start();
    }
    if (state_ == State::Connecting) {
        GoOnConnecting();
    }
    if (state_ != State::Open) { // the client library looks names up at once, however long that takes
        pause_ = std::max<Clock::duration>(pause_, 10 * (Clock::now() - began));
    }
    if (state_ == State::Open) {
        Receive();
    }
    if (state_ == State::Open) {
        AskForMore();
    }
    if (state_ == State::Open && answer_.IsEndless()) {
        GiveUp(main_->NoAnswer(CPgAnswer::endless));
    } else if (state_ == State::Open && IsOverdue()) {
        GiveUp(main_->NoAnswer(too_late));
    }
    return std::exchange(changed_, false);
}

void CPgWatch::GiveUp(const LibraryProblem& why)
{
    Close();
    changed_ = changed_ || main_->Silence().fault != why.fault;
    main_->FallSilent(why);
}

// Connecting.

void CPgWatch::Start()
{
    start_.emplace(main_->Driver(), main_->Place(), true, Clock::now() + browse_patience);
    state_ = State::Connecting;
}

void CPgWatch::GoOnConnecting()
{
    const PqDriver& pq = main_->Driver();
    const CPgStart::State state = start_->GoOn();
    if (state == CPgStart::State::Pending) {
        return;
    }
    if (state == CPgStart::State::Late) {
        GiveUp(main_->NoAnswer(too_late));
        return;
    }
    // That there is no room for one more says nothing of those that are there.
    const bool in_vain = state == CPgStart::State::Failed && main_->IsCut();
    if (in_vain && (start_->Problem().fault == LibraryFault::Refused || IsLongAgo(last_byte_))) {
        GiveUp(LibraryProblem(start_->Problem()));
        return;
    }
    connection_ = start_->Take();
    start_.reset();
    if (connection_ == nullptr || pq.PQsetnonblocking(connection_.get(), 1) != 0 ||
        pq.PQenterPipelineMode(connection_.get()) != 1) {
        Close();
        return;
    }
    last_byte_ = Clock::now();
    state_ = State::Open;
    pause_ = between_connections;
    SetUp();
}

// A standby refuses to listen; that costs nothing but the second until the revision is asked for.
void CPgWatch::SetUp()
{
    for (const CSql& setting : main_->Settings()) {
        Ask(setting, {Asked::Setting, {}});
    }
    Ask(EnterPgSchema(main_->Place().server), {Asked::Setting, {}});
    Ask(CSql("LISTEN partkeep"), {Asked::Setting, {}});
    asked_for_revision_ = {};
}

void CPgWatch::Close()
{
    start_.reset();
    connection_.reset();
    state_ = State::Closed;
    questions_.clear();
    pictures_.LoseAnswers();
    closed_ = Clock::now();
}

bool CPgWatch::IsOverdue() const
{
    return !questions_.empty() && IsLongAgo(last_byte_);
}

// Questions.

void CPgWatch::Ask(const CSql& statement, Question question)
{
    if (state_ != State::Open) {
        return;
    }
    const PqDriver& pq = main_->Driver();
    if (questions_.empty()) {
        last_byte_ = Clock::now();
        answer_.Begin();
    }
    questions_.push_back(std::move(question));
    if (!SendStatement(pq, connection_.get(), statement) || pq.PQpipelineSync(connection_.get()) != 1 ||
        pq.PQflush(connection_.get()) < 0) {
        Close();
    }
}

// What comes is for the next look.
std::optional<QByteArray> CPgWatch::Picture(PartId part, FileSlot slot)
{
    auto content = pictures_.Picture(part, slot);
    if (!content && state_ == State::Open) {
        AskForMore();
    }
    return content;
}

void CPgWatch::AskForMore()
{
    const auto now = Clock::now();
    const auto asks = [this](Asked asked) {
        return std::any_of(questions_.begin(), questions_.end(), [asked](const auto& it) { return it.asked == asked; });
    };
    const bool due = std::exchange(noticed_, false) || now - asked_for_revision_ >= between_revisions;
    if (due && !asks(Asked::Revision)) {
        asked_for_revision_ = now;
        Ask(CSql("SELECT revision, mark FROM partkeep_library"), {Asked::Revision, {}});
    }
    while (questions_.size() < most_questions && pictures_.BytesUnderWay() < most_under_way && state_ == State::Open) {
        const auto next = pictures_.Next();
        if (!next) {
            return;
        }
        Ask(next->sql, {next->picture ? Asked::Picture : Asked::Rows, next->picture});
    }
}

// Answers.

void CPgWatch::Receive()
{
    const PqDriver& pq = main_->Driver();
    if (IsReady(Socket(), POLLIN)) {
        last_byte_ = Clock::now();
        if (answer_.Count(Socket(), [&] { return pq.PQconsumeInput(connection_.get()); }) == 0) {
            Close();
            return;
        }
    }
    TakeNotices();
    static_cast<void>(pq.PQflush(connection_.get()));
    for (int results = 0; !questions_.empty() && results < most_results && pq.PQisBusy(connection_.get()) == 0;
         ++results) {
        const CPgResult result(pq, pq.PQgetResult(connection_.get()));
        if (!result && pq.PQstatus(connection_.get()) == CONNECTION_BAD) {
            Close();
            return;
        }
        if (!result) {
            continue;
        }
        if (result.Status() == PGRES_PIPELINE_SYNC) {
            questions_.pop_front();
            answer_.Begin();
        } else {
            Take(result);
        }
    }
}

void CPgWatch::TakeNotices()
{
    const PqDriver& pq = main_->Driver();
    while (PGnotify* const notice = pq.PQnotifies(connection_.get())) {
        noticed_ = noticed_ || FromUtf8(notice->extra) == main_->Place().server;
        pq.PQfreemem(notice);
    }
}

void CPgWatch::Take(const CPgResult& result)
{
    const Question& question = questions_.front();
    const bool rows = result.Status() == PGRES_TUPLES_OK;
    if (rows && question.asked == Asked::Revision) {
        TakeRevision(result);
    } else if (question.asked == Asked::Revision) {
        MissRevision(result);
    } else if (question.asked == Asked::Rows) {
        pictures_.TakeRows(result);
    } else if (question.picture) {
        pictures_.TakePicture(result, *question.picture);
    }
}

// A right that was withdrawn, or a table that has gone, is for the next call to tell; one that somebody has locked
// would hold that call up.
void CPgWatch::MissRevision(const CPgResult& error)
{
    if (const std::string_view state = error.ErrorField(PG_DIAG_SQLSTATE); IsTimeOut(state)) {
        GiveUp(PgProblem(error, main_->Place(), true, too_late));
    } else if (!IsLoss(state)) {
        changed_ = changed_ || !std::exchange(misses_revision_, true);
    }
}

// Another library in its place is for the next call to find.
void CPgWatch::TakeRevision(const CPgResult& result)
{
    if (result.Rows() != 1) {
        changed_ = true;
        return;
    }
    const qint64 told = result.Integer(0, 0);
    const bool answers_again = std::exchange(misses_revision_, false) || main_->SilentSince().isValid();
    if (answers_again) {
        main_->TryAgain();
    }
    const bool is_new = std::exchange(revision_, told) != told;
    behind_ = is_new || told == main_->Revision() ? 0 : behind_ + 1; // the other line may lead to a standby that lags
    changed_ = changed_ || answers_again || is_new || result.Bytes(0, 1) != main_->Id() ||
               (behind_ > 0 && behind_ <= most_behind);
    pictures_.Confirm(told);
}

} // namespace partkeep
