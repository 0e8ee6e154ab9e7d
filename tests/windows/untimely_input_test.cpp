// Input that waits in the thread's queue while the selection dialog is busy, and what befalls a run in the middle of
// a call of the browser. All input is posted from inside what keeps the dialog busy, so that it comes in a known
// order: presses of a mouse button to the window that they are for, keys to the host's window. As with real keys it
// is decided when they are taken out which window gets them, the one that has the focus by then.

#include "host/component/component_module.h"
#include "host/component/host_object.h"
#include "host/component/identity.h"
#include "platform/windows/wide_text.h"
#include "resources/resource_ids.h"
#include "tests/support/host_side.h"
#include "tests/support/untimely_input.h"
#include "tests/windows/stand_in.h"
#include "windows/com_ptr.h"
#include "windows/live_counts.h"
#include "windows/win_dialog_window.h"

#include <gtest/gtest.h>

#include <commctrl.h>
#include <olectl.h>

#include <array>
#include <map>
#include <optional>

namespace partkeep {
namespace {

constexpr UINT_PTR turn_timer = 1;
constexpr int most_turns = 200;

class UntimelyInput : public testing::Test {
protected:
    UntimelyInput()
    {
        test = this;
        MakeHost();
        TheModule().Start(GetModuleHandleW(nullptr));
        TheProcessValues() = {folder.Core(u"Work") + u"\\", 1};
        script.list.clear();
        for (const char16_t* name : {u"A", u"B", u"C"}) {
            script.list.push_back({name, u"SERVER1", u"FOLDER1", 15000, u"", u"", u"", true});
        }
        hook = SetWindowsHookExW(WH_GETMESSAGE, AddressKeys, nullptr, GetCurrentThreadId());
    }
    ~UntimelyInput() override
    {
        UnhookWindowsHookEx(hook);
        DestroyWindow(host);
        TheModule().End(false);
        CheckNothingIsLeft();
    }

    void MakeHost()
    {
        host = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200, nullptr,
                               nullptr, nullptr, nullptr);
        SetWindowLongPtrW(host, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(HostProcedure));
        SetActiveWindow(host);
    }
    static LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM word, LPARAM value)
    {
        if (message == WM_APP) {
            test->Begin();
        } else if (message == WM_TIMER) {
            test->Turn();
        }
        return DefWindowProcW(window, message, word, value);
    }
    static LRESULT CALLBACK AddressKeys(int code, WPARAM removes, LPARAM value)
    {
        MSG& message = *reinterpret_cast<MSG*>(value);
        const bool held = GetAsyncKeyState(VK_CONTROL) < 0;
        test->control_lost = test->control_lost || test->control.value_or(held) != held;
        if (removes == PM_REMOVE && message.message == WM_KEYDOWN && message.hwnd == test->host) {
            const bool in_list = test->first == Input::Remove || test->first == Input::DeleteKey;
            if ((in_list || test->first == Input::PutBack) && IsWindowEnabled(Dialog())) {
                SetActiveWindow(Dialog()); // keys in the list's window mean other things
            }
            message.hwnd = GetFocus() != nullptr ? GetFocus() : GetActiveWindow();
            if (message.wParam == VK_DELETE || message.wParam == 'Z') {
                message.hwnd = GetDlgItem(List(), RES_PART_LIST);
            }
            const bool control = message.wParam == 'A' || message.wParam == 'Z';
            std::array<BYTE, 256> keys{}; // by which a key becomes a character
            GetKeyboardState(keys.data());
            keys[VK_CONTROL] = control ? 0x80 : 0;
            SetKeyboardState(keys.data());
            // The screen's own view of the keyboard may still be on its way to a window that has just come.
            for (int attempt = 0; attempt < 100 && (GetAsyncKeyState(VK_CONTROL) < 0) != control; ++attempt) {
                keybd_event(VK_CONTROL, 0, control ? 0 : KEYEVENTF_KEYUP, 0);
            }
            test->control = control;
        }
        return CallNextHookEx(nullptr, code, removes, value);
    }

    void CheckNothingIsLeft() const
    {
        const auto& [windows_left, gdi_objects_left, com_objects_left] = TheLiveCounts();
        EXPECT_EQ((std::array<int, 4>{windows_left, gdi_objects_left, com_objects_left, stand_in.controls}),
                  (std::array<int, 4>{}));
        EXPECT_TRUE(TheModule().MayUnload());
    }

    static HWND Find(const wchar_t* title) { return FindWindowW(nullptr, title); }
    static HWND Dialog() { return Find(L"Partkeep Read"); }
    static HWND List() { return Find(L"Selected Parts"); }
    static void Press(HWND dialog, int button) { SendMessageW(GetDlgItem(dialog, button), BM_CLICK, 0, 0); }

    static void PostClick(HWND window, bool twice = false, int x = 5, int y = 5)
    {
        for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK}) {
            if (message == WM_LBUTTONDOWN || twice) {
                PostMessageW(window, message, MK_LBUTTON, MAKELPARAM(x, y));
                PostMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(x, y));
            }
        }
    }
    // Nothing for what only our own browser has.
    void Post(Input input) const
    {
        HWND dialog = Dialog();
        const std::map<Input, HWND> clicked = {{Input::DoubleClickOnOk, GetDlgItem(dialog, RES_LOAD)},
                                               {Input::Cancel, GetDlgItem(dialog, id_cancel)},
                                               {Input::Add, GetDlgItem(dialog, RES_ADD)},
                                               {Input::Remove, GetDlgItem(List(), RES_REMOVE)}};
        if (const auto key = keys.find(input); key != keys.end()) {
            PostMessageW(host, WM_KEYDOWN, key->second, 1);
        } else if (const auto window = clicked.find(input); window != clicked.end()) {
            PostClick(window->second, input == Input::DoubleClickOnOk);
        } else if (input == Input::CloseBox) {
            PostMessageW(dialog, WM_NCLBUTTONDOWN, HTCLOSE, 0);
            PostMessageW(dialog, WM_LBUTTONUP, 0, 0);
        } else if (input == Input::LaserTool) {
            HWND bar = FindWindowExW(dialog, nullptr, TOOLBARCLASSNAMEW, nullptr);
            RECT tool{};
            SendMessageW(bar, TB_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&tool));
            PostClick(bar, false, tool.left + 3, tool.top + 3);
        } else if (input == Input::Click) {
            PostMessageW(stand_in.browserWindow, WM_RBUTTONDOWN, MK_RBUTTON, 0);
        }
    }
    void PostPair()
    {
        if (!std::exchange(posted, true)) {
            Post(first);
            Post(second);
            pumped ? StandIn::Pump() : void();
        }
    }
    // A key that a control takes out by a loop of its own goes to a window that does nothing with it.
    [[nodiscard]] Input Counted(Input input) const { return pumped && keys.contains(input) ? Input::Click : input; }

    // The first thing that the dialog's loop does.
    virtual void Begin()
    {
        script.selection = {script.list[0]};
        Press(Dialog(), RES_ADD);
        LVITEMW selected{};
        selected.state = selected.stateMask = LVIS_SELECTED;
        SendMessageW(GetDlgItem(List(), RES_PART_LIST), LVM_SETITEMSTATE, 0, reinterpret_cast<LPARAM>(&selected));
        script.selection = {script.list[busy == Busy::Message ? 0 : 1]};
        SendMessageW(GetDlgItem(Dialog(), RES_ASK_QUANTITY), BM_SETCHECK, busy == Busy::Keypad ? 1 : 0, 0);
        const std::string call = busy == Busy::Click ? "ReadPartAttributes" : "CopyPartFiles";
        script.onCall = [this, call] { stand_in.recorder.lines.back().starts_with(call) ? PostPair() : void(); };
        SetTimer(host, turn_timer, 10, nullptr);
        busy == Busy::Click ? stand_in.fire(DISPID_CLICK) : Press(Dialog(), busy == Busy::Load ? RES_LOAD : RES_ADD);
    }
    // Once the queue is empty, in whatever loop runs by then.
    virtual void Turn()
    {
        HWND box = Find(L"Kolvyn PartkeepRead");
        HWND keypad = Find(L"Input Quantity");
        if (++turns > most_turns) {
            ADD_FAILURE() << "never ends";
            EndDialog(box, IDOK);
            DestroyWindow(Dialog());
        } else if (!posted) {
            keypad != nullptr ? SetDlgItemTextW(keypad, RES_QUANTITY, L"7") : TRUE;
            box != nullptr || keypad != nullptr ? PostPair() : void();
        } else if (box != nullptr) {
            PostMessageW(box, WM_COMMAND, IDOK, 0);
        } else {
            PostMessageW(GetDlgItem(keypad != nullptr ? keypad : Dialog(), keypad != nullptr ? RES_OK : RES_LOAD),
                         BM_CLICK, 0, 0);
        }
    }

    std::string Outcome()
    {
        posted = false;
        turns = 0;
        control = {};
        control_lost = false;
        SetActiveWindow(host);
        PostMessageW(host, WM_APP, 0, 0);
        std::string outcome = PlayedOutcome(windows, folder);
        KillTimer(host, turn_timer);
        script.onCall = nullptr;
        stand_in.recorder.lines.clear();
        EXPECT_TRUE(IsWindowEnabled(host));
        return outcome;
    }

    static inline const std::map<Input, WPARAM> keys = {{Input::Enter, VK_RETURN},
                                                        {Input::Escape, VK_ESCAPE},
                                                        {Input::SelectAll, 'A'},
                                                        {Input::DeleteKey, VK_DELETE},
                                                        {Input::PutBack, 'Z'}};
    static inline UntimelyInput* test = nullptr;
    StandIn stand_in;
    ControlScript& script = stand_in.script;
    CHostFolders folder;
    HWND host = nullptr;
    HHOOK hook = nullptr;
    CWinDialogs windows{GetModuleHandleW(nullptr)};
    Busy busy = Busy::Load;
    Input first = Input::Enter;
    Input second = Input::Enter;
    bool pumped = false; // the control takes out what waits while it is called
    bool posted = false;
    int turns = 0;
    std::optional<bool> control; // as it was left for the last key
    bool control_lost = false;   // the screen lets it up in a window that it has just made the active one
};

TEST_F(UntimelyInput, HasItsOneOutcome)
{
    for (int row = 0; row < busy_count * input_count * input_count * 2; ++row) {
        busy = static_cast<Busy>(row / 2 / input_count / input_count);
        first = static_cast<Input>(row / 2 / input_count % input_count);
        second = static_cast<Input>(row / 2 % input_count);
        pumped = row % 2 != 0;
        const bool called = busy != Busy::Keypad && busy != Busy::Message;
        const bool of_closed_control = first < Input::DoubleClick && second < Input::DoubleClick;
        if (!IsPlayed(first, second) || !of_closed_control || (pumped && (!called || first != second))) {
            continue; // the model has the other pairs
        }
        const std::string expected = CUntimelyRun::Outcome(busy, Counted(first), Counted(second));
        std::string outcome = Outcome();
        for (int again = 0; again < 9 && outcome != expected && control_lost; ++again) {
            outcome = Outcome();
        }
        EXPECT_EQ(outcome, expected) << UntimelyRow(busy, first, second) << (pumped ? ", pumped" : "");
    }
}

// A run that comes by every call of the browser, with an event at one of them.
class EventInACall : public UntimelyInput {
protected:
    EventInACall()
    {
        const std::wstring install = WideText(folder.Core(u"Install"));
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, installation, L"installpath", REG_SZ, install.c_str(),
                        static_cast<DWORD>((install.size() + 1) * sizeof(wchar_t)));
    }
    ~EventInACall() override { RegDeleteKeyW(HKEY_LOCAL_MACHINE, installation); }

    void Begin() override
    {
        SetTimer(host, turn_timer, 10, nullptr); // for messages, and to leave what is still open
        script.selection = {script.list[0]};
        stand_in.fire(DISPID_CLICK);
        Press(Dialog(), RES_ADD);
        script.selection = {script.list[1]};
        Press(Dialog(), RES_LOAD);
    }
    void Turn() override
    {
        HWND box = Find(L"Kolvyn PartkeepRead");
        PostMessageW(box != nullptr ? box : Dialog(), WM_COMMAND, box != nullptr ? IDOK : IDCANCEL, 0);
    }

    // Gives the number of calls.
    int RunWith(const std::function<void()>& event, int at)
    {
        int calls = 0;
        int inside = 0;
        script.onCall = [&] {
            EXPECT_LE(++inside, 1 + closing) << "a call inside a call";
            ++calls == at ? event() : void();
            --inside;
        };
        closing = 0;
        SetActiveWindow(host);
        EXPECT_EQ(CHostObject::Create(nullptr, host_interface_id, object.PutVoid()), S_OK);
        PostMessageW(host, WM_APP, 0, 0);
        ::IPartkeepReadImpl* called = object.Get();
        EXPECT_EQ(called->InvokePartkeepMultiSelection(1), S_OK);
        KillTimer(host, turn_timer);
        script.onCall = nullptr;
        stand_in.recorder.lines.clear();
        parts = 0;
        object ? object->NumberOfPartsSelected(&parts) : S_FALSE;
        object.Reset();
        CheckNothingIsLeft();
        return calls;
    }

    static constexpr wchar_t installation[] = L"software\\Velmar\\ORVIC";
    CComPtr<::IPartkeepReadImpl> object;
    LONG parts = 0;
    int closing = 0; // the close-down runs inside the call, too
};

TEST_F(EventInACall, LeavesTheRunWhole)
{
    const int calls = RunWith([] {}, 0);
    ASSERT_GT(calls, 30);
    ASSERT_EQ(parts, 2);
    const std::tuple<const char*, LONG, std::function<void()>> rows[]{
        {"click", 2, [this] { stand_in.fire(DISPID_CLICK); }},
        {"cancel", -1, [] { SendMessageW(Dialog(), WM_COMMAND, IDCANCEL, 0); }},
        {"close", -1, [] { SendMessageW(Dialog(), WM_CLOSE, 0, 0); }},
        {"the owner goes", -1,
         [this] {
             closing = 1;
             DestroyWindow(host);
         }},
        {"quit", -1, [] { PostQuitMessage(7); }},
        {"release", 0, [this] { object.Reset(); }},
        {"refusal", -1, [this] { stand_in.callStatus = E_FAIL; }}};
    for (const auto& [name, expected, event] : rows) {
        for (int at = 1; at <= calls; ++at) {
            SCOPED_TRACE(name + std::string(" at call ") + std::to_string(at));
            RunWith(event, at);
            EXPECT_TRUE(expected < 0 || parts == expected) << parts;
            MSG message{};
            const bool quits = PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0;
            EXPECT_EQ(quits ? message.wParam : 0, name == std::string("quit") ? 7U : 0U);
            EXPECT_TRUE(!IsWindow(host) || IsWindowEnabled(host));
            IsWindow(host) ? void() : MakeHost();
            ASSERT_FALSE(HasFailure());
        }
    }
}

} // namespace
} // namespace partkeep
