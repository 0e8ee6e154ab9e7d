#include "partlibrary/postgres/pg_connection.h"

#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_waits.h"

#include <array>
#include <utility>

namespace partkeep {

namespace {

constexpr SqlText often_name = "often";

} // namespace

std::shared_ptr<CPgConnection> CPgConnection::Open(const PgPlace& place, PgUse use, LibraryProblem& problem,
                                                   std::optional<CSql> often)
{
    problem = {};
    const PqDriver* const driver = LoadPqDriver(problem);
    if (driver == nullptr) {
        problem.subject = place.Text();
        return nullptr;
    }
    if (!IsSchemaName(place.server)) {
        problem = {LibraryFault::NotFound, place.Text(), {}};
        return nullptr;
    }
    std::shared_ptr<CPgConnection> connection(new CPgConnection(*driver, place, use, std::move(often)));
    const auto began = connection->BeginWait();
    const bool beside_another = connection->often_.has_value(); // which does without it
    if (use == PgUse::Browse && !beside_another) { // whoever shows a library has heard of it there just now
        connection->Expect();
    }
    do {
        if (connection->Connect()) {
            return connection;
        }
    } while (connection->MayRetry(began));
    problem = connection->Problem();
    return nullptr;
}

// Connecting.

bool CPgConnection::Connect()
{
    Disconnect();
    copying_ = false;
    single_rows_ = false;
    if (!StartUp() || !EnterPipeline() || !Prepare()) {
        if (Problem().fault == LibraryFault::Refused) {
            FallSilent(Problem());
        }
        Disconnect();
        return false;
    }
    Expect();
    EndSilence();
    return true;
}

// A plan that joins by hash or reads a table from end to end is none for look-ups, whatever the statistics say; to
// compile it takes longer than it runs.
std::vector<std::pair<QString, QString>> CPgConnection::Settings() const
{
    const bool browse = Use() == PgUse::Browse;
    const QString schema = QString(Place().server).replace(QStringLiteral("\""), QStringLiteral("\"\""));
    const QString path =
        schema.isEmpty() ? QStringLiteral("pg_catalog") : QStringLiteral("\"%1\", pg_temp").arg(schema);
    const QString off = QStringLiteral("off");
    std::vector<std::pair<QString, QString>> settings{
        {QStringLiteral("search_path"), path},
        {QStringLiteral("jit"), off},
        {QStringLiteral("statement_timeout"), QStringLiteral("0")},
        {QStringLiteral("lock_timeout"), QString::number(browse_patience.count())},
        {QStringLiteral("default_transaction_read_only"), Reads() ? QStringLiteral("on") : off}};
    if (browse) {
        settings.emplace_back(QStringLiteral("enable_hashjoin"), off);
        settings.emplace_back(QStringLiteral("enable_mergejoin"), off);
    }
    if (often_) {
        settings.emplace_back(QStringLiteral("plan_cache_mode"), QStringLiteral("force_generic_plan"));
    }
    if (!Reads()) { // a machine that is gone must not hold its lock, whether it has an answer on its way or not
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
    if (often_) { // to compile it each time costs a third of a copy
        statements.push_back(often_->Preparation(often_name));
    }
    const bool look = Use() != PgUse::Administer && !Place().server.isEmpty();
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
    return Use() != PgUse::Whole ||
           TryAll(std::array{CSql("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY")}).has_value();
}

CSql CPgConnection::LibraryRow()
{
    return CSql("SELECT version, mark, keys, revision FROM partkeep_library");
}

bool CPgConnection::TakeLibraryRow(const CPgResult& result)
{
    if (result.Rows() != 1) {
        SetProblem({LibraryFault::NotALibrary, Place().Text(), {}});
        return false;
    }
    if (result.Integer(0, 0) != postgres_library_version) {
        SetProblem({LibraryFault::OtherVersion, Place().Text(), QString::number(result.Integer(0, 0))});
        return false;
    }
    const QByteArray id = result.Bytes(0, 1);
    if (!id_.isEmpty() && id != id_) {
        state_ = LibraryPlace::Another;
        SetProblem({LibraryFault::Replaced, Place().Text(), {}});
        return false;
    }
    id_ = id;
    revision_ = result.Integer(0, 3);
    other_keys_ = result.Text(0, 2) != KeysVersion();
    return true;
}

bool CPgConnection::Send(const CSql& statement, const char* prepared)
{
    BeginWait();
    return Ready() && SendOne(statement, prepared) && SendSync();
}

bool CPgConnection::SendOften(const CSql& values)
{
    return Send(values, often_name.View().data());
}

bool CPgConnection::Ready()
{
    return MayAsk() && (Get() != nullptr || (!in_transaction_ && Connect()));
}

} // namespace partkeep
