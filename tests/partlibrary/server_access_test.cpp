// Who is let in by a server that takes nothing but TLS and passwords, and what those are told that are not.
#include "partlibrary/tool/commands.h"
#include "tests/partlibrary/library_fixture.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include <netinet/in.h>

namespace partkeep {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds longest_wait{2700};

// A port at which connections are taken, and nothing is ever said.
class CHole {
public:
    CHole()
    {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        EXPECT_TRUE(bind(hole_, reinterpret_cast<sockaddr*>(&address_), size) == 0 && listen(hole_, 50) == 0 &&
                    getsockname(hole_, reinterpret_cast<sockaddr*>(&address_), &size) == 0);
    }
    ~CHole() { close(hole_); }
    CHole(const CHole&) = delete;
    CHole& operator=(const CHole&) = delete;
    [[nodiscard]] std::string Port() const { return std::to_string(ntohs(address_.sin_port)); }

private:
    int hole_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address_{};
};

class ServerAccess : public LibraryShop {
protected:
    ServerAccess()
    {
        libraries_.MakeShop();
        std::ofstream(services_) << std::ifstream(before_).rdbuf();
        setenv("PGSERVICEFILE", services_.c_str(), 1);
    }
    ~ServerAccess() override { setenv("PGSERVICEFILE", before_.c_str(), 1); }

    void AddService(const std::string& name, const std::string& settings)
    {
        std::ofstream(services_, std::ios::app) << "[" << name << "]\ndbname=postgres\nuser=station\n" << settings;
    }

    // What the browser has to say, and the tool; nothing where both show what is there.
    std::pair<std::string, std::string> Ask(const std::string& service)
    {
        CBrowserSession session{CLibraryFolder({}, {QString::fromLatin1(service.c_str())})};
        const auto begin = steady_clock::now();
        const bool shown = session.Go(u"SRV1"_s, u"Plates\\2008"_s) && session.SelectAllParts(1) == 1 &&
                           session.GetSelectedPartCount() == 5;
        EXPECT_LT(steady_clock::now() - begin, longest_wait) << service;
        EXPECT_TRUE(!shown || Follows(*session.Library())) << service;
        std::ostringstream out;
        const std::string library = service + ":SRV1";
        const char* const argv[] = {"partkeep-library", "list", library.c_str()};
        const bool listed = RunLibraryTool(3, argv, {out, out}) == 0;
        return {shown ? "" : "not shown: " + ProblemText(session.Problem()), listed ? "" : out.str()};
    }

    // Whether it shows what others change, and takes nothing for silent meanwhile.
    static bool Follows(IPartLibrary& library)
    {
        bool changed = false;
        RunInDatabase("UPDATE partkeep_library SET revision = revision + 1");
        for (int look = 0; look < 1000 && !changed; ++look) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            changed = library.LookForChange();
        }
        return changed && !library.SilentSince().isValid();
    }

    std::string before_ = std::getenv("PGSERVICEFILE");
    fs::path services_ = target_.Path("services");
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
    const CHole hole;
    const CHole another_hole;
    const std::string holes = "hostaddr=127.0.0.1,127.0.0.1,127.0.0.1\nhost=db.example,db.example,db.example\nport=";
    const struct {
        const char* service;
        std::string settings;
        const char* refused; // what both say, among other words; null: let in
    } rows[] = {
        {"plain", here + "host=db.example\nsslmode=disable\n", "no encryption"},
        {"elsewhere", here + "host=db.elsewhere\n" + full, "does not match host name \"db.elsewhere\""},
        {"other-authority", here + "host=db.example\nsslmode=verify-full\nsslrootcert=" + folder + "/other-ca.pem\n",
         "certificate verify failed"},
        {"no-authority", here + "host=db.example\nsslmode=verify-full\nsslrootcert=/nowhere.pem\n", "/nowhere.pem"},
        {"guessed", "password=guessed\nhost=db.example\n" + full + here, "password authentication failed"},
        {"no-password", "hostaddr=127.0.0.1\nhost=db.example\nport=" + port + "\n" + full, "no password supplied"},
        {"right", here + "host=db.example\n" + full, nullptr},
        {"second", holes + hole.Port() + "," + port + "," + hole.Port() + "\npassword=of the station\n" + full,
         nullptr},
        {"third", holes + hole.Port() + "," + another_hole.Port() + "," + port + "\npassword=of the station\n" + full,
         nullptr},
    };
    for (const auto& row : rows) {
        AddService(row.service, row.settings);
        const auto [browser, tool] = Ask(row.service);
        if (row.refused == nullptr) {
            EXPECT_EQ(browser + tool, "") << row.service;
            continue;
        }
        EXPECT_NE(browser.find(row.refused), std::string::npos) << row.service << ": " << browser;
        EXPECT_NE(tool.find(row.refused), std::string::npos) << row.service << ": " << tool;
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
