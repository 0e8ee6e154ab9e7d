#include "platform/files.h"
#include "platform/text.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

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

TEST_F(Files, ExistInAnyCase)
{
    enum What { Nothing, AFolder, AFile };
    const std::pair<const char16_t*, What> rows[] = {
        {u"", AFolder},        {u"Sub\\", AFolder}, {u"Sub\\部品.iga", AFile}, {u"sUB\\部品.IGA", AFile},
        {u"P.SY5\\", Nothing}, {u"P.SY", Nothing},  {u"P.SY5\\x", Nothing},    {u"None\\P.SY5", Nothing},
        {u"*", Nothing},       {u"P.?Y5", Nothing},
    };
    for (const auto& [name, what] : rows) {
        EXPECT_EQ(PathExists(Core(name)), what != Nothing) << NarrowText(name, 65001);
        EXPECT_EQ(FileExists(Core(name)), what == AFile) << NarrowText(name, 65001);
        if (what == Nothing) {
            EXPECT_EQ(ReadTextFile(Core(name)), std::nullopt) << NarrowText(name, 65001);
            EXPECT_FALSE(RemoveFile(Core(name))) << NarrowText(name, 65001);
        }
    }
    EXPECT_EQ(CorePath("C:/a/b\\"), u"C:\\a\\b\\");
    EXPECT_EQ(CorePath(NativePath(Core(u"Sub\\None\\x\\"))), Core(u"Sub\\None\\x\\"));
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
    EXPECT_FALSE(RemoveEmptyDirectory(Core(u"Sub"))) << "not empty";
    EXPECT_FALSE(RemoveEmptyDirectory(Core(u"P.SY5"))) << "a file";
    EXPECT_FALSE(RemoveFile(Core(u"New")) || RemoveFile(Core(u"New\\"))) << "a folder";
    EXPECT_TRUE(RemoveEmptyDirectory(Core(u"NEW\\")));
    EXPECT_TRUE(RemoveEmptyDirectory(Core(u"Sub\\inner")));
    EXPECT_TRUE(RemoveFile(Core(u"SUB\\部品.Iga")));
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"P.SY5", "Sub"}));
    EXPECT_EQ(NamesIn(folder_.Path("Sub")), Names{});
}

TEST_F(Files, ListFolderGivesFullPathsInOrder)
{
    WriteBytes(folder_.Path("Sub/.hidden"), "");
    WriteBytes(folder_.Path("Sub/nodot"), "");
    for (const char16_t* given : {u"Sub\\", u"sub\\"}) {
        const std::u16string prefix = Core(given);
        EXPECT_EQ(ListFolder(prefix), (std::vector{prefix + u".hidden", prefix + u"nodot", prefix + u"部品.iga"}));
        EXPECT_EQ(ListFolder(prefix, [](std::u16string_view path) { return path.ends_with(u"dot"); }),
                  std::vector{prefix + u"nodot"});
    }
    for (const std::u16string& given : {Core(u"Sub"), Core(u"None\\"), Core(u"P.SY5\\"), std::u16string()}) {
        EXPECT_TRUE(ListFolder(given).empty()) << NarrowText(given, 65001);
    }
    const fs::path before = fs::current_path();
    fs::current_path(folder_.Path());
    EXPECT_TRUE(FileExists(u"sub\\部品.iga"));
    for (const std::u16string& given :
         {std::u16string(u".\\"), std::u16string(u"Sub\\..\\"), Core(u".\\Sub\\.\\..\\")}) {
        EXPECT_EQ(ListFolder(given).front(), Core(u"P.SY5")) << NarrowText(given, 65001);
    }
    EXPECT_TRUE(ReplaceTextFile(u"beside.ini", "x"));
    fs::current_path(before);
    EXPECT_EQ(ReadBytes(folder_.Path("beside.ini")), "x");
}

TEST_F(Files, TextModeIsCrLfOnDiskAndLfInside)
{
    const std::pair<std::string, std::string> rows[] = {{"", ""},
                                                        {"a\r\nb\r\n", "a\nb\n"},
                                                        {"a\rb\r", "a\rb\r"},
                                                        {"a\r\r\n", "a\r\n"},
                                                        {std::string("\x1A\0\r\n", 4), std::string("\x1A\0\n", 3)}};
    for (const auto& [disk, inside] : rows) {
        EXPECT_TRUE(ReplaceTextFile(Core(u"P.sy5"), inside)) << inside;
        EXPECT_EQ(ReadBytes(folder_.Path("P.SY5")), disk);
        EXPECT_EQ(ReadTextFile(Core(u"p.SY5")), inside);
    }
    WriteBytes(folder_.Path("P.SY5"), "a\nb\r\n\n");
    EXPECT_EQ(ReadTextFile(Core(u"P.SY5")), "a\nb\n\n") << "a lone LF stays";
    for (const std::u16string& name :
         {Core(u"Sub"), Core(u"Sub\\"), Core(u"None\\a"), Core(u"P.SY5\\"), Core(u"P.SY5\\a"), std::u16string()}) {
        EXPECT_EQ(ReadTextFile(name), std::nullopt) << NarrowText(name, 65001);
        EXPECT_FALSE(ReplaceTextFile(name, "x")) << NarrowText(name, 65001);
    }
    EXPECT_EQ(NamesIn(folder_.Path()), (Names{"P.SY5", "Sub"})) << "nothing left beside";
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

} // namespace
} // namespace partkeep
