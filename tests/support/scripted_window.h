// Dialog windows without a screen: over the model of its controls, each notes its own calls in the same way, and plays
// the user.
#pragma once

#include "controls/part_browser_contract.h"
#include "tests/support/scripted_controls.h"

#include <gtest/gtest.h>

#include <optional>
#include <queue>

namespace partkeep {

// Messages as they are noted; a part's name comes between the second one and a quote.
inline const std::string title = " 'Kolvyn PartkeepRead'";
inline const std::string no_files = "'No IGA or BMF files found for the part.\n Part Name:";
inline const std::string too_many = "'Total number of selected parts exceeds the maximum limit of 256. Please select "
                                    "parts with total count less than or equal to 256.'" +
                                    title;

class CScriptedWindow;

using UserAction = std::function<void(CScriptedWindow&)>;

class CScriptedWindows : public IDialogWindows {
public:
    explicit CScriptedWindows(Recorder& recorder_to_use) : recorder(recorder_to_use), messages(recorder_to_use) {}

    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override;

    // What the user does in the next modal run of a template; further calls are for further runs. The run must
    // end with the last action; one that does not, or ends before, fails the test.
    void Play(int number, std::vector<UserAction> actions) { scripts[number].push(std::move(actions)); }

    // The window of a template that exists now, or null.
    [[nodiscard]] CScriptedWindow* Find(int number) const;

    Recorder& recorder;
    CRecordingMessages messages;
    std::map<int, std::queue<std::vector<UserAction>>> scripts;
    std::vector<CScriptedWindow*> existing;                             // the active one last
    std::function<std::unique_ptr<IHostedControl>(int id)> makeControl; // none: no control can be created
    bool canMakeWindows = true;
    int disabledOwners = 0; // at this moment
    int panelsLeft = 0;     // by windows that have closed
    IconHandle parentIcon = nullptr;
};

class CScriptedWindow : public IDialogWindow, public CScriptedControls {
public:
    CScriptedWindow(CScriptedWindows& windows, const DialogTemplate& dialog)
        : CScriptedControls(windows.recorder, dialog), windows_(windows)
    {
    }
    ~CScriptedWindow() override { Close(); }

    std::u16string title;
    int waits = 0;
    bool visible = false;
    CScriptedWindow* owner = nullptr;

    // ---- The user. A window or control that is disabled or hidden ignores its user.

    void PressButton(int id) // tools too
    {
        if (!TakesInput(id)) {
            return;
        }
        if (At(id).kind == ControlKind::CheckBox) {
            controls[id].check = 1 - controls[id].check;
        }
        focused = controls.contains(id) ? id : focused; // a tool leaves it
        events_->OnCommand(id);
    }

    // Enter as in a control that is no button.
    void PressKey(const KeyPress& press)
    {
        if (!inputEnabled || events_->PreTranslateMessage(press)) {
            return;
        }
        if (press.key == key_escape || press.key == key_return) {
            events_->OnCommand(press.key == key_escape ? id_cancel : id_ok);
        } else {
            Note("key", press.key, "to", focused);
        }
    }

    // Over what is selected, else at the end.
    void TypeText(int id, std::u16string_view text)
    {
        ControlModel& edit = controls.at(id);
        for (auto unit = text.begin(); unit != text.end() && TakesInput(focused = id) && !edit.readOnly; ++unit) {
            EraseSelection(edit);
            if (static_cast<int>(edit.text.size()) < edit.limit) {
                edit.text += *unit;
                events_->OnTextChange(id);
            }
        }
    }

    void ChooseEntry(int id, int index)
    {
        if (TakesInput(id)) {
            controls[id].selectedEntry = index;
            events_->OnSelectionChange(id);
        }
    }

    // These and no others.
    void SelectRows(int id, const std::set<int>& rows)
    {
        int number = 0;
        for (ScriptedRow& row : controls.at(id).rows) {
            row.selected = rows.contains(number++);
        }
    }

    void PressCloseBox()
    {
        if (inputEnabled) {
            events_->OnCommand(id_cancel);
        }
    }

    // For what no user does, and input that no window lets through to its user: it comes all the same.
    [[nodiscard]] IDialogEvents& Events() { return *events_; }
    [[nodiscard]] bool Ended() const { return result_.has_value(); }

    // ---- Life

    int RunModal(IDialogEvents& events) override
    {
        if (!windows_.canMakeWindows) {
            return -1;
        }
        Note("RunModal");
        result_.reset(); // of an earlier run of the same window
        Open(events, windows_.existing.empty() ? nullptr : windows_.existing.back());
        visible = true;
        PlayRun();
        Close();
        Note("result", result_.value_or(-1));
        return result_.value_or(-1);
    }
    bool CreateModeless(IDialogEvents& events, IDialogWindow* owner_window) override
    {
        if (windows_.canMakeWindows) {
            Note("CreateModeless");
            Open(events, static_cast<CScriptedWindow*>(owner_window));
        }
        return windows_.canMakeWindows;
    }
    void EndModal(int result) override { Note("EndModal", *(result_ = result)); }
    void Destroy() override
    {
        if (Exists()) {
            Note("Destroy");
            Close();
        }
    }
    [[nodiscard]] bool Exists() const override { return HasWindow(); }

    // ---- The window as a whole

    void SetTitle(std::u16string_view text) override { Note("SetTitle", title = text); }
    [[nodiscard]] IconHandle ParentSmallIcon() const override { return windows_.parentIcon; }
    void SetSmallIcon(IconHandle icon) override
    {
        Note("SetSmallIcon", icon == nullptr ? "none" : icon == windows_.parentIcon ? "parent's" : "other");
    }
    void Show(bool now_visible) override { Note("Show", visible = now_visible); }
    void EnableOwner(bool enabled) override
    {
        windows_.disabledOwners += enabled ? -1 : 1;
        Note("EnableOwner", owner->inputEnabled = enabled);
    }
    void Invalidate() override { Note("Invalidate"); }
    void UpdateNow() override { Note("UpdateNow"); }
    void BeginWait() override { Note(++waits > 0 ? "BeginWait" : "BeginWait too late"); }
    void EndWait() override { Note(--waits < 0 ? "EndWait too often" : "EndWait"); }
    [[nodiscard]] Rect ClientRect() const override { return TemplateArea(); }
    [[nodiscard]] IMessages& OwnerMessages() override { return windows_.messages; }

    [[nodiscard]] IDialogFields& Fields() override { return *this; }
    [[nodiscard]] IReportList& ReportList() override { return *this; }
    [[nodiscard]] IToolbar& Toolbar() override { return *this; }

    // ---- Children made at run time

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                      const Rect& area) override
    {
        Note("CreateHostedControl", id, class_id == part_browser_class_id ? "browser" : "other", area);
        auto control = windows_.makeControl ? windows_.makeControl(id) : nullptr;
        if (control != nullptr) {
            controls[id].area = area;
        }
        return control;
    }
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int id) override
    {
        const bool hosted = At(id).kind == ControlKind::HostedControl;
        return hosted && windows_.makeControl ? windows_.makeControl(id) : nullptr;
    }
    void CreateLabel(int id, const Rect& area) override
    {
        Note("CreateLabel", id, area);
        controls[id].area = area;
    }
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

private:
    friend class CScriptedPanel;

    void Open(IDialogEvents& events, CScriptedWindow* owner_window)
    {
        events_ = &events;
        owner = owner_window;
        for (const auto& [id, kind, x, y, width, height, caption] : template_.controls) {
            controls[id] = {kind, InPixels(x, y, width, height), caption};
        }
        windows_.existing.push_back(this);
        events.OnInitDialog();
        if (focused == 0) {
            MoveFocusByOrder(true);
        }
    }
    void PlayRun()
    {
        auto& scripts = windows_.scripts[Number()];
        if (!scripts.empty() && !result_) {
            const auto actions = std::move(scripts.front());
            scripts.pop();
            for (auto action = actions.begin(); action != actions.end() && Exists(); ++action) {
                ASSERT_FALSE(result_) << "window " << Number() << " ended before its user was done";
                (*action)(*this);
            }
        }
        if (!result_ && Exists()) {
            ADD_FAILURE() << "window " << Number() << " is open and its user has nothing more to do";
            result_ = id_cancel;
        }
    }
    void Close()
    {
        if (Exists()) {
            events_->OnDestroy();
            windows_.panelsLeft += panels_;
            events_ = nullptr;
            std::erase(windows_.existing, this);
        }
    }

    CScriptedWindows& windows_;
    std::optional<int> result_; // of a modal run that has ended
    int panels_ = 0;
};

class CScriptedPanel : public IPanelWindow {
public:
    CScriptedPanel(CScriptedWindow& window, int number) : window_(window), number_(number) { ++window_.panels_; }
    ~CScriptedPanel() override { --window_.panels_; }
    CScriptedPanel(const CScriptedPanel&) = delete;
    CScriptedPanel& operator=(const CScriptedPanel&) = delete;

    void SetPainter(std::function<void(IDeviceContext&)> painter) override { Model().painter = std::move(painter); }
    [[nodiscard]] Rect ClientRect() const override { return window_.ClientOf(Model()); }
    [[nodiscard]] Rect MapToDialog(const Rect& area) const override { return window_.Moved(area, Model().area); }
    void Move(const Rect& area) override { window_.Note("panel", number_, "Move", Model().area = area); }
    void Show(bool visible) override { window_.Note("panel", number_, "Show", Model().visible = visible); }
    void Invalidate(bool erase) override { window_.Note("panel", number_, "Invalidate", erase); }

private:
    [[nodiscard]] ControlModel& Model() const { return window_.controls[-number_]; }

    CScriptedWindow& window_;
    int number_;
};

inline std::unique_ptr<IPanelWindow> CScriptedWindow::CreatePanel(int id, const Rect& area)
{
    Note("CreatePanel", id, area);
    const int number = controls.contains(-1) ? 2 : 1;
    controls[-number].area = area;
    return std::make_unique<CScriptedPanel>(*this, number);
}

inline std::unique_ptr<IDialogWindow> CScriptedWindows::Make(const DialogTemplate& dialog)
{
    return std::make_unique<CScriptedWindow>(*this, dialog);
}

inline CScriptedWindow* CScriptedWindows::Find(int number) const
{
    const auto window = std::ranges::find(existing, number, &CScriptedWindow::Number);
    return window == existing.end() ? nullptr : *window;
}

// Actions for CScriptedWindows::Play.
namespace user {

inline UserAction Press(int id)
{
    return [id](CScriptedWindow& window) { window.PressButton(id); };
}

inline UserAction Key(int key, bool control = false, bool shift = false)
{
    return [=](CScriptedWindow& window) { window.PressKey({key, control, shift}); };
}

inline UserAction Type(int id, std::u16string text)
{
    return [id, text = std::move(text)](CScriptedWindow& window) { window.TypeText(id, text); };
}

inline const UserAction close_box = [](CScriptedWindow& window) { window.PressCloseBox(); };

} // namespace user

} // namespace partkeep
