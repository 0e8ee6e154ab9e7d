#include "settings/server_list_file.h"

#include "platform/text.h"
#include "tests/support/scripted_control.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <numeric>

namespace partkeep {
namespace {

// server|folder|unit|names|values, with "*" behind the folder when the browser goes to it.
std::string Summary(const ServerListState& state, bool names_folder)
{
    std::string text = NarrowText(state.currentServer) + "|" + NarrowText(state.lastFolder) +
                       (names_folder ? "*|" : "|") + std::to_string(state.displayUnit) + "|";
    for (const auto& slot : state.serverTable.slots) {
        text += slot.front() != '\0' ? slot.data() + std::string(",") : "";
    }
    text += "|";
    for (const std::int16_t value : state.viewState) {
        text += std::to_string(value) + ",";
    }
    return text;
}

std::string Read(std::string_view text, ServerListState state = {})
{
    const bool names_folder = ParseServerList(text, state);
    return Summary(state, names_folder);
}

std::string Rewritten(std::string_view text)
{
    ServerListState state;
    ParseServerList(text, state);
    return FormatServerList(state);
}

// Names "1" to the number given, each with what stands behind it.
std::string Names(int count, const std::string& behind = "\n")
{
    std::string text;
    for (int name = 1; name <= count; ++name) {
        text += std::to_string(name) + behind;
    }
    return text;
}

const std::string example = "SERVER1\nFOLDER1\ninch\nSERVER1\nSERVER2\n-9999\n2\n120\n80\n";
const std::string no_places = "-9999\n-9999\nmetric\n";

TEST(ServerListFile, ReadsEachLineByItsPosition)
{
    const std::string longest(259, 'L');
    const std::string wide_blank = NarrowText(WidenText(NarrowText(u"\u3000")) == u"\u3000" ? u"\u3000" : u"\u00A0");
    const struct {
        const char* label;
        std::string text;
        std::string expected;
    } rows[] = {
        {"example", example, "SERVER1|FOLDER1*|1|SERVER1,SERVER2,|120,80,"},
        {"nothing", "", "kept|kept|1|kept,|7,"},
        {"ends behind line 1", "S", "S|kept|1|S,|7,"},
        {"ends behind line 2", "S\nF", "S|F*|1|S,|7,"},
        {"ends behind line 3", "S\nF\nmetric", "S|F*|0|S,|7,"},
        {"ends inside the list", "S\nF\nmetric\nA", "S|F*|0|A,S,|7,"},
        {"ends behind the list", "S\nF\nmetric\nA\n-9999\n", "S|F*|0|A,S,|7,"},
        {"marks", "-9999\n-9999\n-9999\n-9999\n0\n", "||1||"},
        {"marks with more behind", " -9999x\n-9999 F\n-9999inch\n-9999\n0\n", "||1||"},
        {"not quite marks", "-99990\n9999\n-999\n-9998\n-9999\n0\n", "-99990|9999*|0|-9998,-99990,|"},
        {"empty lines", "\n \n\n-9999\n0\n", "kept|*|0|kept,|"},
        {"inch in capitals", "S\nF\nINCH\nS\n-9999\n0\n", "S|F*|0|S,|"},
        {"inch with a capital", "S\nF\nInch\nS\n-9999\n0\n", "S|F*|0|S,|"},
        {"inch between blanks", "S\nF\n\t inch \r\nS\n-9999\n0\n", "S|F*|1|S,|"},
        {"blanks around", " S\t\n" + wide_blank + " F\\G " + wide_blank + "\nmetric\n S \n-9999\n0\n", "S|F\\G*|0|S,|"},
        {"nine servers", no_places + Names(9) + "-9999\n1\n5\n", "||0|" + Names(9, ",") + "|5,"},
        {"ten servers", no_places + Names(10) + "-9999\n1\n5\n", "||0|" + Names(10, ",") + "|5,"},
        {"eleven servers", no_places + Names(11) + "-9999\n1\n5\n", "||0|" + Names(10, ",") + "|5,"},
        {"current not among nine", "S\n-9999\nmetric\n" + Names(9) + "-9999\n0\n", "S||0|" + Names(9, ",") + "S,|"},
        {"current not among ten", "S\n-9999\nmetric\n" + Names(10) + "-9999\n0\n", "S||0|" + Names(10, ",") + "|"},
        {"current in other case", "s\n-9999\nmetric\nS\n-9999\n0\n", "s||0|S,s,|"},
        {"blank lines in the list", no_places + "\nA\n \nB\n\n-9999\n1\n5\n", "||0|A,B,|5,"},
        {"ten blank lines", no_places + std::string(10, '\n') + "A\n-9999\n1\n5\n", "||0|A,|5,"},
        {"longest name", no_places + longest + "\nB\n-9999\n0\n", "||0|" + longest + ",B,|"},
        {"name too long", no_places + longest + "L\nB\n-9999\n1\n5\n", "||0|B,|5,"},
        {"current too long", longest + "L\n-9999\nmetric\nB\n-9999\n0\n", longest + "L||0|B,|"},
        {"end-of-file byte", "S\x1A\nF\nmetric\nS\x1A\n-9999\n0\n", "S\x1A|F*|0|S\x1A,|"},
        {"zero byte", std::string("S\0x\nF\nmetric\nS\0y\n-9999\n0\n", 25), "S|F*|0|S,|"},
        {"count with text", no_places + "-9999\n 2 values\n+1\n-1x\n9\n", "||0||1,-1,"},
        {"count of no number", no_places + "-9999\nmany\n1\n", "||0||"},
        {"count below zero", no_places + "-9999\n-1\n1\n", "||0||"},
        {"count one too high", no_places + "-9999\n32768\n1\n", "||0||"},
        {"count absurd", no_places + "-9999\n99999999999999999999\n1\n", "||0||"},
        {"values cut to 16 bits", no_places + "-9999\n4\n65537\n-32769\n99999999999\n-99999999999\n",
         "||0||1,32767,-1,0,"},
        {"ends inside the values", no_places + "-9999\n3\n5\n", "||0||5,0,0,"},
        {"empty value", no_places + "-9999\n2\n\n5\n", "||0||0,5,"},
    };
    const ServerListState kept{u"kept", u"kept", 1, {}, {7}};
    for (const auto& row : rows) {
        EXPECT_EQ(Read(row.text, kept), row.expected) << row.label;
    }
    EXPECT_EQ(Rewritten(no_places + "-9999\n32767\n").size(), no_places.size() + 12 + 2 * max_view_state_values);
}

TEST(ServerListFile, ShorterNameLeavesNothingOfALongerOne)
{
    ServerListState state;
    ParseServerList("LONG\n-9999\nmetric\nLONG\n-9999\n0\n", state);
    ParseServerList("S\n", state);
    EXPECT_EQ(state.serverTable.slots[0], (std::array<char, server_slot_bytes>{'S'}));
}

TEST(ServerListFile, WritesWhatItReads)
{
    const std::string japanese_932 =
        "\x8D\x7C\x94\xC2\n\x8D\x7C\\\x95\x5C\x8E\xA6\nmetric\n\x8D\x7C\x94\xC2\n-9999\n0\n";
    const std::string japanese_utf8 = "鋼板\n鋼\\表示\nmetric\n鋼板\n-9999\n0\n";
    const struct {
        const char* label;
        CodePage page;
        std::string text;
    } rows[] = {
        {"example", utf8_code_page, example},
        {"no servers", utf8_code_page, no_places + "-9999\n0\n"},
        {"nine", utf8_code_page, no_places + Names(9) + "-9999\n1\n-32768\n"},
        {"ten", utf8_code_page, no_places + Names(10) + "-9999\n1\n32767\n"},
        {"Japanese in 932", shift_jis_code_page, japanese_932},
        {"Japanese in UTF-8", utf8_code_page, japanese_utf8},
    };
    for (const auto& row : rows) {
        SetSystemCodePage(row.page);
        ASSERT_EQ(Rewritten(row.text), row.text) << row.label;
        // Whatever damage the file takes, what is made of it lasts.
        for (std::size_t at = 0; at < row.text.size(); ++at) {
            const std::string cut = Rewritten(row.text.substr(0, at));
            EXPECT_EQ(Rewritten(cut), cut) << row.label << " cut at " << at;
            for (const char flip : {'\x01', '\x80', '\xFF'}) {
                std::string damaged = row.text;
                damaged[at] = static_cast<char>(damaged[at] ^ flip);
                const std::string written = Rewritten(damaged);
                EXPECT_EQ(Rewritten(written), written) << row.label << " flipped at " << at;
            }
        }
    }
    SetSystemCodePage(utf8_code_page);
}

class ServerListFileOnDisk : public testing::Test {
protected:
    ServerListFileOnDisk()
    {
        browser_.Attach(script_.MakeControl());
        script_.currentServer = u"SRV";
        script_.viewState = {120, -32768};
        for (const char* name : {"B", "A"}) {
            std::strcpy(script_.servers.slots[*name == 'B' ? 0 : 1].data(), name);
        }
    }

    CTemporaryFolder folder_;
    std::filesystem::path file_ = folder_.Path("kpdservers.ini");
    Recorder recorder_;
    ControlScript script_{recorder_};
    CKPDKeyManager browser_;
};

TEST_F(ServerListFileOnDisk, SavesWhatTheBrowserGives)
{
    WriteBytes(file_, "an old file\r\nthat is longer\r\nthan the new one will be, so that something could survive\r\n");
    ServerListState state{u"old", u"F\\G", 2, {}, {1, 2, 3}};
    SaveServerList(state, folder_.Core(), browser_);
    EXPECT_EQ(recorder_.Take(), (std::vector<std::string>{"GetServerList()", "GetCurrentServer()",
                                                          "GetViewStateCount()", "GetViewState()"}));
    EXPECT_EQ(ReadBytes(file_), "SRV\r\nF\\G\r\ninch\r\nB\r\nA\r\n-9999\r\n2\r\n120\r\n-32768\r\n");
    EXPECT_EQ(Summary(state, false), "SRV|F\\G|2|B,A,|120,-32768,");

    script_.currentServer.clear();
    script_.servers = {};
    script_.viewState.clear();
    state.lastFolder.clear();
    state.displayUnit = 0;
    SaveServerList(state, folder_.Core(), browser_);
    EXPECT_EQ(ReadBytes(file_), "-9999\r\n-9999\r\nmetric\r\n-9999\r\n0\r\n");
    EXPECT_EQ(NamesIn(folder_.Path()), std::vector<std::string>{"kpdservers.ini"});
}

TEST_F(ServerListFileOnDisk, SendsTheBrowserToTheFolderUnlessItIsMarked)
{
    const struct {
        const char* label;
        std::string bytes;
        std::vector<std::string> calls;
        std::string expected;
    } rows[] = {
        {"line ends of text mode",
         "S\r\nF\r\ninch\r\nS\r\n-9999\r\n1\r\n5\r\n",
         {"SetCurrentFolder('F')"},
         "S|F|1|S,|5,"},
        {"LF alone", "S\nF\ninch\nS\n-9999\n1\n5", {"SetCurrentFolder('F')"}, "S|F|1|S,|5,"},
        {"empty folder", "S\r\n\r\n", {"SetCurrentFolder('')"}, "S||0|S,|"},
        {"marked folder", "S\r\n-9999\r\n", {}, "S||0|S,|"},
        {"no folder", "S\r\n", {}, "S||0|S,|"},
    };
    for (const auto& row : rows) {
        WriteBytes(file_, row.bytes);
        ServerListState state;
        LoadServerList(state, folder_.Core(), browser_);
        EXPECT_EQ(Summary(state, false), row.expected) << row.label;
        EXPECT_EQ(recorder_.Take(), row.calls) << row.label;
    }
}

TEST_F(ServerListFileOnDisk, NoFileAndAFolderInItsPlaceChangeNothing)
{
    for (const bool folder : {false, true}) {
        if (folder) {
            std::filesystem::create_directory(file_);
        }
        ServerListState state{u"kept", u"kept", 1, {}, {7}};
        LoadServerList(state, folder_.Core(), browser_);
        EXPECT_EQ(Summary(state, false), "kept|kept|1||7,");
        EXPECT_TRUE(recorder_.Take().empty());
    }
    ServerListState state;
    SaveServerList(state, folder_.Core(), browser_);
    EXPECT_EQ(NamesIn(folder_.Path()), std::vector<std::string>{"kpdservers.ini"});
    EXPECT_TRUE(std::filesystem::is_directory(file_));
    SaveServerList(state, folder_.Core(u"no such folder"), browser_);
    EXPECT_EQ(NamesIn(folder_.Path()).size(), 1U);
}

TEST_F(ServerListFileOnDisk, BrowserThatWritesMoreThanItAnnouncedDoesNoHarm)
{
    script_.On(BrowserOperation::GetViewState, [](ControlScript::Arguments arguments) {
        auto* values = static_cast<std::int16_t*>(std::get<void*>(arguments[0].value));
        std::fill_n(values, max_view_state_values, std::int16_t{9});
        return ControlResult{std::int16_t{-1}};
    });
    ServerListState state;
    SaveServerList(state, folder_.Core(), browser_);
    EXPECT_EQ(state.viewState, (std::vector<std::int16_t>{9, 9}));
    const std::vector<std::int16_t> padded = PaddedViewState(state.viewState);
    EXPECT_EQ(padded.size(), max_view_state_values);
    EXPECT_EQ(std::accumulate(padded.begin(), padded.end(), 0), 18);
}

} // namespace
} // namespace partkeep
