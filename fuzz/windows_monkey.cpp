// Random input for the real dialog on Windows, over controls that are played: windows_monkey ACTIONS [FIRST]. Clicks,
// keys and commands come several at a time, at any window of the thread, also from inside calls of the browser, which
// refuses calls now and then, and fires and takes out messages by itself. A run of the dialog is a game of about a
// hundred actions, then the host's records are looked at, and nothing may be left. The first game in which something
// does not hold ends the program and tells its last actions.
#include "fuzz/monkey_records.h"
#include "host/partkeep_read_impl.h"
#include "resources/resource_ids.h"
#include "settings/process_values.h"
#include "tests/support/memory_registry.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/stand_in.h"
#include "windows/hosted_control.h"
#include "windows/live_counts.h"
#include "windows/site_window.h"
#include "windows/win_dialog_window.h"
#include "windows/win_messages.h"

#include <commctrl.h>
#include <olectl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <iostream>
#include <random>
#include <set>
#include <thread>

namespace partkeep {
namespace {

constexpr UINT_PTR turn_timer = 1;
constexpr int actions_of_a_game = 100;
constexpr int most_actions_to_leave = 200;
constexpr auto longest_pause = std::chrono::seconds(120);

std::atomic<long> game = 0;
std::deque<std::string> last_actions;

BOOL CALLBACK AddVisible(HWND window, LPARAM windows)
{
    IsWindowVisible(window) ? reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window) : void();
    return TRUE;
}

// The visible windows of the dialog's thread, the topmost first.
std::vector<HWND> VisibleWindows()
{
    static const DWORD thread = GetCurrentThreadId();
    std::vector<HWND> windows;
    EnumThreadWindows(thread, AddVisible, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

[[noreturn]] void Fail(const std::string& what)
{
    std::cerr << "game " << game << " does not hold: " << what << "\n";
    for (const std::string& action : last_actions) {
        std::cerr << "  " << action << "\n";
    }
    for (HWND window : VisibleWindows()) {
        std::array<char, 80> text{};
        GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
        std::cerr << "open: \"" << text.data() << "\"" << (IsWindowEnabled(window) ? "" : ", disabled") << "\n";
    }
    std::cerr.flush();
    std::_Exit(1);
}

void Require(bool holds, const char* what)
{
    holds ? void() : Fail(what);
}

void Note(std::string action)
{
    last_actions.push_back(std::move(action));
    last_actions.size() > 24 ? last_actions.pop_front() : void();
}

class CMonkey {
public:
    CMonkey()
    {
        monkey = this;
        SetWindowLongPtrW(host_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HostProcedure));
        RegisterSiteWindows(module_);
        std::filesystem::create_directory(folder_.Path("Work"));
        registry_.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder_.Core());
        script_.filesByKind = {{part_data_kind, {u".iga"}}, {4, {u".SY5"}}, {2, {u".NCD"}}};
        for (char16_t number = 0; number < 300; ++number) {
            const std::u16string name{u'P', static_cast<char16_t>(u'0' + number / 100),
                                      static_cast<char16_t>(u'0' + number / 10 % 10),
                                      static_cast<char16_t>(u'0' + number % 10)};
            script_.list.push_back({name, u"SERVER1", u"FOLDER1", 15000, u"SPCC", u"", u"", number % 17 != 0});
        }
        script_.onCall = [this] { InACall(); };
    }
    ~CMonkey()
    {
        DestroyWindow(host_);
        UnregisterSiteWindows(module_);
        TheProcessValues() = {};
    }
    CMonkey(const CMonkey&) = delete;
    CMonkey& operator=(const CMonkey&) = delete;

    long Play()
    {
        random_.seed(static_cast<unsigned>(game));
        actions_ = 0;
        script_.selection.clear();
        TheProcessValues() = {folder_.Core(u"Work") + u"\\", static_cast<std::int32_t>(game % 3)};
        PartkeepReadImpl object{HostServices{registry_, messages_, controls_, windows_}};
        SetTimer(host_, turn_timer, 5, nullptr);
        object.InvokePartkeepMultiSelection(game % 5 == 0 ? 0 : 1);
        KillTimer(host_, turn_timer);
        stand_in_.recorder.lines.clear();
        const auto& [windows_left, gdi_left, com_left] = TheLiveCounts();
        Require(windows_left == 0 && gdi_left == 0 && com_left == 0 && stand_in_.controls == 0, "nothing is left");
        Require(IsWindowEnabled(host_) && VisibleWindows().size() == 1,
                "the host's window alone is there, and enabled");
        CheckRecords(object);
        return actions_;
    }
    [[nodiscard]] long Parts() const { return parts_; }
    [[nodiscard]] long Turns() const { return turns_; }

private:
    static LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM word, LPARAM value)
    {
        if (message == WM_TIMER) {
            monkey->Turn();
        }
        return DefWindowProcW(window, message, word, value);
    }

    unsigned Below(std::size_t limit) { return static_cast<unsigned>(random_() >> 8) % static_cast<unsigned>(limit); }

    static HWND Find(const wchar_t* title) { return FindWindowW(nullptr, title); }
    static HWND Dialog() { return Find(L"Partkeep Read"); }
    // A window that is none of ours.
    static HWND Message()
    {
        for (HWND window : VisibleWindows()) {
            std::array<wchar_t, 16> name{};
            GetClassNameW(window, name.data(), static_cast<int>(name.size()));
            const bool ours = GetDlgItem(window, RES_ADD) != nullptr || GetDlgItem(window, RES_REMOVE) != nullptr ||
                              GetDlgItem(window, RES_QUANTITY) != nullptr;
            if (std::wstring_view(name.data()) == L"#32770" && !ours) {
                return window;
            }
        }
        return nullptr;
    }
    static HWND WithControl(int id)
    {
        for (HWND window : VisibleWindows()) {
            if (GetDlgItem(window, id) != nullptr) {
                return window;
            }
        }
        return nullptr;
    }

    // The queue is empty: a timer's message comes last of all.
    void Turn()
    {
        ++turns_;
        if (inside_ > 0 || Dialog() == nullptr) {
            return;
        }
        Require(actions_ < actions_of_a_game + most_actions_to_leave, "a dialog can be left");
        if (actions_ >= actions_of_a_game) {
            ++actions_;
            Leave();
            return;
        }
        for (unsigned left = 1 + Below(4); left > 0; --left) {
            ++actions_;
            Act();
        }
    }
    void Leave()
    {
        HWND keypad = WithControl(RES_QUANTITY);
        if (Message() != nullptr) {
            PostMessageW(Message(), WM_COMMAND, IDOK, 0);
        } else if (keypad != nullptr) {
            PostMessageW(keypad, WM_COMMAND, IDCANCEL, 0);
        } else {
            const bool loads = game % 4 != 0 && actions_ < actions_of_a_game + 20;
            PostMessageW(GetDlgItem(Dialog(), loads ? RES_LOAD : IDCANCEL), BM_CLICK, 0, 0);
        }
    }

    // The control's own doings, while it is called.
    void InACall()
    {
        Require(++inside_ <= 2, "no call comes inside a call, but when the run is closed in it");
        const unsigned choice = Below(60);
        if (choice < 6) {
            ++actions_;
            Act();
        }
        if (choice < 3) {
            StandIn::Pump();
        } else if (choice < 5) {
            stand_in_.fire(DISPID_CLICK);
        } else if (choice == 6) {
            stand_in_.callStatus = E_FAIL;
        }
        --inside_;
    }

    void Act()
    {
        const unsigned choice = Below(100);
        if (choice < 25) {
            return Key();
        }
        if (choice < 45) {
            return Select();
        }
        if (choice < 75) {
            static constexpr int ids[] = {RES_ADD,          RES_ADD,        RES_ASK_QUANTITY, RES_UNIT,
                                          RES_FILTER_LASER, RES_FILTER_NCT, RES_FILTER_PART,  RES_REMOVE};
            static constexpr int while_asked[] = {RES_OK, RES_OK, RES_DIGIT_0, RES_DIGIT_7, RES_DIGIT_00, id_cancel};
            const bool asked = WithControl(RES_QUANTITY) != nullptr;
            const int id = asked ? while_asked[Below(std::size(while_asked))] : ids[Below(std::size(ids))];
            HWND window = WithControl(id);
            Note("button " + std::to_string(id));
            PostMessageW(window == nullptr ? Dialog() : GetDlgItem(window, id),
                         window == nullptr ? WM_COMMAND : BM_CLICK, window == nullptr ? static_cast<WPARAM>(id) : 0, 0);
            return;
        }
        if (choice < 97) {
            return Click();
        }
        Odd();
    }

    void Key()
    {
        static constexpr WORD keys[] = {VK_RETURN, VK_ESCAPE, VK_TAB,  VK_TAB, VK_SPACE, VK_UP, VK_DOWN,   VK_LEFT,
                                        VK_RIGHT,  VK_HOME,   VK_END,  VK_F4,  VK_PRIOR, '0',   VK_DELETE, '1',
                                        '7',       '9',       VK_BACK, 'A',    'Z',      'P',   VK_F1,     VK_NEXT};
        const WORD key = keys[Below(std::size(keys))];
        HWND focus = GetFocus() != nullptr ? GetFocus() : GetActiveWindow();
        const bool leaves =
            (key == VK_RETURN || key == VK_ESCAPE) && Message() == nullptr && WithControl(RES_QUANTITY) == nullptr;
        if (leaves && Below(10) != 0) {
            return;
        }
        Note("key " + std::to_string(key));
        std::array<BYTE, 256> state{}; // by which a key becomes a character or a command
        state[VK_CONTROL] = Below(4) == 0 ? 0x80 : 0;
        state[VK_SHIFT] = Below(6) == 0 ? 0x80 : 0;
        SetKeyboardState(state.data());
        PostMessageW(focus, WM_KEYDOWN, key, 1);
        PostMessageW(focus, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    }

    // What an operator does in the browser, which tells of it, or does not.
    void Select()
    {
        const std::size_t count = Below(30) == 0 ? 257 : Below(4);
        script_.selection.clear();
        for (std::size_t i = 0, first = Below(script_.list.size()); i < count; ++i) {
            script_.selection.push_back(script_.list[(first + i * (1 + count % 3)) % script_.list.size()]);
        }
        Note("select " + std::to_string(count));
        if (stand_in_.browserWindow != nullptr && Below(4) != 0) {
            PostMessageW(stand_in_.browserWindow, WM_RBUTTONDOWN, MK_RBUTTON, 0);
            stand_in_.fire(DISPID_CLICK);
        }
    }

    void Click()
    {
        const std::vector<HWND> windows = VisibleWindows();
        HWND window = Below(3) != 0 ? windows[0] : windows[Below(windows.size())];
        std::vector<HWND> all{window};
        EnumChildWindows(window, AddVisible, reinterpret_cast<LPARAM>(&all));
        HWND target = all[Below(all.size())];
        if (!IsWindowEnabled(window) || window == host_) {
            return; // the system gives it no mouse
        }
        RECT area{};
        GetClientRect(target, &area);
        const auto x = static_cast<int>(Below(static_cast<std::size_t>(std::max(1L, area.right))));
        const auto y = static_cast<int>(Below(static_cast<std::size_t>(std::max(1L, area.bottom))));
        Note("click " + std::to_string(GetDlgCtrlID(target)) + " at " + std::to_string(x) + ", " + std::to_string(y));
        const LPARAM place = MAKELPARAM(x, y);
        PostMessageW(target, WM_MOUSEMOVE, 0, place);
        PostMessageW(target, WM_LBUTTONDOWN, MK_LBUTTON, place);
        PostMessageW(target, WM_LBUTTONUP, 0, place);
        if (Below(5) == 0) {
            PostMessageW(target, WM_LBUTTONDBLCLK, MK_LBUTTON, place);
            PostMessageW(target, WM_LBUTTONUP, 0, place);
        }
    }

    // What comes seldom, or from other programs.
    void Odd()
    {
        static constexpr UINT messages[] = {WM_SYSCOLORCHANGE, WM_SETTINGCHANGE, WM_DISPLAYCHANGE,
                                            WM_CANCELMODE,     WM_CLOSE,         WM_THEMECHANGED,
                                            WM_FONTCHANGE,     WM_NCPAINT,       WM_PAINT};
        const UINT message = messages[Below(std::size(messages))];
        const std::vector<HWND> windows = VisibleWindows();
        HWND window = windows[Below(windows.size())];
        if (window != host_ && (message != WM_CLOSE || Below(3) == 0)) {
            Note("message " + std::to_string(message));
            PostMessageW(window, message, 0, 0);
        }
    }

    void CheckRecords(PartkeepReadImpl& object)
    {
        std::int32_t count = 0;
        object.NumberOfPartsSelected(&count);
        std::set<std::u16string> seen; // a server whose name was refused is another one
        for (std::int32_t i = 0; i < count; ++i) {
            PartRecord part;
            object.GetPartInfo(i, &part.serverName, &part.folderName, &part.FilePathName, nullptr, nullptr,
                               &part.PartName, nullptr, nullptr, nullptr, nullptr, nullptr, &part.Qty);
            Require(seen.insert(part.serverName + u'\\' + part.folderName + u'\\' + part.PartName).second,
                    "a part is loaded once");
            Require(std::any_of(script_.list.begin(), script_.list.end(),
                                [&](const ScriptedPart& listed) { return listed.name == part.PartName; }),
                    "a loaded part is one that was listed");
            Require(IsQuantity(part.Qty), "a quantity is one");
            Require(GetFileAttributesW(reinterpret_cast<const wchar_t*>(part.FilePathName.c_str())) !=
                        INVALID_FILE_ATTRIBUTES,
                    "a loaded part has its file");
        }
        parts_ += count;
    }

    static inline CMonkey* monkey = nullptr;
    HINSTANCE module_ = GetModuleHandleW(nullptr);
    StandIn stand_in_;
    ControlScript& script_ = stand_in_.script;
    CTemporaryFolder folder_;
    HWND host_ = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200, nullptr,
                                 nullptr, nullptr, nullptr);
    CMemoryRegistry registry_;
    CThreadMessages messages_;
    CHiddenControls controls_{module_};
    CWinDialogs windows_{module_};
    std::mt19937 random_;
    long actions_ = 0;
    long parts_ = 0;
    std::atomic<long> turns_ = 0;
    int inside_ = 0;
};

void PlayAll(long wanted, long first)
{
    CMonkey monkey;
    const std::jthread watch([&monkey](const std::stop_token& over) {
        long turns = -1;
        for (auto since = std::chrono::steady_clock::now(); !over.stop_requested();
             std::this_thread::sleep_for(std::chrono::milliseconds(100))) {
            if (turns != monkey.Turns()) {
                turns = monkey.Turns();
                since = std::chrono::steady_clock::now();
            }
            std::chrono::steady_clock::now() - since > longest_pause ? Fail("the dialog's thread goes on") : void();
        }
    });
    long actions = 0;
    for (game = first; actions < wanted; ++game) {
        actions += monkey.Play();
    }
    std::cout << game - first << " games, " << actions << " actions, " << monkey.Parts() << " parts loaded, no fault\n";
}

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    partkeep::PlayAll(argc > 1 ? std::atol(argv[1]) : 1000, argc > 2 ? std::atol(argv[2]) : 0);
}
