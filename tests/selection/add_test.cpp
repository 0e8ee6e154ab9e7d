// Add: checks, button states, the list's window, staging, quantities.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

const std::string title = " 'Kolvyn PartkeepRead'";
const std::string select_parts = "'Please select one or more part.'" + title;
const std::string too_many = "'Total number of selected parts exceeds the maximum limit of 256. Please select parts "
                             "with total count less than or equal to 256.'" +
                             title;

class Add : public SelectionRun {
protected:
    [[nodiscard]] std::vector<ScriptedRow> Rows() const
    {
        const CScriptedWindow* list = windows.Find(RES_SELECTED_PARTS_DIALOG);
        return list != nullptr ? list->controls.at(RES_PART_LIST).rows : std::vector<ScriptedRow>();
    }

    void Type(const char16_t* quantity) // in the next keypad
    {
        windows.Play(RES_QUANTITY_KEYPAD, {user::Type(RES_QUANTITY, quantity), user::Press(id_ok)});
    }
};

TEST_F(Add, StagesAndListsInItsOrder)
{
    Select({u"P1", u"P2"});
    WriteBytes(folder.Path("Install/kpdservers.ini"), "SRV1\r\nA\\B\r\nmetric\r\nSRV1\r\n-9999\r\n0\r\n");
    WriteBytes(folder.Path("Install/ZanPartkeepConfig.xml"),
               "<?xml version=\"1.0\"?><R><InputNoFlag>true</InputNoFlag></R>");
    std::filesystem::create_directories(folder.Path("Work/SRV1AB"));
    WriteBytes(folder.Path("Work/SRV1AB/P1.bmf"), "old");
    Type(u"007");
    const std::string target = Quoted(folder.Core(u"Work") + u"\\SRV1AB\\");
    const auto staged = [](const std::string& index, const std::string& name) {
        return Lines{"GetCurrentServer()",
                     "GetCurrentFolder()",
                     "GetSelectedPart(" + index + ")",
                     "GetCurrentServer()",
                     "GetCurrentFolder()",
                     "GetSelectedPart(" + index + ")",
                     "ReadPartAttributes('SRV1', 'A\\B\\" + name + "', '" + name + "')",
                     "SetDataKind(24)",
                     "CopyPartFiles('SRV1', 'A\\B\\" + name + "')",
                     "250: InsertRow 233 " + index + " '" + name + "'",
                     "250: SetCell 233 " + index + " 1 'SRV1\\A\\B'",
                     "250: SetCell 233 " + index + " 2 '007'"};
    };
    Lines expected = {"101: Enable 210 off", "GetSelectedPartCount()", "101: Enable 201 off"};
    const Lines opened = {"250: CreateModeless",
                          "250: SetSmallIcon none",
                          "250: SetTitle 'Selected Parts'",
                          "250: SetText 247 'Remove'",
                          "250: SetText 259 'Change Qty.'",
                          "250: InsertColumn 233 0 'Part Name' 130",
                          "250: InsertColumn 233 1 'Path' 150",
                          "250: InsertColumn 233 2 'Quantity' 55",
                          "250: SetFullRowSelect 233",
                          "250: Show on",
                          "SetDataKind(24)",
                          "SetTargetFolder(" + target + ")"};
    const Lines closed = {"SelectAllParts(0)", "101: Enable 210 on", "101: Enable 201 on"};
    for (const Lines& more : {opened, staged("0", "P1"), staged("1", "P2"), closed}) {
        expected.insert(expected.end(), more.begin(), more.end());
    }
    Lines lines = LinesOf(user::Press(RES_ADD));
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("202:"); });
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(NamesIn(folder.Path("Work/SRV1AB")), (Lines{"P1.iga", "P2.iga"}));
}

TEST_F(Add, ChecksInItsOrder)
{
    struct Row {
        const char* label;
        int selected;
        bool prompt;
        const char16_t* quantity; // null: the keypad is cancelled
        std::string messages;
        bool folder_made;
        std::size_t listed;
        std::size_t selected_behind;
    };
    const Row rows[] = {
        {"nothing selected, prompt on", 0, true, nullptr, select_parts, false, 0, 0},
        {"257", 257, true, nullptr, too_many, false, 0, 257},
        {"256", 256, false, nullptr, "", true, 256, 0},
        {"keypad cancelled", 2, true, nullptr, "", true, 0, 0},
        {"quantity asked", 2, true, u"25", "", true, 2, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        std::filesystem::remove_all(folder.Path("Work/SRV1"));
        SelectMany(row.selected);
        WriteBytes(folder.Path("Install/kpdservers.ini"), "SRV1\r\n-9999\r\nmetric\r\nSRV1\r\n-9999\r\n0\r\n");
        windows.scripts.clear();
        const bool asks = row.prompt && row.selected > 0 && row.selected <= 256;
        if (asks && row.quantity != nullptr) {
            Type(row.quantity);
        } else if (asks) {
            windows.Play(RES_QUANTITY_KEYPAD, {user::Press(id_cancel)});
        }
        Run({[&](CScriptedWindow& window) {
                 window.controls[RES_ASK_QUANTITY].check = row.prompt ? 1 : 0;
                 recorder.lines.clear();
                 window.PressButton(RES_ADD);
                 const Lines lines = recorder.Take();
                 EXPECT_EQ(Messages(lines), row.messages);
                 EXPECT_EQ(Rows().size(), row.listed);
                 EXPECT_EQ(windows.Find(RES_SELECTED_PARTS_DIALOG) != nullptr, row.listed > 0);
                 EXPECT_EQ(browser.selection.size(), row.selected_behind);
                 EXPECT_TRUE(window.controls[RES_ADD].enabled);
                 EXPECT_TRUE(window.controls[RES_LOAD].enabled);
                 EXPECT_EQ(std::filesystem::exists(folder.Path("Work/SRV1")), row.folder_made);
                 EXPECT_EQ(Only(lines, "202: RunModal").size(), asks ? 1U : 0U);
                 for (const ScriptedRow& shown : Rows()) {
                     EXPECT_EQ(shown.cells[2], row.quantity != nullptr ? row.quantity : u"1");
                 }
             },
             user::Press(id_cancel)});
    }
}

TEST_F(Add, RefusesWhatIsListedAndGoesOn)
{
    Run({[this](CScriptedWindow& window) {
             Select({u"P1", u"P2"});
             window.PressButton(RES_ADD);
             windows.Find(RES_SELECTED_PARTS_DIALOG)->PressCloseBox();
             Select({u"P1", u"P3", u"P2", u"p1"});
             recorder.lines.clear();
             window.PressButton(RES_ADD);
             const Lines lines = recorder.Take();
             EXPECT_EQ(Messages(lines), "'The selected part P1 is already added to the list.'" + title +
                                            "|'The selected part P2 is already added to the list.'" + title);
             EXPECT_EQ(Only(lines, "250: InsertColumn"), Lines{});
             EXPECT_TRUE(windows.Find(RES_SELECTED_PARTS_DIALOG)->visible);
             EXPECT_TRUE(browser.selection.empty());
             browser.currentFolder = u"Other";
             Select({u"P1"});
             window.PressButton(RES_ADD); // another folder: another part
             Lines names;
             for (const ScriptedRow& row : Rows()) {
                 names.push_back(NarrowText(row.cells[0] + u" " + row.cells[1]));
             }
             EXPECT_EQ(names,
                       (Lines{"P1 SRV1\\A\\B", "P2 SRV1\\A\\B", "P3 SRV1\\A\\B", "p1 SRV1\\A\\B", "P1 SRV1\\Other"}));
         },
         user::Press(id_cancel)});
    EXPECT_EQ(windows.Find(RES_SELECTED_PARTS_DIALOG), nullptr);
}

TEST_F(Add, AnEntryThatVanishesIsTold)
{
    Select({u"P1", u"P2"});
    int asked = 0;
    browser.On(BrowserOperation::GetSelectedPart, [&](ControlScript::Arguments arguments) -> ControlResult {
        // Gone for good for entry 0, between test and staging for entry 1.
        const bool there = std::get<std::int16_t>(arguments[0].value) == 1 && ++asked == 1;
        std::strcpy(static_cast<char*>(std::get<void*>(arguments[3].value)), there ? "P2" : "");
        return std::int32_t{1};
    });
    EXPECT_EQ(Messages(LinesOf([&](CScriptedWindow& window) {
                  window.PressButton(RES_ADD);
                  EXPECT_TRUE(Rows().empty());
              })),
              "'Part does not exist.'" + title);
}

} // namespace
} // namespace partkeep
