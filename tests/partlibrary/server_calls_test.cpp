// Whatever call of the database's client library fails, at whatever place: what was begun is done wholly or not at all,
// what is shown is right as far as it is there, and whoever has asked goes on asking.
#include "partlibrary/postgres/pg_driver.h"
#include "tests/partlibrary/server_faults.h"

#include <algorithm>
#include <libpq-fe.h>
#include <set>
#include <sstream>
#include <utility>

namespace partkeep {
namespace {

#define PARTKEEP_PQ_POINTER(name) &::name,
constexpr PqDriver real{sizeof(PqDriver), PARTKEEP_PQ_FUNCTIONS(PARTKEEP_PQ_POINTER)};
#undef PARTKEEP_PQ_POINTER
std::set<const PGconn*> ended;

// The line ends there; there is no memory for the one call; a statement is one that the server refuses; or a value is
// none that can be: less than nothing, nothing, very much, without a byte, null, or of no row or column at all; or
// there is no answer to a statement among the others.
enum Kind { Ended, NoMemory, Refused, Negative, Zero, Large, Empty, Null, NoRow, NoColumn, NoResult };
constexpr auto untrue = {Negative, Zero, Large, Empty, Null, NoRow, NoColumn, NoResult};
struct {
    Kind kind = Ended;
    int at = 0; // 0: none
    int made = 0;
    int connected = 0; // for the first time: nobody waits for a server that was not there before
} failing_call;

bool FailsNow(const PGconn* connection, bool sends = false)
{
    const bool counts = failing_call.kind < Refused || (sends && failing_call.kind == Refused);
    const bool now = counts && ++failing_call.made == failing_call.at;
    if (now && failing_call.kind == Ended && connection != nullptr) {
        ended.insert(connection);
    }
    return now || ended.contains(connection);
}

bool IsUntrue(std::initializer_list<Kind> kinds)
{
    return std::ranges::find(kinds, failing_call.kind) != kinds.end() && ++failing_call.made == failing_call.at;
}

template <auto function, auto failed, typename R, typename... A>
R Call(PGconn* connection, A... arguments)
{
    return FailsNow(connection) ? R(failed) : (real.*function)(connection, arguments...);
}

// The number of a transaction that was not made is another's by the time that somebody asks; nobody knows it any more;
// the question is refused; or it is still under way, for once.
template <auto function, typename Which, typename... A>
int Send(PGconn* connection, Which* statement, A... arguments)
{
    static unsigned asked = 0;
    const std::string text = statement;
    const char* const fates[] = {"replace(t.s, 'aborted', 'committed')", "NULL", "(1/0)::text", "'in progress'"};
    const bool asks = text.find("pg_xact_status") != std::string::npos;
    const std::string told = asks ? "SELECT "s + fates[asked++ % 4] + " FROM (" + text + ") AS t(s)" : text;
    statement = told.c_str();
    if (!FailsNow(connection, true)) {
        return (real.*function)(connection, statement, arguments...);
    }
    return failing_call.kind == Refused
               ? real.PQsendQueryParams(connection, "SELECT 1/0", 0, nullptr, nullptr, nullptr, nullptr, 1)
               : 0;
}

// Of what comes when there is no memory for it, the client library makes an error without a state.
PGresult* GetResult(PGconn* connection)
{
    PGresult* const result = ended.contains(connection) ? nullptr : real.PQgetResult(connection);
    if (result == nullptr || real.PQresultStatus(result) == PGRES_PIPELINE_SYNC ||
        !(FailsNow(connection) || IsUntrue({NoResult}))) {
        return result;
    }
    real.PQclear(result);
    const bool none = failing_call.kind == NoResult || ended.contains(connection);
    return none ? nullptr : PQmakeEmptyPGresult(connection, PGRES_FATAL_ERROR);
}

PqDriver Failing()
{
    PqDriver driver = real;
    driver.PQconnectStartParams = [](const char* const* names, const char* const* values, int expand) {
        return FailsNow(nullptr) ? nullptr : real.PQconnectStartParams(names, values, expand);
    };
    driver.PQfinish = [](PGconn* connection) { ended.erase(connection), real.PQfinish(connection); };
    driver.PQstatus = [](const PGconn* connection) {
        return ended.contains(connection) ? CONNECTION_BAD : real.PQstatus(connection);
    };
    driver.PQisBusy = [](PGconn* connection) { return ended.contains(connection) ? 0 : real.PQisBusy(connection); };
    driver.PQputCopyData = [](PGconn* connection, const char* bytes, int size) {
        const bool fails = FailsNow(connection);
        return fails ? -static_cast<int>(ended.contains(connection)) : real.PQputCopyData(connection, bytes, size);
    };
    driver.PQgetvalue = [](const PGresult* result, int row, int column) {
        static std::string values[] = {std::string(1 << 20, '\xFF'), std::string(1 << 20, '\0'),
                                       std::string(1 << 20, '\1')};
        return column > 0 && IsUntrue({NoColumn})  ? nullptr
               : IsUntrue({Negative, Zero, Large}) ? values[failing_call.kind - Negative].data()
                                                   : real.PQgetvalue(result, row, column);
    };
    driver.PQgetlength = [](const PGresult* result, int row, int column) {
        return IsUntrue({Empty}) ? 0 : real.PQgetlength(result, row, column);
    };
    driver.PQgetisnull = [](const PGresult* result, int row, int column) {
        return IsUntrue({Null}) ? 1 : real.PQgetisnull(result, row, column);
    };
    driver.PQntuples = [](const PGresult* result) { return IsUntrue({NoRow}) ? 0 : real.PQntuples(result); };
    driver.PQgetResult = GetResult;
    driver.PQsendQueryParams = Send<&PqDriver::PQsendQueryParams>;
    driver.PQsendQueryPrepared = Send<&PqDriver::PQsendQueryPrepared>;
    driver.PQconnectPoll = [](PGconn* connection) {
        const auto state = Call<&PqDriver::PQconnectPoll, PGRES_POLLING_FAILED, PostgresPollingStatusType>(connection);
        const bool first = state == PGRES_POLLING_OK && failing_call.connected == 0;
        failing_call.connected = first ? failing_call.made : failing_call.connected;
        return state;
    };
    driver.PQconsumeInput = Call<&PqDriver::PQconsumeInput, 0>;
    driver.PQenterPipelineMode = Call<&PqDriver::PQenterPipelineMode, 0>;
    driver.PQexitPipelineMode = Call<&PqDriver::PQexitPipelineMode, 0>;
    driver.PQflush = Call<&PqDriver::PQflush, -1>;
    driver.PQpipelineSync = Call<&PqDriver::PQpipelineSync, 0>;
    driver.PQputCopyEnd = Call<&PqDriver::PQputCopyEnd, -1>;
    driver.PQsetSingleRowMode = Call<&PqDriver::PQsetSingleRowMode, 0>;
    driver.PQsetnonblocking = Call<&PqDriver::PQsetnonblocking, -1>;
    return driver;
}

} // namespace

// Linked in, it serves the whole program.
const PqDriver* LoadPqDriver(LibraryProblem& /*problem*/)
{
    static const PqDriver driver = Failing();
    return &driver;
}

namespace {

class ServerCalls : public ServerFaults {
protected:
    ServerCalls()
    {
        fs::current_path(target_.Path());
        fs::create_directories("in/Old");
        for (const char* name : {"in/A.iga", "in/A.SY5", "in/Old/B.ncd", "in/Old/C.iga"}) {
            WriteBytes(name, name);
        }
    }
    void TearDown() override { fs::current_path("/"); }

    // By a writer that goes on after trouble. Only what was put last is there.
    bool Put()
    {
        const auto writer = libraries_.At(u"TOUR"_s)->Edit(problem_);
        const auto put = [&] {
            const auto folder = writer->Begin() ? writer->MakeFolder(u"Put"_s) : std::nullopt;
            const auto part = folder ? writer->PutPart(*folder, u"P"_s, std::nullopt) : std::nullopt;
            return part && writer->PutFile(*part, FileSlot::Iga, "twice") &&
                   writer->PutFile(*part, FileSlot::Iga, "once") && writer->Commit();
        };
        const bool done = writer != nullptr && put();
        EXPECT_TRUE(done || writer == nullptr || (put() && Run("remove partkeep:TOUR Put/")));
        return done;
    }

    // Commands of the tool, and some more.
    bool Run(const std::string& commands)
    {
        bool done = true;
        std::istringstream lines(commands);
        for (std::string line; done && std::getline(lines, line, ';');) {
            const Names words = Words(line);
            if (words[0] == "drop") {
                RunInDatabase("DROP SCHEMA \"" + words[1] + "\" CASCADE");
            } else if (words[0] == "delete") {
                fs::remove_all(words[1]);
            } else if (words[0] == "put") {
                done = Put();
            } else {
                const ToolRun ran = RunTool(words);
                done = ran.end == 0;
                told_ = ran.out + ran.err;
            }
        }
        return done;
    }
    std::string Listed() { return Run("list partkeep:TOUR"), told_; }

    std::string told_;
};

// Each call in turn, or every so many.
void FailEach(std::initializer_list<Kind> kinds, const std::function<void(Kind)>& work)
{
    const char* const every = std::getenv("PARTKEEP_EVERY_CALL");
    const int stride = every != nullptr ? std::atoi(every) : 160;
    for (const Kind kind : kinds) {
        // A statement takes some calls, and gives some values.
        const int parts = kind == Refused ? 6 : kind == NoResult ? 16 : kind > Refused ? 2 : 1;
        const int step = (stride + parts - 1) / parts;
        for (int at = 1; at == 1 || failing_call.made >= at - step; at += step) {
            SCOPED_TRACE(std::to_string(kind) + " " + std::to_string(at));
            failing_call = {kind, at};
            work(kind);
            failing_call.at = 0;
        }
    }
}

TEST_F(ServerCalls, LeaveAChangeWholeOrUndone)
{
    const std::pair<std::string, std::string> rows[] = {
        {"create partkeep:TOUR", "drop TOUR"},
        {"import partkeep:TOUR in --into New", "remove partkeep:TOUR New/"},
        {"put", "remove partkeep:TOUR Put/"},
        {"set partkeep:TOUR New/A --thickness 2", "set partkeep:TOUR New/A --thickness 0"},
        {"rename partkeep:TOUR New/ Newer", "rename partkeep:TOUR Newer/ New"},
        {"move partkeep:TOUR Newer/Old/B --to Put/In",
         "move partkeep:TOUR Put/In/B --to Newer/Old;remove partkeep:TOUR Put/In/"},
        {"remove partkeep:TOUR Put/P", "put"},
        {"check partkeep:TOUR --rebuild", ""},
        {"copy partkeep:TOUR out.kpl", "delete out.kpl"},
        {"copy out.kpl partkeep:BACK", "drop BACK"},
        {"diff partkeep:TOUR partkeep:BACK", ""},
        {"extract partkeep:TOUR out", "delete out;delete out.csv"},
    };
    for (const auto& [change, undo] : rows) {
        SCOPED_TRACE(change);
        const std::string before = Listed();
        ASSERT_TRUE(Run(change)) << told_;
        const std::string after = Listed();
        ASSERT_TRUE(Run(undo)) << told_;
        FailEach({Ended, NoMemory, Refused}, [&, &change = change, &undo = undo](Kind) {
            const bool done = Run(change);
            const std::string told = told_;
            failing_call.at = 0;
            EXPECT_EQ(Listed(), done ? after : before) << told;
            EXPECT_TRUE(!done || Run(undo)) << told_;
        });
        ASSERT_TRUE(Run(change + ";check partkeep:TOUR")) << told_;
    }
}

TEST_F(ServerCalls, AreRepeatedWhereTheyRead)
{
    for (const bool loads : {true, false}) {
        const auto reads = [&] { return loads ? Load() : Browse(); };
        FailEach({Ended, NoMemory, Refused}, [&](Kind kind) {
            const bool done = reads();
            line_.Arm(-1, {});
            const bool there = failing_call.connected > 0 && failing_call.at > failing_call.connected;
            EXPECT_TRUE(done || kind == Refused || !there);
        });
        EXPECT_TRUE(reads());
    }
}

TEST_F(ServerCalls, BringNoPartThatIsNotAsItWasStored)
{
    honest_ = false;
    FailEach(untrue, [&](Kind) { Load(), Browse(), line_.Arm(-1, {}); }); // the line keeps what has ended until then
    ASSERT_TRUE(Load());
    ASSERT_TRUE(Run("copy partkeep:SRV1 whole.kpl")) << told_;
    for (const char* reads : {"check partkeep:SRV1", "diff partkeep:SRV1 whole.kpl", "extract partkeep:SRV1 out"}) {
        FailEach(untrue, [&](Kind) {
            EXPECT_TRUE(Run(reads) || !told_.empty()) << reads;
            fs::remove_all("out");
            fs::remove("out.csv");
        });
    }
}

} // namespace
} // namespace partkeep
