// The browser's Click and the pictures that follow it.

#include "tests/selection/selection_run.h"

namespace partkeep {
namespace {

using BrowserClick = SelectionRun;

const std::vector<std::string> blanking = {
    "101: Invalidate", "101: BeginWait",      "101: ShowControl 211 off", "101: panel 1 Show on",
    "put 1 ''",        "101: SetText 203 ''", "101: SetText 204 ''",      "GetSelectedPartCount()",
};

std::vector<std::string> operator+(std::vector<std::string> left, const std::vector<std::string>& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST_F(BrowserClick, FetchesAndShowsInItsOrder)
{
    const std::string work = Quoted(TheProcessValues().workingFolder);
    const std::string preview = Quoted(folder.Core(u"Work") + u"\\Lumora_ForPNG\\");
    const std::string picture_path = Quoted(folder.Core(u"Work") + u"\\Lumora_ForPNG\\P1_view.PNG");
    const Lines part = {
        "GetSelectedPart(0)",
        "ReadPartAttributes('SRV9', 'F9\\P1', 'P1')",
        "101: SetText 203 'P1'",
        "101: SetText 204 'comment'",
        "GetCurrentFolder()",
        "101: EndWait",
        "101: BeginWait",
        "ReadPartImage(" + work + ", 'PNG')",
        "ReadPartImage(" + work + ", '3D')",
        "ReadPartImage(" + work + ", '2D')",
        "GetLastStatus()",
    };
    const Lines invalidate = {"101: Invalidate"};
    const Lines end = {"101: EndWait"};
    const Lines show_png = {"SetTargetFolder(" + preview + ")",
                            "SetDataKind(20)",
                            "GetPreviewFileTitle()",
                            "101: panel 1 Show off",
                            "101: MoveControl 211 10,400,159,549",
                            "101: ShowControl 211 on",
                            "put 1 " + picture_path};
    const Lines show_2d = {"101: ShowControl 211 off", "101: panel 1 Show on", "101: panel 1 Invalidate on"};
    const Lines show_3d = {"101: panel 2 Invalidate on"};

    struct Row {
        const char* label;
        std::set<std::string> images;
        std::int32_t status;
        Lines shown;
    };
    const Row rows[] = {
        {"all three", {"PNG", "2D", "3D"}, 0, invalidate + show_png + show_3d + end},
        {"picture alone", {"PNG"}, 0, invalidate + show_png + end},
        {"picture and 2D", {"PNG", "2D"}, 0, invalidate + show_png + end},
        {"bitmaps", {"2D", "3D"}, 0, invalidate + show_2d + show_3d + end},
        {"2D alone", {"2D"}, -1, invalidate + show_2d + end},
        {"3D alone", {"3D"}, -3, invalidate + show_3d + end},
        {"nothing", {}, 0, invalidate + end},
        {"list outdated", {"2D"}, -2, Lines{"RefreshPartList()"} + invalidate + show_2d + end},
    };
    Select({u"P1", u"P2", u"P3"});
    browser.selection[0].server = u"SRV9";
    browser.selection[0].folder = u"F9";
    browser.previewTitle = u"P1_view";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        browser.images.clear();
        for (const std::string& tag : row.images) {
            browser.images[tag] = "BM";
        }
        browser.On(BrowserOperation::GetLastStatus, ControlResult(row.status));
        EXPECT_EQ(LinesOf([this](CScriptedWindow&) { browser.FireClick(); }), blanking + part + row.shown);
    }
}

TEST_F(BrowserClick, LearnsWhereTheUserIs)
{
    Select({u"P1"});
    browser.selection[0].server = u"SRV9";
    browser.currentFolder = u"C\\D";
    const auto click = [this](CScriptedWindow&) { browser.FireClick(); };
    const auto leave = [this](CScriptedWindow&) {
        browser.selection.clear();
        browser.currentServer = u"SRV2";
        browser.currentFolder = u"E";
    };
    Run({click, leave, click, user::Press(id_cancel)});
    // Line 2 is the folder of the last part clicked; the browser's own folder counts only with a selection.
    EXPECT_EQ(ReadBytes(folder.Path("Install/kpdservers.ini")), "SRV2\r\nC\\D\r\nmetric\r\n-9999\r\n0\r\n");
}

TEST_F(BrowserClick, WithoutASelectionShowsTheLastTextsAgain)
{
    const Lines none = blanking + Lines{"GetCurrentServer()", "101: EndWait"};
    Lines first;
    Lines second;
    Run({[&](CScriptedWindow&) {
             recorder.lines.clear();
             browser.FireClick();
             first = recorder.Take();
             Select({u"P1"});
             browser.FireClick();
             browser.selection.clear();
             recorder.lines.clear();
             browser.FireClick();
             second = recorder.Take();
         },
         user::Press(id_cancel)});
    EXPECT_EQ(first, none + (Lines{"101: SetText 203 ''", "101: SetText 204 ''"}));
    EXPECT_EQ(second, none + (Lines{"101: SetText 203 'P1'", "101: SetText 204 'comment'"}));
}

TEST_F(BrowserClick, SurvivesABrowserThatKnowsNothingOrTooMuch)
{
    Select({u"P1"});
    const auto click = [this](CScriptedWindow&) { browser.FireClick(); };
    browser.On(BrowserOperation::GetSelectedPart, ControlResult(std::int32_t{0}));
    EXPECT_EQ(LinesOf(click), blanking + (Lines{"GetSelectedPart(0)", "101: EndWait"}));

    browser.On(BrowserOperation::GetSelectedPart, [](ControlScript::Arguments arguments) -> ControlResult {
        for (std::size_t position = 1; position < arguments.size(); ++position) {
            std::fill_n(static_cast<char*>(std::get<void*>(arguments[position].value)), short_text_bytes, 'x');
        }
        return std::int32_t{1};
    });
    const Lines lines = LinesOf(click);
    EXPECT_EQ(Only(lines, "101: SetText 203 'x"), Lines{"101: SetText 203 '" + std::string(99, 'x') + "'"});

    browser.answers.clear();
    browser.selection[0].readable = false;
    browser.images = {{"2D", "BM"}};
    const Lines unreadable = LinesOf(click);
    EXPECT_EQ(Only(unreadable, "101: SetText 204"), (Lines{"101: SetText 204 ''", "101: SetText 204 ''"}));
    EXPECT_EQ(Only(unreadable, "101: panel 1 Invalidate").size(), 1U);
}

TEST_F(BrowserClick, WithoutMemoryShowsTextAlone)
{
    Select({u"P1"});
    browser.images = {{"2D", "BM"}, {"PNG", "x"}};
    std::vector<MemoryHandle> blocks;
    while (MemoryHandle block = AllocateBlock(1)) {
        blocks.push_back(block);
    }
    FreeBlock(blocks.back()); // room for the first of three
    blocks.pop_back();
    const Lines lines = LinesOf([this](CScriptedWindow&) { browser.FireClick(); });
    for (MemoryHandle block : blocks) {
        FreeBlock(block);
    }
    EXPECT_EQ(Only(lines, "ReadPartImage"), Lines{});
    EXPECT_EQ(Only(lines, "101: SetText 203 'P1'").size(), 1U);
    EXPECT_EQ(Only(lines, "101: EndWait").size(), 2U);
}

TEST_F(BrowserClick, HoldsThreeBlocksAtMostHoweverOftenOneClicks)
{
    Select({u"P1"});
    browser.images = {{"2D", "BM"}, {"3D", "BM"}, {"PNG", "x"}};
    const std::size_t room = RoomForBlocks();
    Run({[&](CScriptedWindow&) {
             for (int click = 0; click < 10000; ++click) {
                 browser.FireClick();
                 recorder.lines.clear();
             }
             EXPECT_EQ(RoomForBlocks(), room - 3);
         },
         user::Press(id_cancel)});
    EXPECT_EQ(RoomForBlocks(), room);
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
