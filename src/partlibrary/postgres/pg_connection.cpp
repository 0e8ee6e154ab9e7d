#include "partlibrary/postgres/pg_connection.h"

#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_start.h"
#include "partlibrary/postgres/pg_waits.h"

#include <array>
#include <utility>

namespace partkeep {

using std::chrono::milliseconds;

std::shared_ptr<CPgConnection> CPgConnection::Open(const PgPlace& place, PgUse use, LibraryProblem& problem)
{
    problem = {};
    const PqDriver* const driver = LoadPqDriver(problem);
    if (driver == nullptr) {
        problem.subject = place.Text();
        return nullptr;
    }
    if (ToUtf8(place.server).size() > longest_schema) { // the server would cut it, and show another's
        problem = {LibraryFault::NotFound, place.Text(), {}};
        return nullptr;
    }
    std::shared_ptr<CPgConnection> connection(new CPgConnection(*driver, place, use));
    const auto began = connection->last_byte_ = Clock::now();
    connection->ever_open_ = use == PgUse::Browse; // whoever shows a library has heard of it there just now
    do {
        if (connection->Connect()) {
            return connection;
        }
    } while (connection->MayRetry(began));
    problem = connection->Problem();
    return nullptr;
}

CPgConnection::CPgConnection(const PqDriver& driver, PgPlace place, PgUse use)
    : pq_(driver), place_(std::move(place)), use_(use), connection_(nullptr, CPqFinish{&driver})
{
}

CPgConnection::~CPgConnection() = default;

milliseconds CPgConnection::Patience() const
{
    return use_ == PgUse::Browse || !ever_open_ ? browse_patience : tool_patience;
}

// Connecting.

bool CPgConnection::Connect()
{
    Disconnect();
    if (!StartUp() || !EnterPipeline() || !Prepare()) {
        if (problem_.fault == LibraryFault::Refused) {
            FallSilent(problem_);
        }
        connection_.reset();
        return false;
    }
    ever_open_ = true;
    silent_since_ = {};
    silence_ = {};
    return true;
}

bool CPgConnection::StartUp()
{
    CPgStart start(pq_, place_, use_ == PgUse::Browse, last_byte_ + Patience());
    CPgStart::State state = start.GoOn();
    for (; state == CPgStart::State::Pending; state = start.GoOn()) {
        static_cast<void>(PollUntil(start.Awaited(), start.Until()));
    }
    if (state == CPgStart::State::Open) {
        connection_ = start.Take();
        return true;
    }
    if (state == CPgStart::State::Late) {
        return MissDeadline();
    }
    Lose();
    problem_ = start.Problem();
    lost_ = problem_.fault != LibraryFault::Refused; // which nothing changes in a moment
    return false;
}

bool CPgConnection::EnterPipeline()
{
    return (pq_.PQsetnonblocking(connection_.get(), 1) == 0 && pq_.PQenterPipelineMode(connection_.get()) == 1) ||
           Lose();
}

// A plan that joins by hash or reads a table from end to end is none for look-ups, whatever the statistics say; to
// compile it takes longer than it runs.
std::vector<std::pair<QString, QString>> CPgConnection::Settings() const
{
    const bool browse = use_ == PgUse::Browse;
    const bool reads = browse || use_ == PgUse::Whole;
    const QString schema = QString(place_.server).replace(QStringLiteral("\""), QStringLiteral("\"\""));
    const QString path =
        schema.isEmpty() ? QStringLiteral("pg_catalog") : QStringLiteral("\"%1\", pg_temp").arg(schema);
    const QString off = QStringLiteral("off");
    std::vector<std::pair<QString, QString>> settings{
        {QStringLiteral("search_path"), path},
        {QStringLiteral("jit"), off},
        {QStringLiteral("statement_timeout"), QString::number(browse ? browse_patience.count() : 0)},
        {QStringLiteral("lock_timeout"), QString::number(browse_patience.count())},
        {QStringLiteral("default_transaction_read_only"), reads ? QStringLiteral("on") : off}};
    if (browse) {
        settings.emplace_back(QStringLiteral("enable_hashjoin"), off);
        settings.emplace_back(QStringLiteral("enable_mergejoin"), off);
    }
    if (!reads) { // a machine that is gone must not hold its lock, whether it has an answer on its way or not
        settings.emplace_back(QStringLiteral("tcp_keepalives_idle"), QStringLiteral("2"));
        settings.emplace_back(QStringLiteral("tcp_keepalives_interval"), QStringLiteral("1"));
        settings.emplace_back(QStringLiteral("tcp_keepalives_count"), QStringLiteral("2"));
        settings.emplace_back(QStringLiteral("tcp_user_timeout"), QStringLiteral("4000"));
    }
    return settings;
}

bool CPgConnection::Prepare()
{
    std::vector<CSql> statements;
    for (const auto& [name, value] : Settings()) {
        statements.push_back(std::move(CSql("SELECT set_config(").Value(name).Add(", ").Value(value).Add(", false)")));
    }
    const bool look = use_ != PgUse::Administer && !place_.server.isEmpty();
    if (look) {
        statements.push_back(LibraryRow());
    }
    const auto results = TryAll(statements);
    if (!results) {
        TellMissingRight();
        return false;
    }
    if (look && !TakeLibraryRow(results->back())) {
        return false;
    }
    return use_ != PgUse::Whole ||
           TryAll(std::array{CSql("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY")}).has_value();
}

CSql CPgConnection::LibraryRow()
{
    return CSql("SELECT version, mark, keys, revision FROM partkeep_library");
}

bool CPgConnection::TakeLibraryRow(const CPgResult& result)
{
    if (result.Rows() != 1) {
        problem_ = {LibraryFault::NotALibrary, place_.Text(), {}};
        return false;
    }
    if (result.Integer(0, 0) != postgres_library_version) {
        problem_ = {LibraryFault::OtherVersion, place_.Text(), QString::number(result.Integer(0, 0))};
        return false;
    }
    const QByteArray id = result.Bytes(0, 1);
    if (!id_.isEmpty() && id != id_) {
        state_ = LibraryPlace::Another;
        problem_ = {LibraryFault::Replaced, place_.Text(), {}};
        return false;
    }
    id_ = id;
    revision_ = result.Integer(0, 3);
    other_keys_ = result.Text(0, 2) != KeysVersion();
    return true;
}

void CPgConnection::Disconnect()
{
    connection_.reset();
    copying_ = false;
    single_rows_ = false;
}

// False at once while the server counts as silent.
bool CPgConnection::Ready()
{
    if (Clock::now() < silent_until_) {
        problem_ = silence_;
        return false;
    }
    lost_ = false;
    return connection_ != nullptr || (!in_transaction_ && Connect());
}

QString CPgConnection::ConnectionText() const
{
    return connection_ != nullptr ? OneLine(pq_.PQerrorMessage(connection_.get())) : QString();
}

bool CPgConnection::Lose()
{
    problem_ = {LibraryFault::NoAnswer, place_.Text(), ConnectionText()};
    lost_ = true;
    Disconnect();
    return false;
}

bool CPgConnection::MissDeadline()
{
    lost_ = true;
    FallSilent(TooLate());
    return false;
}

LibraryProblem CPgConnection::TooLate() const
{
    return {LibraryFault::NoAnswer, place_.Text(), OneLine(too_late)};
}

void CPgConnection::FallSilent(const LibraryProblem& why)
{
    problem_ = silence_ = why;
    Disconnect();
    silent_until_ = Clock::now() + impatience;
    silent_since_ = silent_since_.isValid() ? silent_since_ : QTime::currentTime();
}

bool CPgConnection::IsCut() const
{
    if (connection_ == nullptr) {
        return true;
    }
    pollfd socket{pq_.PQsocket(connection_.get()), POLLRDHUP, 0};
    return poll(&socket, 1, 0) > 0;
}

bool CPgConnection::Wait(short events)
{
    const int ready = PollUntil({pq_.PQsocket(connection_.get()), events, 0}, last_byte_ + Patience());
    return ready > 0 || (ready == 0 ? MissDeadline() : Lose());
}

} // namespace partkeep
