#include "settings/server_list_file.h"

#include "platform/text.h"
#include "tests/support/scripted_control.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
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
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"example", example, "SERVER1|FOLDER1*|1|SERVER1,SERVER2,|120,80,"},
        {"nothing", "", "kept|kept|1|kept,|7,"},
        {"ends behind line 1", "S", "S|kept|1|S,|7,"},
        {"ends behind line 2", "S\nF", "S|F*|1|S,|7,"},
        {"ends inside the list", "S\nF\nmetric\nA", "S|F*|0|A,S,|7,"},
        {"marks with more behind", " -9999x\n-9999 F\n-9999inch\n-9999\n0\n", "||1||"},
        {"not quite marks", "-99990\n9999\n-999\n-9998\n-9999\n0\n", "-99990|9999*|0|-9998,-99990,|"},
        {"empty lines", "\n \n\n-9999\n0\n", "kept|*|0|kept,|"},
        {"inch with a capital", "S\nF\nInch\nS\n-9999\n0\n", "S|F*|0|S,|"},
        {"blanks", " S\t\n" + wide_blank + " F\\G " + wide_blank + "\n\t inch \r\n S \n-9999\n0\n", "S|F\\G*|1|S,|"},
        {"eleven servers", "S\n-9999\nmetric\n" + Names(11) + "-9999\n1\n5\n", "S||0|" + Names(10, ",") + "|5,"},
        {"long names", no_places + longest + "\n" + longest + "L\nB\n-9999\n1\n5\n", "||0|" + longest + ",B,|5,"},
        {"ten servers", no_places + Names(10) + "-9999\n1\n5\n", "||0|" + Names(10, ",") + "|5,"},
        {"current not among nine", "S\n-9999\nmetric\n" + Names(9) + "-9999\n0\n", "S||0|" + Names(9, ",") + "S,|"},
        {"current in other case", "s\n-9999\nmetric\nS\n-9999\n0\n", "s||0|S,s,|"},
        {"blank lines", no_places + std::string(10, '\n') + "A\n \nB\n\n-9999\n1\n5\n", "||0|A,B,|5,"},
        {"current too long", longest + "L\n-9999\nmetric\nB\n-9999\n0\n", longest + "L||0|B,|"},
        {"end-of-file byte", "S\x1A\nF\nmetric\nS\x1A\n-9999\n0\n", "S\x1A|F*|0|S\x1A,|"},
        {"zero byte", std::string("S\0x\nF\nmetric\nS\0y\n-9999\n0\n", 25), "S|F*|0|S,|"},
        {"count with text", no_places + "-9999\n 2 values\n+1\n-1x\n9\n", "||0||1,-1,"},
        {"count one too high", no_places + "-9999\n32768\n1\n", "||0||"},
        {"count below zero", no_places + "-9999\n-1\n1\n", "||0||"},
        {"16 bits", no_places + "-9999\n4\n65537\n-32769\n99999999999\n-99999999999\n", "||0||1,32767,-1,0,"},
        {"ends inside the values", no_places + "-9999\n3\n5\n", "||0||5,0,0,"},
    };
    const ServerListState kept{u"kept", u"kept", 1, {}, {7}};
    for (const auto& [label, text, expected] : rows) {
        ServerListState state = kept;
        const bool names_folder = ParseServerList(text, state);
        EXPECT_EQ(Summary(state, names_folder), expected) << label;
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
    const std::tuple<const char*, CodePage, std::string> rows[] = {
        {"example", utf8_code_page, example},
        {"ten", utf8_code_page, no_places + Names(10) + "-9999\n2\n32767\n-32768\n"},
        {"932", shift_jis_code_page, "\x8D\x7C\x94\xC2\n\x8D\x7C\\\x95\x5C\nmetric\n\x8D\x7C\x94\xC2\n-9999\n0\n"},
        {"UTF-8", utf8_code_page, "鋼板\n鋼\\表示\nmetric\n鋼板\n-9999\n0\n"},
    };
    for (const auto& [label, page, text] : rows) {
        SetSystemCodePage(page);
        ASSERT_EQ(Rewritten(text), text) << label;
        // Whatever damage the file takes, what is made of it lasts.
        for (std::size_t at = 0; at < text.size(); ++at) {
            for (const char flip : {'\x01', '\x80', '\xFF'}) {
                std::string damaged = text;
                damaged[at] = static_cast<char>(damaged[at] ^ flip);
                const std::string written = Rewritten(damaged);
                EXPECT_EQ(Rewritten(written), written) << label << " flipped at " << at;
            }
        }
    }
    SetSystemCodePage(utf8_code_page);
}

class ServerListFileOnDisk : public testing::Test {
protected:
    ServerListFileOnDisk() { browser_.Attach(script_.MakeControl()); }

    CTemporaryFolder folder_;
    std::filesystem::path file_ = folder_.Path("kpdservers.ini");
    Recorder recorder_;
    ControlScript script_{recorder_};
    CKPDKeyManager browser_;
};

TEST_F(ServerListFileOnDisk, SavesWhatTheBrowserGives)
{
    WriteBytes(file_, std::string(1000, 'x'));
    std::filesystem::create_hard_link(file_, folder_.Path("old"));
    script_.currentServer = u"SRV";
    script_.servers.slots[0].front() = 'B';
    script_.servers.slots[1].front() = 'A';
    script_.viewState = {120, -9}; // announces two, and writes more, or less
    bool more = true;
    script_.On(BrowserOperation::GetViewState, [&more](ControlScript::Arguments arguments) {
        auto* values = static_cast<std::int16_t*>(std::get<void*>(arguments[0].value));
        std::fill_n(values, more ? max_view_state_values : 1, std::int16_t{-9});
        return ControlResult{std::int16_t{-1}};
    });
    ServerListState state{u"old", u"F\\G", 2, {}, {1, 2, 3}};
    SaveServerList(state, folder_.Core(), browser_);
    EXPECT_EQ(ReadBytes(file_), "SRV\r\nF\\G\r\ninch\r\nB\r\nA\r\n-9999\r\n2\r\n-9\r\n-9\r\n");
    EXPECT_EQ(Summary(state, false), "SRV|F\\G|2|B,A,|-9,-9,");
    EXPECT_EQ(NamesIn(folder_.Path()), (std::vector<std::string>{"kpdservers.ini", "old"}));
    EXPECT_EQ(ReadBytes(folder_.Path("old")), std::string(1000, 'x')) << "written beside, and renamed";
    const std::vector<std::int16_t> padded = PaddedViewState(state.viewState);
    EXPECT_EQ(padded.size(), max_view_state_values);
    EXPECT_EQ(std::accumulate(padded.begin(), padded.end(), 0), -18);
    more = false;
    SaveServerList(state, folder_.Core(), browser_);
    EXPECT_EQ(state.viewState, (std::vector<std::int16_t>{-9, 0}));
}

TEST_F(ServerListFileOnDisk, WhatCouldNotBeReadIsKeptBesideTheNextSave)
{
    const auto load_and_save = [this](const std::string& old, bool in_trouble) {
        WriteBytes(file_, old);
        ServerListState state;
        {
            const auto trouble = in_trouble ? std::make_unique<CReadTrouble>(file_) : nullptr;
            LoadServerList(state, folder_.Core(), browser_);
        }
        SaveServerList(state, folder_.Core(), browser_);
        EXPECT_EQ(ReadBytes(file_), "-9999\r\n-9999\r\nmetric\r\n-9999\r\n0\r\n");
    };
    load_and_save("read", false);
    for (int run = 1; run <= 10; ++run) {
        load_and_save("old " + std::to_string(run), true);
    }
    EXPECT_EQ(ReadBytes(folder_.Path("kpdservers.ini.kept1")), "old 1");
    EXPECT_EQ(ReadBytes(folder_.Path("kpdservers.ini.kept9")), "old 10");
    EXPECT_EQ(NamesIn(folder_.Path()).size(), 10U);
}

TEST_F(ServerListFileOnDisk, SendsTheBrowserToTheFolderUnlessItIsMarked)
{
    const auto loaded = [this] {
        ServerListState state{u"kept", u"kept", 1, {}, {7}};
        LoadServerList(state, folder_.Core(), browser_);
        const std::vector<std::string> calls = recorder_.Take();
        return Summary(state, false) + std::accumulate(calls.begin(), calls.end(), std::string());
    };
    EXPECT_EQ(loaded(), "kept|kept|1||7,") << "no file";
    WriteBytes(file_, "S\r\nF\r\ninch\r\nS\r\n-9999\r\n1\r\n5\r\n");
    EXPECT_EQ(loaded(), "S|F|1|S,|5,SetCurrentFolder('F')");
    WriteBytes(file_, "S\r\n\r\n");
    EXPECT_EQ(loaded(), "S||1|S,|7,SetCurrentFolder('')");
    WriteBytes(file_, "S\r\n-9999\r\n");
    EXPECT_EQ(loaded(), "S||1|S,|7,");
    std::filesystem::remove(file_);
    std::filesystem::create_directory(file_);
    EXPECT_EQ(loaded(), "kept|kept|1||7,");
    ServerListState state;
    SaveServerList(state, folder_.Core(), browser_);
    SaveServerList(state, folder_.Core(u"no such folder"), browser_);
    EXPECT_EQ(NamesIn(folder_.Path()), std::vector<std::string>{"kpdservers.ini"});
    EXPECT_TRUE(std::filesystem::is_directory(file_));
}

} // namespace
} // namespace partkeep
