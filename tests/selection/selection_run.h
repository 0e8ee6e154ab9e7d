// A selection dialog on scripted windows and a scripted browser, with real folders: what the tests of its
// operations start from.
#pragma once

#include "platform/memory_block.h"
#include "resources/resource_ids.h"
#include "selection/partkeep_read_dlg.h"
#include "tests/support/host_side.h"
#include "tests/support/scripted_control.h"
#include "tests/support/scripted_window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace partkeep {

// How many more blocks there is room for. The limit itself is the platform's.
inline std::size_t RoomForBlocks()
{
    std::vector<MemoryHandle> blocks;
    while (MemoryHandle block = AllocateBlock(1)) {
        blocks.push_back(block);
    }
    std::for_each(blocks.begin(), blocks.end(), FreeBlock);
    return blocks.size();
}

inline const std::string select_parts = "'Please select one or more part.'" + title;

class SelectionRun : public testing::Test {
protected:
    // Each run flushes files to the disk, and waiting for a real one is nearly all that these tests would do. In
    // memory the same calls are made.
    static void SetUpTestSuite()
    {
#ifndef _WIN32
        if (access("/dev/shm", W_OK) == 0) {
            setenv("TMPDIR", "/dev/shm", 0);
        }
#endif
    }

    SelectionRun()
    {
        TheProcessValues() = {folder.Core(u"Work\\"), 1};
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

    // What one action brought, in a run that is then cancelled.
    Lines LinesOf(const UserAction& action)
    {
        Lines lines;
        Run({[&](CScriptedWindow& window) { lines = LinesIn(window, action); }, user::Press(id_cancel)});
        return lines;
    }
    Lines LinesIn(CScriptedWindow& window, const UserAction& action)
    {
        recorder.lines.clear();
        action(window);
        return recorder.Take();
    }

    void WriteServers(const std::string& text)
    {
        WriteBytes(folder.Path("Install/kpdservers.ini"), text);
    }
    void WriteOptions(const std::string& leaves)
    {
        WriteBytes(folder.Path("Install/ZanPartkeepConfig.xml"), "<?xml version=\"1.0\"?><R>" + leaves + "</R>");
    }
    // The run begins in a folder of SRV1; "-9999" for none.
    void StartIn(const std::string& place)
    {
        WriteServers("SRV1\r\n" + place + "\r\nmetric\r\nSRV1\r\n-9999\r\n0\r\n");
    }

    void Select(const std::string& names)
    {
        browser.list.clear();
        std::istringstream words(names);
        for (std::string name; words >> name;) {
            browser.list.push_back({WidenText(name), u"SRV1", u"A\\B", 15000, u"SPCC", u"M1", u"comment", true});
        }
        browser.selection = browser.list;
    }

    // The browser calls that stage an entry.
    static std::string Named(int entry)
    {
        return "GetCurrentServer(); GetCurrentFolder(); GetSelectedPart(" + std::to_string(entry) + "); ";
    }
    static std::string Staged(int entry, const std::string& name, bool machine_too = false)
    {
        const std::string part = "'SRV1', 'A\\B\\" + name + "'";
        const std::string copy = "CopyPartFiles(" + part + "); ";
        return Named(entry) + Named(entry) + "ReadPartAttributes(" + part + ", '" + name + "'); SetDataKind(24); " +
               copy + (machine_too ? "SetDataKind(20); " + copy : "");
    }

    // In the next keypad; empty text cancels it.
    void Type(const std::u16string& quantity)
    {
        windows.Play(RES_QUANTITY_KEYPAD,
                     {user::Type(RES_QUANTITY, quantity), user::Press(quantity.empty() ? id_cancel : id_ok)});
    }

    // "name path quantity; " of each row in the list's window, and nothing without that window.
    [[nodiscard]] std::string Listed() const
    {
        std::u16string rows;
        if (const CScriptedWindow* list = windows.Find(RES_SELECTED_PARTS_DIALOG)) {
            for (const ScriptedRow& row : list->controls.at(RES_PART_LIST).rows) {
                rows += row.cells.at(0) + u" " + row.cells.at(1) + u" " + row.cells.at(2) + u"; ";
            }
        }
        return NarrowText(rows);
    }
    // "name quantity; " of each record that the host gets.
    [[nodiscard]] std::string Results() const
    {
        std::u16string names;
        for (const PartRecord& part : dialog->resultParts) {
            names += part.PartName + u" " + part.Qty + u"; ";
        }
        return NarrowText(names);
    }

    // Those of the lines that begin with the text.
    static Lines Only(Lines lines, const std::string& beginning)
    {
        std::erase_if(lines, [&](const std::string& line) { return !line.starts_with(beginning); });
        return lines;
    }
    static std::string Messages(const Lines& lines)
    {
        std::string texts;
        for (const std::string& line : Only(lines, "message ")) {
            texts += (texts.empty() ? "" : "|") + line.substr(8);
        }
        return texts;
    }

    const UserAction click = [this](CScriptedWindow&) { browser.FireClick(); };
    CHostFolders folder;
    Recorder recorder;
    ControlScript browser{recorder};
    ControlScript picture{recorder};
    CScriptedWindows windows{recorder};
    bool multiSelection = true;
    std::unique_ptr<CPartkeepReadDlg> dialog;
};

} // namespace partkeep
