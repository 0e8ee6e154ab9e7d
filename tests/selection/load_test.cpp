// Load: what is staged, what is found, what the host gets, and the order in which it happens.

#include "tests/selection/selection_run.h"

#ifndef _WIN32
#include "tests/support/linux_faults.h"
#endif

namespace partkeep {
namespace {

const std::string gone = "'Part does not exist.'" + title;

using Load = SelectionRun;

TEST_F(Load, TakesItsStepsInTheirOrder)
{
    const std::tuple<const char*, bool, int, std::string> rows[] = {
        {"several", true, 0, Staged(0, "P1") + Staged(1, "P2") + Staged(2, "P3")},
        {"several, machine data", true, RES_FILTER_NCT,
         Staged(0, "P1", true) + Staged(1, "P2", true) + Staged(2, "P3", true)},
        {"one: the last", false, 0, Staged(2, "P3") + Named(0) + Named(1)},
    };
    for (const auto& [label, multi, filter, parts] : rows) {
        SCOPED_TRACE(label);
        StartIn("A\\B");
        WriteOptions("");
        Select("P1 P2 P3");
        multiSelection = multi;
        const auto prepare = [&, command = filter](CScriptedWindow& window) {
            window.PressButton(command);
            recorder.lines.clear();
        };
        Run({prepare, user::Press(RES_LOAD)});
        EXPECT_EQ(recorder.Take(),
                  Steps("101: BeginWait; GetSelectedPartCount(); SetDataKind(24); SetTargetFolder(" +
                        Quoted(folder.Core(u"Work\\SRV1AB\\")) + "); " + parts +
                        "101: EndModal 1; 101: EndWait; GetServerList(); GetCurrentServer(); GetViewStateCount(); "
                        "GetViewState(); DisconnectServer(); 101: result 1"));
    }
}

TEST_F(Load, AndAddCheckInTheirOrder)
{
    const struct {
        const char* label;
        int button;
        int selected;
        bool prompt;
        const char16_t* quantity; // empty: the keypad is cancelled
        std::string messages;
        std::size_t keypads;
        bool folder_made;
        std::size_t selected_behind;
        std::size_t taken; // listed or loaded
    } rows[] = {
        {"Add of nothing", RES_ADD, 0, true, u"", select_parts, 0, false, 0, 0},
        {"Add of 257", RES_ADD, 257, true, u"", too_many, 0, false, 257, 0},
        {"Add of 256", RES_ADD, 256, false, u"1", "", 0, true, 0, 256},
        {"Add, keypad cancelled", RES_ADD, 2, true, u"", "", 1, true, 0, 0},
        {"Add, quantity asked", RES_ADD, 2, true, u"25", "", 1, true, 0, 2},
        {"Load of nothing", RES_LOAD, 0, true, u"", select_parts, 0, false, 0, 0},
        {"Load of 257, prompt first", RES_LOAD, 257, true, u"3", too_many, 1, false, 257, 0},
        {"Load of 257, keypad cancelled", RES_LOAD, 257, true, u"", "", 1, false, 0, 0},
        {"Load of 256", RES_LOAD, 256, true, u"3", "", 1, true, 256, 256},
        {"Load, no prompt", RES_LOAD, 2, false, u"1", "", 0, true, 2, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        std::filesystem::remove_all(folder.Path("Work/SRV1"));
        StartIn("-9999");
        Select("");
        for (int number = 0; number < row.selected; ++number) {
            browser.selection.push_back({.name = u'P' + WidenText(std::to_string(number))});
        }
        windows.scripts.clear();
        Type(row.quantity);
        std::string taken;
        std::vector<UserAction> actions = {[&](CScriptedWindow& window) {
            window.controls[RES_ASK_QUANTITY].check = row.prompt ? 1 : 0;
            const Lines lines = LinesIn(window, user::Press(row.button));
            EXPECT_EQ(Messages(lines), row.messages);
            EXPECT_EQ(Only(lines, "202: RunModal").size(), row.keypads);
            EXPECT_EQ(std::filesystem::exists(folder.Path("Work/SRV1")), row.folder_made);
            EXPECT_EQ(browser.selection.size(), row.selected_behind);
            EXPECT_EQ(window.waits, 0);
            EXPECT_TRUE(window.controls[RES_ADD].enabled && window.controls[RES_LOAD].enabled);
            taken = Listed();
            EXPECT_EQ(windows.Find(RES_SELECTED_PARTS_DIALOG) == nullptr, taken.empty());
        }};
        const bool loads = row.button == RES_LOAD && row.taken != 0;
        if (!loads) {
            actions.push_back(user::Press(id_cancel));
        }
        EXPECT_EQ(Run(actions), loads ? id_ok : id_cancel);
        const Lines parts = Steps(taken + Results());
        EXPECT_EQ(parts.size(), row.taken);
        for (const std::string& part : parts) {
            EXPECT_TRUE(part.ends_with(" " + NarrowText(row.quantity))) << part;
        }
    }
}

TEST_F(Load, TakesTheListFirstAndClearsLeftovers)
{
    const struct {
        const char* label;
        bool multi;
        const char* listed; // at 5 each
        const char* lost;   // of those
        const char* selected;
        int vanished; // of those, from the first
        const char* records;
        const char* left; // of the files in the working folder
        std::string messages;
    } rows[] = {
        {"what is listed comes first and once", true, "P3 P1", "", "P1 P4", 0, "P3 5; P1 5; P4 1; ",
         "P1.dat; P1.xml; P2.dat; P3.dat; XP1.dat", ""},
        {"a listed part without files", true, "P3 P1", "P1", "P4", 0, "P3 5; P4 1; ", "P1.xml; P2.dat; P3.dat",
         no_files + "P1'" + title},
        {"nothing else: confirmed all the same", true, "P2", "P2", "", 0, "", "P1.dat; P1.xml; P3.dat; XP1.dat",
         no_files + "P2'" + title},
        {"one: those in front go", false, "", "", "P1 P2 P3", 0, "P3 1; ", "P1.xml; P3.dat", ""},
        {"one, listed already", false, "P3", "", "P1 P2 P3", 0, "P3 5; ", "P1.xml; P3.dat", ""},
        {"one, the first has vanished", false, "", "", "P1 P2 P3", 1, "P3 1; ", "P1.dat; P1.xml; P3.dat; XP1.dat",
         gone},
        {"several, two have vanished", true, "", "", "P1 P2 P3", 2, "P3 1; ", "P1.dat; P1.xml; P2.dat; P3.dat; XP1.dat",
         ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        std::filesystem::remove_all(folder.Path("Work/SRV1"));
        for (const char* name : {"Work/P1.dat", "Work/XP1.dat", "Work/P1.xml", "Work/P2.dat", "Work/P3.dat"}) {
            WriteBytes(folder.Path(name), "left over");
        }
        StartIn("-9999");
        multiSelection = row.multi;
        const auto add = [&](CScriptedWindow& window) {
            Select(row.listed);
            window.controls[RES_ASK_QUANTITY].check = browser.selection.empty() ? 0 : 1;
            Type(u"5");
            window.PressButton(RES_ADD);
            window.controls[RES_ASK_QUANTITY].check = *row.selected == '\0' ? 1 : 0; // nobody is asked for nothing
            std::filesystem::remove(folder.Path("Work/SRV1/" + std::string(row.lost) + ".iga"));
            Select(row.selected);
            std::for_each_n(browser.selection.begin(), row.vanished, [](ScriptedPart& part) { part.name.clear(); });
            recorder.lines.clear();
        };
        EXPECT_EQ(Run({add, user::Press(RES_LOAD)}), id_ok);
        EXPECT_EQ(Results(), row.records);
        EXPECT_EQ(Messages(recorder.Take()), row.messages);
        Lines left = NamesIn(folder.Path("Work"));
        std::erase(left, "SRV1");
        EXPECT_EQ(left, Steps(row.left));
        windows.scripts.clear();
    }
}

TEST_F(Load, SavesTheOptionsAndClearsTheTemporaryFoldersBeforeTheWindowGoes)
{
    const std::string saved = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<ZanPartkeepReadConfig>\r\n"
                              "  <InputNoFlag>true</InputNoFlag>\r\n  <FilterState>3</FilterState>\r\n"
                              "</ZanPartkeepReadConfig>";
    Select("P1");
    const auto change = [this](CScriptedWindow& window) {
        window.PressButton(RES_FILTER_MARVEN);
        window.PressButton(RES_ASK_QUANTITY);
        WriteBytes(folder.Path("Work/Lumora_ForPNG/P1.PNG"), "x");
        WriteBytes(folder.Path("Work/UnZipFolder/left"), "x");
    };
    bool closed = false;
    browser.On(BrowserOperation::DisconnectServer, [&](auto) {
        EXPECT_EQ(ReadBytes(folder.Path("Install/ZanPartkeepConfig.xml")), saved);
        EXPECT_EQ(NamesIn(folder.Path("Work")), Lines{"P1.iga"});
        closed = true;
        return ControlResult();
    });
    Type(u"1");
    EXPECT_EQ(Run({change, user::Press(RES_LOAD)}), id_ok);
    EXPECT_TRUE(closed);
}

TEST_F(Load, SurvivesABrowserThatFailsEverywhereOrAnswersGarbage)
{
    std::vector<UserAction> actions = {click, user::Press(RES_ADD), user::Press(RES_LOAD)};
    for (const OperationSignature& signature : browser_signatures) {
        browser.On(signature.operation, ControlResult());
    }
    browser.On(BrowserOperation::GetSelectedPartCount, ControlResult(std::int32_t{2}));
    EXPECT_EQ(Run(actions), id_ok);
    EXPECT_TRUE(dialog->resultParts.empty());

    for (const OperationSignature& signature : browser_signatures) {
        const bool text = signature.result == ControlType::Text;
        const bool number = signature.result == ControlType::Int32;
        browser.On(signature.operation, text     ? ControlResult(std::u16string(70000, u'\\'))
                                        : number ? ControlResult(std::int32_t{-1})
                                                 : ControlResult(std::int16_t{-32768}));
    }
    browser.On(BrowserOperation::GetServerList, [](ControlScript::Arguments in) -> ControlResult {
        std::memset(std::get<void*>(in[0].value), 0xFF, sizeof(ServerTable));
        return std::int16_t{1};
    });
    actions.push_back(user::Press(id_cancel));
    EXPECT_EQ(Run(actions), id_cancel);
}

TEST_F(Load, AFileInTheStagingFoldersPlaceDropsThePart)
{
    StartIn("A\\B");
    Select("P1");
    WriteBytes(folder.Path("Work/SRV1AB"), "a file");
    EXPECT_EQ(Run({user::Press(RES_LOAD)}), id_ok);
    EXPECT_TRUE(dialog->resultParts.empty());
    EXPECT_EQ(Messages(recorder.Take()), no_files + "P1'" + title);
}

#ifndef _WIN32
TEST_F(Load, AnInstallationThatCannotBeWrittenChangesNothingElse)
{
    PARTKEEP_NEEDS_MOUNTS();
    StartIn("A\\B");
    const std::string before = ReadBytes(folder.Path("Install/kpdservers.ini"));
    Select("P1");
    const CReadOnlyFolder read_only(folder.Path("Install"));
    EXPECT_EQ(Run({user::Press(RES_LOAD)}), id_ok);
    EXPECT_EQ(Results(), "P1 1; ");
    EXPECT_EQ(ReadBytes(folder.Path("Install/kpdservers.ini")), before);
    EXPECT_EQ(NamesIn(folder.Path("Install")), Lines{"kpdservers.ini"});
}
#endif

TEST_F(Load, FollowsTheWorkingFolderAsItStands)
{
    TheProcessValues().workingFolder = folder.Core(u"Work"); // no separator: everything lands beside the folder
    Select("P1");
    StartIn("A\\B");
    const auto look = [this](CScriptedWindow&) {
        EXPECT_EQ(NamesIn(folder.Path()), (Lines{"Install", "Work", "WorkLumora_ForPNG", "WorkUnZipFolder"}));
    };
    Run({look, user::Press(RES_LOAD)});
    EXPECT_EQ(dialog->resultParts.front().FilePathName, folder.Core(u"WorkSRV1AB\\P1.iga"));
    EXPECT_EQ(dialog->resultParts.front().stagingFolder, u"") << "no host's concern";

    TheProcessValues().workingFolder = folder.Core(u"Made") + u"\\"; // Load makes one level
    Run({user::Press(RES_LOAD)});
    EXPECT_EQ(Results(), "P1 1; ");
}

} // namespace
} // namespace partkeep
