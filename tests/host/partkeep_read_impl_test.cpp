#include "host/partkeep_read_impl.h"

#include "host/host_services.h"
#include "tests/selection/selection_run.h"
#include "tests/support/failing_memory.h"
#include "tests/support/memory_registry.h"

namespace partkeep {
namespace {

class HostObject : public SelectionRun, public IHiddenControls {
protected:
    HostObject()
    {
        TheProcessValues() = {}; // the object sets them
        registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core(u"Install"));
        browser.currentServer = browser.currentFolder = u""; // which the browser may leave out
        browser.filesByKind = {{24, {u".iga", u".SY5", u".NCD"}}};
        object.SetWorkingFolder(folder.Core(u"Work") + u"\\");
        object.SetLanguageID(1);
    }

    std::unique_ptr<IHostedControl> CreateHidden(const ClassId& class_id, std::int32_t control_id, int width,
                                                 int height) override
    {
        EXPECT_EQ(class_id, part_browser_class_id);
        EXPECT_EQ(std::tuple(control_id, width, height), std::tuple(0xB79D3E, 100, 100));
        return has_control ? browser.MakeControl() : nullptr;
    }

    // The next dialog is confirmed with these parts selected, or cancelled without any.
    void Play(const std::vector<std::u16string>& names)
    {
        const auto work = [this, names](CScriptedWindow& window) {
            browser.selection.clear();
            for (const std::u16string& name : names) {
                browser.selection.push_back({name, u"S", u"F", 32000, u"SUS", u"M", u"c", true});
            }
            window.PressButton(names.empty() ? id_cancel : RES_LOAD);
        };
        windows.Play(RES_SELECTION_DIALOG, {work});
    }

    CMemoryRegistry registry;
    bool has_control = true;
    HostServices services{registry, windows.messages, *this, windows};
    PartkeepReadImpl object{services};
};

TEST_F(HostObject, BeginsEmptyRunsTheDialogAndKeepsWhatItBrings)
{
    std::u16string text = u"before";
    double thickness = 7.0;
    EXPECT_EQ(CountOf(object), 0);
    EXPECT_EQ(object.GetFilePath(&text), HostResult::False);
    EXPECT_EQ(object.GetSelectedPartInfo(&text, &text, &text, &text, &thickness, &text), HostResult::False);
    EXPECT_EQ(text, u"before");
    EXPECT_EQ(thickness, 7.0);
    EXPECT_EQ(Told(RecordOf(object, 0)), Told({}));
    EXPECT_EQ(object.NumberOfPartsSelected(nullptr), HostResult::Ok);
    const std::tuple<const char*, std::optional<std::int32_t>, std::vector<std::u16string>, HostResult, std::int32_t>
        rows[] = {
            {"cancelled", {}, {}, HostResult::False, 0},
            {"cancelled, several", 1, {}, HostResult::Ok, 0},
            {"confirmed", {}, {u"A1", u"A2"}, HostResult::Ok, 1},
            {"several", 1, {u"B1", u"B2", u"B3"}, HostResult::Ok, 3},
            {"-1 is one", -1, {u"C1", u"C2"}, HostResult::Ok, 1},
            {"2 is one", 2, {u"D1", u"D2"}, HostResult::Ok, 1},
        };
    std::int32_t count = 0;
    for (const auto& [label, allowed, selected, result, added] : rows) { // allowed nothing: InvokePartkeep
        SCOPED_TRACE(label);
        Play(selected);
        EXPECT_EQ(allowed ? object.InvokePartkeepMultiSelection(*allowed) : object.InvokePartkeep(), result);
        EXPECT_EQ(CountOf(object), count += added);
    }
    const auto name = [this](std::int32_t index) { return RecordOf(object, index).PartName; };
    EXPECT_EQ(name(0) + name(3) + name(count - 1), u"A2B3D2");
    for (const std::int32_t outside : {count, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(Told(RecordOf(object, outside)), Told({}));
    }

    PartRecord first; // ever, not the latest
    EXPECT_EQ(object.GetSelectedPartInfo(&first.FilePathName, &first.PartName, &first.PartComment, &first.MaterialType,
                                         &first.Thickness, &first.Qty),
              HostResult::Ok);
    const std::string stem = NarrowText(folder.Core(u"Work\\\\A2."), utf8_code_page);
    EXPECT_EQ(Told(first), "||" + stem + "iga|||A2|c|SUS||1|3.2|0");
    EXPECT_EQ(Told(RecordOf(object, 0)), "||" + stem + "iga|" + stem + "SY5|" + stem + "NCD|A2|c|SUS|M|1|3.2|0");
    EXPECT_EQ(object.GetFilePath(&text), HostResult::Ok);
    EXPECT_EQ(text, first.FilePathName);
    for (const auto& [index, told] : {std::pair(0, u"A2"), {count, u""}}) { // null is passed over
        EXPECT_EQ(object.GetPartInfo(index, nullptr, nullptr, nullptr, nullptr, nullptr, &text, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr),
                  HostResult::Ok);
        EXPECT_EQ(text, told);
    }
    failing_memory::allocations_left = 1;
    EXPECT_EQ(Told(RecordOf(object, 0)), Told({})) << "as out of range";
}

TEST_F(HostObject, TroubleBecomesTheOperationsOwnResult)
{
    windows.makeControl = [](int) -> std::unique_ptr<IHostedControl> { throw std::bad_alloc(); };
    for (const bool opens : {false, true}) {
        windows.canMakeWindows = opens;
        EXPECT_EQ(object.InvokePartkeep(), HostResult::False);
        EXPECT_EQ(object.InvokePartkeepMultiSelection(1), HostResult::Ok);
    }

    registry.keys.clear(); // not installed: nothing opens
    recorder.lines.clear();
    std::filesystem::remove(folder.Path("Work/UnZipFolder"));
    EXPECT_EQ(object.InvokePartkeep(), HostResult::False);
    EXPECT_EQ(object.InvokePartkeepMultiSelection(1), HostResult::False);
    EXPECT_EQ(recorder.lines, Lines{});
    EXPECT_EQ(CountOf(object), 0);
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("Work/UnZipFolder"))); // made all the same
}

TEST_F(HostObject, ReadsAPartWithoutADialog)
{
    const std::u16string work = folder.Core(u"Work\\");
    const std::string sequence = "ConnectServer('SRV'); SetDataKind(24); SetCurrentFolder('A\\B'); SetTargetFolder(" +
                                 Quoted(work) + "); ReadPartAttributes('SRV', 'A\\B\\P1', 'P1'); " +
                                 "CopyPartFiles('SRV', 'A\\B\\P1')";
    // The operation refused, the extensions copied, that of the file path, and how many calls of the sequence come.
    constexpr auto none = BrowserOperation::SelectAllParts; // no read calls it
    const std::tuple<const char*, BrowserOperation, const char*, const char16_t*, std::size_t, bool, std::string>
        rows[] = {
            {"read", none, ".iga", u".iga", 6, true, ""},
            {"iga wins", none, ".bmf; .iga", u".iga", 6, true, ""},
            {"bmf alone", none, ".bmf", u".bmf", 6, true, ""},
            {"no main file", none, ".SY5; .NCD", nullptr, 6, true, "message " + no_files + "P1'" + title},
            {"no server", BrowserOperation::ConnectServer, "", u"", 1, false,
             "message 'Server could not be connected.'" + title},
            {"no such part", BrowserOperation::ReadPartAttributes, "", u"", 5, false, ""},
            {"copy refused", BrowserOperation::CopyPartFiles, "", u"", 6, false, ""},
            {"no control", none, "", u"", 0, false, "message 'Partkeep cannot be started' 'Kolvyn' exclamation"},
        };
    Play({u"A1"});
    EXPECT_EQ(object.InvokePartkeep(), HostResult::Ok);
    const auto answers = browser.answers;
    browser.selection = {{u"P1", u"", u"", 15000, u"SPCC", u"M1", u"a comment"}};
    for (const auto& [label, refused, files, found, calls, read, message] : rows) {
        SCOPED_TRACE(label);
        std::filesystem::remove_all(folder.Path("Work"));
        std::filesystem::create_directory(folder.Path("Work"));
        browser.answers = answers;
        browser.On(refused, ControlResult(std::int16_t{0}));
        browser.filesByKind[24].clear();
        for (const std::string& extension : Steps(files)) {
            browser.filesByKind[24].push_back(WidenText(extension));
        }
        has_control = calls != 0;
        recorder.lines.clear();
        std::u16string file = u"before", name = file, comment = file, material = file, quantity = file;
        double thickness = 7.0;
        EXPECT_EQ(object.ReadCADDataForTessara(u"SRV", u"A\\B", u"P1", u"anything", &file, &name, &comment, &material,
                                               &thickness, &quantity),
                  read ? HostResult::Ok : HostResult::False);
        Lines expected = Steps(sequence);
        expected.resize(calls);
        if (!message.empty()) {
            expected.push_back(message);
        }
        EXPECT_EQ(recorder.Take(), expected);
        EXPECT_EQ(file, read && found != nullptr ? work + u"P1" + found : u"");
        EXPECT_EQ(name + u"|" + comment + u"|" + material + u"|" + quantity, read ? u"P1|a comment|SPCC|1" : u"|||");
        EXPECT_EQ(thickness, read ? 15000.0 : 0.0); // undivided
        EXPECT_EQ(CountOf(object), 1);
        EXPECT_EQ(browser.controls, 0) << "the browser outlived the read";
    }
    EXPECT_EQ(object.ReadCADDataForTessara(u"", u"", u"", u"", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              HostResult::False);
}

} // namespace
} // namespace partkeep
