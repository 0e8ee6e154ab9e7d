// What the file services do where the disk or the rights give out, each with the real fault.
#include "platform/files.h"
#include "tests/support/linux_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace partkeep {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

struct stat StatusOf(const fs::path& path)
{
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

class Folder : public testing::Test {
protected:
    [[nodiscard]] std::u16string Core(std::u16string_view name) const { return folder_.Core(name); }

    CTemporaryFolder folder_;
    fs::path file_ = folder_.Path("a.ini");
};

TEST_F(Folder, ExactSpellingWinsElseTheFirstInOrder)
{
    for (const char* folder : {"q", "Q"}) {
        fs::create_directory(folder_.Path(folder));
    }
    for (const char* name : {"p.sy5", "P.sy5", "É.x", "é.x", "q/x", "Q/x"}) {
        WriteBytes(folder_.Path(name), name);
    }
    struct Row {
        const char16_t* asked;
        const char* found;
    };
    const Row rows[] = {{u"q\\X", "q/x"},    {u"p.sy5", "p.sy5"}, {u"P.sy5", "P.sy5"},
                        {u"P.SY5", "P.sy5"}, {u"É.X", "É.x"},     {u"é.x", "é.x"}};
    for (const Row& row : rows) {
        EXPECT_EQ(ReadTextFile(Core(row.asked)), row.found) << row.found;
        EXPECT_EQ(NativePath(Core(row.asked)), folder_.Path(row.found).string());
    }
    EXPECT_TRUE(ReplaceTextFile(Core(u"P.Sy5"), "new"));
    EXPECT_EQ(NamesIn(folder_.Path()).size(), 6U);
    EXPECT_EQ(ReadBytes(folder_.Path("P.sy5")), "new");
    EXPECT_TRUE(RemoveFile(Core(u"P.SY5")));
    EXPECT_TRUE(RemoveFile(Core(u"P.SY5"))) << "then the other one";
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"Q", "q", "É.x", "é.x"}));
}

TEST_F(Folder, NamesThatTextCannotTellAreLeftAlone)
{
    fs::create_directory(folder_.Path("a"));
    for (const char* name : {"a\\b", "bad\xFF", "a/b"}) {
        WriteBytes(folder_.Path() / name, "x");
    }
    EXPECT_EQ(ListFolder(Core(u"")), std::vector{Core(u"a")});
    EXPECT_TRUE(RemoveFile(Core(u"a\\b"))) << "the one in the folder";
    EXPECT_FALSE(RemoveFile(Core(u"a\\b")));
    EXPECT_FALSE(RemoveFile(Core(u"bad\uFFFD")));
}

TEST_F(Folder, RandomNamesAreFoundInAnyCase)
{
    const CMountedDisk disk(folder_.Path());
    std::mt19937 random(3);
    const std::u16string letters = u"aB.é٣яЖ部 -~ÿ";
    for (int round = 0; round < 200; ++round) {
        std::u16string name = u"n" + std::u16string(1, static_cast<char16_t>(u'0' + round % 10));
        while (name.size() < 3 + random() % 12) {
            name += letters[random() % letters.size()];
        }
        ASSERT_TRUE(ReplaceTextFile(Core(name), "x"));
        std::u16string other = name;
        other[0] = u'N';
        ASSERT_TRUE(FileExists(Core(other)));
        CFileSearch search;
        ASSERT_TRUE(search.FileExists(Core(other)));
        ASSERT_FALSE(search.FileExists(Core(other + u"x")));
        ASSERT_TRUE(RemoveFile(Core(other)));
        search.Forget();
        ASSERT_FALSE(search.FileExists(Core(other)));
        ASSERT_FALSE(FileExists(Core(name)));
    }
}

TEST_F(Folder, ReplacingKeepsModeOwnerAndAccessList)
{
    WriteBytes(file_, "old");
    GiveToUnprivilegedUser(file_);
    // Version 2; owner rw, user 1 r, group none, mask r, others none. Each entry: tag, rights, id.
    const std::array<std::uint16_t, 22> list{2, 0,      1,      6,  0xFFFF, 0xFFFF, 2,      4,  0, 0,      4,
                                             0, 0xFFFF, 0xFFFF, 16, 4,      0xFFFF, 0xFFFF, 32, 0, 0xFFFF, 0xFFFF};
    ASSERT_EQ(setxattr(file_.c_str(), "system.posix_acl_access", list.data(), sizeof list, 0), 0);
    fs::permissions(file_, fs::perms(04640));
    const struct stat before = StatusOf(file_);
    EXPECT_TRUE(ReplaceTextFile(Core(u"A.ini"), "new"));
    const struct stat after = StatusOf(file_);
    EXPECT_NE(after.st_ino, before.st_ino) << "not written beside";
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    std::array<std::uint16_t, 22> kept{};
    EXPECT_EQ(getxattr(file_.c_str(), "system.posix_acl_access", kept.data(), sizeof kept), ssize_t{sizeof kept});
    EXPECT_EQ(kept, list);
}

TEST_F(Folder, ReplacingFollowsLinks)
{
    fs::create_directory(folder_.Path("else"));
    const fs::path target = folder_.Path("else/real.ini");
    fs::create_symlink("else/next", folder_.Path("link"));
    fs::create_symlink(target, folder_.Path("else/next"));
    for (const char* content : {"made", "replaced"}) {
        EXPECT_TRUE(ReplaceTextFile(Core(u"LINK"), content));
        EXPECT_EQ(ReadBytes(target), content);
    }
    EXPECT_TRUE(fs::is_symlink(folder_.Path("link")));
    EXPECT_EQ(NamesIn(folder_.Path("else")), (Names{"next", "real.ini"}));
    fs::create_symlink("loop", folder_.Path("loop"));
    EXPECT_FALSE(ReplaceTextFile(Core(u"loop"), "x"));
    EXPECT_TRUE(RemoveFile(Core(u"link")));
    EXPECT_EQ(ReadBytes(target), "replaced") << "the link goes, not the file";
}

TEST_F(Folder, APipeIsNoTextAndHoldsNobodyUp)
{
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(ReadTextFile(Core(u"a.ini")), std::nullopt);
    EXPECT_FALSE(ReplaceTextFile(Core(u"a.ini"), "x"));
}

TEST_F(Folder, AFullDiskLeavesTheOldOrTheNew)
{
    CMountedDisk disk(folder_.Path());
    const std::string old_text(2000, 'o');
    WriteBytes(file_, old_text);
    for (const std::size_t spare : {0U, 4096U, 8192U}) {
        disk.Fill(spare);
        EXPECT_FALSE(ReplaceTextFile(Core(u"a.ini"), std::string(9000, 'n'))) << spare;
        EXPECT_FALSE(ReplaceTextFile(Core(u"b.ini"), std::string(9000, 'n'))) << spare;
        EXPECT_EQ(ReadBytes(file_), old_text) << spare;
        EXPECT_EQ(NamesIn(folder_.Path()), (Names{".filler", "a.ini"})) << spare;
    }
    disk.MakeRoom();
    EXPECT_TRUE(ReplaceTextFile(Core(u"a.ini"), "new"));
    EXPECT_EQ(ReadBytes(file_), "new");
}

TEST_F(Folder, ADiskWithoutRoomForAnotherFileKeepsTheOld)
{
    const CMountedDisk disk(folder_.Path(), "256k,nr_inodes=2"); // the folder itself and one file
    WriteBytes(file_, "old");
    EXPECT_FALSE(ReplaceTextFile(Core(u"a.ini"), "new"));
    EXPECT_EQ(ReadBytes(file_), "old");
}

TEST_F(Folder, AReadOnlyDiskChangesNothing)
{
    WriteBytes(file_, "old");
    fs::create_directory(folder_.Path("sub"));
    const CReadOnlyFolder read_only(folder_.Path());
    EXPECT_FALSE(ReplaceTextFile(Core(u"a.ini"), "new"));
    EXPECT_FALSE(ReplaceTextFile(Core(u"b.ini"), "new"));
    EXPECT_FALSE(MakeDirectory(Core(u"x")));
    EXPECT_FALSE(RemoveFile(Core(u"a.ini")));
    EXPECT_FALSE(RemoveEmptyDirectory(Core(u"sub")));
    EXPECT_EQ(ReadTextFile(Core(u"a.ini")), "old");
}

TEST_F(Folder, WhereOnlyTheFileIsWritableItIsWrittenInPlace)
{
    WriteBytes(file_, "old and longer");
    {
        const CReadOnlyFolder read_only(folder_.Path(), file_);
        EXPECT_TRUE(ReplaceTextFile(Core(u"a.ini"), "new"));
    }
    EXPECT_EQ(ReadBytes(file_), "new");
}

TEST_F(Folder, InPlaceIsNoWayOutOfAFullDisk)
{
    CMountedDisk disk(folder_.Path());
    WriteBytes(file_, "old");
    disk.Fill();
    const CReadOnlyFolder read_only(folder_.Path(), file_);
    EXPECT_FALSE(ReplaceTextFile(Core(u"a.ini"), std::string(9000, 'n')));
    EXPECT_EQ(ReadBytes(file_), "old");
}

struct RightsRow {
    const char* label;
    unsigned folder_mode;
    unsigned file_mode;
    bool owns_folder;
    bool owns_file;
    bool replaced;
    bool same_file;
};

const RightsRow rights_rows[] = {
    {"all rights", 0755, 0644, true, true, true, false},
    {"read-only file in an own folder", 0755, 0444, true, true, false, true},
    {"own file, closed folder", 0555, 0644, true, true, true, true},
    {"someone else's file that all may write", 0755, 0666, true, false, true, true},
    {"the same in a folder where only owners rename", 01777, 0666, false, false, true, true},
};

TEST_F(Folder, RightsDecideBetweenBesideInPlaceAndNothing)
{
    for (const RightsRow& row : rights_rows) {
        ASSERT_TRUE(row.owns_file || CanOwnForOthers()) << row.label << ": only root can make such a file";
        const CTemporaryFolder folder;
        const fs::path file = folder.Path("a.ini");
        WriteBytes(file, "old");
        fs::permissions(file, fs::perms(row.file_mode));
        fs::permissions(folder.Path(), fs::perms(row.folder_mode));
        if (row.owns_file) {
            GiveToUnprivilegedUser(file);
        }
        if (row.owns_folder) {
            GiveToUnprivilegedUser(folder.Path());
        }
        const struct stat before = StatusOf(file);
        const std::u16string path = folder.Core(u"a.ini");
        EXPECT_EQ(RunWithoutPrivileges([&] { return ReplaceTextFile(path, "new"); }), row.replaced) << row.label;
        const struct stat after = StatusOf(file);
        EXPECT_EQ(ReadBytes(file), row.replaced ? "new" : "old") << row.label;
        EXPECT_EQ(after.st_ino == before.st_ino, row.same_file) << row.label;
        EXPECT_EQ(after.st_uid, before.st_uid) << row.label;
        EXPECT_EQ(after.st_mode, before.st_mode) << row.label;
        EXPECT_EQ(NamesIn(folder.Path()), Names{"a.ini"}) << row.label;
    }
}

// A folder that may be passed but not read answers only who asks for an exact name, without a look at its list.
TEST_F(Folder, AnExactNameIsFoundWithoutTheList)
{
    const fs::path folder = folder_.Path("shut");
    fs::create_directory(folder);
    WriteBytes(folder / "a.ini", "x");
    GiveToUnprivilegedUser(folder);
    for (const unsigned mode : {0111U, 0U}) {
        fs::permissions(folder, fs::perms(mode));
        EXPECT_EQ(RunWithoutPrivileges([&] { return FileExists(Core(u"shut\\a.ini")); }), mode != 0);
        EXPECT_TRUE(RunWithoutPrivileges(
            [&] { return ListFolder(Core(u"shut\\")).empty() && ReadTextFile(Core(u"shut\\A.ini")) == std::nullopt; }));
    }
}

// The bound is far above what is needed, and far below what a look at each entry by the system would take.
TEST_F(Folder, ElevenThousandEntriesAreListedAtOnce)
{
    const CMountedDisk disk(folder_.Path());
    for (int count = 0; count < 11000; ++count) {
        WriteBytes(folder_.Path("部品-" + std::to_string(count) + ".iga"), "");
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ListFolder(Core(u"")).size(), 11000U);
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    RecordProperty("list_milliseconds", std::to_string(taken.count()));
    EXPECT_LT(taken.count(), 500);
}

} // namespace
} // namespace partkeep
