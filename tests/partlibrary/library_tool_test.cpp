// The tool's command lines: filling a library whole or not at all, and what is said where that fails.
#include "partlibrary/tool/commands.h"
#include "platform/text.h"
#include "samples/sample_library.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

// Works in a folder of its own, with paths as an operator types them.
class LibraryTool : public LibraryShop {
protected:
    LibraryTool() { fs::current_path(work_.Path()); }
    ~LibraryTool() override { fs::current_path(before_); }

    int Run(std::vector<std::string> arguments)
    {
        std::vector<const char*> argv{"partkeep-library"};
        for (const std::string& argument : arguments) {
            argv.push_back(argument.c_str());
        }
        out_.str({});
        err_.str({});
        const int result = RunLibraryTool(static_cast<int>(argv.size()), argv.data(), out_, err_);
        SetSystemCodePage(utf8_code_page);
        return result;
    }

    void ExpectTrouble(const std::vector<std::string>& arguments, const std::string& reason)
    {
        EXPECT_EQ(Run(arguments), 1) << reason;
        const std::string line = err_.str();
        EXPECT_NE(line.find(reason), std::string::npos) << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_EQ(out_.str(), "") << reason;
    }

    static void Write(const fs::path& path, std::string_view bytes)
    {
        fs::create_directories(path.parent_path());
        WriteBytes(path, bytes);
    }

    const fs::path before_ = fs::current_path();
    CTemporaryFolder work_;
    std::string library_ = library_file_.toStdString();
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(LibraryTool, ImportsByNameAndEndingAndKeepsTheRest)
{
    for (const char* name : {"A.iga", "a.SY5", "sub/鋼/板.1.ncd", "sub/notes.txt"}) {
        Write(fs::path("in") / name, fs::path(name).filename().string());
    }
    Write("in/sub/E.iga", "");
    Write("in/sub/pic.2d.bmp", SmallBitmap().toStdString());
    WriteBytes("t.csv", "folder,part,thickness,comment\nsub\\鋼,板.1,2.3,厚い\n,A,1,first\n");
    EXPECT_EQ(Run({"import", library_, "in/", "--into", "New/In", "--csv", "t.csv"}), 0);
    EXPECT_EQ(out_.str(), "imported 5 parts with 5 files\n");
    EXPECT_EQ(err_.str(), "partkeep-library: in/sub/notes.txt: skipped (no file of a part)\n");
    Write("more/A.Ncd", "A.NCD");
    Write("more/P9.iga", "P9.iga");
    EXPECT_EQ(Run({"import", library_, "more", "--into", "New/In"}), 0);
    EXPECT_EQ(Run({"list", library_, "--folder", "New"}), 0);
    EXPECT_EQ(out_.str(), "New\\In\tA\t1.0000\t\t\t.iga .NCD\tfirst\n"
                          "New\\In\ta\t0.0000\t\t\t.SY5\t\n"
                          "New\\In\tP9\t0.0000\t\t\t.iga\t\n"
                          "New\\In\\sub\tE\t0.0000\t\t\t.iga\t\n"
                          "New\\In\\sub\tpic\t0.0000\t\t\t2D\t\n"
                          "New\\In\\sub\\鋼\t板.1\t2.3000\t\t\t.NCD\t厚い\n");
    EXPECT_TRUE(Copy(u"New\\In\\A") && Copy(u"New\\In\\sub\\E"));
    EXPECT_EQ(Take(), (std::vector<std::string>{"A.NCD", "A.iga", "!E.iga"})) << "an empty file is one";
    WriteBytes("t.csv", "part,machine\nP9,M\n");
    Write("more/P9.iga", "new");
    EXPECT_EQ(Run({"import", library_, "more", "--into", "New/In", "--csv", "t.csv"}), 0);
    EXPECT_TRUE(session_.ReadPartAttributes(u"SRV1", u"New\\In\\P9")->machine == u"M"_s && Copy(u"New\\In\\P9"));
    EXPECT_EQ(ReadBytes(target_.Path("P9.iga")), "new");
    EXPECT_EQ(Run({"check", library_}), 0) << err_.str();
    EXPECT_NE(out_.str().find("7 folders, 12 parts, 19 files"), std::string::npos) << out_.str();
}

TEST_F(LibraryTool, AnImportThatFailsLeavesTheLibraryAsItWas)
{
    const struct {
        const char* reason;
        const char* file; // beside "A.iga", which would come first
        std::string content = "x";
        std::string table = "";
    } rows[] = {
        {"device", "nul.iga"},
        {"with a blank", "Z .iga"},
        {"name has one of", "Z\\1.iga"},
        {"or a dot", "Z./P.iga"},
        {"24000", "Z.2D.bmp", SmallBitmap(24001).toStdString()},
        {"cut short", "Z.3D.bmp", SmallBitmap().left(300).toStdString()},
        {"not a PNG", "Z.png", "GIF89a"},
        {"second file", "A.IGA"},
        {"no file of a part ZZ", "Z.iga", "x", "part\nZZ\n"},
        {"line 3", "Z.iga", "x", "part\nZ\nZ\n"},
        {"control", "Z.iga", "x", "part,comment\nZ,a\tb\n"},
        {"too long", "Z.iga", "x", "part,machine\nZ," + std::string(256, '0')},
    };
    const std::string before = ReadBytes(library_);
    for (const auto& row : rows) {
        fs::remove_all("in");
        Write("in/A.iga", "fine");
        Write(fs::path("in") / row.file, row.content);
        WriteBytes("t.csv", row.table);
        ExpectTrouble({"import", library_, "in", "--csv", "t.csv"}, row.reason);
        EXPECT_TRUE(ReadBytes(library_) == before) << row.reason;
    }
    fs::remove_all("in");
    fs::create_directory("in");
    fs::create_symlink("gone", "in/Q.iga");
    ExpectTrouble({"import", library_, "in"}, "reading failed");
    LibraryProblem problem;
    const auto other = CSqliteWriter::Open(library_file_, problem);
    ASSERT_TRUE(other != nullptr && other->Begin());
    ExpectTrouble({"import", library_, "in"}, "in use");
}

TEST_F(LibraryTool, AFolderThatCannotBeReadIsNotPassedOver)
{
    ASSERT_EQ(Run({"create", "S.kpl"}), 0);
    Write("in/shut/P.iga", "x");
    fs::permissions("in/shut", fs::perms::none);
    for (const char* path : {".", "S.kpl", "in", "in/shut"}) {
        GiveToUnprivilegedUser(path);
    }
    EXPECT_TRUE(RunWithoutPrivileges([&] {
        return Run({"import", "S.kpl", "in"}) == 1 && err_.str().find("a folder cannot be read") != std::string::npos;
    }));
    fs::permissions("in/shut", fs::perms::owner_all); // so that it can be removed
}

TEST_F(LibraryTool, KeysOfOtherRulesAreReadAndMadeAnew)
{
    ASSERT_EQ(Run({"list", library_}), 0);
    const std::string list = out_.str();
    Forge(u"UPDATE library SET keys = 'older'"_s);
    Forge(u"UPDATE part SET search_text = '?', name_key = x'31'"_s);
    EXPECT_EQ(Run({"list", library_}), 0);
    EXPECT_EQ(out_.str(), list);
    EXPECT_NE(err_.str().find("check --rebuild"), std::string::npos) << err_.str();
    session_.Go(u"SRV1"_s, u"Plates\\2008"_s);
    session_.SearchFor(u"たれっと"_s);
    session_.SelectAllParts(1);
    EXPECT_EQ(session_.GetSelectedPartCount(), 1);
    ExpectTrouble({"import", library_, "."}, "check --rebuild");
    ExpectTrouble({"check", library_}, "check --rebuild");
    EXPECT_EQ(Run({"check", library_, "--rebuild"}), 0) << err_.str();
    EXPECT_EQ(Run({"list", library_}), 0);
    EXPECT_EQ(out_.str() + err_.str(), list);
}

TEST_F(LibraryTool, SaysInOneLineWhatIsWrong)
{
    WriteBytes("text.kpl", "no library");
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"create", library_}, "exists already"},
        {{"create", "S.db"}, ".kpl"},
        {{"create", "nul.kpl"}, "device"},
        {{"create", "no/S.kpl"}, "No such file or directory"},
        {{"list", "no.kpl"}, "no such library"},
        {{"check", "text.kpl"}, "no part library"},
        {{"list", library_, "--folder", "x"}, "no such folder"},
        {{"import", library_, "no"}, "cannot be read"},
        {{"import", library_, ".", "--into", "..\\x"}, "refused"},
        {{"import", library_, ".", "--csv", "no.csv"}, "reading failed"},
        {{"--code-page", "932", "create", "钣金.kpl"}, "code page"},
        {{"--code-page", "936", "create", "板金\U0001F529.kpl"}, "code page"},
        {{"--code-page", "65000", "list", library_}, "no code page"},
    };
    WriteBytes("P.iga", "x");
    for (const auto& [arguments, reason] : rows) {
        ExpectTrouble(arguments, reason);
    }
    for (const auto& arguments :
         {std::vector<std::string>{}, {"create"}, {"--code-page", "x", "list", "x"}, {"burn"}}) {
        EXPECT_GE(Run(arguments), 100);
    }
}

TEST_F(LibraryTool, TheSampleHasWhatOneWantsToTry)
{
    QStringList made;
    LibraryProblem problem;
    ASSERT_TRUE(MakeSampleLibraries(u"."_s, false, made, problem)) << ProblemText(problem);
    EXPECT_FALSE(MakeSampleLibraries(u"."_s, false, made, problem));
    EXPECT_EQ(problem.fault, LibraryFault::AlreadyThere);
    EXPECT_FALSE(MakeSampleLibraries(u"no"_s, false, made, problem));
    EXPECT_EQ(problem.fault, LibraryFault::WriteFailed);
    ASSERT_TRUE(MakeSampleLibraries(u"."_s, true, made, problem)) << ProblemText(problem);
    std::string lists;
    std::size_t pictures = 0;
    for (const std::string& file : NamesIn(".")) {
        ASSERT_EQ(Run({"check", file}), 0) << err_.str();
        ASSERT_EQ(Run({"list", file}), 0);
        lists += out_.str();
        const auto library = CSqliteLibrary::Open(QString::fromStdString(file), problem);
        for (const FileSlot slot : {FileSlot::Flat, FileSlot::Bent}) {
            const auto content = library->ReadFile(1, slot);
            pictures += content && content->size() == 14 + 40 + 1024 + 152 * 149 ? 1 : 0; // 149 by 149 pixels, just fit
        }
    }
    EXPECT_EQ(pictures, 6U);
    EXPECT_GE(std::count(lists.begin(), lists.end(), '\n'), 60);
    for (const char* files : {"\t.iga .SY5 .NCD 2D 3D\t", "\t.iga .bmf .SY5 .NCD 2D 3D PNG\t", "\t.bmf 3D\t"}) {
        EXPECT_NE(lists.find(files), std::string::npos) << files;
    }
}

} // namespace
} // namespace partkeep
