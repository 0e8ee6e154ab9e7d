// A browser and an import on a database, and what can happen to its server: whatever does, no call waits much longer
// than two seconds without a byte, every part arrives whole or not at all, and all goes on when the server does.
#include "tests/partlibrary/server_faults.h"

#include <climits>
#include <csignal>
#include <iostream>
#include <sys/wait.h>
#include <tuple>
#include <utility>

namespace partkeep {
namespace {

using ServerCopies = ServerFaults;

// By the time that it is the turn of a part which is kept, it may have gone.
TEST_F(ServerCopies, AskOnceMoreForWhatWasToldAWhileAgo)
{
    ASSERT_TRUE(Load());
    CBrowserSession session{CLibraryFolder({}, {tapped_station}, {target_.Path("kept"), 1 << 26})};
    ASSERT_TRUE(session.Go(u"SRV1"_s, u"Load"_s));
    const auto library = session.ShareLibrary();
    const std::vector<PartId> ids = library->Ids(session.ListView()).value();
    const SlotSet slots = SetOf(FileSlot::Iga) | SetOf(FileSlot::Ncd);
    for (const bool gone : {false, true}) {
        library->Expect(std::array{PartCopy{ids[0], slots}, PartCopy{ids[1], slots}, PartCopy{ids[2], slots}});
        qint64 bytes = 0;
        const auto copy = [&](PartId part, milliseconds wait) {
            bytes = 0;
            return library->CopyFiles(part, slots, [&](FileSlot, std::span<const char> block) {
                std::this_thread::sleep_for(wait);
                bytes += static_cast<qint64>(block.size());
                return LibraryProblem{};
            });
        };
        EXPECT_TRUE(copy(ids[0], milliseconds(1100)) && bytes == 1200000); // of either file
        libraries_.Fill(
            u"SRV1"_s, [&](ILibraryWriter& writer) { EXPECT_EQ(gone && writer.RemovePart(u"Load"_s, u"L2"_s), gone); });
        EXPECT_TRUE(copy(ids[1], {}) == !gone && bytes == (gone ? 0 : 1200000));
        EXPECT_TRUE(copy(ids[2], {}) && bytes == 1200000);
    }
}

class ServerImports : public ServerFaults {
protected:
    ServerImports()
    {
        fs::create_directory(source_);
        fs::create_directory(target_.Path("few"));
        for (const char* name : {"A", "B", "C", "D"}) {
            WriteBytes(target_.Path("few") / (name + ".iga"s), std::string(100000, 'x'));
        }
        for (int i = 0; i < 400; ++i) {
            WriteBytes(source_ / ("I" + std::to_string(i) + ".iga"), std::string(100000, 'x'));
        }
    }

    int Import() { return (ran_ = RunTool({"import", library_, source_, "--into", "New"})).end; }
    bool ImportTapped()
    {
        const auto begin = steady_clock::now();
        const auto held = line_.Held();
        ran_ = RunTool({"import", "tapped-librarian:SRV1", target_.Path("few"), "--into", "New"});
        EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(30) + line_.Held() - held);
        return ran_.end == 0;
    }
    int Remove() { return RunTool({"remove", library_, "New/"}).end; }

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

    void ExpectImported(bool imported, const std::string& label, int parts = 400)
    {
        EXPECT_EQ(libraries_.At(u"SRV1"_s)->Open(problem_)->FindFolder(u"New"_s).has_value(), imported) << label;
        const auto check = libraries_.At(u"SRV1"_s)->Check({}, problem_);
        EXPECT_TRUE(check && check->findings.isEmpty() && check->parts == 9 + (imported ? parts : 0)) << label;
    }

    fs::path source_ = target_.Path("in");
    std::string library_ = libraries_.PlaceOf(u"SRV1"_s).toStdString();
    ToolRun ran_;
};

// Nothing of an import that ends in the middle is there, nor its lock; the next one brings everything once.
TEST_F(ServerImports, LeaveNothingWhereTheyAreCutOff)
{
    for (const int moment : {5, 40, 90, 150}) {
        const auto at = steady_clock::now() + milliseconds(moment);
        const bool imported =
            ImportMeanwhile([at](pid_t child) { steady_clock::now() < at ? 0 : kill(child, SIGKILL); });
        ExpectImported(imported, std::to_string(moment));
        EXPECT_TRUE(!imported || Remove() == 0) << moment;
    }
    const auto begin = steady_clock::now();
    EXPECT_EQ(Import(), 0);
    EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(5));
    ExpectImported(true, "afterwards");
}

// Whoever loses the answer to a commit learns what has become of it, and a second attempt brings nothing twice.
TEST_F(ServerImports, KnowWhetherACommitHasArrivedWhoseAnswerIsLost)
{
    RunInDatabase("ALTER SYSTEM SET synchronous_standby_names = 'nobody'"); // whom a commit that is made waits for
    RunInDatabase("SELECT pg_reload_conf()");
    EXPECT_TRUE(ImportMeanwhile([](pid_t) {
        RunInDatabase("SELECT pg_terminate_backend(pid)" + of_browsers + " AND wait_event = 'SyncRep'");
    }));
    RunInDatabase("ALTER SYSTEM RESET synchronous_standby_names");
    RunInDatabase("SELECT pg_reload_conf()");
    ExpectImported(true, "made");
    EXPECT_EQ(Import(), 0);
    ExpectImported(true, "made, and once more");
    ASSERT_EQ(Remove(), 0);

    line_.ArmAt("COMMIT", [] { kill(BackendOfBrowser(), SIGKILL); }); // and nothing of it has reached the disk
    EXPECT_FALSE(ImportTapped());
    EXPECT_NE(ran_.err.find("does not answer"), std::string::npos) << ran_.err;
    EXPECT_EQ(ran_.err.find("look whether"), std::string::npos) << ran_.err;
    AwaitServer();
    ExpectImported(false, "not made, and unheard of");

    line_.ArmAt("COMMIT", [] { RunInDatabase("SELECT pg_terminate_backend(pid, 5000)" + of_browsers); });
    EXPECT_FALSE(ImportTapped());
    EXPECT_NE(ran_.err.find("terminating connection"), std::string::npos) << ran_.err;
    ExpectImported(false, "not made");
    EXPECT_EQ(Import(), 0);
    ExpectImported(true, "not made, and once more");
}

// At some steps, or with PARTKEEP_EVERY_STEP set at every one, which takes long: whatever happens before a block of the
// client comes to the server.
TEST_F(ServerImports, LoadsAndListsAreWholeAndGoOnWhateverHappensToTheServer)
{
    const bool every = std::getenv("PARTKEEP_EVERY_STEP") != nullptr;
    const CSmallDisk disk;
    FILE* locker = nullptr;
    std::jthread going_on;
    const auto nothing = [] {};
    // What happens, how it is mended, and whether who reads notices nothing.
    const std::tuple<const char*, std::function<void()>, std::function<void()>, bool> faults[] = {
        {"connections ended", [] { RunInDatabase("SELECT pg_terminate_backend(pid)" + of_browsers); }, nothing, true},
        {"connections cut", [this] { line_.Cut(); }, nothing, true},
        {"one killed, and the server recovers",
         [] {
             if (const pid_t backend = BackendOfBrowser(); backend > 0) {
                 kill(backend, SIGKILL);
             }
         },
         AwaitServer, false},
        {"killed",
         [] {
             EXPECT_TRUE(SignalDatabase("KILL"));
             RestartDatabase();
         },
         nothing, false},
        {"restarted", RestartDatabase, nothing, false},
        {"stopped",
         [&] {
             EXPECT_TRUE(SignalDatabase("STOP"));
             going_on = std::jthread([] {
                 std::this_thread::sleep_for(milliseconds(3000));
                 EXPECT_TRUE(SignalDatabase("CONT"));
             });
         },
         [&] { going_on = {}; }, false},
        {"rights withdrawn",
         [] {
             RunInDatabase("REVOKE SELECT ON ALL TABLES IN SCHEMA \"SRV1\" FROM partkeep_station, partkeep_librarian");
         },
         [] { RunInDatabase("GRANT SELECT ON ALL TABLES IN SCHEMA \"SRV1\" TO partkeep_station, partkeep_librarian"); },
         false},
        {"locked",
         [&] {
             locker = popen("psql -q service=partkeep", "w");
             std::fputs("SET search_path = \"SRV1\"; BEGIN; LOCK TABLE part, folder;\n", locker);
             std::fflush(locker);
             std::this_thread::sleep_for(milliseconds(300));
         },
         [&] {
             if (FILE* const ended = std::exchange(locker, nullptr)) {
                 std::fputs("ROLLBACK;\n", ended);
                 pclose(ended);
             }
         },
         false},
        {"disk full", [&] { disk.Fill(); }, [&] { disk.Empty(); }, true},
    };
    const std::tuple<const char*, std::function<bool()>, bool> works[] = {
        {"load", [this] { return Load(); }, true},
        {"browse", [this] { return Browse(); }, true},
        {"import", [this] { return ImportTapped(); }, false}};
    const auto settle = [&](bool reads, bool whole) {
        if (!reads) {
            ExpectImported(whole, "import", 4);
            EXPECT_TRUE(!whole || Remove() == 0);
            RunInDatabase("VACUUM piece"); // of what failed imports have left on a small disk
        }
    };
    const auto sampled = [](std::size_t work, std::size_t fault) {
        return static_cast<int>((work + fault) % 3 == 2 ? INT_MAX : (work + fault * 5) % 13);
    };
    for (std::size_t w = 0; w < std::size(works); ++w) {
        const auto& [work, runs, reads] = works[w];
        line_.Arm(-1, {});
        EXPECT_TRUE(runs()) << work;
        settle(reads, true);
        const int steps = line_.Steps();
        for (std::size_t i = 0; i < std::size(faults) - (disk.IsThere() ? 0 : 1); ++i) {
            const auto& [fault, happens, mended, unnoticed] = faults[i];
            int whole = 0;
            int tried = 0;
            for (int step = every ? 0 : sampled(w, i); step < steps; step += every ? 1 : steps) {
                SCOPED_TRACE(work + ": "s + fault + " at step " + std::to_string(step));
                line_.Arm(step, happens);
                const auto held = line_.Held();
                const bool done = runs();
                line_.Arm(-1, {});
                const bool short_of_time = line_.Held() - held > longest_wait / 3; // on a busy machine
                mended();
                ++tried;
                whole += done ? 1 : 0;
                EXPECT_TRUE(done || !unnoticed || !reads || !opened_ || short_of_time);
                EXPECT_TRUE(done || reads || fault != "disk full"s ||
                            ran_.err.find("No space left on device") != std::string::npos)
                    << ran_.err;
                settle(reads, done);
                const bool again = runs();
                EXPECT_TRUE(again) << "afterwards " << ran_.err;
                settle(reads, again);
            }
            if (every) {
                std::cout << work << ": " << fault << ": " << whole << " of " << tried << " whole at once" << std::endl;
            }
        }
    }
    if (!disk.IsThere()) {
        GTEST_SKIP() << "no disk was full: that takes root";
    }
}

// Whoever answers may be no server at all.
class ServerLies : public ServerFaults {
protected:
    static std::string Message(char type, const std::string& begins, std::size_t bytes)
    {
        return type + BigEndian(bytes + 4) + begins;
    }
    static bool Say(int client, const std::string& what)
    {
        return send(client, what.data(), what.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(what.size());
    }
};

// To a connection, or else to a question, first this is said and then that, again and again.
TEST_F(ServerLies, TakeABoundedTimeAndNotAllMemory)
{
    const std::string columns = Message('T', "\0\1c"s + std::string(19, '\0'), 22);
    const std::string row = Message('D', "\0\1\0\0\xEA\x60"s + std::string(60000, 'x'), 60006);
    const std::string large = columns + Message('D', {}, 1 << 29);
    const auto go = [](CBrowserSession& session) { return session.Go(u"SRV1"_s, u"Load"_s); };
    const auto ask = [](CBrowserSession& session) { return session.Folders(u"SRV1"_s, {}).has_value(); };
    const auto copy = [](CBrowserSession& session) { return session.CopyPartFiles(u"SRV1", u"Load\\L1"); };
    const auto follow = [](CBrowserSession& session) {
        return !Comes([&] {
            for (int i = 0; i < 1000; ++i) {
                session.Library()->LookForChange();
            }
            return session.Library()->SilentSince().isValid();
        });
    };
    const std::tuple<const char*, std::string, std::string, int, std::function<bool(CBrowserSession&)>> rows[] = {
        {"a connection", Message('R', "\0\0\0\0"s, 4), Message('N', "M" + row + "\0\0"s, 60014), 0, go},
        {"the libraries", columns, row, 0, go},
        {"the libraries, broken off", "", "", 0, go},
        {"folders, byte by byte", large, "x", 700, ask},
        {"what others change", columns, row, 0, follow},
        {"a content", large, row, 1, copy},
    };
    for (const auto& [what, first, then, between, asks] : rows) {
        SCOPED_TRACE(what);
        CBrowserSession session{CLibraryFolder({}, {tapped_station})};
        session.SetTargetFolder(target_.Core());
        ASSERT_TRUE(std::string_view(what).starts_with("the") || first.starts_with('R') || go(session));
        const auto begin = steady_clock::now();
        std::atomic<int> said = 0;
        line_.Pose([&, &first = first, &then = then, &between = between](int client, auto sent, const auto& /*last*/) {
            if (sent.starts_with('\0') != first.starts_with('R') || steady_clock::now() - begin > milliseconds(15000)) {
                return false;
            }
            Say(client, first);
            while (!then.empty() && ++said < 15000 && Say(client, then)) {
                std::this_thread::sleep_for(milliseconds(between));
            }
            return shutdown(client, SHUT_RDWR) == 0;
        });
        EXPECT_FALSE(asks(session));
        EXPECT_LT(steady_clock::now() - begin, milliseconds(12000));
        EXPECT_LT(said, 5000); // of 60 KB
        line_.Pose({});
        line_.Arm(-1, {}); // nobody speaks any more
    }
    EXPECT_TRUE(Load());
}

TEST_F(ServerLies, LeadNobodyInACircle)
{
    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) { PutTestParts(writer, u"Many"_s, u"M%1"_s, 1000, 4000); });
    CBrowserSession session{CLibraryFolder({}, {tapped_station})};
    ASSERT_TRUE(session.Go(u"SRV1"_s, u"Many"_s));
    IPartLibrary& library = *session.Library();
    const auto list = library.List(session.ListView(), 3000, nullptr);
    EXPECT_TRUE(list->Step() && list->Step());
    const auto same_again = [](int client, auto /*sent*/, const std::string& last) { return Say(client, last); };
    line_.Pose(same_again);
    EXPECT_TRUE(!list->Step() && list->Failed());
    line_.Pose({});
    const auto rows = library.PartsBehind(session.CurrentFolder().id, {}, 500);
    line_.Pose(same_again);
    EXPECT_FALSE(library.PartsBehind(session.CurrentFolder().id, rows.value().back().name, 500));
    line_.Pose({});
    RunInDatabase("DELETE FROM folder WHERE path = ''");
    const auto writer = libraries_.At(u"SRV1"_s)->Edit(problem_);
    EXPECT_FALSE(!writer->Begin() || writer->MakeFolder(u"A"_s) || writer->MakeFolder(u"A"_s));
    writer->Rollback();
    RunInDatabase(
        "ALTER TABLE partkeep_library RENAME TO told; CREATE VIEW partkeep_library AS SELECT version, mark, keys "
        "|| set_config('a.turn', left('x', 1 - length(coalesce(current_setting('a.turn', true), ''))), false) "
        "AS keys, revision FROM told; GRANT SELECT ON partkeep_library TO PUBLIC");
    EXPECT_TRUE(WholeList(library, session.ListView())->Failed());
    EXPECT_EQ(library.Problem().fault, LibraryFault::Damaged);
}

TEST_F(ServerLies, BringNoFileThatHasNoEnd)
{
    libraries_.Put(u"Load"_s, u"Empty"_s, {{FileSlot::Iga, {}}});
    RunInDatabase("ALTER TABLE part_file DROP CONSTRAINT part_file_pkey");
    for (const char* change : {"INSERT INTO part_file SELECT * FROM part_file WHERE bytes = 0",
                               "UPDATE part_file SET bytes = 9223372036854775807"}) {
        RunInDatabase(change);
        CCopyingSession session{CLibraryFolder({}, {tapped_station}, {target_.Path("kept"), 1 << 26}), target_};
        EXPECT_FALSE(session.CopyPartFiles(u"SRV1", u"Load\\Empty")) << change;
        EXPECT_EQ(session.Problem().fault, LibraryFault::Damaged) << change;
    }
}

} // namespace
} // namespace partkeep
