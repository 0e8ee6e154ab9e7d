#include "platform/files.h"
#include "platform/text.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace partkeep {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class Files : public testing::Test {
protected:
    Files()
    {
        fs::create_directory(folder_.Path("Sub"));
        WriteBytes(folder_.Path("Sub/部品.iga"), "part");
        WriteBytes(folder_.Path("P.SY5"), "one");
    }

    [[nodiscard]] std::u16string Core(std::u16string_view name) const { return folder_.Core(name); }

    CTemporaryFolder folder_;
};

TEST_F(Files, ExistByAnySeparatorAndCase)
{
    struct Row {
        const char16_t* name;
        bool path;
        bool file;
    };
    const Row rows[] = {
        {u"", true, false},
        {u"Sub", true, false},
        {u"Sub\\", true, false},
        {u"Sub/部品.iga", true, true},
        {u"sUB\\部品.IGA", true, true},
        {u"p.sy5", true, true},
        {u"P.SY5\\", false, false},
        {u"P.SY", false, false},
        {u"P.SY5\\x", false, false},
        {u"None\\P.SY5", false, false},
        {u"*", false, false},
        {u"P.?Y5", false, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(PathExists(Core(row.name)), row.path) << NarrowText(row.name, 65001);
        EXPECT_EQ(FileExists(Core(row.name)), row.file) << NarrowText(row.name, 65001);
    }
    EXPECT_FALSE(PathExists(u""));
    EXPECT_FALSE(PathExists(Core(u"P.SY5") + u'\0'));
}

TEST_F(Files, FoldersAreMadeOneLevelAndRemovedEmpty)
{
    EXPECT_TRUE(MakeDirectory(Core(u"New")));
    EXPECT_FALSE(MakeDirectory(Core(u"new"))) << "there already, spelled otherwise";
    EXPECT_FALSE(MakeDirectory(Core(u"P.SY5")));
    EXPECT_FALSE(MakeDirectory(Core(u"None\\New")));
    EXPECT_TRUE(MakeDirectory(Core(u"sub\\Inner\\")));
    EXPECT_TRUE(fs::is_directory(folder_.Path("Sub/Inner")));
    EXPECT_FALSE(RemoveEmptyDirectory(Core(u"Sub"))) << "not empty";
    EXPECT_FALSE(RemoveEmptyDirectory(Core(u"P.SY5"))) << "a file";
    EXPECT_TRUE(RemoveEmptyDirectory(Core(u"NEW\\")));
    EXPECT_TRUE(RemoveEmptyDirectory(Core(u"Sub/inner")));
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"P.SY5", "Sub"}));
}

TEST_F(Files, RemoveFileNeverRemovesAFolder)
{
    EXPECT_TRUE(MakeDirectory(Core(u"Empty")));
    for (const char16_t* name : {u"Empty", u"Empty\\", u"None", u"P.SY5\\", u"*", u""}) {
        EXPECT_FALSE(RemoveFile(Core(name))) << NarrowText(name, 65001);
    }
    EXPECT_TRUE(RemoveFile(Core(u"SUB/部品.Iga")));
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"Empty", "P.SY5", "Sub"}));
    EXPECT_EQ(NamesIn(folder_.Path("Sub")), Names{});
}

TEST_F(Files, ListFolderGivesFullPathsInOrder)
{
    WriteBytes(folder_.Path("Sub/.hidden"), "");
    WriteBytes(folder_.Path("Sub/nodot"), "");
    EXPECT_TRUE(MakeDirectory(Core(u"Sub\\Inner")));
    for (const char16_t* given : {u"Sub\\", u"sub/"}) {
        const std::u16string prefix = Core(given);
        const std::vector<std::u16string> expected{prefix + u".hidden", prefix + u"Inner", prefix + u"nodot",
                                                   prefix + u"部品.iga"};
        EXPECT_EQ(ListFolder(prefix), expected);
    }
    for (const char16_t* given : {u"Sub", u"None\\", u"P.SY5\\"}) {
        EXPECT_TRUE(ListFolder(Core(given)).empty()) << NarrowText(given, 65001);
    }
    EXPECT_TRUE(ListFolder(u"").empty());
}

TEST_F(Files, RelativePathsStartAtTheCurrentFolder)
{
    const fs::path before = fs::current_path();
    fs::current_path(folder_.Path());
    EXPECT_TRUE(FileExists(u"sub\\部品.iga"));
    EXPECT_EQ(ListFolder(u"Sub\\"), std::vector{Core(u"Sub\\部品.iga")});
    EXPECT_EQ(ListFolder(u".\\").size(), 2U);
    EXPECT_EQ(ListFolder(u".\\").front(), Core(u"P.SY5"));
    EXPECT_TRUE(ReplaceTextFile(u"beside.ini", "x"));
    fs::current_path(before);
    EXPECT_EQ(ReadBytes(folder_.Path("beside.ini")), "x");
}

TEST_F(Files, TextModeIsCrLfOnDiskAndLfInside)
{
    struct Row {
        const char* label;
        std::string disk;
        std::string inside;
    };
    const Row rows[] = {
        {"empty", "", ""},
        {"lines", "a\r\nb\r\n", "a\nb\n"},
        {"lone CR at the end", "a\rb\r", "a\rb\r"},
        {"CR before the line end", "a\r\r\n", "a\r\n"},
        {"0x1A and NUL", std::string("a\x1A\0b\r\n", 6), std::string("a\x1A\0b\n", 5)},
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(ReplaceTextFile(Core(u"P.sy5"), row.inside)) << row.label;
        EXPECT_EQ(ReadBytes(folder_.Path("P.SY5")), row.disk) << row.label;
        EXPECT_EQ(ReadTextFile(Core(u"p.SY5")), row.inside) << row.label;
    }
    WriteBytes(folder_.Path("P.SY5"), "a\nb\r\n\n");
    EXPECT_EQ(ReadTextFile(Core(u"P.SY5")), "a\nb\n\n") << "a lone LF stays";
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"P.SY5", "Sub"})) << "nothing left beside";
}

TEST_F(Files, WhatIsNoFileIsNeitherReadNorReplaced)
{
    for (const char16_t* name : {u"Sub", u"Sub\\", u"None\\a", u"P.SY5\\", u"P.SY5\\a", u""}) {
        EXPECT_EQ(ReadTextFile(Core(name)), std::nullopt) << NarrowText(name, 65001);
        EXPECT_FALSE(ReplaceTextFile(Core(name), "x")) << NarrowText(name, 65001);
    }
    EXPECT_EQ(ReadTextFile(Core(u"None")), std::nullopt);
    EXPECT_FALSE(ReplaceTextFile(u"", "x"));
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"P.SY5", "Sub"}));
    EXPECT_EQ(ReadBytes(folder_.Path("P.SY5")), "one");
}

TEST_F(Files, LongPathsWork)
{
    std::u16string path = folder_.Core();
    for (int level = 0; level < 4; ++level) {
        path += u"\\" + std::u16string(100, u'a');
        ASSERT_TRUE(MakeDirectory(path)) << level;
    }
    EXPECT_TRUE(ReplaceTextFile(path + u"\\file.ini", "x\n"));
    EXPECT_EQ(ReadTextFile(path + u"\\FILE.ini"), "x\n");
    EXPECT_EQ(ListFolder(path + u'\\'), std::vector{path + u"\\file.ini"});
    EXPECT_TRUE(RemoveFile(path + u"\\file.ini"));
    for (; path != folder_.Core(); path.erase(path.rfind(u'\\'))) {
        EXPECT_TRUE(RemoveEmptyDirectory(path));
    }
    EXPECT_FALSE(MakeDirectory(folder_.Core(std::u16string(300, u'n')))) << "a name that no file system takes";
}

TEST_F(Files, NativeAndCorePathsMeet)
{
    for (const std::u16string_view name : {u"P.SY5", u"Sub\\", u"Sub\\None\\x", u"Sub\\部品.iga"}) {
        EXPECT_EQ(CorePath(NativePath(Core(name))), Core(name));
    }
    EXPECT_EQ(CorePath("C:/a/b\\"), u"C:\\a\\b\\");
    EXPECT_EQ(NativePath(u""), "");
}

} // namespace
} // namespace partkeep
