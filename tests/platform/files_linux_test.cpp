// What the file services do where the disk or the rights give out, each with the real fault.
#include "platform/files.h"
#include "tests/support/linux_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <tuple>

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
    [[nodiscard]] bool Replace(std::string_view text) const { return ReplaceTextFile(Core(u"a.ini"), text); }

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
    CFileSearch search; // reads each folder once, with the same result
    const std::pair<const char16_t*, const char*> rows[] = {
        {u"q\\X", "q/x"}, {u"p.sy5", "p.sy5"}, {u"P.SY5", "P.sy5"}, {u"É.X", "É.x"}};
    for (const auto& [asked, found] : rows) {
        EXPECT_EQ(ReadTextFile(Core(asked)), found);
        EXPECT_EQ(NativePath(Core(asked)), folder_.Path(found).string());
        EXPECT_TRUE(search.FileExists(Core(asked)) && !search.FileExists(Core(asked) + u'x')) << found;
    }
    EXPECT_TRUE(ReplaceTextFile(Core(u"P.Sy5"), "new"));
    EXPECT_EQ(ReadBytes(folder_.Path("P.sy5")), "new");
    EXPECT_TRUE(RemoveFile(Core(u"P.SY5")) && RemoveFile(Core(u"P.SY5"))) << "first the one, then the other";
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"Q", "q", "É.x", "é.x"}));
    WriteBytes(folder_.Path("n.x"), "");
    EXPECT_FALSE(search.FileExists(Core(u"N.X")));
    search.Forget();
    EXPECT_TRUE(search.FileExists(Core(u"N.X")));
}

TEST_F(Folder, NamesThatTextCannotTellAreLeftAlone)
{
    fs::create_directory(folder_.Path("a"));
    for (const char* name : {"a\\b", "bad\xFF", "a/b"}) {
        WriteBytes(folder_.Path() / name, "x");
    }
    EXPECT_EQ(ListFolder(Core(u"")), std::vector{Core(u"a")});
    EXPECT_TRUE(RemoveFile(Core(u"a\\b"))) << "the one in the folder";
    EXPECT_FALSE(RemoveFile(Core(u"a\\b")) || RemoveFile(Core(u"bad\uFFFD")));
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(ReadTextFile(Core(u"a.ini")), std::nullopt) << "a pipe is no text and holds nobody up";
    EXPECT_FALSE(Replace("x"));
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
    EXPECT_EQ(std::tie(after.st_mode, after.st_uid, after.st_gid),
              std::tie(before.st_mode, before.st_uid, before.st_gid));
    std::array<std::uint16_t, 22> kept{};
    EXPECT_EQ(getxattr(file_.c_str(), "system.posix_acl_access", kept.data(), sizeof kept), ssize_t{sizeof kept});
    EXPECT_EQ(kept, list);
}

TEST_F(Folder, ReplacingFollowsLinks)
{
    fs::create_directory(folder_.Path("else"));
    const fs::path target = folder_.Path("else/real.ini");
    fs::create_symlink("else/next", file_);
    fs::create_symlink(target, folder_.Path("else/next"));
    for (const char* content : {"made", "replaced"}) {
        EXPECT_TRUE(ReplaceTextFile(Core(u"A.INI"), content));
        EXPECT_EQ(ReadBytes(target), content);
    }
    EXPECT_EQ(NamesIn(folder_.Path("else")), (Names{"next", "real.ini"}));
    EXPECT_TRUE(RemoveFile(Core(u"a.ini")));
    EXPECT_EQ(ReadBytes(target), "replaced") << "the link goes, not the file";
    fs::create_symlink("a.ini", file_);
    EXPECT_FALSE(Replace("x")) << "leads to itself";
}

TEST_F(Folder, AFullDiskLeavesTheOldOrTheNew)
{
    PARTKEEP_NEEDS_MOUNTS();
    {
        const CMountedDisk no_room_beside(folder_.Path(), "256k,nr_inodes=2"); // the folder itself and one file
        WriteBytes(file_, "old");
        EXPECT_FALSE(Replace("new"));
        EXPECT_EQ(ReadBytes(file_), "old");
    }
    CMountedDisk disk(folder_.Path());
    WriteBytes(file_, "old");
    for (const std::size_t spare : {0U, 4096U, 8192U}) {
        disk.Fill(spare);
        EXPECT_FALSE(Replace(std::string(9000, 'n'))) << spare;
        EXPECT_FALSE(ReplaceTextFile(Core(u"b.ini"), std::string(9000, 'n'))) << spare;
        EXPECT_EQ(ReadBytes(file_), "old") << spare;
        EXPECT_EQ(NamesIn(folder_.Path()), (Names{".filler", "a.ini"})) << spare;
    }
    disk.Fill();
    {
        const CReadOnlyFolder read_only(folder_.Path(), file_);
        EXPECT_FALSE(Replace(std::string(9000, 'n'))) << "in place is no way out";
        EXPECT_EQ(ReadBytes(file_), "old");
    }
    disk.MakeRoom();
    EXPECT_TRUE(Replace("new"));
    EXPECT_EQ(ReadBytes(file_), "new");
}

TEST_F(Folder, AReadOnlyDiskChangesNothing)
{
    PARTKEEP_NEEDS_MOUNTS();
    WriteBytes(file_, "old and longer");
    fs::create_directory(folder_.Path("sub"));
    {
        const CReadOnlyFolder read_only(folder_.Path());
        EXPECT_FALSE(Replace("new") || ReplaceTextFile(Core(u"b.ini"), "new") || MakeDirectory(Core(u"x")));
        EXPECT_FALSE(RemoveFile(Core(u"a.ini")) || RemoveEmptyDirectory(Core(u"sub")));
        EXPECT_EQ(ReadTextFile(Core(u"a.ini")), "old and longer");
    }
    {
        const CReadOnlyFolder read_only(folder_.Path(), file_);
        EXPECT_FALSE(ReplaceTextFile(Core(u"a.ini"), "new", OldFile::Kept)) << "there is no place for the old one";
        EXPECT_TRUE(Replace("new")) << "in place, where only the file is writable";
    }
    EXPECT_EQ(ReadBytes(file_), "new");
}

TEST_F(Folder, RightsDecideBetweenBesideInPlaceAndNothing)
{
    const std::tuple<const char*, unsigned, unsigned, bool, bool, bool, bool> rows[] = {
        {"all rights", 0755, 0644, true, true, true, false},
        {"read-only file in an own folder", 0755, 0444, true, true, false, true},
        {"own file, closed folder", 0555, 0644, true, true, true, true},
        {"someone else's file that all may write", 0755, 0666, true, false, true, true},
        {"the same in a folder where only owners rename", 01777, 0666, false, false, true, true},
    };
    for (const auto& [label, folder_mode, file_mode, owns_folder, owns_file, replaced, same_file] : rows) {
        if (!owns_file && !CanOwnForOthers()) {
            continue;
        }
        const CTemporaryFolder folder;
        const fs::path file = folder.Path("a.ini");
        WriteBytes(file, "old");
        for (const auto& [path, mode, owned] :
             {std::tuple(file, file_mode, owns_file), std::tuple(folder.Path(), folder_mode, owns_folder)}) {
            fs::permissions(path, fs::perms(mode));
            if (owned) {
                GiveToUnprivilegedUser(path);
            }
        }
        const struct stat before = StatusOf(file);
        EXPECT_EQ(RunWithoutPrivileges([&] { return ReplaceTextFile(folder.Core(u"a.ini"), "new"); }), replaced);
        const struct stat after = StatusOf(file);
        EXPECT_EQ(ReadBytes(file), replaced ? "new" : "old") << label;
        EXPECT_EQ(after.st_ino == before.st_ino, same_file) << label;
        EXPECT_EQ(std::tie(after.st_mode, after.st_uid), std::tie(before.st_mode, before.st_uid)) << label;
        EXPECT_EQ(NamesIn(folder.Path()), Names{"a.ini"}) << label;
        fs::permissions(folder.Path(), fs::perms::owner_all); // so that it can be removed
    }
    if (!CanOwnForOthers()) {
        GTEST_SKIP() << "the rows with files of someone else: only root can make them";
    }
}

// A folder that may be passed but not read answers only who asks for an exact name, without a look at its list.
TEST_F(Folder, AnExactNameIsFoundWithoutTheList)
{
    WriteBytes(file_, "x");
    GiveToUnprivilegedUser(folder_.Path());
    fs::permissions(folder_.Path(), fs::perms(0111));
    EXPECT_TRUE(RunWithoutPrivileges(
        [&] { return FileExists(Core(u"a.ini")) && !FileExists(Core(u"A.ini")) && ListFolder(Core(u"")).empty(); }));
    fs::permissions(folder_.Path(), fs::perms::owner_all); // so that it can be removed
}

} // namespace
} // namespace partkeep
