// The tool's command lines.
#include "partlibrary/library_folder.h"
#include "partlibrary/part_library.h"
#include "partlibrary/tool/commands.h"
#include "platform/text.h"
#include "tests/partlibrary/library_fixture.h"

#include <filesystem>
#include <sstream>

namespace partkeep {
namespace {

class LibraryTool : public testing::Test {
protected:
    void TearDown() override { SetSystemCodePage(utf8_code_page); }

    int Run(std::vector<std::string> arguments)
    {
        std::vector<const char*> argv{"partkeep-library"};
        for (const std::string& argument : arguments) {
            argv.push_back(argument.c_str());
        }
        out_.str({});
        err_.str({});
        return RunLibraryTool(static_cast<int>(argv.size()), argv.data(), out_, err_);
    }

    std::string At(std::string_view name) { return folder_.Path(name).string(); }

    CTemporaryFolder folder_;
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(LibraryTool, MakesFillsListsAndChecks)
{
    const std::string library = "板金.kpl";
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.Path()); // paths as an operator types them
    std::filesystem::create_directories(folder_.Path("in/sub"));
    WriteBytes(folder_.Path("in/P10.iga"), "a");
    WriteBytes(folder_.Path("in/P2.SY5"), "b");
    WriteBytes(folder_.Path("in/sub/カバー.iga"), "c");
    WriteBytes(folder_.Path("in/readme"), "d");
    WriteBytes(folder_.Path("t.csv"), "part,thickness,comment\nP2,1.5,first\n");
    EXPECT_EQ(Run({"create", library}), 0) << err_.str();
    EXPECT_EQ(Run({"import", library, "in/", "--into", "Top/2008", "--csv", "t.csv"}), 0) << err_.str();
    EXPECT_EQ(out_.str(), "imported 3 parts with 3 files\n");
    EXPECT_NE(err_.str().find("readme: skipped"), std::string::npos);
    EXPECT_EQ(Run({"list", library}), 0);
    EXPECT_EQ(out_.str(), "Top\\2008\tP2\t1.5000\t\t\t.SY5\tfirst\n"
                          "Top\\2008\tP10\t0.0000\t\t\t.iga\t\n"
                          "Top\\2008\\sub\tカバー\t0.0000\t\t\t.iga\t\n");
    EXPECT_EQ(Run({"list", library, "--folder", "Top/2008/sub"}), 0);
    EXPECT_EQ(out_.str(), "Top\\2008\\sub\tカバー\t0.0000\t\t\t.iga\t\n");
    EXPECT_EQ(Run({"check", library}), 0);
    EXPECT_NE(out_.str().find("4 folders, 3 parts, 3 files"), std::string::npos) << out_.str();
    std::filesystem::current_path(before);
}

TEST_F(LibraryTool, SaysInOneLineWhatIsWrong)
{
    ASSERT_EQ(Run({"create", At("S.kpl")}), 0);
    WriteBytes(At("text.kpl"), "no library");
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"create", At("S.kpl")}, "exists already"},
        {{"create", At("S.db")}, ".kpl"},
        {{"create", At("nul.kpl")}, "device"},
        {{"create", At("no/S.kpl")}, "cannot be opened"},
        {{"list", At("no.kpl")}, "no such library"},
        {{"check", At("text.kpl")}, "no part library"},
        {{"list", At("S.kpl"), "--folder", "x"}, "no such folder"},
        {{"import", At("S.kpl"), At("no")}, "cannot be read"},
        {{"--code-page", "932", "create", At("钣金.kpl")}, "code page"},
        {{"sample", At("no")}, "cannot be opened"},
    };
    for (const auto& [arguments, reason] : rows) {
        EXPECT_EQ(Run(arguments), 1) << reason;
        const std::string line = err_.str();
        EXPECT_NE(line.find(reason), std::string::npos) << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_EQ(out_.str(), "") << reason;
        SetSystemCodePage(utf8_code_page);
    }
    for (const auto& arguments :
         {std::vector<std::string>{}, {"create"}, {"--code-page", "1", "list", "x"}, {"burn"}}) {
        EXPECT_GE(Run(arguments), 100);
    }
}

TEST_F(LibraryTool, TheSampleHasWhatOneWantsToTry)
{
    ASSERT_EQ(Run({"sample", At("")}), 0) << err_.str();
    EXPECT_EQ(Run({"sample", At("")}), 1);
    ASSERT_EQ(Run({"sample", "--replace", At("")}), 0);
    std::string lists;
    std::size_t pictures = 0;
    for (const std::string& file : NamesIn(folder_.Path())) {
        ASSERT_EQ(Run({"check", At(file)}), 0) << err_.str();
        ASSERT_EQ(Run({"list", At(file)}), 0);
        lists += out_.str();
        LibraryProblem problem;
        const auto library = CPartLibrary::Open(QString::fromStdString(At(file)), problem);
        library->ReadFiles(1, SetOf(FileSlot::Flat) | SetOf(FileSlot::Bent), [&](FileSlot, const QByteArray& content) {
            pictures += content.size() == 14 + 40 + 1024 + 152 * 149 ? 1 : 0; // 149 by 149 pixels, just fitting
            return true;
        });
    }
    EXPECT_EQ(pictures, 6U);
    EXPECT_GE(std::count(lists.begin(), lists.end(), '\n'), 60);
    for (const char* files : {"\t.iga .SY5 .NCD 2D 3D\t", "\t.iga .bmf .SY5 .NCD 2D 3D PNG\t", "\t.bmf 3D\t"}) {
        EXPECT_NE(lists.find(files), std::string::npos) << files;
    }
}

} // namespace
} // namespace partkeep
