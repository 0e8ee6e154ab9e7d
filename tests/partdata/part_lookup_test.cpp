#include "partdata/part_lookup.h"

#include "platform/text.h"
#include "settings/process_values.h"
#include "tests/partdata/shown_message.h"
#include "tests/support/scripted_control.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace partkeep {
namespace {

using Lines = std::vector<std::string>;

class PartLookup : public testing::Test {
protected:
    PartLookup()
    {
        TheProcessValues() = {u"", 1};
        browser_.Attach(script_.MakeControl());
        script_.currentServer = u"SRV";
        script_.currentFolder = u"A\\B";
        script_.selection = {{u"P1", u"own server", u"own folder", 15000, u"SPCC", u"M1", u"note"},
                             {u"", u"", u""},
                             {u"P3", u"", u"", 0, u"", u"", u"", false}};
    }

    Recorder recorder_;
    ControlScript script_{recorder_};
    CRecordingMessages messages_{recorder_};
    CKPDKeyManager browser_;
    std::u16string currentServer_ = u"old server";
    std::u16string lookupFolder_ = u"old folder";
    MachineFilterState filter_;
    CPartLookup lookup_{browser_, messages_, {currentServer_, lookupFolder_, filter_}};
};

const Lines naming{"GetCurrentServer()", "GetCurrentFolder()"};

Lines Naming(int index, const Lines& more = {})
{
    Lines lines = naming;
    lines.push_back("GetSelectedPart(" + std::to_string(index) + ")");
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

PartRecord Listed(std::u16string name, std::u16string server, std::u16string folder)
{
    PartRecord record;
    record.PartName = std::move(name);
    record.serverName = std::move(server);
    record.folderName = std::move(folder);
    return record;
}

TEST_F(PartLookup, StagingCopiesOnceForThePartAndOnceForItsMachine)
{
    const struct {
        std::int16_t kind;
        int copies;
    } rows[] = {{-1, 1}, {24, 1}, {20, 2}, {10, 2}, {15, 2}};
    for (const auto& row : rows) {
        filter_ = {3, row.kind};
        PartRecord record;
        ASSERT_TRUE(lookup_.StagePart(0, u"no such folder", u"007", record));
        Lines expected = Naming(
            0, {"ReadPartAttributes('SRV', 'A\\B\\P1', 'P1')", "SetDataKind(24)", "CopyPartFiles('SRV', 'A\\B\\P1')"});
        if (row.copies == 2) {
            expected.push_back("SetDataKind(" + std::to_string(row.kind) + ")");
            expected.push_back("CopyPartFiles('SRV', 'A\\B\\P1')");
        }
        EXPECT_EQ(recorder_.Take(), expected) << row.kind;
        const PartRecord whole{u"", u"P1",  u"note", u"SPCC", u"SRV", u"A\\B", u"no such folder",
                               1.5, u"007", u"",     u"M1",   u"",    3};
        EXPECT_EQ(record, whole);
    }
}

TEST_F(PartLookup, PartWithoutAttributesIsStagedAllTheSame)
{
    PartRecord record = Listed(u"old", u"old", u"old");
    record.SYFileName = u"old";
    ASSERT_TRUE(lookup_.StagePart(2, u"F", u"1", record));
    PartRecord expected = Listed(u"P3", u"SRV", u"A\\B");
    expected.stagingFolder = u"F";
    expected.Qty = u"1";
    EXPECT_EQ(record, expected);
}

TEST_F(PartLookup, OldCopiesMakeWayOnceBeforeTheNewOnes)
{
    const CTemporaryFolder folder;
    script_.targetFolder = folder.Core(u"");
    script_.filesByKind = {{24, {u".iga"}}, {20, {u".NCD"}}};
    filter_ = {1, 20};
    for (const char* name : {"P1.iga", "P1.bmf", "P1.SY5", "P3.iga"}) {
        WriteBytes(folder.Path(name), "old");
    }
    PartRecord record;
    ASSERT_TRUE(lookup_.StagePart(0, folder.Core(), u"1", record));
    EXPECT_EQ(NamesIn(folder.Path()), (Lines{"P1.NCD", "P1.SY5", "P1.iga", "P3.iga"}));
    EXPECT_EQ(ReadBytes(folder.Path("P1.iga")), "24");

    TheProcessValues().workingFolder = folder.Core(u"");
    lookup_.DeleteSelectedPartFiles(0);
    EXPECT_EQ(NamesIn(folder.Path()), (Lines{"P1.SY5", "P3.iga"}));
}

TEST_F(PartLookup, NarrowTextIsInTheSystemsCodePage)
{
    const CodePage page = SystemCodePage();
    SetSystemCodePage(shift_jis_code_page);
    // The first character holds the byte of a backslash. Where the page can't be chosen, what it holds has to do.
    const std::u16string name = WidenText(NarrowText(u"\u8868\u793A"));
    script_.selection[0].name = name;
    script_.selection[0].comment = name + u"2";
    PartRecord record;
    EXPECT_TRUE(lookup_.StagePart(0, u"F", u"1", record));
    EXPECT_EQ(record.PartName, name);
    EXPECT_EQ(record.PartComment, name + u"2");
    SetSystemCodePage(page);
}

TEST_F(PartLookup, EntryWithoutNameIsNotStaged)
{
    PartRecord record = Listed(u"old", u"old", u"old");
    EXPECT_FALSE(lookup_.StagePart(1, u"F", u"1", record));
    EXPECT_EQ(record, Listed(u"old", u"old", u"old"));
    EXPECT_EQ(recorder_.Take(), Naming(1, {Shown(LoadLocalString(LocalString::PartDoesNotExist))}));
    lookup_.DeleteSelectedPartFiles(1);
    EXPECT_EQ(recorder_.Take(), Naming(1, {Shown(LoadLocalString(LocalString::PartDoesNotExist))}));
}

TEST_F(PartLookup, OnlyNameServerAndFolderMakeAPartListed)
{
    const std::string told =
        Shown(LoadLocalString(LocalString::TheSelectedPart) + u" P1 " + LoadLocalString(LocalString::IsAlreadyAdded));
    const struct {
        const char* label;
        std::int16_t index;
        std::list<PartRecord> list;
        bool listed;
        Lines messages;
    } rows[] = {
        {"empty list", 0, {}, false, {}},
        {"no name, empty list", 1, {}, true, {}},
        {"same", 0, {Listed(u"X", u"SRV", u"A\\B"), Listed(u"P1", u"SRV", u"A\\B")}, true, {told}},
        {"other case", 0, {Listed(u"p1", u"SRV", u"A\\B")}, false, {}},
        {"other server", 0, {Listed(u"P1", u"own server", u"A\\B")}, false, {}},
        {"other folder", 0, {Listed(u"P1", u"SRV", u"own folder")}, false, {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(lookup_.IsPartListed(row.index, row.list, true), row.listed) << row.label;
        EXPECT_EQ(recorder_.Take(), Naming(row.index, row.messages)) << row.label;
        EXPECT_EQ(lookup_.IsPartListed(row.index, row.list, false), row.listed) << row.label;
        EXPECT_EQ(recorder_.Take(), Naming(row.index)) << row.label;
    }
    EXPECT_EQ(currentServer_, u"SRV");
    EXPECT_EQ(lookupFolder_, u"A\\B");
}

TEST_F(PartLookup, ThicknessIsInTenThousandths)
{
    for (const auto& [stored, expected] : {std::pair{15000, 1.5}, {-1, -0.0001}, {0, 0.0}}) {
        script_.selection[0].thickness = stored;
        PartRecord record;
        ASSERT_TRUE(lookup_.QueryPartInfo(u"S", u"F", u"P1", record));
        EXPECT_EQ(record.Thickness, expected);
    }
    PartRecord record = Listed(u"kept", u"kept", u"kept");
    record.PartComment = u"kept";
    const PartRecord before = record;
    EXPECT_FALSE(lookup_.QueryPartInfo(u"S", u"F", u"P3", record));
    EXPECT_EQ(record, before);
}

// A browser that fills its buffers to the last byte and ends no text.
TEST_F(PartLookup, UnendedTextsAreCutAtTheBuffers)
{
    const auto fill = [](ControlScript::Arguments arguments, std::size_t position) {
        std::memset(std::get<void*>(arguments[position].value), 'x', long_text_bytes);
    };
    script_.On(BrowserOperation::GetSelectedPart, [fill](ControlScript::Arguments arguments) {
        fill(arguments, 3);
        return ControlResult{std::int32_t{0}};
    });
    script_.On(BrowserOperation::ReadPartAttributes, [fill](ControlScript::Arguments arguments) {
        for (const std::size_t position : {6U, 7U, 8U, 11U}) {
            fill(arguments, position);
        }
        return ControlResult{std::int16_t{-1}};
    });
    PartRecord record;
    ASSERT_TRUE(lookup_.StagePart(0, u"F", u"1", record));
    const std::u16string longest(long_text_bytes - 1, u'x');
    EXPECT_EQ(record.PartName, longest);
    EXPECT_EQ(record.MaterialType, longest);
    EXPECT_EQ(record.MachineName, longest);
    EXPECT_EQ(record.PartComment, longest);
}

TEST_F(PartLookup, WithoutABrowserNoEntryHasAName)
{
    browser_.Detach();
    PartRecord record;
    EXPECT_TRUE(lookup_.IsPartListed(0, {}, true));
    EXPECT_FALSE(lookup_.StagePart(0, u"F", u"1", record));
    EXPECT_FALSE(lookup_.QueryPartInfo(u"S", u"F", u"P1", record));
}

} // namespace
} // namespace partkeep
