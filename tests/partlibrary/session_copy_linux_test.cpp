// Copies that meet a full or read-only disk, other spellings, and names that must not leave the folder.
#include "controls/kpd_key_manager.h"
#include "partlibrary/session_control.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>

namespace partkeep {
namespace {

class SessionCopy : public testing::Test {
protected:
    void SetUp() override
    {
        libraries_.MakeShop();
        ASSERT_TRUE(session_.ConnectServer(u"SRV1"));
        session_.SetTargetFolder(target_.Core());
        session_.SetDataKind(-1);
    }

    bool CopyP1() { return session_.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1"); }

    CTestLibraries libraries_;
    CTemporaryFolder target_;
    CBrowserSession session_{CLibraryFolder(libraries_.Folder())};
};

using Names = std::vector<std::string>;

TEST_F(SessionCopy, AFullDiskLeavesNoPartOfAFile)
{
    const QByteArray large(100000, 'x');
    libraries_.Fill(QStringLiteral("SRV1"), [&large](CLibraryWriter& writer) {
        const auto folder = writer.MakeFolder(QStringLiteral("Plates\\2008"));
        const auto part = writer.PutPart(*folder, QStringLiteral("P1"), std::nullopt);
        ASSERT_TRUE(writer.PutFile(*part, FileSlot::Ncd, large)); // the last of the four
    });
    CMountedDisk disk(target_.Path(), "512k");
    for (std::size_t spare = 0; spare <= 28; spare += 7) {
        disk.Fill(spare * 4096);
        const bool copied = CopyP1();
        const std::size_t arrived = NamesIn(target_.Path()).size() - 1; // beside the filler
        EXPECT_EQ(copied, spare == 28) << spare;
        EXPECT_EQ(arrived, copied ? 4U : 0U) << spare;
        if (!copied) {
            EXPECT_EQ(session_.Problem().fault, LibraryFault::DiskFull) << ProblemText(session_.Problem());
        }
        disk.MakeRoom();
    }
    EXPECT_EQ(ReadBytes(target_.Path("P1.NCD")), large.toStdString());
    // An older copy survives a new one that does not fit.
    disk.Fill(0);
    EXPECT_FALSE(CopyP1());
    disk.MakeRoom();
    EXPECT_EQ(ReadBytes(target_.Path("P1.NCD")), large.toStdString());
    EXPECT_EQ(NamesIn(target_.Path()).size(), 4U);
}

TEST_F(SessionCopy, AReadOnlyDiskAnswersFalse)
{
    CMountedDisk disk(target_.Path());
    disk.SetReadOnly(true);
    EXPECT_FALSE(CopyP1());
    disk.SetReadOnly(false);
    EXPECT_TRUE(NamesIn(target_.Path()).empty());
}

TEST_F(SessionCopy, AFullDiskUnderTheLibraryLeavesItAsItWas)
{
    CTemporaryFolder folder;
    CMountedDisk disk(folder.Path(), "4m");
    const QString file = QString::fromStdString(folder.Path("S.kpl").string());
    LibraryProblem problem;
    ASSERT_TRUE(CLibraryWriter::Create(file, problem)) << ProblemText(problem);
    const std::string before = ReadBytes(file.toStdString());
    {
        const auto writer = CLibraryWriter::Open(file, problem);
        ASSERT_TRUE(writer != nullptr && writer->Begin());
        const auto part = writer->PutPart(1, QStringLiteral("P"), std::nullopt);
        const bool put = writer->PutFile(*part, FileSlot::Iga, QByteArray(5000000, 'x'));
        EXPECT_FALSE(put && writer->Commit());
        EXPECT_EQ(writer->Problem().fault, LibraryFault::DiskFull) << ProblemText(writer->Problem());
    }
    EXPECT_TRUE(ReadBytes(file.toStdString()) == before);
    disk.Fill();
    EXPECT_FALSE(CLibraryWriter::Create(QString::fromStdString(folder.Path("T.kpl").string()), problem));
    EXPECT_EQ(problem.fault, LibraryFault::DiskFull) << ProblemText(problem);
    EXPECT_EQ(NamesIn(folder.Path()), (Names{".filler", "S.kpl"}));
}

TEST_F(SessionCopy, ReplacesAFileOfAnotherSpelling)
{
    WriteBytes(target_.Path("p1.sy5"), "old");
    WriteBytes(target_.Path("P1.IGA"), "old");
    WriteBytes(target_.Path("P1.iga"), "old, and spelled exactly");
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(NamesIn(target_.Path()), (Names{"P1.IGA", "P1.NCD", "P1.bmf", "P1.iga", "p1.sy5"}));
    EXPECT_EQ(ReadBytes(target_.Path("p1.sy5")), "P1.SY5");
    EXPECT_EQ(ReadBytes(target_.Path("P1.iga")), "P1.iga");
    EXPECT_EQ(ReadBytes(target_.Path("P1.IGA")), "old");
}

// The folder is watched between copies, so that it need not be read again for each.
TEST_F(SessionCopy, HearsOfSpellingsThatCameAndWentBetweenCopies)
{
    EXPECT_TRUE(CopyP1());
    for (const char* spelling : {"p1.IGA", "P1.Iga", "p1.iga"}) {
        for (const std::string& name : NamesIn(target_.Path())) {
            std::filesystem::remove(target_.Path(name));
        }
        WriteBytes(target_.Path(spelling), "old");
        EXPECT_TRUE(CopyP1());
        EXPECT_EQ(ReadBytes(target_.Path(spelling)), "P1.iga");
        EXPECT_EQ(NamesIn(target_.Path()).size(), 4U) << spelling;
    }
    std::filesystem::remove_all(target_.Path());
    std::filesystem::create_directory(target_.Path()); // another folder at the same place
    WriteBytes(target_.Path("P1.bMF"), "old");
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(ReadBytes(target_.Path("P1.bMF")), "P1.bmf");
}

TEST_F(SessionCopy, AFolderOrALinkInTheWayDoesNoHarm)
{
    std::filesystem::create_directory(target_.Path("P1.iga"));
    EXPECT_FALSE(CopyP1());
    EXPECT_EQ(NamesIn(target_.Path()), Names{"P1.iga"});
    std::filesystem::remove(target_.Path("P1.iga"));
    CTemporaryFolder elsewhere;
    WriteBytes(elsewhere.Path("keep"), "kept");
    std::filesystem::create_symlink(elsewhere.Path("keep"), target_.Path("P1.iga"));
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(ReadBytes(elsewhere.Path("keep")), "kept");
    EXPECT_EQ(ReadBytes(target_.Path("P1.iga")), "P1.iga");
}

TEST_F(SessionCopy, TargetsThatCannotTakeAFileAreRefused)
{
    std::u16string deep = target_.Core();
    while (deep.size() < PATH_MAX) {
        deep += u"\\sub";
    }
    for (const std::u16string& folder : {deep, target_.Core(u"missing"), std::u16string(1, u'\0')}) {
        session_.SetTargetFolder(folder);
        EXPECT_FALSE(CopyP1());
        EXPECT_NE(ProblemText(session_.Problem()), "");
    }
}

// A path of the longest kind: the folder itself can be entered, a file in it can not be named.
TEST_F(SessionCopy, APathThatGrowsTooLongIsRefused)
{
    std::string path = target_.Path().string();
    while (path.size() < PATH_MAX - 110) {
        path += "/" + std::string(100, 'd');
    }
    path += "/" + std::string(PATH_MAX - 1 - path.size() - 4, 'e');
    std::filesystem::create_directories(path);
    std::u16string core(path.begin(), path.end());
    std::replace(core.begin(), core.end(), u'/', u'\\');
    session_.SetTargetFolder(core);
    EXPECT_FALSE(CopyP1());
    EXPECT_EQ(session_.Problem().fault, LibraryFault::PathTooLong);
    EXPECT_TRUE(NamesIn(path).empty());
}

// A library that was not filled by our own writer.
TEST_F(SessionCopy, NamesThatWouldLeaveTheFolderAreRefusedAgain)
{
    for (const char* name : {"..\\..\\up", "../up", "/tmp/up", "C:up", "..", "nul", "up "}) {
        LibraryProblem problem;
        const auto forge =
            CLibraryConnection::Open(libraries_.FileOf(QStringLiteral("SRV1")), OpenMode::Write, problem);
        ASSERT_TRUE(forge != nullptr && forge->Execute(QStringLiteral("UPDATE part SET name = ? WHERE slots = 127"),
                                                       {QString::fromLatin1(name)}));
        ASSERT_TRUE(session_.SetCurrentFolder(u"Plates\\2008"));
        session_.SetPartFilter(15);
        session_.SelectAllParts(1);
        EXPECT_EQ(session_.GetPreviewFileTitle(), u"") << name;
        std::u16string path = u"Plates\\2008\\";
        for (const char* at = name; *at != '\0'; ++at) {
            path += static_cast<char16_t>(*at);
        }
        EXPECT_FALSE(session_.CopyPartFiles(u"SRV1", path)) << name;
        EXPECT_TRUE(NamesIn(target_.Path()).empty()) << name;
    }
}

} // namespace
} // namespace partkeep
