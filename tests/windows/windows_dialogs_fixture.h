// The three dialogs with real windows and real input, over the stand-in controls.
#pragma once

#include "resources/resource_ids.h"
#include "tests/support/host_side.h"
#include "tests/support/memory_registry.h"
#include "tests/windows/dialog_driver.h"
#include "tests/windows/stand_in.h"
#include "windows/hosted_control.h"
#include "windows/live_counts.h"
#include "windows/site_window.h"
#include "windows/win_dialog_window.h"
#include "windows/win_messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>

namespace partkeep {

inline constexpr wchar_t selection_title[] = L"Partkeep Read"; // the same in every language
inline constexpr wchar_t message_title[] = L"Kolvyn PartkeepRead";

// The host: a window that is active on the thread, the controls installed, a folder for everything.
class WindowsDialogs : public testing::Test {
protected:
    using Action = std::function<void()>;
    using User = std::function<void(DialogDriver&, HWND)>;

    WindowsDialogs()
    {
        SetWindowLongPtrW(host, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HostProcedure));
        RegisterSiteWindows(module);
        registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core());
        object.SetWorkingFolder(folder.Core(u"Work") + u"\\");
        object.SetLanguageID(1);
        SetActiveWindow(host);
    }
    ~WindowsDialogs() override
    {
        DestroyWindow(host);
        UnregisterSiteWindows(module);
        for (const std::string& line : stand_in.recorder.lines) {
            EXPECT_FALSE(line.ends_with("bad types")) << line << ", by the contract's table";
        }
        const auto& [windows_left, gdi_objects_left, com_objects_left] = TheLiveCounts();
        EXPECT_EQ((std::array<int, 4>{windows_left, gdi_objects_left, com_objects_left, stand_in.controls}),
                  (std::array<int, 4>{}));
    }

    void ClickRow(int row) const { DialogDriver::Click(stand_in.browserWindow, 5, row * StandIn::row_height + 2); }
    static LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM word, LPARAM value)
    {
        if (message == WM_APP) {
            (*reinterpret_cast<const Action*>(value))();
        }
        return message == WM_APP ? 0 : DefWindowProcW(window, message, word, value);
    }
    // On the thread of the dialogs, between two of their messages: what the user and they have in common.
    void Between(const Action& action) const
    {
        SendMessageTimeoutW(host, WM_APP, 0, reinterpret_cast<LPARAM>(&action), SMTO_NORMAL, 60000, nullptr);
    }
    [[nodiscard]] bool Called(const std::string& line) const
    {
        bool called = false;
        Between([&] { called = std::ranges::count(stand_in.recorder.lines, line) != 0; });
        return called;
    }
    HostResult Run(bool multi, const User& user)
    {
        const DialogDriver driver([&](DialogDriver& played) { user(played, played.Window(selection_title)); });
        return object.InvokePartkeepMultiSelection(multi ? 1 : 0);
    }

    HINSTANCE module = GetModuleHandleW(nullptr);
    StandIn stand_in;
    CHostFolders folder;
    HWND host = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200, nullptr,
                                nullptr, nullptr, nullptr);
    CMemoryRegistry registry;
    CThreadMessages messages;
    CHiddenControls controls{module};
    CWinDialogs windows{module};
    PartkeepReadImpl object{HostServices{registry, messages, controls, windows}};
};

} // namespace partkeep
