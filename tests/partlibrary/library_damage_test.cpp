// Libraries that are cut short, altered, foreign or gone: a clear reason, never a crash or wrong content.
#include "partlibrary/browser_session.h"
#include "partlibrary/library_check.h"
#include "tests/partlibrary/library_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sys/stat.h>

namespace partkeep {
namespace {

class LibraryDamage : public testing::Test {
protected:
    void SetUp() override
    {
        libraries_.MakeShop();
        sound_ = ReadBytes(file_);
    }

    // Does what a browser does with a server; files arrive in the target folder.
    std::string UseServer(CBrowserSession& session)
    {
        session.ConnectServer(u"SRV1");
        session.SetPartFilter(-1);
        session.SetCurrentFolder(u"Plates\\2008");
        session.SelectAllParts(1);
        static_cast<void>(session.GetSelectedPart(0));
        session.RefreshPartList();
        session.SetTargetFolder(target_.Core());
        session.SetDataKind(-1);
        static_cast<void>(session.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P1"));
        session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
        return ProblemText(session.Problem());
    }

    // Whatever arrived is what was stored.
    void ExpectOnlyWholeFiles(const std::string& label)
    {
        for (const std::string& name : NamesIn(target_.Path())) {
            EXPECT_EQ(ReadBytes(target_.Path(name)), name) << label;
            std::filesystem::remove(target_.Path(name));
        }
    }

    CTestLibraries libraries_;
    CTemporaryFolder target_;
    std::string file_ = libraries_.FileOf(QStringLiteral("SRV1")).toStdString();
    std::string sound_;
};

TEST_F(LibraryDamage, CutShortAtAnyPlaceIsToldAndNotRead)
{
    std::set<std::size_t> lengths{0, 1, 15, 16, 99, 100, 101, sound_.size() - 1};
    for (std::size_t length = 4096; length < sound_.size(); length += 65536 / 2) {
        lengths.insert(length);
    }
    for (const std::size_t length : lengths) {
        WriteBytes(file_, std::string_view(sound_).substr(0, length));
        CBrowserSession session{CLibraryFolder(libraries_.Folder())};
        EXPECT_NE(UseServer(session), "") << length;
        ExpectOnlyWholeFiles("cut at " + std::to_string(length));
        LibraryProblem problem;
        const auto check = CheckLibrary(QString::fromStdString(file_), problem);
        EXPECT_TRUE(!check || !check->findings.isEmpty()) << length;
    }
}

TEST_F(LibraryDamage, TurnedBytesNeverReachATargetFolder)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::string damaged = sound_;
        const std::size_t at =
            round < 100 ? random() % 4096 + 65536 * (random() % (sound_.size() / 65536)) : random() % sound_.size();
        for (std::size_t i = at; i < std::min(at + 1 + random() % 64, damaged.size()); ++i) {
            damaged[i] = static_cast<char>(random());
        }
        WriteBytes(file_, damaged);
        CBrowserSession session{CLibraryFolder(libraries_.Folder())};
        UseServer(session);
        ExpectOnlyWholeFiles("round " + std::to_string(round));
        LibraryProblem problem;
        static_cast<void>(CheckLibrary(QString::fromStdString(file_), problem));
    }
}

TEST_F(LibraryDamage, AChangedFileIsFoundByItsHash)
{
    const std::size_t at = sound_.find("P1.iga");
    ASSERT_NE(at, std::string::npos);
    std::string damaged = sound_;
    damaged[at] = 'Q';
    WriteBytes(file_, damaged);
    CBrowserSession session{CLibraryFolder(libraries_.Folder())};
    EXPECT_NE(UseServer(session).find("has changed"), std::string::npos);
    EXPECT_TRUE(NamesIn(target_.Path()).empty());
    LibraryProblem problem;
    const auto check = CheckLibrary(QString::fromStdString(file_), problem);
    ASSERT_TRUE(check && check->findings.size() == 1);
    EXPECT_TRUE(check->findings.front().contains(QStringLiteral("part P1")));
}

TEST_F(LibraryDamage, AMissingPieceIsFound)
{
    const QByteArray large(200000, 'x');
    libraries_.Fill(QStringLiteral("SRV1"), [&large](CLibraryWriter& writer) {
        const auto part = writer.PutPart(1, QStringLiteral("Large"), std::nullopt);
        ASSERT_TRUE(writer.PutFile(*part, FileSlot::Iga, large));
    });
    const QString sound = QStringLiteral("DELETE FROM part_file WHERE id < 0");
    const QString rows[] = {sound, QStringLiteral("DELETE FROM part_file WHERE rest = 69184"),
                            QStringLiteral("DELETE FROM part_file WHERE id = (SELECT max(id) FROM part_file)")};
    for (const QString& row : rows) {
        LibraryProblem problem;
        ASSERT_TRUE(CLibraryConnection::Open(QString::fromStdString(file_), OpenMode::Write, problem)->Execute(row));
        CBrowserSession session{CLibraryFolder(libraries_.Folder())};
        session.SetTargetFolder(target_.Core());
        EXPECT_EQ(session.CopyPartFiles(u"SRV1", u"\\Large"), row == sound) << row.toStdString();
        EXPECT_EQ(NamesIn(target_.Path()).size(), row == sound ? 1U : 0U) << row.toStdString();
        std::filesystem::remove(target_.Path("Large.iga"));
        const auto check = CheckLibrary(QString::fromStdString(file_), problem);
        EXPECT_EQ(check && check->findings.isEmpty(), row == sound) << row.toStdString();
    }
}

TEST_F(LibraryDamage, WhatIsNoLibraryIsTold)
{
    const QString file = QString::fromStdString(file_);
    const struct {
        const char* label;
        LibraryFault fault;
        std::function<void()> make;
    } rows[] = {
        {"missing", LibraryFault::NotFound, [&] { std::filesystem::remove(file_); }},
        {"folder", LibraryFault::NotALibrary, [&] { std::filesystem::create_directory(file_); }},
        {"pipe", LibraryFault::NotALibrary, [&] { mkfifo(file_.c_str(), 0600); }},
        {"text", LibraryFault::NotALibrary, [&] { WriteBytes(file_, std::string(70000, 'x')); }},
        {"other database", LibraryFault::NotALibrary,
         [&] {
             std::string other = sound_;
             other[68] ^= 1; // application id
             WriteBytes(file_, other);
         }},
        {"later version", LibraryFault::OtherVersion,
         [&] {
             std::string other = sound_;
             other[63] = 9; // user version
             WriteBytes(file_, other);
         }},
    };
    for (const auto& row : rows) {
        std::filesystem::remove_all(file_);
        row.make();
        LibraryProblem problem;
        EXPECT_EQ(CPartLibrary::Open(file, problem), nullptr) << row.label;
        EXPECT_EQ(problem.fault, row.fault) << row.label << ": " << ProblemText(problem);
    }
}

TEST_F(LibraryDamage, AStrangersTriggerOrViewIsNotRun)
{
    LibraryProblem problem;
    {
        const auto connection = CLibraryConnection::Open(QString::fromStdString(file_), OpenMode::Write, problem);
        ASSERT_NE(connection, nullptr);
        ASSERT_TRUE(connection->Execute(QStringLiteral("CREATE VIEW extra AS SELECT 1")));
    }
    EXPECT_EQ(CPartLibrary::Open(QString::fromStdString(file_), problem), nullptr);
    EXPECT_EQ(problem.fault, LibraryFault::Damaged);
}

// The engine keeps the file open, so what was listed can still be fetched.
TEST_F(LibraryDamage, AVanishedLibraryStillGivesWhatIsListed)
{
    CBrowserSession session{CLibraryFolder(libraries_.Folder())};
    ASSERT_EQ(UseServer(session), "");
    std::filesystem::remove(file_);
    EXPECT_FALSE(session.RefreshPartList());
    EXPECT_EQ(session.Problem().fault, LibraryFault::NotFound);
    EXPECT_EQ(session.GetSelectedPartCount(), 5);
    EXPECT_TRUE(session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P2"));
    WriteBytes(file_, sound_);
    EXPECT_TRUE(session.RefreshPartList());
}

TEST_F(LibraryDamage, ALibraryCutShortWhileOpenIsTold)
{
    CBrowserSession session{CLibraryFolder(libraries_.Folder())};
    ASSERT_EQ(UseServer(session), "");
    std::filesystem::resize_file(file_, 65536 + 10);
    EXPECT_FALSE(session.RefreshPartList());
    EXPECT_NE(ProblemText(session.Problem()), "");
    session.SelectAllParts(1);
    session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
}

TEST_F(LibraryDamage, ALockedLibraryIsToldAndReadAgainLater)
{
    LibraryProblem problem;
    auto writer = CLibraryConnection::Open(QString::fromStdString(file_), OpenMode::Write, problem);
    ASSERT_TRUE(writer != nullptr && writer->Execute(QStringLiteral("BEGIN EXCLUSIVE")));
    CBrowserSession session{CLibraryFolder(libraries_.Folder())};
    EXPECT_FALSE(session.ConnectServer(u"SRV1"));
    EXPECT_EQ(session.Problem().fault, LibraryFault::Busy);
    writer.reset();
    EXPECT_TRUE(session.ConnectServer(u"SRV1"));
}

// A writer that was cut off leaves its journal; the next reader takes the changes back.
TEST_F(LibraryDamage, AnInterruptedWriteIsTakenBack)
{
    const std::string copy = libraries_.FileOf(QStringLiteral("SRV2")).toStdString();
    {
        LibraryProblem problem;
        const auto writer = CLibraryConnection::Open(QString::fromStdString(file_), OpenMode::Write, problem);
        ASSERT_TRUE(writer->Execute(QStringLiteral("PRAGMA cache_spill=1")));
        ASSERT_TRUE(writer->Execute(QStringLiteral("PRAGMA cache_size=2")));
        ASSERT_TRUE(writer->Execute(QStringLiteral("BEGIN")));
        ASSERT_TRUE(writer->Execute(QStringLiteral("DELETE FROM part_file")));
        ASSERT_TRUE(writer->Execute(QStringLiteral("UPDATE part SET comment = 'half'")));
        ASSERT_TRUE(writer->Execute(QStringLiteral("INSERT INTO part_file VALUES(9000, 0, 0, zeroblob(4000000))")));
        std::filesystem::copy(file_, copy);
        std::filesystem::copy(file_ + "-journal", copy + "-journal");
    }
    ASSERT_NE(ReadBytes(copy), sound_);
    LibraryProblem problem;
    const auto library = CPartLibrary::Open(QString::fromStdString(copy), problem);
    ASSERT_NE(library, nullptr) << ProblemText(problem);
    EXPECT_EQ(library->FindPart(QStringLiteral("Plates\\2008"), QStringLiteral("P1"))->comment,
              QStringLiteral("取付板"));
}

} // namespace
} // namespace partkeep
