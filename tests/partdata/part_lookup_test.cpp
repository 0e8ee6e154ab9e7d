#include "partdata/part_lookup.h"

#include "platform/text.h"
#include "settings/process_values.h"
#include "tests/support/scripted_control.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

std::string Naming(int index)
{
    return "GetCurrentServer(); GetCurrentFolder(); GetSelectedPart(" + std::to_string(index) + "); ";
}

const std::string gone = "message 'Part does not exist.' 'Kolvyn PartkeepRead'";

const PartRecord old{u"file", u"part", u"", u"", u"", u"", u"", 0.5, u"", u"", u"", u"", 7};

class PartLookup : public testing::Test {
protected:
    PartLookup()
    {
        TheProcessValues() = {folder_.Core(u""), 1};
        browser_.Attach(script_.MakeControl());
        script_.currentServer = u"SRV";
        script_.currentFolder = u"A\\B";
        script_.targetFolder = folder_.Core(u"");
        script_.selection = {{u"P1", u"own server", u"own folder", -1, u"SPCC", u"M1", u"note"},
                             {},
                             {u"P3", u"", u"", 0, u"", u"", u"", false}};
    }

    CTemporaryFolder folder_; // both working and staging folder
    Recorder recorder_;
    ControlScript script_{recorder_};
    CRecordingMessages messages_{recorder_};
    CKPDKeyManager browser_;
    std::u16string currentServer_ = u"old server";
    std::u16string lookupFolder_ = u"old folder";
    MachineFilterState filter_;
    CPartLookup lookup_{browser_, messages_, {currentServer_, lookupFolder_, filter_}};
    PartRecord record_ = old;
};

TEST_F(PartLookup, StagingCopiesOnceForThePartAndOnceForItsMachine)
{
    for (const int kind : {-1, 24, 20, 10, 15}) {
        filter_ = {3, static_cast<std::int16_t>(kind)};
        ASSERT_TRUE(lookup_.StagePart(0, folder_.Core(), u"007", record_));
        const std::string copy = "CopyPartFiles('SRV', 'A\\B\\P1'); ";
        const std::string second = kind < 0 || kind == 24 ? "" : "SetDataKind(" + std::to_string(kind) + "); " + copy;
        EXPECT_EQ(recorder_.Take(),
                  Steps(Naming(0) + "ReadPartAttributes('SRV', 'A\\B\\P1', 'P1'); SetDataKind(24); " + copy + second));
        EXPECT_EQ(record_, (PartRecord{u"", u"P1", u"note", u"SPCC", u"SRV", u"A\\B", folder_.Core(), -0.0001, u"007",
                                       u"", u"M1", u"", 3}));
    }
    EXPECT_EQ(currentServer_ + u"|" + lookupFolder_, u"SRV|A\\B");
}

TEST_F(PartLookup, PartWithoutAttributesIsStagedAndOneWithoutNameIsNot)
{
    EXPECT_FALSE(lookup_.QueryPartInfo(u"SRV", u"A\\B", u"P3", record_));
    recorder_.lines.clear();
    EXPECT_FALSE(lookup_.StagePart(1, u"F", u"1", record_));
    lookup_.DeleteSelectedPartFiles(1);
    EXPECT_EQ(recorder_.Take(), Steps(Naming(1) + gone + "; " + Naming(1) + gone));
    EXPECT_EQ(record_, old);

    ASSERT_TRUE(lookup_.StagePart(2, u"F", u"1", record_));
    EXPECT_EQ(record_, (PartRecord{u"", u"P3", u"", u"", u"SRV", u"A\\B", u"F", 0.0, u"1", u"", u"", u"", 0}));
    browser_.Detach(); // without a browser no entry has a name
    EXPECT_TRUE(lookup_.IsPartListed(0, {}, CPartLookup::WhenListed::TellUser));
    EXPECT_FALSE(lookup_.StagePart(0, u"F", u"1", record_));
}

TEST_F(PartLookup, NarrowTextIsInTheSystemsCodePage)
{
    SetSystemCodePage(shift_jis_code_page);
    // The first character holds the byte of a backslash. Where the page cannot be chosen, what it holds has to do.
    const std::u16string name = WidenText(NarrowText(u"\u8868\u793A"));
    script_.selection[0].name = script_.selection[0].comment = name;
    EXPECT_TRUE(lookup_.StagePart(0, u"F", u"1", record_));
    EXPECT_EQ(record_.PartName + record_.PartComment, name + name);
    SetSystemCodePage(utf8_code_page);
}

} // namespace
} // namespace partkeep
