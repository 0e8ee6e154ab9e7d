// Add: checks, button states, the list's window, staging, quantities.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

using Add = SelectionRun;

TEST_F(Add, StagesAndListsInItsOrder)
{
    Select("P1 P2");
    StartIn("A\\B");
    WriteOptions("<InputNoFlag>true</InputNoFlag>");
    std::filesystem::create_directories(folder.Path("Work/SRV1AB"));
    WriteBytes(folder.Path("Work/SRV1AB/P1.bmf"), "old");
    Type(u"007");
    const auto row = [](const std::string& index, const std::string& name, const std::string& count) {
        const std::string cell = "250: SetCell 233 " + index;
        return "250: InsertRow 233 " + index + " '" + name + "'; " + cell + " 1 'SRV1\\A\\B'; " + cell +
               " 2 '007'; 250: SetText 248 '" + count + "'; ";
    };
    Lines lines = LinesOf(user::Press(RES_ADD));
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("202:"); });
    EXPECT_EQ(lines, Steps("101: Enable 210 off; GetSelectedPartCount(); 101: Enable 201 off; 250: CreateModeless; "
                           "250: SetSmallIcon none; 250: SetTitle 'Selected Parts'; 250: SetText 247 'Remove'; "
                           "250: SetText 259 'Change Qty.'; 250: CreateLabel 248 10,151,96,180; 250: InsertColumn 233 "
                           "0 'Part Name' 130; "
                           "250: InsertColumn 233 1 'Path' 150; 250: InsertColumn 233 2 'Quantity' 55; "
                           "250: SetFullRowSelect 233; 250: Show on; SetDataKind(24); SetTargetFolder(" +
                           Quoted(folder.Core(u"Work") + u"\\SRV1AB\\") + "); " + Staged(0, "P1") +
                           row("0", "P1", "1") + Staged(1, "P2") + row("1", "P2", "2") +
                           "SelectAllParts(0); 101: Enable 210 on; 101: Enable 201 on"));
    EXPECT_EQ(NamesIn(folder.Path("Work/SRV1AB")), (Lines{"P1.iga", "P2.iga"}));
}

TEST_F(Add, RefusesWhatIsListedAndGoesOn)
{
    const auto add = [this](CScriptedWindow& window) {
        Select("P1 P2");
        window.PressButton(RES_ADD);
        windows.Find(RES_SELECTED_PARTS_DIALOG)->PressCloseBox();
        Select("P1 P3 P2 p1");
        const Lines lines = LinesIn(window, user::Press(RES_ADD));
        EXPECT_EQ(Messages(lines), "'The selected part P1 is already added to the list.'" + title +
                                       "|'The selected part P2 is already added to the list.'" + title);
        EXPECT_EQ(Only(lines, "250: InsertColumn"), Lines{});
        EXPECT_TRUE(windows.Find(RES_SELECTED_PARTS_DIALOG)->visible);
        EXPECT_TRUE(browser.selection.empty());
        browser.currentFolder = u"Other";
        Select("P1");
        window.PressButton(RES_ADD); // another folder: another part
        browser.currentServer = u"SRV2";
        Select("P1");
        window.PressButton(RES_ADD); // another server, too
        EXPECT_EQ(Listed(), "P1 SRV1\\A\\B 1; P2 SRV1\\A\\B 1; P3 SRV1\\A\\B 1; p1 SRV1\\A\\B 1; P1 SRV1\\Other 1; "
                            "P1 SRV2\\Other 1; ");
        recorder.lines.clear();
    };
    Run({add, user::Press(id_cancel)});
    recorder.lines.resize(2);
    EXPECT_EQ(recorder.lines, Steps("250: Destroy; 101: EndModal 2"));
}

TEST_F(Add, AnEntryThatVanishesIsTold)
{
    Select("P1 P2");
    int asked = 0;
    browser.On(BrowserOperation::GetSelectedPart, [&](ControlScript::Arguments in) -> ControlResult {
        // Gone for good for entry 0, between test and staging for entry 1.
        const bool there = std::get<std::int16_t>(in[0].value) == 1 && ++asked == 1;
        static_cast<char*>(std::get<void*>(in[3].value))[0] = there ? 'P' : '\0';
        return std::int32_t{1};
    });
    const auto add = [&](CScriptedWindow& window) {
        window.PressButton(RES_ADD);
        EXPECT_EQ(Listed(), "");
    };
    EXPECT_EQ(Messages(LinesOf(add)), "'Part does not exist.'" + title);
}

} // namespace
} // namespace partkeep
