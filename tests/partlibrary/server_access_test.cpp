// Who is let in by a server that takes nothing but TLS and passwords, and what those are told that are not.
#include "partlibrary/postgres/pg_admin.h"
#include "tests/partlibrary/library_fixture.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <utility>

#include <netinet/in.h>

namespace partkeep {
namespace {

using std::chrono::steady_clock;
using namespace std::string_literals;

constexpr std::chrono::milliseconds longest_wait{2700};

// A port at which connections are taken, and nothing is ever said, or always the same to whoever has said something.
class CHole {
public:
    explicit CHole(std::string answer = {}) : answer_(std::move(answer))
    {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        EXPECT_TRUE(bind(hole_, reinterpret_cast<sockaddr*>(&address_), size) == 0 && listen(hole_, 50) == 0 &&
                    getsockname(hole_, reinterpret_cast<sockaddr*>(&address_), &size) == 0);
        if (!answer_.empty()) {
            answering_ = std::jthread([this] { Answer(); });
        }
    }
    ~CHole()
    {
        shutdown(hole_, SHUT_RDWR);
        answering_ = {}; // comes to its end
        close(hole_);
    }
    CHole(const CHole&) = delete;
    CHole& operator=(const CHole&) = delete;
    [[nodiscard]] std::string Port() const { return std::to_string(ntohs(address_.sin_port)); }

private:
    void Answer() const
    {
        for (int caller = 0; (caller = accept(hole_, nullptr, nullptr)) >= 0; close(caller)) {
            std::array<char, 1024> said{};
            static_cast<void>(recv(caller, said.data(), said.size(), 0));
            static_cast<void>(send(caller, answer_.data(), answer_.size(), MSG_NOSIGNAL));
        }
    }

    std::string answer_;
    int hole_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address_{};
    std::jthread answering_;
};

// What a server says that does not take a connection.
std::string Fatal(const std::string& state)
{
    const std::string fields = "SFATAL"s + '\0' + 'C' + state + '\0' + "Mnot now" + '\0' + '\0';
    return "E"s + '\0' + '\0' + '\0' + static_cast<char>(fields.size() + 4) + fields;
}

class ServerAccess : public LibraryShop {
protected:
    // What the browser has to say, and the tool; nothing where both show what is there.
    std::pair<std::string, std::string> Ask(const std::string& service)
    {
        CBrowserSession session{CLibraryFolder({}, {QString::fromLatin1(service.c_str())})};
        const auto begin = steady_clock::now();
        const bool shown = session.Go(u"SRV1"_s, u"Plates\\2008"_s) && session.SelectAllParts(1) == 1 &&
                           session.GetSelectedPartCount() == 5;
        EXPECT_LT(steady_clock::now() - begin, longest_wait) << service;
        EXPECT_TRUE(!shown || Follows(*session.Library())) << service;
        const ToolRun listed = RunTool({"list", service + ":SRV1"});
        return {shown ? "" : "not shown: " + ProblemText(session.Problem()), listed.end == 0 ? "" : listed.err};
    }

    // Whether it shows what others change, and takes nothing for silent meanwhile.
    static bool Follows(IPartLibrary& library)
    {
        RunInDatabase("UPDATE partkeep_library SET revision = revision + 1");
        return Comes([&] { return library.LookForChange(); }) && !library.SilentSince().isValid();
    }
};

TEST_F(ServerAccess, IsBySafeConnectionsAndForWhomThePasswordFits)
{
    if (std::getenv("PARTKEEP_POSTGRES_TLS") == nullptr) {
        GTEST_SKIP() << "no TLS here";
    }
    RunInDatabase("ALTER ROLE station PASSWORD 'of the station'");
    const std::string folder = std::getenv("PARTKEEP_POSTGRES");
    const std::string port = std::getenv("PARTKEEP_POSTGRES_PORT");
    const std::string here = "hostaddr=127.0.0.1\nport=" + port + "\npassword=of the station\n";
    const std::string own = "sslrootcert=" + folder + "/ca.pem\n";
    const std::string full = "sslmode=verify-full\nchannel_binding=require\n" + own;
    const std::string right = here + "host=db.example\n" + full;
    const CHole hole;
    const CHole another_hole;
    const CHole plain("N");
    const CHole starting(Fatal("57P03"));
    const CHole full_up(Fatal("53300"));
    const CHole web("HTTP/1.1 400 Bad Request\r\n\r\n");
    const auto at = [](const CHole& whom) { return "host=127.0.0.1\nport=" + whom.Port() + "\n"; };
    const char* const refused = "access to the library is refused";
    const char* const away = "the server of the library does not answer";
    const std::string holes = "hostaddr=127.0.0.1,127.0.0.1,127.0.0.1\nhost=db.example,db.example,db.example\nport=";
    const struct {
        const char* service;
        std::string settings;
        const char* kind; // what both say; null: let in
        const char* why = "";
        const char* before = "";
        const char* after = "";
    } rows[] = {
        {"plain", here + "host=db.example\nsslmode=disable\n", refused, "no encryption)"},
        {"elsewhere", here + "host=db.elsewhere\n" + full, refused, "does not match host name \"db.elsewhere\")"},
        {"other-authority", here + "host=db.example\nsslmode=verify-full\nsslrootcert=" + folder + "/other-ca.pem\n",
         refused, "certificate verify failed)"},
        {"no-authority", here + "host=db.example\nsslmode=verify-full\nsslrootcert=/nowhere.pem\n", refused,
         "/nowhere.pem"},
        {"guessed", "password=guessed\nhost=db.example\n" + full + here, refused,
         "FATAL: password authentication failed for user \"station\")"},
        {"no-password", "hostaddr=127.0.0.1\nhost=db.example\nport=" + port + "\n" + full, refused,
         "no password supplied)"},
        {"no-login", right, refused, "is not permitted to log in)", "ALTER ROLE station NOLOGIN",
         "ALTER ROLE station LOGIN"},
        {"no-database", right + "dbname=nowhere\n", refused, "database \"nowhere\" does not exist)"},
        {"no-schema", right, refused, "permission denied for schema SRV1)",
         "REVOKE USAGE ON SCHEMA \"SRV1\" FROM partkeep_station", "GRANT USAGE ON SCHEMA \"SRV1\" TO partkeep_station"},
        {"no-table", right, refused, "permission denied for table partkeep_library)",
         "REVOKE SELECT ON partkeep_library FROM partkeep_station",
         "GRANT SELECT ON partkeep_library TO partkeep_station"},
        {"no-tls", at(plain) + "sslmode=require\n", refused, "server does not support SSL"},
        {"no-database-server", at(web) + "sslmode=disable\n", refused},
        {"no-service", {}, refused, "no-service"},
        {"starting", at(starting) + "sslmode=disable\n", away, "FATAL: not now)"},
        {"full", at(full_up) + "sslmode=disable\n", away, "FATAL: not now)"},
        {"nobody", "host=127.0.0.1\nport=1\n", away, "Connection refused"},
        {"right", right, nullptr},
        {"second", holes + hole.Port() + "," + port + "," + hole.Port() + "\npassword=of the station\n" + full,
         nullptr},
        {"third", holes + hole.Port() + "," + another_hole.Port() + "," + port + "\npassword=of the station\n" + full,
         nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.service);
        if (!row.settings.empty()) {
            AddService(row.service, row.settings);
        }
        RunInDatabase(row.before);
        const auto [browser, tool] = Ask(row.service);
        RunInDatabase(row.after);
        EXPECT_EQ(row.kind == nullptr, (browser + tool).empty());
        for (const std::string& said : {browser, tool}) {
            EXPECT_TRUE(row.kind == nullptr ||
                        (said.find(row.kind) != std::string::npos && said.find(row.why) != std::string::npos))
                << said;
        }
    }
}

TEST_F(ServerAccess, ALibraryIsMadeWhereNoneIsAndRepairedOnlyFromABackup)
{
    const std::pair<QString, LibraryFault> rows[] = {
        {u"pg_parts"_s, LibraryFault::NameRefused},     {u"$user"_s, LibraryFault::NameRefused},
        {QString(64, u'x'), LibraryFault::NameRefused}, {u"nul"_s, LibraryFault::NameRefused},
        {u"SRV1"_s, LibraryFault::AlreadyThere},        {u"NEW"_s, LibraryFault::None},
    };
    for (const auto& [name, fault] : rows) {
        for (const bool dry_run : {true, false}) {
            problem_ = {};
            EXPECT_EQ(CPgAdmin({test_service, name}).Create(dry_run, problem_), fault == LibraryFault::None);
            EXPECT_EQ(problem_.fault, fault) << name.toStdString() << dry_run;
        }
    }
    CPgAdmin sound({test_service, u"NEW"_s});
    EXPECT_TRUE(sound.Repair(false, {}, problem_)) << ProblemText(problem_);
    EXPECT_FALSE(sound.Backup(u"x"_s, false, false, {}, problem_));
    RunInDatabase("UPDATE \"NEW\".folder SET parts = 7");
    EXPECT_FALSE(sound.Repair(false, {}, problem_));
    EXPECT_EQ(problem_.fault, LibraryFault::BadInput);
    RunInDatabase("DROP SCHEMA \"NEW\" CASCADE");
}

// Whoever has made the schema: no code of theirs runs by the rights of who looks, and whoever asks is told why not.
TEST_F(ServerAccess, IsNotToASchemaWhereCodeOfItsMakerWouldRun)
{
    RunInDatabase("DROP SCHEMA IF EXISTS trap CASCADE; CREATE SCHEMA trap; CREATE FUNCTION trap.code() RETURNS bool "
                  "LANGUAGE plpgsql AS $$ BEGIN RAISE LOG 'ran by %', current_user; RETURN TRUE; END $$; "
                  "GRANT USAGE ON SCHEMA trap TO PUBLIC; CREATE DOMAIN trap.short AS text CHECK (trap.code()); "
                  "CREATE FUNCTION trap.fires() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RETURN NULL; END'");
    // What was made, why that is refused, and how it is undone.
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"ALTER TABLE partkeep_library RENAME TO kept; CREATE VIEW partkeep_library AS SELECT * FROM kept "
         "WHERE trap.code(); GRANT SELECT ON partkeep_library TO PUBLIC",
         "partkeep_library is not a table", "DROP VIEW partkeep_library; ALTER TABLE kept RENAME TO partkeep_library"},
        {"CREATE FUNCTION \"SRV1\".unnest(int8[]) RETURNS SETOF int8 LANGUAGE sql AS 'SELECT trap.code()::int::int8'",
         "the schema holds functions, operators or types", "DROP FUNCTION \"SRV1\".unnest(int8[])"},
        {"CREATE RULE r AS ON INSERT TO part DO ALSO SELECT trap.code()", "part has a rule", "DROP RULE r ON part"},
        {"CREATE TRIGGER t AFTER INSERT ON part EXECUTE FUNCTION trap.fires()", "part has a trigger",
         "DROP TRIGGER t ON part"},
        {"CREATE POLICY p ON part USING (trap.code())", "part has a policy", "DROP POLICY p ON part"},
        {"ALTER TABLE piece OWNER TO station", "piece belongs to another role than the schema",
         "ALTER TABLE piece OWNER TO owner"},
        {"CREATE TABLE trap.more() INHERITS (folder)", "folder is inherited", "DROP TABLE trap.more"},
        {"ALTER TABLE folder ADD CONSTRAINT c CHECK (trap.code())", "folder has a constraint",
         "ALTER TABLE folder DROP CONSTRAINT c"},
        {"ALTER TABLE pair ADD short trap.short", "pair has a column of another type", "ALTER TABLE pair DROP short"},
        {"ALTER TABLE pair ADD more text DEFAULT trap.code()", "pair computes a column", "ALTER TABLE pair DROP more"},
        {"CREATE INDEX i ON part_file((bytes + 1))", "part_file has an index that computes", "DROP INDEX i"},
    };
    const std::string log = std::string(std::getenv("PARTKEEP_POSTGRES")) + "/log";
    const std::string in = target_.Path("in").string();
    fs::create_directory(in);
    WriteBytes(in + "/A.iga", "A");
    for (const auto& [made, why, undone] : rows) {
        RunInDatabase(made);
        const std::size_t logged = ReadBytes(log).size(); // what made it may have run by itself
        const auto [browser, list] = Ask("partkeep-station");
        for (const std::string& told :
             {browser, list, RunTool({"check", "partkeep:SRV1"}).err, RunTool({"import", "partkeep:SRV1", in}).err,
              RunTool({"copy", "partkeep:SRV1", in + "/out.kpl"}).err}) {
            EXPECT_NE(told.find("the library is damaged (" + why + ")"), std::string::npos) << why << ": " << told;
        }
        EXPECT_EQ(ReadBytes(log).find("LOG:  ran by", logged), std::string::npos) << why;
        RunInDatabase(undone);
        EXPECT_EQ(Ask("partkeep-station"), std::pair(""s, ""s)) << why;
    }
}

// Which comes to light again when the file goes.
TEST_F(ServerAccess, AFileGoesBeforeADatabaseOfItsName)
{
    const QString folder = QString::fromStdString(target_.Path().string());
    const QString file = folder + u"/SRV1.kpl"_s;
    CBrowserSession session{CLibraryFolder(folder, {test_service})};
    for (const bool is_file : {false, true, false}) {
        EXPECT_TRUE(is_file ? CSqliteWriter::Create(file, problem_) : (fs::remove(file.toStdString()), true));
        EXPECT_EQ(session.Refresh(), session.Library() != nullptr);
        ASSERT_TRUE(session.Go(u"SRV1"_s, {}));
        EXPECT_EQ(session.IsTwice(), is_file);
        EXPECT_EQ(session.Folders(u"SRV1"_s, {}).value().empty(), is_file);
        EXPECT_EQ(session.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P1").has_value(), !is_file);
        EXPECT_FALSE(session.FailsSince().isValid() || session.Go(u"SRV2"_s, {}));
        EXPECT_EQ(session.Problem().fault, LibraryFault::NotFound);
    }
}

// What is asked after a wait is answered at once, and the first call behind it waits no more than the first did.
TEST_F(ServerAccess, WaitsOnceForAHoleInTheNetwork)
{
    const CHole hole;
    AddService("hole", "hostaddr=127.0.0.1\nport=" + hole.Port() + "\n");
    CBrowserSession session{CLibraryFolder({}, {u"hole"_s})};
    const auto begin = steady_clock::now();
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(session.Go(u"SRV1"_s, {}) || session.ReadPartAttributes(u"SRV1", u"P1") ||
                     session.CopyPartFiles(u"SRV1", u"P1"));
        EXPECT_EQ(session.Problem().fault, LibraryFault::NoAnswer);
        EXPECT_TRUE(session.FailsSince().isValid());
    }
    EXPECT_LT(steady_clock::now() - begin, longest_wait);
}

TEST_F(ServerAccess, WaitsForAllHolesAtOnceAndShowsWhatTheOthersHave)
{
    const CHole holes[3];
    QStringList services;
    for (const CHole& hole : holes) {
        AddService("hole" + hole.Port(), "hostaddr=127.0.0.1\nport=" + hole.Port() + "\n");
        services += QString::fromStdString("hole" + hole.Port());
    }
    services.insert(1, test_service + u"-station"_s);
    CBrowserSession session{CLibraryFolder({}, services)};
    const auto begin = steady_clock::now();
    EXPECT_TRUE(session.Go(u"SRV1"_s, u"Plates\\2008"_s));
    EXPECT_FALSE(session.Go(u"of nobody"_s, {}));
    EXPECT_LT(steady_clock::now() - begin, longest_wait);
}

} // namespace
} // namespace partkeep
