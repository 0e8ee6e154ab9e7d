// The tool's command lines.
#include "partlibrary/library_folder.h"
#include "partlibrary/part_library.h"
#include "partlibrary/tool/commands.h"
#include "platform/text.h"
#include "tests/partlibrary/library_fixture.h"

#include <filesystem>
#include <set>
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

    std::string At(const char* name) { return folder_.Path(name).string(); }

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
    const struct {
        const char* label;
        std::vector<std::string> arguments;
        const char* reason;
    } rows[] = {
        {"exists", {"create", At("S.kpl")}, "exists already"},
        {"ending", {"create", At("S.db")}, ".kpl"},
        {"server name", {"create", At("nul.kpl")}, "device"},
        {"no such folder", {"create", At("no/S.kpl")}, "cannot be opened"},
        {"missing", {"list", At("no.kpl")}, "no such library"},
        {"not a library", {"check", At("text.kpl")}, "no part library"},
        {"folder not there", {"list", At("S.kpl"), "--folder", "x"}, "no such folder"},
        {"nothing to import", {"import", At("S.kpl"), At("no")}, "cannot be read"},
        {"code page", {"--code-page", "932", "create", At("钣金.kpl")}, "code page"},
        {"sample folder not there", {"sample", At("no")}, "cannot be opened"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Run(row.arguments), 1) << row.label;
        const std::string line = err_.str();
        EXPECT_NE(line.find(row.reason), std::string::npos) << row.label << ": " << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << row.label << ": " << line;
        EXPECT_EQ(out_.str(), "") << row.label;
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
    const CLibraryFolder folder(QString::fromStdString(At("")));
    ASSERT_EQ(folder.Servers().size(), 3);
    int parts = 0;
    std::set<SlotSet> slots;
    bool full_bitmap = false;
    for (const QString& server : folder.Servers()) {
        ASSERT_EQ(Run({"check", folder.FileOf(server).toStdString()}), 0) << err_.str();
        ASSERT_EQ(Run({"list", folder.FileOf(server).toStdString()}), 0);
        const std::string list = out_.str();
        parts += static_cast<int>(std::count(list.begin(), list.end(), '\n'));
        LibraryProblem problem;
        const auto library = CPartLibrary::Open(folder.FileOf(server), problem);
        for (PartId id = 1; const auto part = library->FindPart(id); ++id) {
            slots.insert(part->slots);
            library->ReadFiles(id, SetOf(FileSlot::Flat), [&full_bitmap](FileSlot, const QByteArray& content) {
                full_bitmap = full_bitmap || content.size() == 14 + 40 + 1024 + 152 * 149;
                return true;
            });
        }
    }
    EXPECT_GE(parts, 60);
    EXPECT_EQ(slots.size(), 8U);
    EXPECT_TRUE(full_bitmap);
}

} // namespace
} // namespace partkeep
