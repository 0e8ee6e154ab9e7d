#include "partlibrary/postgres/pg_connection.h"

#include "partlibrary/library/sort_text.h"
#include "partlibrary/postgres/pg_safe_schema.h"
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
std::vector<CSql> CPgConnection::Settings() const
{
    std::vector<CSql> settings;
    const auto set = [&settings](SqlText name, const QString& value) {
        CSql sql("SELECT pg_catalog.set_config('");
        settings.push_back(std::move(sql.Add(name).Add("', ").Value(value).Add(", false)")));
    };
    const QString off = QStringLiteral("off");
    set("search_path", FromUtf8(pg_catalogue_path.View()));
    set("default_transaction_read_only", Reads() ? QStringLiteral("on") : off);
    set("jit", off);
    set("statement_timeout", QStringLiteral("0"));
    set("lock_timeout", QString::number(browse_patience.count()));
    if (Use() == PgUse::Browse) {
        set("enable_hashjoin", off);
        set("enable_mergejoin", off);
    }
    if (often_) {
        set("plan_cache_mode", QStringLiteral("force_generic_plan"));
    }
    if (!Reads()) { // a machine that is gone must not hold its lock, whether it has an answer on its way or not
        set("tcp_keepalives_idle", QStringLiteral("2"));
        set("tcp_keepalives_interval", QStringLiteral("1"));
        set("tcp_keepalives_count", QStringLiteral("2"));
        set("tcp_user_timeout", QStringLiteral("4000"));
    }
    return settings;
}

bool CPgConnection::Prepare()
{
    std::vector<CSql> statements{EnterPgSchema(Place().server)};
    if (often_) { // to compile it each time costs a third of a copy
        statements.push_back(often_->Preparation(often_name));
    }
    const bool look = Use() != PgUse::Administer;
    if (look) {
        statements.push_back(LibraryRow());
    }
    const auto results = TryAll(statements, Settings());
    if (!results) {
        TellWhyNotFound();
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
