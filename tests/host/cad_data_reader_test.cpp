#include "host/cad_data_reader.h"

#include "platform/files.h"
#include "settings/process_values.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_control.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

class CScriptedHiddenControls : public IHiddenControls {
public:
    CScriptedHiddenControls(ControlScript& script, bool available) : script_(script), available_(available) {}

    std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id, int width,
                                                 int height) override
    {
        EXPECT_EQ(class_id, part_browser_class_id);
        EXPECT_EQ(control_id, 0xB79D3E);
        EXPECT_EQ(width, 100);
        EXPECT_EQ(height, 100);
        return available_ ? script_.MakeControl() : nullptr;
    }

private:
    ControlScript& script_;
    bool available_;
};

struct ReadCase {
    const char* label;
    bool available = true;
    bool connects = true;
    bool part_exists = true;
    bool copies = true;
    std::vector<std::u16string> files = {u".iga"};
    bool read = true;
    std::u16string found_extension = u".iga"; // of FilePathName; empty: none found
    std::size_t calls = 6;                    // of the full sequence
    std::string message = {};
};

class CadDataReader : public testing::Test {
protected:
    CadDataReader() { TheProcessValues().languageId = 1; }
    ~CadDataReader() override { TheProcessValues() = {}; }

    bool Read(const ReadCase& row, PartRecord& record)
    {
        CTemporaryFolder folder;
        working_folder_ = folder.Core(u"");
        ControlScript script(recorder_);
        if (row.part_exists) {
            script.list.push_back({u"P1", u"SRV", u"A\\B", 15000, u"SPCC", u"M1", u"a comment", true});
        }
        script.On(BrowserOperation::ConnectServer, ControlResult(static_cast<std::int16_t>(row.connects ? -1 : 0)));
        script.filesByKind[24] = row.files;
        if (!row.copies) {
            script.On(BrowserOperation::CopyPartFiles, ControlResult(std::int16_t{0}));
        }
        script.selection = script.list;
        CScriptedHiddenControls controls(script, row.available);
        CRecordingMessages messages(recorder_);
        CCADDataReader reader(working_folder_, controls, messages);
        const bool read = reader.ReadCADData(u"SRV", u"A\\B", u"P1", u"anything", record);
        EXPECT_EQ(script.controls, 0) << "the browser outlived the read";
        return read;
    }

    Recorder recorder_;
    std::u16string working_folder_;
};

TEST_F(CadDataReader, CallsTheBrowserInItsOrderAndReportsAsTold)
{
    const std::string title = " 'Kolvyn PartkeepRead'";
    const std::string not_started = "message 'Partkeep cannot be started' 'Kolvyn' exclamation";
    const std::string not_connected = "message 'Server could not be connected.'" + title;
    const std::string no_files = "message 'No IGA or BMF files found for the part.\n Part Name:P1'" + title;
    const ReadCase cases[] = {
        {.label = "read"},
        {.label = "iga wins", .files = {u".bmf", u".iga"}},
        {.label = "bmf alone", .files = {u".bmf"}, .found_extension = u".bmf"},
        {.label = "no main file", .files = {u".SY5", u".NCD"}, .found_extension = u"", .message = no_files},
        {.label = "no control", .available = false, .read = false, .calls = 0, .message = not_started},
        {.label = "no server", .connects = false, .read = false, .calls = 1, .message = not_connected},
        {.label = "no such part", .part_exists = false, .read = false, .calls = 5},
        {.label = "copy refused", .copies = false, .read = false},
    };
    for (const ReadCase& row : cases) {
        SCOPED_TRACE(row.label);
        PartRecord record;
        record.PartName = u"before";
        EXPECT_EQ(Read(row, record), row.read);

        std::vector<std::string> expected = {"ConnectServer('SRV')",
                                             "SetDataKind(24)",
                                             "SetCurrentFolder('A\\B')",
                                             "SetTargetFolder(" + Quoted(working_folder_) + ")",
                                             "ReadPartAttributes('SRV', 'A\\B\\P1', 'P1')",
                                             "CopyPartFiles('SRV', 'A\\B\\P1')"};
        expected.resize(row.calls);
        if (!row.message.empty()) {
            expected.push_back(row.message);
        }
        EXPECT_EQ(recorder_.Take(), expected);

        PartRecord wanted;
        wanted.PartName = u"before";
        if (row.read) {
            wanted.PartName = u"P1";
            wanted.FilePathName = row.found_extension.empty() ? u"" : working_folder_ + u"P1" + row.found_extension;
            wanted.PartComment = u"a comment";
            wanted.MaterialType = u"SPCC";
            wanted.Thickness = 15000.0; // undivided
            wanted.Qty = u"1";
        }
        EXPECT_EQ(record, wanted);
    }
}

} // namespace
} // namespace partkeep
