// The tool's command lines: filling a library whole or not at all, and what is said where that fails.
#include "partlibrary/tool/commands.h"
#include "platform/text.h"
#include "samples/sample_library.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>
#include <tuple>

namespace partkeep {
namespace {

// Works in a folder of its own, with paths as an operator types them.
class LibraryTool : public LibraryShop {
protected:
    LibraryTool() { fs::current_path(work_.Path()); }
    ~LibraryTool() override { fs::current_path(before_); }

    int Run(const std::vector<std::string>& arguments)
    {
        ran_ = RunTool(arguments);
        SetSystemCodePage(utf8_code_page);
        return ran_.end;
    }

    void ExpectTrouble(const std::vector<std::string>& arguments, const std::string& reason)
    {
        EXPECT_GT(Run(arguments), 0) << reason;
        EXPECT_NE(ran_.err.find(reason), std::string::npos) << ran_.err;
        EXPECT_EQ(std::ranges::count(ran_.err, '\n'), 1) << ran_.err;
        EXPECT_EQ(ran_.out, "") << reason;
    }

    static void Write(const fs::path& path, std::string_view bytes)
    {
        fs::create_directories(path.parent_path());
        WriteBytes(path, bytes);
    }

    std::string Left() { return All(*libraries_.At(u"SRV1"_s)->Open(problem_)); }

    const fs::path before_ = fs::current_path();
    CTemporaryFolder work_;
    std::string library_ = libraries_.PlaceOf(u"SRV1"_s).toStdString();
    ToolRun ran_;
};

TEST_F(LibraryTool, ImportsByNameAndEndingAndKeepsTheRest)
{
    for (const char* name : {"A.iga", "a.SY5", "sub/鋼/板.1.ncd", "sub/notes.txt"}) {
        Write(fs::path("in") / name, fs::path(name).filename().string());
    }
    Write("in/sub/E.iga", "");
    Write("in/sub/pic.2d.bmp", SmallBitmap().toStdString());
    WriteBytes("t.csv", "\xEF\xBB\xBF"
                        "folder,Part,Thickness,comment\r\n" // as spreadsheets write it
                        "sub/鋼,板.1,2.3,\"厚い, \"\"b\"\"\"\r\n\r\n,A,1,first\r\n,a,,\r\n");
    EXPECT_EQ(Run({"import", library_, "in/", "--into", "New/In", "--csv", "t.csv"}), 0);
    EXPECT_EQ(ran_.out, "imported 5 parts with 5 files\n");
    EXPECT_EQ(ran_.err, "partkeep-library: in/sub/notes.txt: skipped (no file of a part)\n");
    Write("more/A.Ncd", "A.NCD");
    Write("more/P9.iga", "P9.iga");
    EXPECT_EQ(Run({"import", library_, "more", "--into", "New/In"}), 0);
    EXPECT_EQ(Run({"list", library_, "--folder", "New"}), 0);
    EXPECT_EQ(ran_.out, "New\\In\tA\t1.0000\t\t\t.iga .NCD\tfirst\n"
                        "New\\In\ta\t0.0000\t\t\t.SY5\t\n"
                        "New\\In\tP9\t0.0000\t\t\t.iga\t\n"
                        "New\\In\\sub\tE\t0.0000\t\t\t.iga\t\n"
                        "New\\In\\sub\tpic\t0.0000\t\t\t2D\t\n"
                        "New\\In\\sub\\鋼\t板.1\t2.3000\t\t\t.NCD\t厚い, \"b\"\n");
    EXPECT_TRUE(Copy(u"New\\In\\A") && Copy(u"New\\In\\sub\\E"));
    EXPECT_EQ(Take(), (std::vector<std::string>{"A.NCD", "A.iga", "!E.iga"})) << "an empty file is one";
    WriteBytes("t.csv", "part,machine\nP9,M\n");
    Write("more/P9.iga", "new");
    EXPECT_EQ(Run({"import", library_, "more", "--into", "New/In", "--csv", "t.csv"}), 0);
    EXPECT_TRUE(session_.ReadPartAttributes(u"SRV1", u"New\\In\\P9")->machine == u"M"_s && Copy(u"New\\In\\P9"));
    EXPECT_EQ(ReadBytes(target_.Path("P9.iga")), "new");
    EXPECT_EQ(Run({"check", library_}), 0) << ran_.err;
    EXPECT_NE(ran_.out.find("7 folders, 12 parts, 19 files"), std::string::npos) << ran_.out;
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
        {"1 files of the part Z in place of 2", "Z.iga", "x", "part,files\nZ,2\n"},
        {"line 2, nul: the name is refused", "Z.iga", "x", "part,files\nnul,0\n"},
        {"no number", "Z.iga", "x", "part,files\nZ,x\n"},
        {"no part name", "Z.iga", "x", "part,folder,machine\n,F,M\n"},
        {"second line for the folder F", "Z.iga", "x", "part,folder\n,F\n,F\n"},
        {"line 3", "Z.iga", "x", "part\nZ\nZ\n"},
        {"control", "Z.iga", "x", "part,comment\nZ,a\tb\n"},
        {"too long", "Z.iga", "x", "part,machine\nZ," + std::string(256, '0')},
    };
    const std::string before = InDatabase() ? Left() : ReadBytes(library_);
    for (const auto& row : rows) {
        fs::remove_all("in");
        Write("in/A.iga", "fine");
        Write(fs::path("in") / row.file, row.content);
        WriteBytes("t.csv", row.table);
        ExpectTrouble({"import", library_, "in", "--csv", "t.csv"}, row.reason);
        EXPECT_EQ(InDatabase() ? Left() : ReadBytes(library_), before) << row.reason;
    }
    fs::remove_all("in");
    fs::create_directory("in");
    fs::create_symlink("gone", "in/Q.iga");
    ExpectTrouble({"import", library_, "in"}, "reading failed");
    const auto other = libraries_.At(u"SRV1"_s)->Edit(problem_);
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
        return Run({"import", "S.kpl", "in"}) == 7 && ran_.err.find("a folder cannot be read") != std::string::npos;
    }));
    fs::permissions("in/shut", fs::perms::owner_all); // so that it can be removed
}

TEST_F(LibraryTool, KeysOfOtherRulesAreReadAndMadeAnew)
{
    ASSERT_EQ(Run({"list", library_}), 0);
    const std::string list = ran_.out;
    Forge(u"UPDATE library SET keys = 'older'"_s);
    Forge(u"UPDATE part SET search_text = '?', name_key = x'31'"_s);
    EXPECT_EQ(Run({"list", library_}), 0);
    EXPECT_EQ(ran_.out, list);
    EXPECT_NE(ran_.err.find("check --rebuild"), std::string::npos) << ran_.err;
    session_.Go(u"SRV1"_s, u"Plates\\2008"_s);
    session_.SearchFor(u"たれっと"_s);
    session_.SelectAllParts(1);
    EXPECT_EQ(session_.GetSelectedPartCount(), 1);
    ExpectTrouble({"import", library_, "."}, "check --rebuild");
    ExpectTrouble({"check", library_}, "check --rebuild");
    EXPECT_EQ(Run({"check", library_, "--rebuild"}), 0) << ran_.err;
    EXPECT_EQ(Run({"list", library_}), 0);
    EXPECT_EQ(ran_.out + ran_.err, list);
}

TEST_F(LibraryTool, SaysInOneLineWhatIsWrong)
{
    WriteBytes("text.kpl", "no library");
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"create", library_}, "exists already"},
        {{"--dry-run", "lst"}, "one \"list\""},
        {{"create", "S.db"}, ".kpl"},
        {{"create", "nul.kpl"}, "device"},
        {{"create", "no/S.kpl"}, "No such file or directory"},
        {{"list", "no.kpl"}, "no such library"},
        {{"check", "text.kpl"}, "no part library"},
        {{"list", library_, "--folder", "x"}, "no such folder"},
        {{"import", library_, "no"}, "no such folder"},
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
    for (const auto& arguments : {std::vector<std::string>{}, {"create"}, {"--code-page", "x", "list", "x"}}) {
        EXPECT_EQ(Run(arguments), 2);
    }
    EXPECT_EQ(Run({"list", "--nothing", "--json"}), 2);
    EXPECT_EQ(ran_.out.find(R"({"event":"error","reason":"command-line")"), 0U) << ran_.out << ran_.err;
}

// Each command on what the ones before have left.
TEST_F(LibraryTool, ChangesWhatIsNamedAndTellsHowItEnded)
{
    WriteBytes("t.csv", "part,folder,thickness\nP1,Plates/2008,2.5\n");
    WriteBytes("gone.csv", "part\nP1\n");
    Write("arrived/New/N.iga", "n");
    fs::create_directory("hollow");
    WriteBytes("taken.csv", "comment\nB\n");
    WriteBytes("nameless.csv", "part,comment\n,B\n");
    WriteBytes("thick.csv", "part,thickness\nA,x\n");
    for (const char* file : {"A.iga", "B.png", "C.SY5"}) {
        Write(fs::path("mixed/X") / file, "no picture");
    }
    const struct {
        std::string command; // the library comes behind its name
        int end;
        const char* told;           // by either stream
        const char* left = nullptr; // as All tells it; null: as before
    } rows[] = {
        {"list", 0, "P1\t1.5000\tSPCC\tタレット\t.iga .bmf .SY5 .NCD 2D 3D PNG\t取付板\nPlates\\2008\tp1\t0.0000\t"},
        {"list", 0, "\tP2\t0.0000\t\t\t.bmf\t\nPlates\\2008\tP10\t-0.0001\t"},
        {"remove Plates/*/P? --dry-run", 0, "would have removed 2 parts"},
        {"remove Plates/Top Plates/2008/Nil", 4, "Nil: there is no such part"},
        {"remove *x", 4, "no such part"},
        {"remove X/", 4, "no such folder"},
        {"set --csv t.csv", 0, "set 1 part\n",
         "[][Plates]Top=1 [Plates\\2008]Bare=0 P1=SPCC7/25000 P10=2/-1 P2=1 p1=1 "},
        {"set --csv gone.csv", 4, "gone.csv, line 2"},
        {"set **/P* --thickness 1x", 3, "no thickness"},
        {"set **/P1* --material Cu --comment \t", 3, "control"},
        {"set Plates/2008/P1", 2, "--csv"},
        {"set Plates/ **/P1 --machine m --dry-run", 0, "would have set 6 parts"},
        {"set **/P1* --material Cu --thickness 1", 0, "set 2 parts",
         "[][Plates]Top=1 [Plates\\2008]Bare=0 P1=Cu7/10000 P10=Cu2/10000 P2=1 p1=1 "},
        {"rename **/P? Q", 3, "one name for several"},
        {"rename **/P1* P2*", 3, "P2: it exists already"},
        {"rename **/P1* nul*", 3, "device"},
        {"rename Plates/2008/P* Q-* --json", 0, R"("path":"Plates\\2008\\P10","to":"Plates\\2008\\Q-10")",
         "[][Plates]Top=1 [Plates\\2008]Bare=0 Q-1=Cu7/10000 Q-10=Cu2/10000 Q-2=1 p1=1 "},
        {"move Plates/2008/Q-1 Plates/ --to Plates", 3, "does not go into itself"},
        {"move Plates/2008/Q-? Plates/Top --to A/B", 0, "moved 3 parts",
         "[][A][A\\B]Q-1=Cu7/10000 Q-2=1 Top=1 [Plates][Plates\\2008]Bare=0 Q-10=Cu2/10000 p1=1 "},
        {"rename **/*/ *2 --dry-run", 0, "would have renamed 4 folders"},
        {"move A/ A/B/ --to C --dry-run", 0, "would have moved 2 folders"},
        {"list --names --folder **", 0, "A/B/\nA/B/Q-1\n"},
        {"list --json --folder \u009B1m\u202E\x7F", 4, R"(\u009b1m\u202e\u007f")"},
        {"rename */2008/ 2009", 0, "renamed 1 folder",
         "[][A][A\\B]Q-1=Cu7/10000 Q-2=1 Top=1 [Plates][Plates\\2009]Bare=0 Q-10=Cu2/10000 p1=1 "},
        {"move */200?/ A/B/ --to /", 0, "moved 2 folders",
         "[][2009]Bare=0 Q-10=Cu2/10000 p1=1 [A][B]Q-1=Cu7/10000 Q-2=1 Top=1 [Plates]"},
        {"remove 2009/ B/Q-2 **/Q-1*", 0, "removed 5 parts, 1 folder", "[][A][B]Top=1 [Plates]"},
        {"import arrived --dry-run", 0, "would have imported 1 parts with 1 files"},
        {"watch arrived --once --seconds 1", 0, "imported 1 parts", "[][A][B]Top=1 [New]N=1 [Plates]"},
        {"watch arrived --once --seconds 1", 0, ""},
        {"watch mixed --once --seconds 1", 1, "B.png", "[][A][B]Top=1 [New]N=1 [Plates][X]A=1 C=1 "},
        {"backup " + library_, 3, "exists already"},
        {"backup no/S.kpl", 7, "No such file or directory"},
        {"extract arrived", 3, "something in it"},
        {"extract taken", 3, "taken.csv: it exists already"},
        {"extract hollow --folder B", 0, ""},
        {"watch gone --once", 4, "gone: there is no such folder"},
        {"import gone", 4, "gone"},
        {"import taken.csv", 4, "taken.csv"},
        {"set --csv nameless.csv", 3, "no part name"},
        {"set --csv thick.csv", 3, "no thickness: x"},
        {"set --csv taken.csv", 3, "no part names"},
        {"list --folder none/*", 4, "no such folder"},
        {"list --json", 0, R"("event":"part")"},
        {"diff gone.kpl", 4, "gone.kpl"},
        {"copy " + library_, 3, "exists already"},
        {"list --names --folder B/", 0, "B/Top\n"},
        {"repair", 0, "nothing to repair"},
        {"burn", 2, "no command \"burn\""},
        {"lst", 2, "\"list\""},
    };
    std::string left;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        Names arguments = Words(row.command);
        arguments.insert(arguments.begin() + 1, library_);
        EXPECT_EQ(Run(arguments), row.end);
        EXPECT_NE((ran_.out + ran_.err).find(row.told), std::string::npos) << ran_.out << ran_.err;
        left = row.left != nullptr ? row.left : left;
        EXPECT_EQ(Left(), left.empty() ? left = Left() : left);
        EXPECT_EQ(Check(), "");
    }
}

TEST_F(LibraryTool, AWatchTakesWhatArrivesWhateverHappensMeanwhile)
{
    fs::create_directory("drop");
    std::thread watch([this] { ran_ = RunTool({"watch", library_, "drop", "--seconds", "1"}); });
    const auto bytes_of = [&](const QString& part) { // of its file; -1 while it is not there
        const auto library = libraries_.At(u"SRV1"_s)->Open(problem_);
        const auto row = library != nullptr ? library->FindPart(u"N"_s, part) : std::nullopt;
        const auto files = row ? library->Files(std::array{row->id}) : std::nullopt;
        return files && !files->empty() ? files->front().bytes : -1;
    };
    const auto becomes = [&](const QString& part, qint64 bytes) {
        EXPECT_TRUE(Comes([&] { return bytes_of(part) == bytes; })) << part.toStdString();
    };
    Write("drop/N/A.iga", "1");
    Write("drop/N/note.txt", "no part");
    Write("home/private", "of who watches");
    fs::create_symlink(fs::absolute("home/private"), "drop/N/L.iga");
    becomes(u"A"_s, 1);
    {
        std::ofstream written("drop/N/B.iga");
        written << "half" << std::flush;
        std::this_thread::sleep_for(std::chrono::milliseconds(2500));
        EXPECT_EQ(bytes_of(u"B"_s), -1) << "somebody still writes it";
        written << " of it";
    }
    becomes(u"B"_s, 10);
    fs::rename("drop", "away");
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    Write("away/N/A.iga", "again");
    fs::rename("away", "drop");
    becomes(u"A"_s, 5);
    {
        const auto other = libraries_.At(u"SRV1"_s)->Edit(problem_);
        ASSERT_TRUE(other != nullptr && other->Begin());
        Write("drop/N/C.iga", "c");
        std::this_thread::sleep_for(std::chrono::milliseconds(5500));
        EXPECT_EQ(bytes_of(u"C"_s), -1);
    }
    becomes(u"C"_s, 1);
    EXPECT_EQ(bytes_of(u"L"_s), -1);
    stop_asked = true;
    watch.join();
    stop_asked = false;
    EXPECT_EQ(ran_.end, 0);
    EXPECT_NE(ran_.err.find("drop: there is no such folder"), std::string::npos) << ran_.err;
    EXPECT_NE(ran_.err.find("in use by another program"), std::string::npos) << ran_.err;
}

TEST_F(LibraryTool, ATerminalIsToldHowFarItIs)
{
    Write("in/New/N.iga", "n");
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"import", library_, "in"}, "1 of 2 files and parts  50 %"},
        {{"check", library_}, "0 of 13 files  0 %"},
        {{"check", library_, "--rebuild"}, "1 of 7 parts  14 %"},
        {{"extract", library_, "out"}, "1 of 7 parts  14 %"},
    };
    for (const auto& [words, told] : rows) {
        ran_ = RunTool(words, true);
        EXPECT_EQ(ran_.end, 0);
        EXPECT_NE(ran_.err.find(told), std::string::npos) << ran_.err;
        EXPECT_TRUE(ran_.err.ends_with("\r\x1B[K")) << "nothing of it stays";
    }
}

// Out of each engine into a file, and back into each; out into files of parts, and back.
TEST_F(LibraryTool, ACopyHoldsTheSameWhateverHoldsIt)
{
    const std::string back = libraries_.PlaceOf(u"C"_s).toStdString();
    WriteBytes("empty.csv", "folder,part\nA/B,\n");
    fs::create_directory("none");
    ASSERT_EQ(Run({"set", library_, "**/P2", "--comment", " a, \"b\""}), 0) << ran_.err;
    ASSERT_EQ(Run({"import", library_, "none", "--csv", "empty.csv"}), 0) << ran_.err;
    ASSERT_EQ(Run({"copy", library_, "A.kpl"}) + Run({"copy", "A.kpl", back}) + Run({"create", "R.kpl"}), 0)
        << ran_.err;
    ASSERT_EQ(Run({"extract", library_, "one/"}) + Run({"extract", back, "two"}), 0) << ran_.err;
    ASSERT_EQ(Run({"import", "R.kpl", "two", "--csv", "two.csv"}) + Run({"set", "R.kpl", "--csv", "two.csv"}), 0)
        << ran_.err;
    for (const std::string& copy : {std::string("A.kpl"), std::string("R.kpl"), back}) {
        EXPECT_EQ(Run({"check", copy}) + Run({"diff", library_, copy}), 0) << ran_.out << ran_.err;
        ExpectTrouble({"copy", library_, copy}, "exists already");
    }
    ASSERT_EQ(Run({"extract", "R.kpl", "three"}), 0) << ran_.err;
    EXPECT_EQ(std::system("for c in two three; do diff -r one $c && diff one.csv $c.csv || exit; done"), 0);
    EXPECT_NE(std::system("ls -A | grep '~\\|tmp'"), 0);
    ForgePart(u"P:1"_s); // what is not given is told
    ExpectTrouble({"copy", library_, "B.kpl"}, "of 1 folders or parts");
    EXPECT_EQ(Run({"extract", library_, "four"}), 1);
}

TEST_F(LibraryTool, ABackupIsTheSameAndADifferenceIsTold)
{
    ASSERT_EQ(Run({"backup", library_, "B.kpl"}) + Run({"check", "B.kpl"}), 0) << ran_.err;
    Write("more/P2.bmf", "changed");
    Write("more/X.iga", "more");
    ASSERT_EQ(Run({"import", "B.kpl", "more", "--into", "Plates/2008"}) + Run({"remove", "B.kpl", "Plates/Top"}), 0);
    EXPECT_EQ(Run({"diff", library_, "B.kpl"}), 1);
    EXPECT_EQ(ran_.out, "- Plates\\Top\n~ Plates\\2008\\P2: .bmf\n+ Plates\\2008\\X\n");
    EXPECT_EQ(Run({"backup", library_, "B.kpl", "--replace"}) + Run({"diff", library_, "B.kpl"}), 0) << ran_.err;
}

TEST_F(LibraryTool, RepairKeepsWhatCanBeReadAndTellsTheRest)
{
    const std::tuple<QString, int, const char*, int> rows[] = {
        // with how many parts of six are left
        {u"UPDATE part SET name_key = x'00'"_s, 0, "keys are wrong", 6},
        {u"UPDATE folder SET parts = 7"_s, 0, "count of parts", 6},
        {u"INSERT INTO part_search(part_search) VALUES('delete-all')"_s, 0, "search index", 6},
        {u"UPDATE part SET material = 'x' WHERE name = 'P1'"_s, 1, "part P1: the row", 5},
        {u"UPDATE folder SET sum = 1 WHERE path = 'Plates\\2008'"_s, 1, "lies in recovered", 6},
        {u"UPDATE piece SET content = x'01' WHERE id = (SELECT min(id) FROM piece)"_s, 1, "file 0", 6},
        {u"UPDATE library SET next_part = 1"_s, 0, "numbers", 6},
        {u"PRAGMA user_version"_s, 0, "out of order", 6}, // and two rows change places
    };
    const std::string whole = ReadBytes(library_);
    for (const auto& [forge, end, told, parts] : rows) {
        SCOPED_TRACE(told);
        WriteBytes(library_, whole);
        Forge(forge);
        if (forge.startsWith(u"PRAGMA"_s)) {
            SwapEntries(u"part"_s, 0, 2);
        }
        const std::string damaged = ReadBytes(library_);
        EXPECT_EQ(Run({"repair", library_, "--dry-run"}), end) << ran_.err;
        EXPECT_EQ(ReadBytes(library_), damaged);
        EXPECT_EQ(Run({"repair", library_}), end);
        EXPECT_NE(ran_.err.find(told), std::string::npos) << ran_.err;
        EXPECT_EQ(ReadBytes(library_ + ".damaged-1"), damaged);
        fs::remove(library_ + ".damaged-1");
        EXPECT_EQ(Check(), "");
        const std::string left = Left();
        EXPECT_EQ(std::ranges::count(left, '='), parts) << left;
    }
}

TEST_F(LibraryTool, TheSampleHasWhatOneWantsToTry)
{
    QStringList made;
    ASSERT_TRUE(MakeSampleLibraries(u"."_s, false, made, problem_)) << ProblemText(problem_);
    EXPECT_FALSE(MakeSampleLibraries(u"."_s, false, made, problem_));
    EXPECT_EQ(problem_.fault, LibraryFault::AlreadyThere);
    EXPECT_FALSE(MakeSampleLibraries(u"no"_s, false, made, problem_));
    EXPECT_EQ(problem_.fault, LibraryFault::WriteFailed);
    ASSERT_TRUE(MakeSampleLibraries(u"."_s, true, made, problem_)) << ProblemText(problem_);
    std::string lists;
    std::size_t pictures = 0;
    for (const std::string& file : NamesIn(".")) {
        ASSERT_EQ(Run({"check", file}), 0) << ran_.err;
        ASSERT_EQ(Run({"list", file}), 0);
        lists += ran_.out;
        const auto library = CSqliteLibrary::Open(QString::fromStdString(file), problem_);
        for (const FileSlot slot : {FileSlot::Flat, FileSlot::Bent}) {
            const auto content = library->ReadFile(1, slot, 1 << 20);
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
