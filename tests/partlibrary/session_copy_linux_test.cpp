// Copies that meet a full or read-only disk, other spellings, and names that must not leave the folder.
#include "partlibrary/sqlite/library_check.h"
#include "platform/files.h"
#include "platform/posix/temporary_files.h"
#include "platform/text.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/failing_memory.h"
#include "tests/support/linux_faults.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <thread>
#include <unistd.h>

namespace partkeep {
namespace {

using SessionCopy = LibraryShop;

TEST_F(SessionCopy, AFullOrReadOnlyDiskLeavesNoPartOfAFile)
{
    PARTKEEP_NEEDS_MOUNTS();
    const std::string large(100000, 'x');
    libraries_.Put(u"Plates\\2008"_s, u"P1"_s, {{FileSlot::Ncd, large.c_str()}}); // the last of the four
    CMountedDisk disk(target_.Path(), "512k");
    for (const std::size_t spare : {0U, 7U, 14U, 21U, 28U, 0U}) {
        const bool there = fs::exists(target_.Path("P1.NCD")); // an older copy survives one that does not fit
        disk.Fill(spare * 4096);
        EXPECT_EQ(CopyP1(), spare == 28) << spare;
        EXPECT_TRUE(spare == 28 || session_.Problem().fault == LibraryFault::DiskFull) << spare;
        EXPECT_EQ(NamesIn(target_.Path()).size(), spare == 28 || there ? 5U : 1U) << spare; // with the filler
        disk.MakeRoom();
    }
    disk.SetReadOnly(true);
    EXPECT_FALSE(CopyP1());
    EXPECT_EQ(session_.Problem().fault, LibraryFault::WriteFailed);
    EXPECT_EQ(ReadBytes(target_.Path("P1.NCD")), large);
    EXPECT_EQ(NamesIn(target_.Path()).size(), 4U);
}

// Its own data first, then the machine's, as a load does it. What was changed in between is told, or not given.
TEST_F(SessionCopy, WhatIsCopiedInTwoStepsIsOfOneState)
{
    const auto put = [this](char version) {
        const QByteArray content(1, version);
        libraries_.Put(u"Plates\\2008"_s, u"P1"_s, {{FileSlot::Iga, content}, {FileSlot::Ncd, content}});
    };
    const auto copy = [this](std::int16_t kind) { return session_.SetDataKind(kind) && CopyP1(); };
    put('1');
    EXPECT_TRUE(copy(24));
    put('2');
    EXPECT_TRUE(!copy(10) || ReadBytes(target_.Path("P1.NCD")) == ReadBytes(target_.Path("P1.iga")));
    EXPECT_TRUE(copy(24) && copy(10));
    EXPECT_EQ(ReadBytes(target_.Path("P1.iga")) + ReadBytes(target_.Path("P1.NCD")), "22");
}

// Each allocation fails in turn, from the opening of the library to the last file in place.
TEST_F(SessionCopy, WithoutMemoryNothingIsLeftBehind)
{
    const auto descriptors = [] { return NamesIn("/proc/self/fd").size(); };
    const std::size_t open_before = descriptors();
    failing_memory::one_failed = true;
    for (std::size_t at = 1; std::exchange(failing_memory::one_failed, false); ++at) {
        bool copied = false;
        {
            CCopyingSession session(libraries_.Places(), target_);
            failing_memory::allocations_left = at;
            try {
                session.Go(u"SRV1"_s, u"Plates\\2008"_s);
                session.SearchFor(u"p1"_s);
                session.SelectAllParts(1);
                copied = session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
            } catch (const std::bad_alloc&) { // an answer is made of it where the host's calls come in
            }
            failing_memory::allocations_left = 0;
            copied = copied || session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
        }
        ASSERT_TRUE(copied && Take().size() == 4U) << at;
        ASSERT_EQ(descriptors(), open_before) << at;
    }
}

// No two pieces alike, and none like that of another version.
QByteArray VersionOf(qsizetype size, std::uint32_t version)
{
    QByteArray content(size, '\0');
    for (qsizetype at = 0; at + 4 <= size; at += 4) {
        const std::uint32_t word = (static_cast<std::uint32_t>(at) << 8) + version;
        std::memcpy(content.data() + at, &word, sizeof word);
    }
    return content;
}

// A writer replaces the part's files again and again.
TEST_F(SessionCopy, EveryPieceArrivesInItsPlaceAndOfOneState)
{
    const std::pair<FileSlot, qsizetype> files[] = {
        {FileSlot::Iga, 0}, {FileSlot::Bmf, 65408}, {FileSlot::Sy5, 65409}, {FileSlot::Ncd, 900000}};
    const auto put = [&](std::uint32_t version) {
        std::vector<std::pair<FileSlot, QByteArray>> contents;
        for (const auto& [slot, size] : files) {
            contents.emplace_back(slot, VersionOf(size, version));
        }
        libraries_.Put({}, u"Two"_s, contents);
    };
    put(0);
    std::atomic<bool> ended = false;
    std::thread writer([&] {
        for (std::uint32_t version = 1; !ended; version = (version + 1) % 256) {
            put(version);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    std::set<std::uint32_t> seen;
    for (int round = 0; round < 20 || (seen.size() < 3 && round < 2000); ++round) {
        ASSERT_TRUE(Copy(u"\\Two")) << ProblemText(session_.Problem());
        std::uint32_t version = 0;
        std::memcpy(&version, ReadBytes(target_.Path("Two.NCD")).data(), sizeof version);
        seen.insert(version);
        for (const auto& [slot, size] : files) {
            const std::string name = "Two" + NarrowText(KindOf(slot).extension, utf8_code_page);
            ASSERT_TRUE(ReadBytes(target_.Path(name)) == VersionOf(size, version).toStdString()) << name << round;
        }
    }
    ended = true;
    writer.join();
    EXPECT_GE(seen.size(), 3U);
}

// The third and the fifth content make those before them reach the disk: the first time a reader is in the way, the
// second time there is no room.
TEST_F(SessionCopy, AnImportWaitsForReadersAndFailsWhole)
{
    PARTKEEP_NEEDS_MOUNTS();
    CMountedDisk disk(target_.Path(), "130m");
    const QString file = FromUtf8(target_.Path("S.kpl").string());
    fs::copy_file(library_file_.toStdString(), target_.Path("S.kpl"));
    const auto writer = CSqliteWriter::Open(file, problem_);
    const auto other = CSqliteWriter::Open(file, problem_);
    const auto store = [&writer] {
        qint64 left = 40'000'000;
        return writer->Store(FileSlot::Iga, [&left](std::span<char> buffer) {
            const auto size = std::min(left, static_cast<qint64>(buffer.size()));
            std::fill_n(buffer.begin(), size, 'x');
            left -= size;
            return size;
        });
    };
    ASSERT_TRUE(writer->Begin() && store() && store());
    std::atomic<bool> holds = false;
    const auto read = [&](std::chrono::milliseconds time) {
        LibraryProblem trouble;
        const auto connection = CConnection::Open(file, OpenMode::Read, trouble);
        ASSERT_NE(connection, nullptr) << ProblemText(trouble);
        const CReadTransaction one_state(*connection);
        EXPECT_TRUE(CSqliteLibrary(connection).FindPart(u"Plates\\2008"_s, u"P1"_s));
        holds = true;
        std::this_thread::sleep_for(time);
    };
    std::thread slow(read, std::chrono::milliseconds(3000)); // longer than any reader waits
    while (!holds) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(store()) << ProblemText(writer->Problem());
    slow.join();
    EXPECT_TRUE(store());
    EXPECT_FALSE(store());
    EXPECT_EQ(writer->Problem().fault, LibraryFault::DiskFull) << ProblemText(writer->Problem());
    writer->Rollback();
    EXPECT_TRUE(other->Begin() && other->MakeFolder(u"New"_s) && other->Commit()) << ProblemText(other->Problem());
    const auto check = CheckLibrary(file, {}, problem_);
    EXPECT_TRUE(check && check->findings.isEmpty() && check->parts == 6 && check->folders == 4);
}

// The folder is watched between copies, so that it need not be read again for each.
TEST_F(SessionCopy, ReplacesAFileOfAnotherSpelling)
{
    for (const char* spelling : {"p1.IGA", "P1.Iga", "p1.iga"}) {
        WriteBytes(target_.Path(spelling), "old");
        EXPECT_TRUE(CopyP1());
        EXPECT_EQ(ReadBytes(target_.Path(spelling)), "P1.iga");
        EXPECT_EQ(Take().size(), 4U) << spelling;
    }
    WriteBytes(target_.Path("P1.IGA"), "old");
    WriteBytes(target_.Path("P1.iga"), "old, and spelled exactly");
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(Take(), (Names{"!P1.IGA", "P1.NCD", "P1.SY5", "P1.bmf", "P1.iga"}));
    fs::remove_all(target_.Path());
    fs::create_directory(target_.Path()); // another folder at the same place
    WriteBytes(target_.Path("P1.bMF"), "old");
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(ReadBytes(target_.Path("P1.bMF")), "P1.bmf");
}

TEST_F(SessionCopy, WhatDeadProcessesLeftGoesAndWhatLivesStays)
{
    const auto begin = [&](const std::string& name) {
        const int descriptor = open(target_.Path(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        HoldTemporaryFile(descriptor);
        return descriptor;
    };
    const std::string dead = NewTemporaryName();
    const std::string living = NewTemporaryName();
    const std::string elsewhere = ".partkeep-00000000-" + std::string(32, '1') + ".tmp"; // another machine's
    close(begin(dead));
    close(begin(elsewhere));
    const int held = begin(living);
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(NamesIn(target_.Path()).size(), 6U) << "four files";
    EXPECT_FALSE(fs::exists(target_.Path(dead)));
    fs::last_write_time(target_.Path(elsewhere), fs::file_time_type::clock::now() - std::chrono::hours(25));
    close(held);
    EXPECT_TRUE(ReplaceTextFile(target_.Core(u"a.ini"), "a")) << "a save looks too";
    EXPECT_EQ(NamesIn(target_.Path()).size(), 5U);
    close(begin(dead));
    EXPECT_TRUE(CSqliteWriter::Create(FromUtf8(target_.Path("New.kpl").string()), problem_));
    EXPECT_EQ(NamesIn(target_.Path()).size(), 6U);
}

TEST_F(SessionCopy, AFolderOrALinkInTheWayDoesNoHarm)
{
    fs::create_directory(target_.Path("P1.iga"));
    EXPECT_FALSE(CopyP1());
    EXPECT_EQ(NamesIn(target_.Path()), Names{"P1.iga"});
    fs::remove(target_.Path("P1.iga"));
    WriteBytes(target_.Path("keep"), "kept");
    fs::create_symlink("keep", target_.Path("P1.iga"));
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(ReadBytes(target_.Path("keep")), "kept");
    EXPECT_EQ(ReadBytes(target_.Path("P1.iga")), "P1.iga");
}

TEST_F(SessionCopy, TargetsThatCannotTakeAFileAreRefused)
{
    // A folder that can be entered, while a file in it cannot be named any more.
    std::string longest = target_.Path().string();
    while (longest.size() < PATH_MAX - 110) {
        longest += "/" + std::string(100, 'd');
    }
    longest += "/" + std::string(PATH_MAX - 1 - longest.size() - 4, 'e');
    fs::create_directories(longest);
    const std::pair<std::u16string, LibraryFault> rows[] = {
        {CorePath(longest), LibraryFault::PathTooLong},
        {u"/tmp", LibraryFault::WriteFailed}, // no separator of the core's
        {target_.Core(std::u16string(PATH_MAX, u'd')), LibraryFault::PathTooLong},
        {target_.Core(u"missing"), LibraryFault::WriteFailed},
        {std::u16string(1, u'\0'), LibraryFault::WriteFailed},
    };
    for (const auto& [folder, fault] : rows) {
        session_.SetTargetFolder(folder);
        EXPECT_FALSE(CopyP1());
        EXPECT_EQ(session_.Problem().fault, fault) << ProblemText(session_.Problem());
    }
    EXPECT_EQ(NamesIn(longest), Names());
}

// A library that was not filled by our own writer: such names are shown to nobody, counted, and never become part of a
// path.
TEST_F(SessionCopy, NamesThatWouldLeaveTheFolderAreNeverLetThrough)
{
    const QString names[] = {u"..\\..\\up"_s, u"../up"_s, u"/tmp/up"_s, u"C:up"_s,          u".."_s,
                             u"nul"_s,        u"up "_s,   u"up\nup"_s,  QString(100, u'u'), {}};
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        ForgePart(name);
        CCopyingSession session(libraries_.Places(), target_);
        session.Go(u"SRV1"_s, u"Plates\\2008"_s);
        session.SelectAllParts(1);
        EXPECT_EQ(session.GetSelectedPartCount(), 4);
        EXPECT_EQ(session.Library()->Refused(), 1);
        session.Select({4}); // by its number, which only a wrong list could give
        EXPECT_FALSE(session.GetSelectedPart(0));
        EXPECT_EQ(session.GetPreviewFileTitle(), u"");
        EXPECT_FALSE(session.CopyPartFiles(u"SRV1", u"Plates\\2008\\" + name.toStdU16String()));
        EXPECT_NE(Check(), "");
    }
    ForgePart(u"P1"_s);
    EXPECT_EQ(Check(), "");
    for (const QString& path : {u"/../../evil"_s, u"..\\evil"_s, u"a\nb"_s, u"a\\"_s, u"Other\\name"_s}) {
        SCOPED_TRACE(path.toStdString());
        ForgeFolder(path);
        CCopyingSession session(libraries_.Places(), target_);
        session.ConnectServer(u"SRV1");
        EXPECT_EQ(session.Folders(u"SRV1"_s, {})->size(), 0U);
        EXPECT_EQ(session.Library()->Refused(), 1);
        session.SetCurrentFolder(path.toStdU16String());
        EXPECT_EQ(session.GetCurrentFolder(), path.startsWith(u"Other"_s) ? u"Other\\name" : u"");
        EXPECT_EQ(session.CopyPartFiles(u"SRV1", path.toStdU16String() + u"\\Top"), path.startsWith(u"Other"_s));
        EXPECT_NE(Check(), "");
    }
    EXPECT_EQ(Take(), Names{"Top.iga"});
}

// A lock costs a wait once; what was selected is known all the same.
TEST_F(SessionCopy, ALockIsWaitedForOnceAndNamesAreRemembered)
{
    session_.Go(u"SRV1"_s, u"Plates\\2008"_s);
    session_.SelectAllParts(1);
    const auto other = CConnection::Open(library_file_, OpenMode::Write, problem_);
    ASSERT_TRUE(other->Execute("BEGIN EXCLUSIVE"));
    CBrowserSession late{libraries_.Places()};
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(CopyP1());
    EXPECT_EQ(session_.GetSelectedPart(2)->name, u"p1"_s);
    EXPECT_FALSE(CopyP1() || session_.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P1"));
    EXPECT_FALSE(late.Go(u"SRV1"_s, u"Plates"_s) || late.ConnectServer(u"SRV1") || late.Folders(u"SRV1"_s, {}));
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(late.Problem().fault, LibraryFault::Busy);
    EXPECT_LT(waited, std::chrono::milliseconds(5000)) << "once for each session";
    ASSERT_TRUE(other->Execute("ROLLBACK"));
    EXPECT_TRUE(CopyP1()) << "at once when it is free";
    EXPECT_FALSE(late.ConnectServer(u"SRV1"));
    EXPECT_TRUE(late.Refresh()) << "the user tries again";
    EXPECT_EQ(late.GetCurrentFolder(), u"Plates");
}

// A copy goes on with the library that was opened; what stands in its place is told, and read after a refresh.
TEST_F(SessionCopy, AReplacedLibraryIsToldAndNeverMixed)
{
    session_.Go(u"SRV1"_s, u"Plates\\2008"_s);
    session_.SelectAllParts(1);
    fs::rename(library_file_.toStdString(), target_.Path("aside"));
    EXPECT_EQ(session_.Problem().fault, LibraryFault::NotFound);
    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) { PutTestPart(writer, u"Plates\\2008"_s, u"P1"_s, 8); });
    EXPECT_EQ(session_.Problem().fault, LibraryFault::Replaced);
    EXPECT_TRUE(CopyP1());
    fs::remove(target_.Path("aside"));
    EXPECT_EQ(Take().size(), 4U) << "of the library that is shown";
    EXPECT_TRUE(session_.RefreshPartList());
    EXPECT_EQ(session_.GetSelectedPartCount(), 0) << "the same numbers, other parts";
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(Take(), Names{"P1.NCD"});
    EXPECT_FALSE(session_.Problem());
}

} // namespace
} // namespace partkeep
