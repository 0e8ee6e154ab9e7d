// Dialog windows without a screen: each keeps a model of its controls, notes every call that changes something as
// one line such as "202: SetText 219 '12'", and plays the user. Calls that only ask are not noted. Dialog units
// count as with the templates' font at 96 dpi (4 by 8 units are 6 by 13 pixels).
#pragma once

#include "controls/part_browser_contract.h"
#include "platform/dialog_window.h"
#include "resources/dialog_templates.h"
#include "tests/support/recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <queue>
#include <set>

namespace partkeep {

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
    IconHandle parentIcon = nullptr;
};

struct ScriptedRow {
    std::map<int, std::u16string> cells; // by column
    bool selected = false;
};

// What one control shows; a panel is one too.
struct ControlModel {
    ControlKind kind = ControlKind::Label;
    Rect area; // in dialog coordinates
    std::u16string text;
    bool enabled = true;
    bool visible = true;
    bool readOnly = false;
    int check = 0;
    int limit = 32767;
    std::size_t selectionStart = 0;
    std::size_t selectionEnd = 0;
    std::vector<std::u16string> entries{}; // or column headers
    int selectedEntry = -1;
    std::vector<ScriptedRow> rows{};
    std::function<void(IDeviceContext&)> painter{};
};

class CScriptedWindow : public IDialogWindow, public IDialogFields, public IReportList, public IToolbar {
public:
    CScriptedWindow(CScriptedWindows& windows, const DialogTemplate& dialog) : windows_(windows), template_(dialog) {}
    ~CScriptedWindow() override { Close(); }

    std::map<int, ControlModel> controls; // panels by -1, -2, ... in order of creation
    std::set<int> pressedTools;
    std::u16string title;
    int focused = 0;
    int waits = 0;
    bool visible = false;
    bool inputEnabled = true; // false while a window over this one has disabled it
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

    void Paint() { events_->OnPaint(); }
    [[nodiscard]] std::u16string ToolTip(int command) { return events_->ToolTipText(command); }

    // For input that no window lets through to its user: it comes all the same.
    [[nodiscard]] IDialogEvents& Events() { return *events_; }
    [[nodiscard]] bool Ended() const { return result_.has_value(); }

    // ---- Life

    int RunModal(IDialogEvents& events) override
    {
        if (!windows_.canMakeWindows) {
            return -1;
        }
        Note("RunModal");
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
    [[nodiscard]] bool Exists() const override { return events_ != nullptr; }

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
    [[nodiscard]] Rect ClientRect() const override { return InPixels(0, 0, template_.width, template_.height); }
    [[nodiscard]] IMessages& OwnerMessages() override { return windows_.messages; }

    [[nodiscard]] IDialogFields& Fields() override { return *this; }
    [[nodiscard]] IReportList& ReportList() override { return *this; }
    [[nodiscard]] IToolbar& Toolbar() override { return *this; }

    // ---- Controls

    void SetText(int id, std::u16string_view text) override
    {
        ControlModel& control = NoteOn("SetText", id, text);
        control.text = text;
        control.selectionStart = control.selectionEnd = 0;
        TellText(id);
    }
    [[nodiscard]] std::u16string Text(int id) const override { return At(id).text; }
    void Enable(int id, bool enabled) override { NoteOn("Enable", id, enabled).enabled = enabled; }
    void ShowControl(int id, bool shown) override { NoteOn("ShowControl", id, shown).visible = shown; }
    void SetReadOnly(int id) override { NoteOn("SetReadOnly", id).readOnly = true; }
    void LimitText(int id, int units) override { NoteOn("LimitText", id, units).limit = units; }
    void ClearSelectedText(int id) override
    {
        EraseSelection(NoteOn("ClearSelectedText", id));
        TellText(id);
    }
    void SetCheck(int id, int state) override { NoteOn("SetCheck", id, state).check = state == 0 ? 0 : 1; }
    [[nodiscard]] int Check(int id) const override { return At(id).check; }
    [[nodiscard]] Rect ControlClientRect(int id) const override { return ClientOf(At(id)); }
    [[nodiscard]] Rect MapToDialog(int id, const Rect& area) const override { return Moved(area, At(id).area); }
    void MoveControl(int id, const Rect& area) override { NoteOn("MoveControl", id, area).area = area; }

    void Focus(int id) override
    {
        NoteOn("Focus", id);
        focused = controls.contains(id) ? id : focused;
    }
    [[nodiscard]] int FocusedControl() const override { return focused; }
    // A control made at run time has no place of its own here: the dialog's logic gives it one.
    void MoveFocusByOrder(bool forward) override
    {
        std::vector<int> stops;
        for (const auto& source : template_.controls) {
            if (source.kind != ControlKind::Label && TakesInput(source.id)) {
                stops.insert(forward ? stops.end() : stops.begin(), source.id);
            }
        }
        const auto here = std::find(stops.begin(), stops.end(), focused);
        focused = here == stops.end() || here + 1 == stops.end() ? stops.front() : *(here + 1);
    }

    void ResetEntries(int id) override { NoteOn("ResetEntries", id).entries.clear(); }
    void InsertEntry(int id, int index, std::u16string_view text) override
    {
        auto& entries = NoteOn("InsertEntry", id, index, text).entries;
        entries.emplace(entries.begin() + index, text);
    }
    void SelectEntry(int id, int index) override { NoteOn("SelectEntry", id, index).selectedEntry = index; }
    [[nodiscard]] int SelectedEntry(int id) const override { return At(id).selectedEntry; }

    void InsertColumn(int id, int column, std::u16string_view header, int width) override
    {
        auto& headers = NoteOn("InsertColumn", id, column, header, width).entries;
        headers.emplace(headers.begin() + column, header);
    }
    void SetFullRowSelect(int id) override { NoteOn("SetFullRowSelect", id); }
    void InsertRow(int id, int row, std::u16string_view text) override
    {
        auto& rows = NoteOn("InsertRow", id, row, text).rows;
        rows.insert(rows.begin() + row, {{{0, std::u16string(text)}}, false});
    }
    void SetCell(int id, int row, int column, std::u16string_view text) override
    {
        (NoteOn("SetCell", id, row, column, text).rows.begin() + row)->cells[column] = text;
    }
    [[nodiscard]] std::u16string Cell(int id, int row, int column) const override
    {
        return (At(id).rows.begin() + row)->cells.at(column);
    }
    void DeleteRow(int id, int row) override
    {
        auto& rows = NoteOn("DeleteRow", id, row).rows;
        rows.erase(rows.begin() + row);
    }
    [[nodiscard]] int SelectedRowCount(int id) const override
    {
        return static_cast<int>(std::ranges::count(At(id).rows, true, &ScriptedRow::selected));
    }
    [[nodiscard]] int NextSelectedRow(int id, int after) const override
    {
        const auto& rows = At(id).rows;
        const auto next = std::ranges::find(rows.begin() + after + 1, rows.end(), true, &ScriptedRow::selected);
        return next == rows.end() ? -1 : static_cast<int>(next - rows.begin());
    }

    // ---- Toolbar and children made at run time

    bool CreateToolbar(const ToolbarTemplate& toolbar) override
    {
        Note("CreateToolbar", toolbar.number);
        return true;
    }
    [[nodiscard]] Rect ClientRectBesideToolbar() const override { return Moved(ClientRect(), {3, 26, 0, 0}); }
    void MoveAllControls(int dx, int dy) override
    {
        Note("MoveAllControls", dx, dy);
        for (auto& [id, control] : controls) {
            control.area = Moved(control.area, {dx, dy, 0, 0});
        }
    }
    void PlaceToolbar() override { Note("PlaceToolbar"); }
    void EnableToolTips() override { Note("EnableToolTips"); }
    void PressTool(int command, bool pressed) override
    {
        Note("PressTool", command, pressed);
        pressedTools.erase(command);
        if (pressed) {
            pressedTools.insert(command);
        }
    }

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
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

    [[nodiscard]] int Number() const { return template_.number; }

private:
    friend class CScriptedPanel;

    static std::string Shown(const char* text) { return text; }
    static std::string Shown(bool on) { return on ? "on" : "off"; }
    static std::string Shown(int number) { return std::to_string(number); }
    static std::string Shown(std::u16string_view text) { return Quoted(text); }
    static std::string Shown(const Rect& area)
    {
        return Shown(area.left) + "," + Shown(area.top) + "," + Shown(area.right) + "," + Shown(area.bottom);
    }

    template <typename... Texts>
    void Note(const Texts&... texts)
    {
        try {
            std::string line = std::to_string(Number()) + ":";
            ((line += " " + Shown(texts)), ...);
            windows_.recorder.Note(line);
        } catch (const std::bad_alloc&) { // a window can be destroyed without memory
            return;
        }
    }
    template <typename... Texts>
    ControlModel& NoteOn(const char* call, int id, const Texts&... texts)
    {
        Note(call, id, texts...);
        return controls.contains(id) ? controls[id] : missing_ = {};
    }
    [[nodiscard]] const ControlModel& At(int id) const { return controls.contains(id) ? controls.at(id) : missing_; }

    void TellText(int id)
    {
        if (Exists()) { // a handler goes on behind a window that has gone
            events_->OnTextChange(id);
        }
    }
    static void EraseSelection(ControlModel& edit)
    {
        edit.text.erase(edit.selectionStart, edit.selectionEnd - edit.selectionStart);
        edit.selectionStart = edit.selectionEnd = 0;
    }
    static Rect InPixels(int x, int y, int width, int height)
    {
        return {x * 6 / 4, y * 13 / 8, (x + width) * 6 / 4, (y + height) * 13 / 8};
    }
    static Rect ClientOf(const ControlModel& control) { return {0, 0, control.area.Width(), control.area.Height()}; }
    static Rect Moved(const Rect& area, const Rect& by) // its left and top
    {
        return {area.left + by.left, area.top + by.top, area.right + by.left, area.bottom + by.top};
    }

    [[nodiscard]] bool TakesInput(int id) const { return Exists() && inputEnabled && At(id).enabled && At(id).visible; }
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
            events_ = nullptr;
            std::erase(windows_.existing, this);
        }
    }

    CScriptedWindows& windows_;
    const DialogTemplate& template_;
    IDialogEvents* events_ = nullptr; // null: no window
    std::optional<int> result_;       // of a modal run that has ended
    ControlModel missing_;            // stands for every control that does not exist; nobody looks at it
};

class CScriptedPanel : public IPanelWindow {
public:
    CScriptedPanel(CScriptedWindow& window, int number) : window_(window), number_(number) {}

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

inline UserAction CloseBox()
{
    return [](CScriptedWindow& window) { window.PressCloseBox(); };
}

} // namespace user

} // namespace partkeep
