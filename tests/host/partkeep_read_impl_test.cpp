#include "host/partkeep_read_impl.h"

#include "host/host_services.h"
#include "resources/resource_ids.h"
#include "settings/process_values.h"
#include "tests/support/memory_registry.h"
#include "tests/support/scripted_control.h"
#include "tests/support/scripted_window.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

class NoControls : public IHiddenControls {
public:
    std::unique_ptr<IHostedControl> CreateHidden(const ClassId&, std::int32_t, int, int) override { return nullptr; }
};

class HostObject : public testing::Test {
protected:
    HostObject()
    {
        std::filesystem::create_directories(folder.Path("Work"));
        std::filesystem::create_directories(folder.Path("Install"));
        registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core(u"Install"));
        windows.makeControl = [this](int id) { return id == RES_PICTURE ? nullptr : browser.MakeControl(); };
        browser.filesByKind = {{24, {u".iga"}}};
        object.SetWorkingFolder(folder.Core(u"Work") + u"\\");
        object.SetLanguageID(1);
    }
    ~HostObject() override { TheProcessValues() = {}; }

    // The next dialog is confirmed with these parts selected, or cancelled without any.
    void Play(std::vector<std::u16string> names)
    {
        windows.Play(RES_SELECTION_DIALOG, {[this, names](CScriptedWindow& window) {
                         browser.selection.clear();
                         for (const std::u16string& name : names) {
                             browser.selection.push_back({name, u"S", u"F", 32000, u"SUS", u"M", u"c", true});
                         }
                         window.PressButton(names.empty() ? id_cancel : RES_LOAD);
                     }});
    }

    std::u16string NameAt(std::int32_t index)
    {
        std::u16string name = u"before";
        EXPECT_EQ(object.GetPartInfo(index, nullptr, nullptr, nullptr, nullptr, nullptr, &name, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr),
                  HostResult::Ok);
        return name;
    }

    std::int32_t Count(IPartkeepReadImpl& host)
    {
        std::int32_t count = -1;
        EXPECT_EQ(host.NumberOfPartsSelected(&count), HostResult::Ok);
        return count;
    }

    CTemporaryFolder folder;
    Recorder recorder;
    ControlScript browser{recorder};
    CScriptedWindows windows{recorder};
    CMemoryRegistry registry;
    NoControls controls;
    HostServices services{registry, windows.messages, controls, windows};
    PartkeepReadImpl object{services};
};

TEST_F(HostObject, AnswersForAnEmptyList)
{
    std::u16string text = u"before";
    double thickness = 7.0;
    EXPECT_EQ(Count(object), 0);
    EXPECT_EQ(object.GetFilePath(&text), HostResult::False);
    EXPECT_EQ(object.GetSelectedPartInfo(&text, &text, &text, &text, &thickness, &text), HostResult::False);
    EXPECT_EQ(text, u"before");
    EXPECT_EQ(thickness, 7.0);
    EXPECT_EQ(NameAt(0), u"");
    EXPECT_EQ(object.NumberOfPartsSelected(nullptr), HostResult::Ok);
}

TEST_F(HostObject, RunsTheDialogAndKeepsWhatItBrings)
{
    struct Row {
        const char* label;
        std::optional<std::int32_t> allowed; // nothing: InvokePartkeep
        std::vector<std::u16string> selected;
        HostResult result;
        std::int32_t added;
    };
    const Row rows[] = {
        {"cancelled", {}, {}, HostResult::False, 0},          {"cancelled, several", 1, {}, HostResult::Ok, 0},
        {"confirmed", {}, {u"A1", u"A2"}, HostResult::Ok, 1}, {"several", 1, {u"B1", u"B2", u"B3"}, HostResult::Ok, 3},
        {"-1 is one", -1, {u"C1", u"C2"}, HostResult::Ok, 1}, {"2 is one", 2, {u"D1", u"D2"}, HostResult::Ok, 1},
    };
    std::int32_t count = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.label);
        Play(row.selected);
        EXPECT_EQ(row.allowed ? object.InvokePartkeepMultiSelection(*row.allowed) : object.InvokePartkeep(),
                  row.result);
        EXPECT_EQ(Count(object), count += row.added);
    }
    EXPECT_EQ(NameAt(0), u"A2");
    EXPECT_EQ(NameAt(3), u"B3");
    EXPECT_EQ(NameAt(count - 1), u"D2");
    for (const std::int32_t outside : {count, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(NameAt(outside), u"");
    }

    std::u16string file, name, comment, material, quantity;
    double thickness = 0.0;
    EXPECT_EQ(object.GetSelectedPartInfo(&file, &name, &comment, &material, &thickness, &quantity), HostResult::Ok);
    EXPECT_EQ(name + comment + material + quantity, u"A2cSUS1"); // the first record ever, not the latest
    EXPECT_TRUE(file.ends_with(u"\\A2.iga"));
    std::u16string first_file;
    EXPECT_EQ(object.GetFilePath(&first_file), HostResult::Ok);
    EXPECT_EQ(first_file, file);
    EXPECT_EQ(thickness, 3.2);

    std::u16string server, database_folder, sy, nc, machine;
    std::int32_t machine_type = -1;
    object.GetPartInfo(1, &server, &database_folder, &file, &sy, &nc, &name, &comment, &material, &machine,
                       &machine_type, &thickness, &quantity);
    EXPECT_EQ(name + server + machine + sy + nc, u"B1M");
    EXPECT_EQ(machine_type, 0);

    PartkeepReadImpl second(services);
    EXPECT_EQ(Count(second), 0);
    Play({u"E1"});
    EXPECT_EQ(second.InvokePartkeep(), HostResult::Ok);
    EXPECT_EQ(Count(second), 1);
    EXPECT_EQ(Count(object), count);
}

TEST_F(HostObject, WithoutAnInstallLocationOpensNothing)
{
    const CMemoryRegistry empty;
    PartkeepReadImpl nowhere({empty, windows.messages, controls, windows});
    EXPECT_EQ(nowhere.InvokePartkeep(), HostResult::False);
    EXPECT_EQ(nowhere.InvokePartkeepMultiSelection(1), HostResult::False);
    EXPECT_TRUE(recorder.lines.empty());
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("Work/UnZipFolder"))); // made all the same
}

TEST_F(HostObject, TroubleBecomesTheOperationsOwnResult)
{
    windows.canMakeWindows = false;
    EXPECT_EQ(object.InvokePartkeep(), HostResult::False);
    EXPECT_EQ(object.InvokePartkeepMultiSelection(1), HostResult::Ok);

    windows.canMakeWindows = true;
    windows.makeControl = [](int) -> std::unique_ptr<IHostedControl> { throw std::bad_alloc(); };
    EXPECT_EQ(object.InvokePartkeep(), HostResult::False);
    EXPECT_EQ(object.InvokePartkeepMultiSelection(1), HostResult::Ok);
    EXPECT_EQ(Count(object), 0);
}

TEST_F(HostObject, AReadThatFailsEmptiesItsOutputs)
{
    std::u16string text = u"before";
    double thickness = 7.0;
    EXPECT_EQ(object.ReadCADDataForTessara(u"S", u"F", u"P", u"", &text, &text, &text, &text, &thickness, &text),
              HostResult::False);
    EXPECT_EQ(text, u"");
    EXPECT_EQ(thickness, 0.0);
    EXPECT_EQ(object.ReadCADDataForTessara(u"", u"", u"", u"", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              HostResult::False);
}

} // namespace
} // namespace partkeep
