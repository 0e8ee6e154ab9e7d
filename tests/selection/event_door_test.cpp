// Events that come when nobody expects them, and what fails in the middle of them: on the model of the windows, where
// anything may come at any moment.

#include "selection/event_guards.h"
#include "tests/selection/selection_run.h"
#include "tests/support/failing_memory.h"
#include "tests/support/untimely_input.h"

#include <deque>

namespace partkeep {
namespace {

constexpr KeyPress enter_key{key_return, false, false};

class EventDoor : public SelectionRun {
protected:
    // To the window that has the keys, whatever lies over it.
    void Give(CScriptedWindow& window, Input input)
    {
        if (!window.Exists()) {
            return;
        }
        CScriptedWindow* keypad = windows.Find(RES_QUANTITY_KEYPAD);
        CScriptedWindow& keys = keypad != nullptr ? *keypad : window;
        switch (input) {
        case Input::Enter:
            return keys.PressKey(enter_key);
        case Input::Escape:
            return keys.PressKey({key_escape, false, false});
        case Input::SelectAll:
            return keys.PressKey({key_a, true, false});
        case Input::DoubleClickOnOk:
            window.Events().OnCommand(RES_LOAD);
            return window.Events().OnCommand(RES_LOAD);
        case Input::Cancel:
        case Input::CloseBox:
            return window.Events().OnCommand(id_cancel);
        case Input::Add:
        case Input::Drop:
            return window.Events().OnCommand(RES_ADD);
        case Input::Remove:
        case Input::DeleteKey:
        case Input::PutBack:
            if (CScriptedWindow* list = windows.Find(RES_SELECTED_PARTS_DIALOG)) { // gone after a cancel
                input == Input::Remove      ? list->Events().OnCommand(RES_REMOVE)
                : input == Input::DeleteKey ? list->PressKey({key_delete, false, false})
                                            : list->PressKey({key_z, true, false});
            }
            return;
        case Input::DoubleClick:
            browser.FireClick();
            return window.Events().OnCommand(RES_CHOOSE_PART);
        case Input::LaserTool:
            return window.Events().OnCommand(RES_FILTER_LASER);
        case Input::Click:
            return browser.FireClick();
        }
    }
    void GiveAll(CScriptedWindow& window)
    {
        while (!pending.empty() && window.Exists()) {
            const Input input = pending.front();
            pending.pop_front();
            Give(window, input);
        }
    }

    // `pumped`: the control hands the input on while it is asked; else it waits for the dialog's own loop, and for
    // that of a message.
    void PlayOut(Busy busy, bool pumped, CScriptedWindow& window)
    {
        Select("A");
        Give(window, Input::Add);
        windows.Find(RES_SELECTED_PARTS_DIALOG)->SelectRows(RES_PART_LIST, {0});
        Select(busy == Busy::Message ? "A" : "B");
        const auto selection = browser.selection;
        Select("A B C");
        browser.selection = selection;
        windows.messages.whileOpen = [this, &window] { GiveAll(window); };
        browser.onCall = [this, busy, pumped, &window] {
            pumped&& recorder.lines.back().starts_with(busy == Busy::Click ? "ReadPart" : "Copy") ? GiveAll(window)
                                                                                                  : void();
        };
        window.controls[RES_ASK_QUANTITY].check = busy == Busy::Keypad ? 1 : 0;
        windows.Play(RES_QUANTITY_KEYPAD, {[&](CScriptedWindow& keypad) {
                         keypad.TypeText(RES_QUANTITY, u"7");
                         GiveAll(window);
                         keypad.Ended() ? void() : keypad.PressKey(enter_key);
                     }});
        Give(window, busy == Busy::Load ? Input::Enter : busy == Busy::Click ? Input::Click : Input::Add);
        GiveAll(window);
        window.controls[RES_ASK_QUANTITY].check = 0;
        if (!window.Ended()) {
            Give(window, Input::Enter);
        }
    }

    // A run that comes by every browser call and every handler.
    std::vector<UserAction> WholeRun()
    {
        return {[this](CScriptedWindow& window) {
            Select("A B");
            browser.FireClick();
            window.controls[RES_ASK_QUANTITY].check = 1;
            Type(u"5");
            Give(window, Input::Add);
            if (CScriptedWindow* list = windows.Find(RES_SELECTED_PARTS_DIALOG)) {
                list->SelectRows(RES_PART_LIST, {1});
                Type(u"6");
                list->Events().OnCommand(RES_CHANGE_QUANTITY);
            }
            Select("C");
            Type(u"7");
            Give(window, Input::Enter);
            window.Ended() ? void() : Give(window, Input::Cancel);
        }};
    }
    // Whatever came in between: nothing is left over, and no settings file is half an old and half a new one.
    void CheckWhatIsLeft(int result)
    {
        EXPECT_TRUE(windows.existing.empty());
        EXPECT_EQ(browser.controls + picture.controls, 0);
        EXPECT_EQ(windows.disabledOwners, 0);
        dialog.reset();
        EXPECT_EQ(RoomForBlocks(), room);
        const std::string servers = ReadBytes(folder.Path("Install/kpdservers.ini"));
        const bool follows_clicks = servers == new_servers || servers == unclicked_servers;
        EXPECT_TRUE(servers == old_servers || follows_clicks) << servers;
        const std::string options = ReadBytes(folder.Path("Install/ZanPartkeepConfig.xml"));
        EXPECT_TRUE(options == old_options || (result == id_ok && options.find(">true</") != std::string::npos));
    }
    int RunWhole(std::size_t failing_allocation = 0)
    {
        WriteBytes(folder.Path("Install/kpdservers.ini"), old_servers);
        WriteBytes(folder.Path("Install/ZanPartkeepConfig.xml"), old_options);
        windows.scripts.clear();
        recorder.lines.clear();
        browser.images = {{"2D", "x"}, {"3D", "y"}, {"PNG", "z"}};
        int result = id_cancel;
        try {
            auto actions = WholeRun();
            failing_memory::allocations_left = failing_allocation;
            result = Run(std::move(actions));
        } catch (const std::bad_alloc&) { // of the windows themselves: the host object's to take
        }
        failing_memory::allocations_left = 0;
        browser.onCall = nullptr;
        return result;
    }

    std::deque<Input> pending;
    const std::size_t room = RoomForBlocks();
    const std::string old_servers = "OLD\r\nX\r\ninch\r\nOLD\r\n-9999\r\n0\r\n";
    const std::string new_servers = "SRV1\r\nA\\B\r\ninch\r\nOLD\r\n-9999\r\n0\r\n";
    const std::string unclicked_servers = "SRV1\r\nX\r\ninch\r\nOLD\r\n-9999\r\n0\r\n";
    const std::string old_options = "<?xml version=\"1.0\"?><R/>";
};

TEST_F(EventDoor, UntimelyInputHasItsOneOutcome)
{
    for (int row = 0; row < busy_count * input_count * input_count * 2; ++row) {
        const auto busy = static_cast<Busy>(row / 2 / input_count / input_count);
        const auto first = static_cast<Input>(row / 2 / input_count % input_count);
        const auto second = static_cast<Input>(row / 2 % input_count);
        if (!IsPlayed(first, second)) {
            continue;
        }
        SCOPED_TRACE(UntimelyRow(busy, first, second) + (row % 2 == 0 ? "" : ", pumped"));
        windows.scripts.clear();
        pending = {first, second};
        windows.Play(RES_SELECTION_DIALOG, {[&](CScriptedWindow& window) { PlayOut(busy, row % 2 != 0, window); }});
        EXPECT_EQ(PlayedOutcome(windows, folder), CUntimelyRun::Outcome(busy, first, second));
        browser.onCall = nullptr;
        windows.messages.whileOpen = nullptr;
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(EventDoor, AWindowThatFailsTakesBackNothingThatIsDecided)
{
    for (const auto& [input, result] : {std::pair(Input::Enter, id_ok), std::pair(Input::Click, id_cancel)}) {
        EXPECT_EQ(Run({[&, &input = input](CScriptedWindow& window) {
                      Select("A");
                      Give(window, input);
                      throw std::bad_alloc();
                  }}),
                  result);
    }
    EXPECT_TRUE(windows.existing.empty());
    browser.On(BrowserOperation::GetServerList, [](auto) -> ControlResult { throw std::bad_alloc(); });
    recorder.lines.clear();
    EXPECT_EQ(Run({[](CScriptedWindow& window) { window.Destroy(); }}), id_cancel);
    EXPECT_EQ(Only(recorder.Take(), "101: EndModal"), Lines{}) << "what goes needs no end";
}

TEST_F(EventDoor, AKeyThatIsTakenOrRefusedGoesNoFurther)
{
    Run({[this](CScriptedWindow& window) {
             recorder.lines.clear();
             window.PressKey({key_a, true, false});
             EXPECT_EQ(recorder.Take(), Lines{"SelectAllParts(1)"});
             window.controls[RES_ASK_QUANTITY].check = 1;
             Select("A");
             windows.Play(RES_QUANTITY_KEYPAD, {[&](CScriptedWindow& keypad) {
                              recorder.lines.clear();
                              window.PressKey({'B', false, false}); // which comes late, to a window that is covered
                              EXPECT_EQ(recorder.Take(), Lines());
                              keypad.PressKey({key_escape, false, false});
                          }});
             Give(window, Input::Add);
         },
         user::Press(id_cancel)});
}

TEST_F(EventDoor, KeepsOneClickAndNoMoreInputThanAPersonGives)
{
    Select("A");
    int given = 0;
    browser.onCall = [&] {
        for (; given > 0; --given) {
            Give(*windows.Find(RES_SELECTION_DIALOG), Input::SelectAll);
            browser.FireClick();
        }
    };
    const Lines lines = LinesOf([&](CScriptedWindow&) {
        given = 40;
        browser.FireClick();
    });
    EXPECT_EQ(Only(lines, "SelectAllParts(1)").size(), 30U) << "a click has one of 32 places, and one stays free";
    EXPECT_EQ(Only(lines, "ReadPartAttributes(").size(), 2U);
    browser.onCall = nullptr;
}

TEST_F(EventDoor, AnyEventInsideAnyCallLeavesTheRunWhole)
{
    ASSERT_EQ(RunWhole(), id_ok);
    const auto calls = std::ranges::count_if(recorder.lines, [](const auto& line) { return line.ends_with(")"); });
    const std::pair<const char*, UserAction> events[] = {
        {"click", click},
        {"click for good", click},
        {"cancel", [](CScriptedWindow& window) { window.Events().OnCommand(id_cancel); }},
        {"paint", [](CScriptedWindow& window) { window.Events().OnPaint(); }},
        {"destroy", [](CScriptedWindow& window) { window.Destroy(); }},
        {"failure", [](CScriptedWindow&) { throw std::bad_alloc(); }},
    };
    for (const auto& [name, event] : events) {
        for (std::ptrdiff_t at = 1; at <= calls; ++at) {
            SCOPED_TRACE(name + std::string(" at call ") + std::to_string(at));
            std::ptrdiff_t call = 0;
            int inside = 0;
            browser.onCall = [&, &name = name, &event = event] {
                EXPECT_TRUE(++inside == 1 || name == std::string("destroy")) << "a call inside a call";
                CScriptedWindow* window = windows.Find(RES_SELECTION_DIALOG);
                const CLastly left([&] { --inside; });
                const bool again = call >= at && std::string_view(name).ends_with("for good");
                (++call == at || again) && window != nullptr ? event(*window) : void();
            };
            CheckWhatIsLeft(RunWhole());
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(EventDoor, AnyAllocationMayFailOnceAndForGood)
{
    // All of them take minutes; without the variable the first twenty are tried, and then one in ever wider steps.
    const std::size_t share = std::getenv("PARTKEEP_EACH_ALLOCATION") == nullptr ? 20 : std::size_t(-1);
    for (const bool for_good : {false, true}) {
        failing_memory::fails_for_good = for_good;
        failing_memory::one_failed = true;
        for (std::size_t at = 1; std::exchange(failing_memory::one_failed, false); at += 1 + at / share) {
            SCOPED_TRACE((for_good ? "for good from " : "once at ") + std::to_string(at));
            CheckWhatIsLeft(RunWhole(at));
            ASSERT_FALSE(HasFailure());
        }
    }
}

} // namespace
} // namespace partkeep
