// The browser's Click and the pictures that follow it.

#include "tests/selection/selection_run.h"
#include "tests/support/dib_sample.h"

namespace partkeep {
namespace {

using BrowserClick = SelectionRun;

const std::string blanking =
    "101: Invalidate; 101: BeginWait; 101: ShowControl 211 off; 101: panel 1 Show on; put 1 ''; "
    "101: SetText 203 ''; 101: SetText 204 ''; GetSelectedPartCount(); ";

TEST_F(BrowserClick, FetchesAndShowsInItsOrder)
{
    const std::string work = Quoted(TheProcessValues().workingFolder);
    const std::string preview = NarrowText(folder.Core(u"Work\\Lumora_ForPNG\\"), utf8_code_page);
    const std::string part =
        blanking +
        "GetSelectedPart(0); ReadPartAttributes('SRV9', 'F9\\P1', 'P1'); 101: SetText 203 'P1'; "
        "101: SetText 204 'comment'; GetCurrentFolder(); 101: EndWait; 101: BeginWait; ReadPartImage(" +
        work + ", 'PNG'); ReadPartImage(" + work + ", '3D'); ReadPartImage(" + work + ", '2D'); GetLastStatus(); ";
    const std::string invalidate = "101: Invalidate; ";
    const std::string show_png = invalidate + "SetTargetFolder('" + preview +
                                 "'); SetDataKind(20); GetPreviewFileTitle(); 101: panel 1 Show off; "
                                 "101: MoveControl 211 13,400,162,549; 101: ShowControl 211 on; put 1 '" +
                                 preview + "P1_view.PNG'; ";
    const std::string show_2d = "101: ShowControl 211 off; 101: panel 1 Show on; 101: panel 1 Invalidate on; ";
    const std::string show_3d = "101: panel 2 Invalidate on; ";
    const std::tuple<const char*, std::set<std::string>, std::int32_t, std::string> rows[] = {
        {"all three", {"PNG", "2D", "3D"}, 0, show_png + show_3d},
        {"picture alone", {"PNG"}, 0, show_png},
        {"2D alone, behind a picture", {"2D"}, -1, invalidate + show_2d},
        {"picture and 2D", {"PNG", "2D"}, 0, show_png},
        {"bitmaps", {"2D", "3D"}, 0, invalidate + show_2d + show_3d},
        {"3D alone", {"3D"}, -3, invalidate + show_3d},
        {"nothing", {}, 0, invalidate},
        {"list outdated", {"2D"}, -2, "RefreshPartList(); " + invalidate + show_2d},
    };
    const std::string none = blanking + "GetCurrentServer(); 101: EndWait; 101: SetText 203 ";
    browser.previewTitle = u"P1_view";
    const auto look = [&](CScriptedWindow& window) {
        EXPECT_EQ(LinesIn(window, click), Steps(none + "''; 101: SetText 204 ''"));
        Select("P1 P2 P3");
        browser.selection[0].server = u"SRV9";
        browser.selection[0].folder = u"F9";
        for (const auto& [label, images, status, shown] : rows) {
            SCOPED_TRACE(label);
            browser.images.clear();
            for (const std::string& tag : images) {
                browser.images[tag] = "BM";
            }
            browser.On(BrowserOperation::GetLastStatus, ControlResult(status));
            EXPECT_EQ(LinesIn(window, click), Steps(part + shown + "101: EndWait"));
            EXPECT_EQ(window.controls[RES_PICTURE].visible, images.contains("PNG"));
            EXPECT_EQ(window.controls[-1].visible, !images.contains("PNG")); // they take turns
        }
        browser.selection.clear(); // shows the last texts again
        EXPECT_EQ(LinesIn(window, click), Steps(none + "'P1'; 101: SetText 204 'comment'"));
    };
    Run({look, user::Press(id_cancel)});
}

// From the moment of a click on the panels show nothing of the part before, whatever makes them paint.
TEST_F(BrowserClick, NoPanelPaintsABlockThatIsFreedOrOfAnotherPart)
{
    const auto file = MakeSampleFile({}).bytes; // 11 by 7 pixels
    CScriptedWindow* window = nullptr;
    const auto painted = [&window] {
        std::string calls;
        for (const int panel : {-1, -2}) {
            RasterContext raster(149, 149);
            window->controls[panel].painter(raster);
            calls += raster.calls.back() + "; ";
        }
        return Steps(calls);
    };
    const auto background = Steps("FillSolidRect 0 0 149 149 271; FillSolidRect 0 0 149 149 271");
    for (const auto operation : {BrowserOperation::GetSelectedPartCount, BrowserOperation::ReadPartAttributes,
                                 BrowserOperation::ReadPartImage, BrowserOperation::DisconnectServer}) {
        browser.On(operation, [&, operation, own = browser.answers[operation]](ControlScript::Arguments in) {
            const ControlResult answer = own ? own(in) : ControlResult();
            EXPECT_EQ(painted(), background) << static_cast<int>(operation);
            return answer;
        });
    }
    Select("P1");
    browser.images["2D"] = browser.images["3D"] = std::string(reinterpret_cast<const char*>(file.data()), file.size());
    const auto work = [&](CScriptedWindow& shown) {
        window = &shown;
        for (int clicks = 0; clicks < 2; ++clicks) {
            browser.FireClick();
            EXPECT_EQ(painted(), Steps("StretchDIBits 0 0 149 149 0 0 11 7; StretchDIBits 0 0 149 149 0 0 11 7"));
        }
    };
    Run({work, user::Press(id_cancel)});
}

TEST_F(BrowserClick, LearnsWhereTheUserIs)
{
    Select("P1");
    browser.selection[0].server = u"SRV9";
    browser.currentFolder = u"C\\D";
    const auto leave = [this](CScriptedWindow&) {
        browser.selection.clear();
        browser.currentServer = u"SRV2";
        browser.currentFolder = u"E";
    };
    Run({click, leave, click, user::Key(key_a, true), user::Press(RES_LOAD)});
    // The folder is that of the last part clicked; the browser's own counts only with a selection.
    EXPECT_EQ(dialog->resultParts.front().FilePathName, folder.Core(u"Work\\SRV2CD\\P1.iga"));
    EXPECT_EQ(ReadBytes(folder.Path("Install/kpdservers.ini")), "SRV2\r\nC\\D\r\nmetric\r\n-9999\r\n0\r\n");
}

TEST_F(BrowserClick, SurvivesABrowserThatKnowsNothingOrTooMuch)
{
    Select("P1");
    browser.selection[0].readable = false;
    browser.images = {{"2D", "BM"}};
    const Lines unreadable = LinesOf(click);
    EXPECT_EQ(Only(unreadable, "101: SetText 204"), (Lines{"101: SetText 204 ''", "101: SetText 204 ''"}));
    EXPECT_EQ(Only(unreadable, "101: panel 1 Invalidate").size(), 1U);

    browser.On(BrowserOperation::GetLastStatus, [](auto) -> ControlResult { throw std::bad_alloc(); });
    EXPECT_EQ(Only(LinesOf(click), "put 1 ''").size(), 2U) << "before it fails, and behind";

    browser.On(BrowserOperation::GetSelectedPart, ControlResult(std::int32_t{0}));
    EXPECT_EQ(LinesOf(click), Steps(blanking + "GetSelectedPart(0); 101: EndWait"));

    std::size_t bytes = short_text_bytes;
    browser.On(BrowserOperation::GetSelectedPart, [&bytes](ControlScript::Arguments in) -> ControlResult {
        for (const ControlArgument& text : in.subspan(1)) {
            std::fill_n(static_cast<char*>(std::get<void*>(text.value)), bytes, 'x');
        }
        return std::int32_t{1};
    });
    EXPECT_EQ(Only(LinesOf(click), "101: SetText 203 'x"), Lines{"101: SetText 203 '" + std::string(99, 'x') + "'"});
    bytes = long_text_bytes;
    EXPECT_EQ(Only(LinesOf(user::Press(RES_ADD)), "250: InsertRow"),
              Lines{"250: InsertRow 233 0 '" + std::string(long_text_bytes - 1, 'x') + "'"});
}

TEST_F(BrowserClick, WithoutMemoryShowsTextAlone)
{
    Select("P1");
    browser.images = {{"2D", "BM"}, {"PNG", "x"}};
    std::vector<MemoryHandle> blocks;
    while (MemoryHandle block = AllocateBlock(1)) {
        blocks.push_back(block);
    }
    FreeBlock(blocks.back()); // room for the first of three
    blocks.pop_back();
    const Lines lines = LinesOf(click);
    std::for_each(blocks.begin(), blocks.end(), FreeBlock);
    EXPECT_EQ(Only(lines, "ReadPartImage"), Lines{});
    EXPECT_EQ(Only(lines, "101: SetText 203 'P1'").size(), 1U);
    EXPECT_EQ(Only(lines, "101: EndWait").size(), 2U);
}

TEST(PreviewPath, HasOneSeparatorEverywhere)
{
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"C:\\W\\", u"C:\\W\\Lumora_ForPNG\\"},
        {u"C:\\W", u"C:\\W\\Lumora_ForPNG\\"},
        {u"\\\\share\\W\\", u"\\share\\W\\Lumora_ForPNG\\"},
        {u"C:\\W\\\\\\", u"C:\\W\\\\Lumora_ForPNG\\"},
        {u"", u"\\Lumora_ForPNG\\"},
    };
    for (const auto& [working_folder, path] : rows) {
        EXPECT_EQ(PreviewPathOf(working_folder), path);
    }
}

} // namespace
} // namespace partkeep
