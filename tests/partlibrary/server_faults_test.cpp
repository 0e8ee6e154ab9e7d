// A browser and an import on a database, and what can happen to its server: whatever does, no call waits much longer
// than two seconds without a byte, every part arrives whole or not at all, and all goes on when the server does.
#include "partlibrary/tool/commands.h"
#include "tests/partlibrary/library_fixture.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace partkeep {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds longest_wait{2700};
const std::string of_browsers = " FROM pg_stat_activity WHERE application_name = 'partkeep'";

pid_t BackendOfBrowser()
{
    FILE* const shell = popen(("psql -qAt service=partkeep -c \"SELECT pid" + of_browsers + " LIMIT 1\"").c_str(), "r");
    int pid = 0;
    const bool read = std::fscanf(shell, "%d", &pid) == 1;
    pclose(shell);
    return read ? pid : 0;
}

class ServerFaults : public LibraryShop {
protected:
    ServerFaults()
    {
        libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) {
            for (const QString& name : {u"L1"_s, u"L2"_s, u"L3"_s}) {
                const auto part = writer.PutPart(*writer.MakeFolder(u"Load"_s), name, std::nullopt);
                ASSERT_TRUE(writer.PutFile(*part, FileSlot::Iga, QByteArray(900000, 'i')) &&
                            writer.PutFile(*part, FileSlot::Ncd, QByteArray(300000, 'n')));
            }
        });
    }

    // As the dialog does it, by a role that may only read. False where a call took too long or left half a part.
    bool Load(int moment, const std::function<void()>& event, int& moments, bool& complete)
    {
        CBrowserSession session{CLibraryFolder({}, {test_service + u"-station"_s})};
        session.SetTargetFolder(target_.Core());
        session.SetDataKind(-1);
        bool fine = true;
        moments = 0;
        const auto call = [&](auto&& operation) {
            if (moments++ == moment) {
                event();
            }
            const auto begin = steady_clock::now();
            const bool done = operation();
            const auto took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
            EXPECT_LT(took.count(), longest_wait.count()) << "call " << moments;
            fine = fine && took < longest_wait;
            return done;
        };
        complete = call([&] { return session.Go(u"SRV1"_s, u"Load"_s); });
        complete = call([&] { return session.SelectAllParts(1) == 1; }) && complete;
        const int count = session.GetSelectedPartCount();
        complete = complete && count == 3;
        std::vector<QString> names(3);
        for (std::int16_t i = 0; i < count; ++i) {
            call([&] {
                const auto part = session.GetSelectedPart(i);
                names[static_cast<std::size_t>(i)] = part ? part->name : QString();
                return part.has_value();
            });
        }
        for (std::int16_t i = 0; i < count; ++i) {
            const bool known = call([&] { return session.GetSelectedPart(i).has_value(); });
            const QString& name = names[static_cast<std::size_t>(i)];
            fine = fine && (known || names[1].isEmpty()); // what was told once is told again
            const bool copied = !name.isEmpty() &&
                                call([&] { return session.CopyPartFiles(u"SRV1", u"Load\\" + name.toStdU16String()); });
            fine = fine && (copied || session.Problem()) && IsWhole(name, copied);
            complete = complete && copied;
        }
        if (!complete) {
            fine = fine && session.Problem().fault != LibraryFault::None;
        }
        return fine;
    }

    bool IsWhole(const QString& name, bool copied)
    {
        const fs::path iga = target_.Path(name.toStdString() + ".iga");
        const fs::path ncd = target_.Path(name.toStdString() + ".NCD");
        return copied ? ReadBytes(iga) == std::string(900000, 'i') && ReadBytes(ncd) == std::string(300000, 'n')
                      : !fs::exists(iga) && !fs::exists(ncd);
    }
};

TEST_F(ServerFaults, ALoadIsWholeAndGoesOnWhateverHappensToTheServer)
{
    FILE* locker = nullptr;
    const struct {
        const char* label;
        std::function<void()> happens;
        std::function<void()> mended;
        bool unnoticed; // the load goes on
    } rows[] = {
        {"nothing", [] {}, [] {}, true},
        {"connections ended", [] { RunInDatabase("SELECT pg_terminate_backend(pid)" + of_browsers); }, [] {}, true},
        {"killed, and recovers",
         [] {
             if (const pid_t backend = BackendOfBrowser(); backend != 0) {
                 kill(backend, SIGKILL);
             }
         },
         [] {}, false},
        {"stopped", [] { EXPECT_TRUE(SignalDatabase("STOP")); }, [] { EXPECT_TRUE(SignalDatabase("CONT")); }, false},
        {"rights withdrawn",
         [] { RunInDatabase("REVOKE SELECT ON ALL TABLES IN SCHEMA \"SRV1\" FROM partkeep_station"); },
         [] { RunInDatabase("GRANT SELECT ON ALL TABLES IN SCHEMA \"SRV1\" TO partkeep_station"); }, false},
        {"locked",
         [&] {
             locker = popen("psql -q service=partkeep", "w");
             std::fputs("SET search_path = \"SRV1\"; BEGIN; LOCK TABLE part, folder;\n", locker);
             std::fflush(locker);
             std::this_thread::sleep_for(milliseconds(300));
         },
         [&] {
             std::fputs("ROLLBACK;\n", locker);
             pclose(locker);
         },
         false},
    };
    for (const auto& row : rows) {
        for (int moment = 0, moments = 2; moment < moments; moment += row.unnoticed ? 1 : 3) {
            SCOPED_TRACE(std::string(row.label) + " at moment " + std::to_string(moment));
            bool complete = false;
            for (const auto& old : fs::directory_iterator(target_.Path())) {
                fs::remove(old);
            }
            int passed = 0;
            EXPECT_TRUE(Load(moment, row.happens, passed, complete));
            EXPECT_TRUE(complete || !row.unnoticed);
            moments = std::max(moments, passed);
            row.mended();
            for (int wait = 0; BackendOfBrowser() == 0 && wait < 20; ++wait) { // recovering takes a moment
                bool open = false;
                Load(-1, {}, passed, open);
                std::this_thread::sleep_for(milliseconds(open ? 0 : 100));
                if (open) {
                    break;
                }
            }
            EXPECT_TRUE(Load(-1, {}, passed, complete) && complete) << "afterwards";
        }
    }
}

class ServerImports : public ServerFaults {
protected:
    ServerImports()
    {
        fs::create_directory(source_);
        for (int i = 0; i < 400; ++i) {
            WriteBytes(source_ / ("I" + std::to_string(i) + ".iga"), std::string(100000, 'x'));
        }
    }

    int Run(std::vector<const char*> argv)
    {
        told_.str({});
        return RunLibraryTool(static_cast<int>(argv.size()), argv.data(), {told_, told_});
    }
    int Import() { return Run({"partkeep-library", "import", library_.c_str(), source_.c_str(), "--into", "New"}); }
    int Remove() { return Run({"partkeep-library", "remove", library_.c_str(), "New/"}); }

    // In a process of its own, while `meanwhile` runs again and again. Whether it came to the end.
    bool ImportMeanwhile(const std::function<void(pid_t)>& meanwhile)
    {
        const pid_t child = fork();
        if (child == 0) {
            _exit(Import());
        }
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
            meanwhile(child);
            std::this_thread::sleep_for(milliseconds(1));
        }
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    void ExpectImported(bool imported, const std::string& label)
    {
        LibraryProblem problem;
        EXPECT_EQ(libraries_.At(u"SRV1"_s)->Open(problem)->FindFolder(u"New"_s).has_value(), imported) << label;
        const auto check = libraries_.At(u"SRV1"_s)->Check({}, problem);
        EXPECT_TRUE(check && check->findings.isEmpty() && check->parts == (imported ? 409 : 9)) << label;
    }

    fs::path source_ = target_.Path("in");
    std::string library_ = libraries_.PlaceOf(u"SRV1"_s).toStdString();
    std::ostringstream told_;
};

// Nothing of an import that ends in the middle is there, nor its lock; the next one brings everything once.
TEST_F(ServerImports, LeaveNothingWhereTheyAreCutOff)
{
    for (const bool of_server : {false, true}) {
        for (const int moment : {5, 40, 90, 150}) {
            const std::string label = std::to_string(moment) + (of_server ? " server" : " tool");
            const auto at = steady_clock::now() + milliseconds(moment);
            bool cut = false;
            const bool imported = ImportMeanwhile([&](pid_t child) {
                if (steady_clock::now() < at || std::exchange(cut, true)) {
                    return;
                }
                if (of_server) {
                    RunInDatabase("SELECT pg_terminate_backend(pid)" + of_browsers);
                } else {
                    kill(child, SIGKILL);
                }
            });
            ExpectImported(imported, label);
            EXPECT_TRUE(!imported || Remove() == 0) << label;
        }
    }
    const auto begin = steady_clock::now();
    EXPECT_EQ(Import(), 0);
    EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(5));
    ExpectImported(true, "afterwards");
}

// Whoever loses the answer to a commit learns what has become of it, and a second attempt brings nothing twice.
TEST_F(ServerImports, KnowWhetherACommitHasArrivedWhoseAnswerIsLost)
{
    setenv("PGOPTIONS", "-c synchronous_commit=on", 1);
    RunInDatabase("ALTER SYSTEM SET synchronous_standby_names = 'nobody'"); // whom a commit that is made waits for
    RunInDatabase("SELECT pg_reload_conf()");
    EXPECT_TRUE(ImportMeanwhile([](pid_t) {
        RunInDatabase("SELECT pg_terminate_backend(pid)" + of_browsers + " AND wait_event = 'SyncRep'");
    }));
    RunInDatabase("ALTER SYSTEM RESET synchronous_standby_names");
    RunInDatabase("SELECT pg_reload_conf()");
    unsetenv("PGOPTIONS");
    ExpectImported(true, "made");
    EXPECT_EQ(Import(), 0);
    ExpectImported(true, "made, and once more");
    ASSERT_EQ(Remove(), 0);

    RunInDatabase("CREATE FUNCTION cut() RETURNS trigger LANGUAGE plpgsql AS "
                  "'BEGIN PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NULL; END'; "
                  "CREATE CONSTRAINT TRIGGER cut AFTER INSERT ON part DEFERRABLE INITIALLY DEFERRED "
                  "FOR EACH ROW EXECUTE FUNCTION cut()");
    EXPECT_NE(Import(), 0);
    EXPECT_NE(told_.str().find("terminating connection"), std::string::npos) << told_.str();
    RunInDatabase("DROP TRIGGER cut ON part; DROP FUNCTION cut()");
    ExpectImported(false, "not made");
    EXPECT_EQ(Import(), 0);
    ExpectImported(true, "not made, and once more");
}

TEST_F(ServerImports, LeaveNothingWhereTheDiskOfTheServerIsFull)
{
    const std::string disk = std::string(std::getenv("PARTKEEP_POSTGRES")) + "/small";
    fs::create_directory(disk);
    if (geteuid() != 0 || std::system(("mount -t tmpfs -o size=16m small " + disk).c_str()) != 0 ||
        std::system(("chown --reference=" + disk + "/../data " + disk).c_str()) != 0) {
        GTEST_SKIP() << "no small disk here: that takes root";
    }
    RunInDatabase("CREATE TABLESPACE small LOCATION '" + disk + "'");
    RunInDatabase("ALTER TABLE piece SET TABLESPACE small");
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_NE(Import(), 0);
        EXPECT_NE(told_.str().find("No space left on device"), std::string::npos) << told_.str();
        ExpectImported(false, "full");
        bool complete = false;
        int moments = 0;
        EXPECT_TRUE(Load(-1, {}, moments, complete) && complete);
    }
    RunInDatabase("ALTER TABLE piece SET TABLESPACE pg_default");
    RunInDatabase("DROP TABLESPACE small");
    EXPECT_EQ(std::system(("umount " + disk).c_str()), 0);
    EXPECT_EQ(Import(), 0);
    ExpectImported(true, "with room again");
}

} // namespace
} // namespace partkeep
