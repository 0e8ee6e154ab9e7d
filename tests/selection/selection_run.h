// A selection dialog on scripted windows and a scripted browser, with real folders: what the tests of its
// operations start from.
#pragma once

#include "platform/memory_block.h"
#include "platform/text.h"
#include "resources/resource_ids.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/process_values.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_control.h"
#include "tests/support/scripted_window.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace partkeep {

// Each run flushes files to the disk, and waiting for a real one is nearly all that these tests would do. In memory
// the same calls are made.
inline void KeepFoldersInMemory()
{
#ifndef _WIN32
    if (std::filesystem::is_directory("/dev/shm")) {
        setenv("TMPDIR", "/dev/shm", 0);
    }
#endif
}

// How many more blocks there is room for. The limit itself is the platform's.
inline std::size_t RoomForBlocks()
{
    std::vector<MemoryHandle> blocks;
    while (MemoryHandle block = AllocateBlock(1)) {
        blocks.push_back(block);
    }
    for (MemoryHandle block : blocks) {
        FreeBlock(block);
    }
    return blocks.size();
}

class SelectionRun : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    static void SetUpTestSuite() { KeepFoldersInMemory(); }

    SelectionRun()
    {
        std::filesystem::create_directories(folder.Path("Work"));
        std::filesystem::create_directories(folder.Path("Install"));
        TheProcessValues() = {folder.Core(u"Work") + u"\\", 1};
        windows.makeControl = [this](int id) {
            return id == RES_PICTURE ? picture.MakeControl() : browser.MakeControl();
        };
        browser.currentServer = u"SRV1";
        browser.currentFolder = u"A\\B";
        for (const auto ignored : {BrowserOperation::SetCurrentServer, BrowserOperation::SetCurrentFolder}) {
            browser.On(ignored, ControlResult()); // the user stays where the test has put him
        }
        browser.filesByKind = {{24, {u".iga"}}, {20, {u".NCD"}}};
    }
    ~SelectionRun() override { TheProcessValues() = {}; }

    // Runs a dialog through the user's actions and gives its modal result. The recorder then holds what came.
    int Run(std::vector<UserAction> actions)
    {
        dialog = std::make_unique<CPartkeepReadDlg>(windows);
        dialog->installFolder = folder.Core(u"Install");
        dialog->workingFolder = TheProcessValues().workingFolder;
        dialog->multiSelection = multiSelection;
        windows.Play(RES_SELECTION_DIALOG, std::move(actions));
        return dialog->DoModal();
    }

    // What one action in a run that is then cancelled brought.
    Lines LinesOf(const UserAction& action)
    {
        Lines lines;
        Run({[&](CScriptedWindow& window) {
                 recorder.lines.clear();
                 action(window);
                 lines = recorder.Take();
             },
             user::Press(id_cancel)});
        return lines;
    }

    void Select(std::initializer_list<const char16_t*> names)
    {
        browser.list.clear();
        for (const char16_t* name : names) {
            browser.list.push_back({name, u"SRV1", u"A\\B", 15000, u"SPCC", u"M1", u"comment", true});
        }
        browser.selection = browser.list;
    }

    void SelectMany(int count)
    {
        browser.list.clear();
        for (int number = 0; number < count; ++number) {
            browser.list.push_back(
                {u"P" + WidenText(std::to_string(number)), u"SRV1", u"A\\B", 0, u"", u"", u"", true});
        }
        browser.selection = browser.list;
    }

    // Those of the lines that begin with the text.
    static Lines Only(const Lines& lines, const std::string& beginning)
    {
        Lines kept;
        std::copy_if(lines.begin(), lines.end(), std::back_inserter(kept),
                     [&](const std::string& line) { return line.starts_with(beginning); });
        return kept;
    }

    [[nodiscard]] static std::string Messages(const Lines& lines)
    {
        std::string texts;
        for (const std::string& line : Only(lines, "message ")) {
            texts += (texts.empty() ? "" : "|") + line.substr(8);
        }
        return texts;
    }

    CTemporaryFolder folder;
    Recorder recorder;
    ControlScript browser{recorder};
    ControlScript picture{recorder};
    CScriptedWindows windows{recorder};
    bool multiSelection = true;
    std::unique_ptr<CPartkeepReadDlg> dialog;
};

} // namespace partkeep
