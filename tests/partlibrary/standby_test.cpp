// A station whose server is a standby, which follows another one and takes no LISTEN, and what is left of both when the
// other one goes.
#include "tests/partlibrary/library_fixture.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace partkeep {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Looks as a pane does, until the state is there or half a minute is over. How long it took, in milliseconds.
long Follow(CBrowserSession& station, const std::function<bool()>& state)
{
    const auto begin = steady_clock::now();
    while (!state() && steady_clock::now() - begin < std::chrono::seconds(30)) {
        std::this_thread::sleep_for(milliseconds(10));
        if (station.Library() != nullptr && station.Library()->LookForChange()) {
            station.Follow();
        }
    }
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin).count();
}

TEST(Standby, ServesStationsFollowsAndTakesOver)
{
    if (std::getenv("PARTKEEP_POSTGRES_STANDBY") == nullptr) {
        GTEST_SKIP() << "no standby here";
    }
    EXPECT_NE(std::system("psql -q service=partkeep-standby -c 'LISTEN partkeep' 2>/dev/null"), 0);
    CTestLibraries libraries;
    libraries.MakeShop();
    CTemporaryFolder folder;
    CBrowserSession beside{CLibraryFolder({}, {u"partkeep-standby"_s}, {folder.Path("kept"), 1 << 26})};
    CBrowserSession station{CLibraryFolder({}, {u"partkeep-both"_s}, {folder.Path("kept"), 1 << 26})};
    const auto enter = [](CBrowserSession& session) { return session.Go(u"SRV1"_s, u"Plates\\2008"_s); };
    EXPECT_TRUE(enter(station));
    for (int i = 0; i < 300 && !enter(beside); ++i) { // it may be a little behind
        std::this_thread::sleep_for(milliseconds(100));
    }
    const auto parts = [](CBrowserSession& session) { return session.CurrentFolder().parts; };
    const auto loads = [&folder](CBrowserSession& session) {
        std::filesystem::remove_all(folder.Path("target"));
        std::filesystem::create_directory(folder.Path("target"));
        session.SetTargetFolder(folder.Core(u"target\\"));
        session.SetDataKind(-1);
        return session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1") &&
               ReadBytes(folder.Path("target/P1.iga")) == "P1.iga";
    };
    EXPECT_EQ(parts(beside), 5);
    EXPECT_TRUE(loads(beside));
    EXPECT_TRUE(!std::filesystem::is_empty(folder.Path("kept")) && loads(beside) && loads(station));

    libraries.Fill(u"SRV1"_s, [](ILibraryWriter& writer) { PutTestPart(writer, u"Plates\\2008"_s, u"New"_s, 0); });
    RecordProperty("beside_ms", static_cast<int>(Follow(beside, [&] { return parts(beside) == 6; })));
    RecordProperty("station_ms", static_cast<int>(Follow(station, [&] { return parts(station) == 6; })));
    EXPECT_TRUE(parts(beside) == 6 && parts(station) == 6);

    kill(std::stoi(std::getenv("PARTKEEP_POSTGRES_PID")), SIGQUIT);
    RecordProperty("from_standby_ms", static_cast<int>(Follow(station, [&] { return loads(station); })));
    EXPECT_TRUE(loads(station) && loads(beside));
    const auto remove = [] { return RunTool({"remove", "partkeep-both:SRV1", "Plates\\2008\\New"}).err; };
    EXPECT_NE(remove().find("recovery"), std::string::npos);
    EXPECT_EQ(std::system("psql -qAt service=partkeep-both -c 'SELECT pg_promote()' >/dev/null"), 0);
    EXPECT_EQ(remove(), "");
    RecordProperty("promoted_ms", static_cast<int>(Follow(station, [&] { return parts(station) == 5; })));
    EXPECT_EQ(parts(station), 5);
    static_cast<void>(Follow(beside, [&] { return parts(beside) == 5; }));
    EXPECT_TRUE(parts(beside) == 5 && loads(beside) && loads(station));
}

} // namespace
} // namespace partkeep
