// Load: what is staged, what is found, what the host gets, and the order in which it happens.

#include "tests/selection/selection_run.h"

#ifndef _WIN32
#include "tests/support/linux_faults.h"
#endif

namespace partkeep {
namespace {

const std::string title = " 'Kolvyn PartkeepRead'";
const std::string no_files = "No IGA or BMF files found for the part.\n Part Name:";

class Load : public SelectionRun {
protected:
    [[nodiscard]] Lines ResultNames() const
    {
        Lines names;
        for (const PartRecord& part : dialog->resultParts) {
            names.push_back(NarrowText(part.PartName + u" " + part.Qty));
        }
        return names;
    }

    void KeepServer(const std::string& folder_on_server)
    {
        WriteBytes(folder.Path("Install/kpdservers.ini"),
                   "SRV1\r\n" + folder_on_server + "\r\nmetric\r\nSRV1\r\n-9999\r\n0\r\n");
    }

    void Prompt(const char16_t* quantity) // null: cancelled
    {
        if (quantity != nullptr) {
            windows.Play(RES_QUANTITY_KEYPAD, {user::Type(RES_QUANTITY, quantity), user::Press(id_ok)});
        } else {
            windows.Play(RES_QUANTITY_KEYPAD, {user::Press(id_cancel)});
        }
    }
};

TEST_F(Load, TakesItsStepsInTheirOrder)
{
    struct Row {
        const char* label;
        bool multi;
        int filter; // command, 0 for none
        Lines calls;
    };
    const std::string target = "SetTargetFolder(" + Quoted(folder.Core(u"Work") + u"\\SRV1AB\\") + ")";
    const auto named = [](int entry) {
        return Lines{"GetCurrentServer()", "GetCurrentFolder()", "GetSelectedPart(" + std::to_string(entry) + ")"};
    };
    const auto staged = [&](int entry, const std::string& name, bool twice) {
        Lines lines = named(entry);
        const Lines again = named(entry);
        lines.insert(lines.end(), again.begin(), again.end());
        lines.push_back("ReadPartAttributes('SRV1', 'A\\B\\" + name + "', '" + name + "')");
        lines.insert(lines.end(), {"SetDataKind(24)", "CopyPartFiles('SRV1', 'A\\B\\" + name + "')"});
        if (twice) {
            lines.insert(lines.end(), {"SetDataKind(20)", "CopyPartFiles('SRV1', 'A\\B\\" + name + "')"});
        }
        return lines;
    };
    const auto whole = [&](std::initializer_list<Lines> parts) {
        Lines lines = {"101: BeginWait", "GetSelectedPartCount()", "SetDataKind(24)", target};
        for (const Lines& part : parts) {
            lines.insert(lines.end(), part.begin(), part.end());
        }
        lines.insert(lines.end(), {"101: EndModal 1", "101: EndWait", "GetServerList()", "GetCurrentServer()",
                                   "GetViewStateCount()", "GetViewState()", "DisconnectServer()", "101: result 1"});
        return lines;
    };
    const Row rows[] = {
        {"several", true, 0, whole({staged(0, "P1", false), staged(1, "P2", false), staged(2, "P3", false)})},
        {"several, machine data", true, RES_FILTER_NCT,
         whole({staged(0, "P1", true), staged(1, "P2", true), staged(2, "P3", true)})},
        {"one: the last", false, 0, whole({staged(2, "P3", false), named(0), named(1)})},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        KeepServer("A\\B");
        std::filesystem::remove(folder.Path("Install/ZanPartkeepConfig.xml"));
        Select({u"P1", u"P2", u"P3"});
        multiSelection = row.multi;
        Run({[&](CScriptedWindow& window) {
            if (row.filter != 0) {
                window.PressButton(row.filter);
            }
            recorder.lines.clear();
            window.PressButton(RES_LOAD);
        }});
        EXPECT_EQ(recorder.Take(), row.calls);
    }
}

TEST_F(Load, HandsOverRecordsAsTold)
{
    KeepServer("A\\B");
    Select({u"P1"});
    Run({user::Press(RES_FILTER_NCT), user::Press(RES_LOAD)});
    PartRecord part;
    part.FilePathName = folder.Core(u"Work") + u"\\SRV1AB\\P1.iga";
    part.NCFileName = folder.Core(u"Work") + u"\\SRV1AB\\P1.NCD";
    part.PartName = u"P1";
    part.PartComment = u"comment";
    part.MaterialType = u"SPCC";
    part.MachineName = u"M1";
    part.serverName = u"SRV1";
    part.folderName = u"A\\B";
    part.Thickness = 1.5;
    part.Qty = u"1";
    part.MachineType = 1;
    EXPECT_EQ(dialog->resultParts, std::vector{part}); // its staging folder is kept back
}

TEST_F(Load, ChecksInItsOrder)
{
    struct Row {
        const char* label;
        int selected;
        bool prompt;
        const char16_t* quantity;
        std::string message; // its start; empty: none
        bool loads;
        std::size_t selected_behind;
    };
    const Row rows[] = {
        {"nothing", 0, true, nullptr, "'Please select one or more part.'", false, 0},
        {"257, prompt first", 257, true, u"3", "'Total number of selected parts exceeds", false, 257},
        {"257, prompt cancelled", 257, true, nullptr, "", false, 0},
        {"256", 256, true, u"3", "", true, 256},
        {"no prompt", 2, false, nullptr, "", true, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        SelectMany(row.selected);
        windows.scripts.clear();
        if (row.prompt && row.selected > 0) {
            Prompt(row.quantity);
        }
        std::vector<UserAction> actions = {[&](CScriptedWindow& window) {
            window.controls[RES_ASK_QUANTITY].check = row.prompt ? 1 : 0;
            recorder.lines.clear();
            window.PressButton(RES_LOAD);
            EXPECT_EQ(Messages(recorder.lines).substr(0, row.message.size()), row.message);
            EXPECT_EQ(Messages(recorder.lines).empty(), row.message.empty());
            EXPECT_EQ(browser.selection.size(), row.selected_behind);
            EXPECT_EQ(window.waits, 0);
        }};
        if (!row.loads) {
            actions.push_back(user::Press(id_cancel));
        }
        EXPECT_EQ(Run(actions), row.loads ? id_ok : id_cancel);
        EXPECT_EQ(dialog->resultParts.size(), row.loads ? static_cast<std::size_t>(row.selected) : 0U);
        for (const PartRecord& part : dialog->resultParts) {
            ASSERT_EQ(part.Qty, row.prompt ? u"3" : u"1");
        }
    }
}

TEST_F(Load, TakesTheListFirstAndDropsWhatHasNoFiles)
{
    const auto add = [this](std::initializer_list<const char16_t*> names, const char16_t* quantity) {
        return [this, names = std::vector(names), quantity](CScriptedWindow& window) {
            Select({});
            for (const char16_t* name : names) {
                browser.selection.push_back({name, u"", u"", 0, u"", u"", u"", true});
            }
            Prompt(quantity);
            window.controls[RES_ASK_QUANTITY].check = 1;
            window.PressButton(RES_ADD);
        };
    };
    const auto lose = [this](CScriptedWindow&) { std::filesystem::remove(folder.Path("Work/SRV1/P2.iga")); };
    const auto select = [this](CScriptedWindow& window) {
        Select({u"P1", u"P4"});
        window.controls[RES_ASK_QUANTITY].check = 0;
    };
    WriteBytes(folder.Path("Install/kpdservers.ini"), "SRV1\r\n-9999\r\nmetric\r\nSRV1\r\n-9999\r\n0\r\n");
    EXPECT_EQ(Run({add({u"P3", u"P1"}, u"5"), add({u"P2"}, u"007"), lose, select, user::Press(RES_LOAD)}), id_ok);
    EXPECT_EQ(ResultNames(), (Lines{"P3 5", "P1 5", "P4 1"}));
    EXPECT_EQ(Messages(recorder.Take()), "'" + no_files + "P2'" + title);

    EXPECT_EQ(
        Run({add({u"P2"}, u"1"), lose, [this](CScriptedWindow&) { browser.selection.clear(); }, user::Press(RES_LOAD)}),
        id_ok);
    EXPECT_TRUE(dialog->resultParts.empty()); // the run is confirmed all the same
}

TEST_F(Load, SavesTheOptionsBehindTheEndAndClearsTheTemporaryFolders)
{
    const auto options = [this] { return ReadBytes(folder.Path("Install/ZanPartkeepConfig.xml")); };
    const std::string saved = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<ZanPartkeepReadConfig>\r\n"
                              "  <InputNoFlag>true</InputNoFlag>\r\n  <FilterState>3</FilterState>\r\n"
                              "</ZanPartkeepReadConfig>";
    Select({u"P1"});
    const auto change = [this](CScriptedWindow& window) {
        window.PressButton(RES_FILTER_MARVEN);
        window.PressButton(RES_ASK_QUANTITY);
        WriteBytes(folder.Path("Work/Lumora_ForPNG/P1.PNG"), "x");
        WriteBytes(folder.Path("Work/UnZipFolder/left"), "x");
    };
    Run({change, user::Press(id_cancel)});
    EXPECT_EQ(options(), "(none)");
    EXPECT_EQ(NamesIn(folder.Path("Work")), (Lines{"Lumora_ForPNG", "UnZipFolder"}));

    Prompt(u"1");
    EXPECT_EQ(Run({change, user::Press(RES_LOAD)}), id_ok);
    EXPECT_EQ(options(), saved);
    EXPECT_EQ(NamesIn(folder.Path("Work")), Lines{"SRV1"}); // both temporary folders are gone

    // The next run comes back to them.
    Run({[](CScriptedWindow& window) {
             EXPECT_EQ(window.controls[RES_ASK_QUANTITY].check, 1);
             EXPECT_EQ(window.pressedTools, std::set<int>{RES_FILTER_MARVEN});
         },
         user::Press(id_cancel)});
}

TEST_F(Load, EntriesThatHaveGoneAreToldOrSkipped)
{
    struct Row {
        bool multi;
        std::string messages;
        Lines loaded;
    };
    const Row rows[] = {{true, "", {"P3 1"}}, {false, "'Part does not exist.'" + title, {"P3 1"}}};
    for (const Row& row : rows) {
        multiSelection = row.multi;
        Select({u"P1", u"P2", u"P3"});
        browser.selection[0].name = u"";
        if (row.multi) {
            browser.selection[1].name = u"";
        }
        recorder.lines.clear();
        EXPECT_EQ(Run({user::Press(RES_LOAD)}), id_ok);
        EXPECT_EQ(Messages(recorder.Take()), row.messages);
        EXPECT_EQ(ResultNames(), row.loaded);
    }
}

TEST_F(Load, SurvivesABrowserThatFailsEverywhereOrAnswersGarbage)
{
    for (const OperationSignature& signature : BrowserSignatures()) {
        browser.On(signature.operation, ControlResult());
    }
    browser.On(BrowserOperation::GetSelectedPartCount, ControlResult(std::int32_t{2}));
    EXPECT_EQ(Run({[this](CScriptedWindow&) { browser.FireClick(); }, user::Press(RES_ADD), user::Press(RES_LOAD)}),
              id_ok);
    EXPECT_TRUE(dialog->resultParts.empty());

    for (const OperationSignature& signature : BrowserSignatures()) {
        browser.On(signature.operation, [&signature](ControlScript::Arguments) -> ControlResult {
            switch (signature.result) {
            case ControlType::Text:
                return std::u16string(70000, u'\\');
            case ControlType::Int32:
                return std::int32_t{-1};
            case ControlType::None:
                return {};
            default:
                return std::int16_t{-32768};
            }
        });
    }
    browser.On(BrowserOperation::GetServerList, [](ControlScript::Arguments arguments) -> ControlResult {
        std::memset(std::get<void*>(arguments[0].value), 0xFF, sizeof(ServerTable));
        return std::int16_t{1};
    });
    EXPECT_EQ(Run({[this](CScriptedWindow&) { browser.FireClick(); }, user::Press(RES_ADD), user::Press(RES_LOAD),
                   user::Press(id_cancel)}),
              id_cancel);
}

#ifndef _WIN32
TEST_F(Load, OnADiskThatCannotTakeTheFilesDropsThePart)
{
    struct Row {
        const char* label;
        std::function<void(CMountedDisk&)> fault;
    };
    const Row rows[] = {
        {"full", [](CMountedDisk& disk) { disk.Fill(); }},
        {"read-only", [](CMountedDisk& disk) { disk.SetReadOnly(true); }},
        {"a file in the staging folder's place",
         [this](CMountedDisk&) { WriteBytes(folder.Path("Work/SRV1AB"), "a file"); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        CMountedDisk disk(folder.Path("Work"));
        KeepServer("A\\B");
        Select({u"P1"});
        recorder.lines.clear();
        EXPECT_EQ(Run({[&](CScriptedWindow&) { row.fault(disk); }, user::Press(RES_LOAD)}), id_ok);
        EXPECT_TRUE(dialog->resultParts.empty());
        EXPECT_EQ(Messages(recorder.Take()), "'" + no_files + "P1'" + title);
    }
}

TEST_F(Load, AnInstallationThatCannotBeWrittenChangesNothingElse)
{
    KeepServer("A\\B");
    const std::string before = ReadBytes(folder.Path("Install/kpdservers.ini"));
    Select({u"P1"});
    const CReadOnlyFolder read_only(folder.Path("Install"));
    EXPECT_EQ(Run({user::Press(RES_LOAD)}), id_ok);
    EXPECT_EQ(ResultNames(), Lines{"P1 1"});
    EXPECT_EQ(ReadBytes(folder.Path("Install/kpdservers.ini")), before);
    EXPECT_EQ(NamesIn(folder.Path("Install")), Lines{"kpdservers.ini"});
}
#endif

TEST_F(Load, FollowsTheWorkingFolderAsItStands)
{
    TheProcessValues().workingFolder = folder.Core(u"Work"); // no separator: everything lands beside the folder
    Select({u"P1"});
    KeepServer("A\\B");
    Run({[this](CScriptedWindow&) {
             EXPECT_EQ(NamesIn(folder.Path()), (Lines{"Install", "Work", "WorkLumora_ForPNG", "WorkUnZipFolder"}));
         },
         user::Press(RES_LOAD)});
    EXPECT_EQ(dialog->resultParts.at(0).FilePathName, folder.Core(u"WorkSRV1AB") + u"\\P1.iga");

    TheProcessValues().workingFolder = folder.Core(u"Made") + u"\\"; // Load makes one level
    Run({user::Press(RES_LOAD)});
    EXPECT_EQ(ResultNames(), Lines{"P1 1"});
}

} // namespace
} // namespace partkeep
