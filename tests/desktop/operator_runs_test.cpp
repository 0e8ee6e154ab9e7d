// Whole runs on the open part browser, from SetWorkingFolder to GetPartInfo.

#include "tests/desktop/operator_run.h"

#include "interface/owned_services.h"
#include "partkeep_read.h"

#include <numeric>
#include <set>

namespace partkeep {

namespace {

COperatorRun* played = nullptr; // by the C interface

class CPlayedServices : public IOwnedServices {
public:
    HostServices Services() override { return played->services; }
};

} // namespace

// In place of the desktop's services: those of the run.
std::unique_ptr<IOwnedServices> MakeOwnedServices()
{
    return std::make_unique<CPlayedServices>();
}

namespace {

// In terms of each other, too.
const std::map<std::string, std::string> call_groups = {
    {"start", "SetDisplayUnit SetPartFilter SetServerList MoveFocus ConnectServer SetCurrentServer"},
    {"folder", "OpenFolderSelection SetCurrentFolder"},
    {"count", "GetSelectedPartCount"},
    {"none", "GetSelectedPartCount GetCurrentServer"},
    {"go", "none"},
    {"click", "count GetSelectedPart ReadPartAttributes GetCurrentFolder ReadPartImage*3 GetLastStatus"},
    {"png", "SetTargetFolder SetDataKind GetPreviewFileTitle"},
    {"into", "SetDataKind SetTargetFolder"},
    {"named", "GetCurrentServer GetCurrentFolder GetSelectedPart"},
    {"copy", "SetDataKind CopyPartFiles"},
    {"staged", "named named ReadPartAttributes copy"},
    {"staged2", "staged copy"},
    {"clear", "SelectAllParts"},
    {"leave", "GetServerList GetCurrentServer GetViewStateCount GetViewState DisconnectServer"},
};

// The server list file that the browser's session leaves behind, with its servers' names parted by blanks. `view` is
// the sort column's number and 1 for descending.
std::string ServersFile(const std::string& server, const std::string& folder, const std::string& unit,
                        const std::string& servers, const std::string& view = "0 0")
{
    std::string values = server + " " + folder + " " + unit + " " + servers + " -9999 30 19280 1 0 " + view + " 0";
    for (int column = 0; column < 8; ++column) {
        values += " -1 0 0";
    }
    std::string lines;
    for (const char byte : values + " ") {
        lines += byte == ' ' ? "\r\n" : std::string(1, byte);
    }
    return lines;
}

std::string OptionsFile(bool prompt, int filter)
{
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<ZanPartkeepReadConfig>\r\n  <InputNoFlag>") +
           (prompt ? "true" : "false") + "</InputNoFlag>\r\n  <FilterState>" + std::to_string(filter) +
           "</FilterState>\r\n</ZanPartkeepReadConfig>";
}

// Browser calls by their short names, "staged*3" for three times the same; any other word stands for itself.
Lines ExpandCalls(const std::string& shorthand)
{
    Lines calls;
    for (const std::string& word : Words(shorthand)) {
        const std::size_t star = word.find('*');
        const auto group = call_groups.find(word.substr(0, star));
        const Lines names = group != call_groups.end() ? ExpandCalls(group->second) : Lines{word.substr(0, star)};
        for (int left = star == std::string::npos ? 1 : std::stoi(word.substr(star + 1)); left > 0; --left) {
            calls.insert(calls.end(), names.begin(), names.end());
        }
    }
    return calls;
}

const std::string sample_servers = "PLATES 板金部品 钣金件";
const std::string plain = OptionsFile(false, 0);
const std::string in_brackets = ServersFile("PLATES", "Brackets\\L", "metric", sample_servers);

const std::string long_server(99, 's');
const std::string long_folder = QString(33, u'板').toStdString();
const std::string long_part = QString(33, u'钣').toStdString();

void FillEdges(CTestLibraries& libraries)
{
    using enum FileSlot;
    libraries.Fill(u"EDGE"_s, [](ILibraryWriter& writer) {
        PutTestParts(writer, u"Many"_s, u"P%1"_s, 1, 258);
        for (const char* name : {"P", "P.1", "P.1.2", "Case", "CASE"}) {
            PutTestPart(writer, u"Names"_s, QString::fromLatin1(name), SetOf(Iga) | SetOf(Ncd));
        }
        PutTestPart(writer, u"v1.2"_s, u"P"_s, SetOf(Iga));
    });
    libraries.Fill(QString::fromStdString(long_server), [](ILibraryWriter& writer) {
        PutTestPart(writer, QString::fromStdString(long_folder), QString::fromStdString(long_part), SetOf(Bmf));
    });
}

// Lists are parted by "; ".
struct Row {
    const char* label;
    std::string steps;
    std::string records;
    std::string files;
    std::string messages;
    std::string calls;
    std::string servers = in_brackets;
    std::string options = plain;
    bool multi = true;
};

void Check(COperatorRun& run, PartkeepReadImpl& host, const Row& row)
{
    EXPECT_EQ(run.Records(host), Steps(row.records));
    EXPECT_EQ(run.Files(), Steps(row.files));
    EXPECT_EQ(run.Servers(), row.servers);
    EXPECT_EQ(run.Options(), row.options);
    EXPECT_EQ(run.Noted("message"), Steps(row.messages));
    EXPECT_EQ(run.Noted("call"), ExpandCalls(row.calls));
}

void PlayEach(const std::filesystem::path& libraries, const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        COperatorRun run(libraries);
        run.Play(run.object, row.multi, row.steps);
        Check(run, run.object, row);
    }
}

TEST(OperatorRuns, OnTheSampleLibrary)
{
    const std::string in = " x1 PLATES|Brackets\\L PLATESBracketsL ";
    const std::string in_aluminium = " x1 PLATES|Panels\\2008\\Aluminium PLATESBracketsL ";
    PlayEach(
        SampleLibraries(),
        {
            {"one part, the last selected counts", "go PLATES Brackets\\L; select BRK-1 BRK-3; load",
             "BRK-3" + in + ".iga", "PLATESBracketsL/BRK-3.bmf; PLATESBracketsL/BRK-3.iga", "",
             "start go click count into staged named leave", in_brackets, plain, false},
            {"several, one with a picture under the cursor, loaded by Enter",
             "go PLATES Brackets\\L; select BRK-3; select BRK-2 BRK-4; enter",
             "BRK-2" + in + ".bmf; BRK-4" + in + ".iga", "PLATESBracketsL/BRK-2.bmf; PLATESBracketsL/BRK-4.iga", "",
             "start go click png click count into staged*2 leave"},
            {"three folders on two servers, one removed, one changed, a duplicate",
             "ask; go PLATES Brackets\\L; select BRK-1 BRK-2; add 5; go PLATES Panels\\2008\\Steel; select PNL-4; "
             "add 007; hide; go 板金部品 筐体\\カバー; select カバー1 カバー2; add 12; select カバー2 カバー8; add 3; "
             "remove 1; change 0 99; change 3 -; none; load",
             "BRK-1 x99 PLATES|Brackets\\L PLATESBracketsL .iga; "
             "PNL-4 x007 PLATES|Panels\\2008\\Steel PLATESPanels2008Steel .iga; "
             "カバー1 x12 板金部品|筐体\\カバー 板金部品筐体カバー .iga; "
             "カバー2 x12 板金部品|筐体\\カバー 板金部品筐体カバー .bmf; "
             "カバー8 x3 板金部品|筐体\\カバー 板金部品筐体カバー .iga",
             "PLATESBracketsL/BRK-1.iga; PLATESBracketsL/BRK-2.bmf; PLATESPanels2008Steel/PNL-4.iga; "
             "板金部品筐体カバー/カバー1.iga; 板金部品筐体カバー/カバー2.bmf; 板金部品筐体カバー/カバー8.iga",
             "'The selected part カバー2 is already added to the list.'" + title,
             "start go click count into staged*2 clear go click png count into staged clear go click count into "
             "staged*2 clear click count into named staged clear none count into leave",
             ServersFile("板金部品", "筐体\\カバー", "metric", sample_servers), OptionsFile(true, 0)},
            {"machine data, on top of what is listed",
             "filter NCT; go 钣金件 支架; select 支架-1; add; filter LASER; select 支架-1 支架-7; load",
             "支架-1 x1 钣金件|支架 钣金件支架 .iga .SY5 type 1; 支架-7 x1 钣金件|支架 钣金件支架 .NCD type 2",
             "钣金件支架/支架-1.SY5; 钣金件支架/支架-1.iga; 钣金件支架/支架-7.NCD", "",
             "start SetPartFilter go click count into staged2 clear SetPartFilter click count into named staged2 "
             "leave",
             ServersFile("钣金件", "支架", "metric", sample_servers), OptionsFile(false, 2)},
            {"all of a folder, by Ctrl+A, without a click",
             "go PLATES Brackets\\L; select BRK-1; go PLATES Panels\\2008\\Aluminium; all; load",
             "AL-1" + in_aluminium + ".iga; AL-2" + in_aluminium + ".bmf; AL-3" + in_aluminium + ".iga; AL-4" +
                 in_aluminium + ".iga; AL-5" + in_aluminium + ".iga; AL-6" + in_aluminium + ".bmf",
             "PLATESBracketsL/AL-1.iga; PLATESBracketsL/AL-2.bmf; PLATESBracketsL/AL-3.bmf; "
             "PLATESBracketsL/AL-3.iga; PLATESBracketsL/AL-4.iga; PLATESBracketsL/AL-5.iga; PLATESBracketsL/AL-6.bmf",
             "", "start go click none SelectAllParts count into staged*6 leave"},
            {"files missing",
             "go PLATES Brackets\\L; select BRK-1 BRK-2 BRK-4; add; lose PLATESBracketsL/BRK-2.bmf; load",
             "BRK-1" + in + ".iga; BRK-4" + in + ".iga", "PLATESBracketsL/BRK-1.iga; PLATESBracketsL/BRK-4.iga",
             no_files + "BRK-2'" + title, "start go click count into staged*3 clear count into leave"},
            {"a library that vanishes between Add and Load",
             "go PLATES Brackets\\L; select BRK-1; add; vanish PLATES; unit inch; load", "BRK-1" + in + ".iga",
             "PLATESBracketsL/BRK-1.iga", "",
             "start go click count into staged clear SetDisplayUnit RefreshPartList count into leave",
             ServersFile("PLATES", "Brackets\\L", "inch", sample_servers)},
        });
}

TEST(OperatorRuns, OnADiskThatFails)
{
    PARTKEEP_NEEDS_MOUNTS();
    PlayEach(SampleLibraries(),
             {
                 {"full behind the first part", "go PLATES Brackets\\L; select BRK-1 BRK-8; disk 8192; load",
                  "BRK-1 x1 PLATES|Brackets\\L PLATESBracketsL .iga", ".filler; PLATESBracketsL/BRK-1.iga",
                  no_files + "BRK-8'" + title, "start go click count into staged*2 leave"},
                 {"read-only", "go PLATES Brackets\\L; select BRK-1 BRK-2; disk readonly; add; load", "", "",
                  no_files + "BRK-1'" + title + "; " + no_files + "BRK-2'" + title,
                  "start go click count into staged*2 clear count into leave"},
             });
}

TEST(OperatorRuns, AtTheLimits)
{
    CTestLibraries libraries;
    FillEdges(libraries);
    const std::string servers = "EDGE " + long_server;
    const std::string in_names = ServersFile("EDGE", "Names", "metric", servers);
    std::string records;
    std::set<std::string> files;
    for (int number = 1; number <= 257; ++number) {
        const std::string name = "P" + std::to_string(number);
        records += name + (number <= 256 ? " x8" : " x9") + " EDGE|Many EDGEMany .iga; ";
        files.insert("EDGEMany/" + name + ".iga; ");
    }
    const std::string in_edge = " EDGE|Names EDGENames .iga";
    PlayEach(
        libraries.Folder().toStdString(),
        {
            {"256 and 257",
             "go EDGE Many; all; add; ask; all; load 7; all; load -; first 256; add 8; select P257; load 9", records,
             std::accumulate(files.begin(), files.end(), std::string()), too_many + "; " + too_many,
             "start go SelectAllParts count SelectAllParts count SelectAllParts count clear click count into "
             "staged*256 clear click count into staged leave",
             ServersFile("EDGE", "Many", "metric", servers), OptionsFile(true, 0)},
            {"names as long as can be", "go " + long_server + " " + long_folder + "; select " + long_part + "; load",
             long_part + " x1 " + long_server + "|" + long_folder + " " + long_server + long_folder + " .bmf",
             long_server + long_folder + "/" + long_part + ".bmf", "", "start go click count into staged leave",
             ServersFile(long_server, long_folder, "metric", servers)},
            {"names with dots: a part clears the files of those that begin with its name and a dot",
             "go EDGE Names; select P.1 P.1.2; add; select P; load", "P x1" + in_edge, "EDGENames/P.iga",
             no_files + "P.1'" + title + "; " + no_files + "P.1.2'" + title,
             "start go click count into staged*2 clear click count into staged leave", in_names},
            {"a folder with a dot: nothing is cleared", "go EDGE v1.2; select P; add; go EDGE Names; select P; load",
             "P x1 EDGE|v1.2 EDGEv1.2 .iga; P x1" + in_edge, "EDGENames/P.iga; EDGEv1.2/P.iga", "",
             "start go click count into staged clear go click count into staged leave", in_names},
            {"names that differ only in case: the files of the later, both records",
             "filter LASER; go EDGE Names; select Case; add; select CASE; add; none; load",
             "Case x1" + in_edge + " .NCD type 2; CASE x1" + in_edge + " .NCD type 2",
             "EDGENames/CASE.NCD; EDGENames/CASE.iga", "",
             "start SetPartFilter go click count into staged2 clear click count into staged2 clear none count into "
             "leave",
             in_names, OptionsFile(false, 2)},
        });
}

TEST(OperatorRuns, CancelledAtEachPoint)
{
    const struct {
        std::string step;
        std::string calls;
        std::string folder; // of the server list file
    } steps[] = {
        {"", "", "-9999"},
        {"filter NCT; ", "SetPartFilter ", "-9999"},
        {"ask; ", "", "-9999"},
        {"go PLATES Brackets\\L; ", "go ", "-9999"},
        {"select BRK-3; ", "click png ", "Brackets\\L"},
        {"add -; ", "count clear ", "Brackets\\L"},
        {"select BRK-1 BRK-2; ", "click ", "Brackets\\L"},
        {"add 4; ", "count into staged2*2 clear ", "Brackets\\L"},
        {"remove 0; ", "", "Brackets\\L"},
        {"hide; ", "", "Brackets\\L"},
        {"select BRK-8; ", "click ", "Brackets\\L"},
        {"load -; ", "count clear ", "Brackets\\L"},
    };
    const std::string staged = "PLATESBracketsL/BRK-1.SY5; PLATESBracketsL/BRK-1.iga; PLATESBracketsL/BRK-2.SY5; "
                               "PLATESBracketsL/BRK-2.bmf; ";
    Row row{"", "", "", "", "", "start "};
    row.options = "(none)";
    for (int done = 0; done < static_cast<int>(std::size(steps)); ++done) {
        SCOPED_TRACE(steps[done].step);
        row.steps += steps[done].step;
        row.calls += steps[done].calls;
        COperatorRun run(SampleLibraries());
        EXPECT_EQ(run.Play(run.object, false, row.steps + (done % 2 == 0 ? "cancel" : "escape")), HostResult::False);
        Row expected = row;
        expected.calls += "leave";
        expected.servers = ServersFile(done < 3 ? "-9999" : "PLATES", steps[done].folder, "metric", sample_servers);
        expected.files = done < 4 ? "Lumora_ForPNG/; " : "Lumora_ForPNG/BRK-3.PNG; ";
        expected.files += (done < 5 ? "" : done < 7 ? "PLATESBracketsL/; " : staged) + std::string("UnZipFolder/");
        Check(run, run.object, expected);
        EXPECT_EQ(run.windows.Find(RES_SELECTED_PARTS_DIALOG), nullptr);
    }
}

TEST(OperatorRuns, ComeBackToWhereTheLastOneWas)
{
    COperatorRun run(SampleLibraries());
    const std::string servers = ServersFile("钣金件", "机箱\\面板", "inch", sample_servers, "1 1");
    Row row{"first",
            "place cursor 0 metric PART 24; unit inch; filter MARVEN; ask; sort; go 钣金件 机箱\\面板; select 面板1; "
            "load 2",
            "面板1 x2 钣金件|机箱\\面板 钣金件机箱面板 .iga .SY5 .NCD type 3",
            "钣金件机箱面板/面板1.NCD; 钣金件机箱面板/面板1.SY5; 钣金件机箱面板/面板1.iga",
            "",
            "start SetDisplayUnit RefreshPartList SetPartFilter go click count into staged2 leave",
            servers,
            OptionsFile(true, 3)};
    EXPECT_EQ(run.Play(run.object, true, row.steps), HostResult::Ok);
    Check(run, run.object, row);

    // Cancelled, so that nothing is written but the server list, which is as it was.
    run.recorder.lines.clear();
    run.Play(run.object, true, "place 钣金件 机箱\\面板 cursor 2 inch by thickness MARVEN 15 ask; cancel");
    row.files = "Lumora_ForPNG/; UnZipFolder/; " + row.files;
    row.calls = "SetCurrentFolder SetDisplayUnit RefreshPartList SetPartFilter SetServerList SetViewState MoveFocus "
                "ConnectServer SetCurrentServer SelectNextServer*2 folder leave";
    Check(run, run.object, row);

    // A server that has gone keeps its place.
    std::filesystem::remove(run.folder.Path("Libraries/钣金件.kpl"));
    run.Play(run.object, true, "place 钣金件 cursor 2 inch by thickness MARVEN 15 ask; cancel");
    EXPECT_EQ(run.Servers(), servers);
}

TEST(OperatorRuns, TwoObjectsShareFoldersAndSettingsAndNoRecords)
{
    COperatorRun run(SampleLibraries());
    PartkeepReadImpl second(run.services);
    EXPECT_EQ(run.Play(run.object, true, "go PLATES Brackets\\L; select BRK-1; ask; add 2; load"), HostResult::Ok);
    EXPECT_EQ(run.Play(second, false, "place PLATES Brackets\\L cursor 0 metric PART 24 ask; select BRK-1; load 3"),
              HostResult::Ok);
    EXPECT_EQ(run.Play(second, false, "cancel"), HostResult::False);
    EXPECT_EQ(run.Play(run.object, false, "ask; select BRK-2; load"), HostResult::Ok);
    const std::string staged = " PLATES|Brackets\\L PLATESBracketsL ";
    EXPECT_EQ(run.Records(run.object), Steps("BRK-1 x2" + staged + ".iga; BRK-2 x1" + staged + ".bmf"));
    EXPECT_EQ(run.Records(second), Lines{"BRK-1 x3" + staged + ".iga"});
    EXPECT_EQ(run.Options(), plain);
    EXPECT_EQ(run.Files(), (Lines{"PLATESBracketsL/BRK-1.iga", "PLATESBracketsL/BRK-2.bmf"}));
}

TEST(OperatorRuns, TellEachMessageInTheLanguageOfTheRun)
{
    const std::tuple<std::int32_t, std::string, std::string> languages[] = {
        {1, "Kolvyn PartkeepRead",
         "Please select one or more part.; Total number of selected parts exceeds the maximum limit of 256. Please "
         "select parts with total count less than or equal to 256.; The selected part P1 is already added to the "
         "list.; Part does not exist.; No IGA or BMF files found for the part.\n Part Name:P1"},
        {2, "Kolvyn Partkeep読み込み",
         "１つ以上の部品を選択してください。; 選択したパーツ総数は最大値範囲外になりました。パーツ256個以下を選択してく"
         "ださい。; 選択したパーツは P1 一覧表に追加されています。; 部品が存在しません。; "
         "IGA・BMFファイルが部品にありません。\n部品名称P1"},
        {3, "读取Kolvyn Partkeep",
         "选择一个或多个零件; 选中的零件的总数超过了最大限制数量256。在选择零件时请将选择的数量控制在256个之内。; "
         "所选的零件 P1 已经添加到了列表中。; 零件不存在; 未发现零件的IGA或BMF文件\n零件名称:P1"},
    };
    CTestLibraries libraries;
    FillEdges(libraries);
    for (const auto& [language, box_title, texts] : languages) {
        COperatorRun run(libraries.Folder().toStdString());
        run.object.SetLanguageID(language);
        run.Play(run.object, false,
                 "add; go EDGE Many; first 257; add; select P1; add; select P1; add; lose EDGEMany/P1.iga; "
                 "select P2 P3; delete P2; load");
        Lines expected;
        for (const std::string& text : Steps(texts)) {
            expected.push_back("'" + text + "' '" + box_title + "'");
        }
        EXPECT_EQ(run.Noted("message"), expected);
    }
}

TEST(OperatorRuns, ReachTheHostThroughTheCInterface)
{
    COperatorRun run(SampleLibraries());
    played = &run;
    const std::unique_ptr<partkeep_read, void (*)(partkeep_read*)> object(partkeep_read_create(),
                                                                          partkeep_read_destroy);
    partkeep_read_set_working_folder(object.get(), (run.folder.Path("Work").string() + "/").c_str());
    partkeep_read_set_language_id(object.get(), 1);
    run.Script("filter MARVEN; go 钣金件 机箱\\面板; select 面板1; load");
    EXPECT_EQ(partkeep_read_invoke(object.get()), PARTKEEP_READ_OK);
    run.Script("go PLATES Brackets\\L; select BRK-3 BRK-4; load");
    EXPECT_EQ(partkeep_read_invoke_multi_selection(object.get(), 1), PARTKEEP_READ_OK);

    std::int32_t count = 0;
    EXPECT_EQ(partkeep_read_number_of_parts_selected(object.get(), &count), PARTKEEP_READ_OK);
    EXPECT_EQ(count, 3);
    const std::string stem = run.folder.Path("Work/钣金件机箱面板/面板1").string();
    const std::string comment = "前面板 四边折弯 规格1";
    const std::string none = "(none)";
    char* out[10] = {};
    const auto taken = [&] {
        Lines texts;
        for (char*& text : out) {
            texts.emplace_back(text != nullptr ? text : none);
            partkeep_read_free(std::exchange(text, nullptr));
        }
        return texts;
    };
    std::int32_t type = 0;
    double thickness = 0.0;
    EXPECT_EQ(partkeep_read_get_part_info(object.get(), 0, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5],
                                          &out[6], &out[7], &out[8], &type, &thickness, &out[9]),
              PARTKEEP_READ_OK);
    EXPECT_EQ(taken(), (Lines{"钣金件", "机箱\\面板", stem + ".iga", stem + ".SY5", stem + ".NCD", "面板1", comment,
                              "冷轧钢板", "复合机-15", "1"}));
    EXPECT_EQ(type, 3);
    EXPECT_EQ(thickness, 1.2);
    EXPECT_EQ(
        partkeep_read_get_selected_part_info(object.get(), &out[0], &out[1], &out[2], &out[3], &thickness, &out[4]),
        PARTKEEP_READ_OK);
    EXPECT_EQ(partkeep_read_get_file_path(object.get(), &out[5]), PARTKEEP_READ_OK);
    EXPECT_EQ(taken(),
              (Lines{stem + ".iga", "面板1", comment, "冷轧钢板", "1", stem + ".iga", none, none, none, none}));
    EXPECT_EQ(partkeep_read_get_part_info(object.get(), 2, nullptr, nullptr, nullptr, nullptr, nullptr, &out[0],
                                          nullptr, nullptr, nullptr, &type, nullptr, nullptr),
              PARTKEEP_READ_OK);
    EXPECT_EQ(taken().front(), "BRK-4");
}

} // namespace
} // namespace partkeep
