// Dialog windows without a screen: each keeps a model of its controls, notes every call that changes something as
// one line such as "202: SetText 219 '12'", and plays the user. Calls that only ask are not noted. Dialog units
// count as with the templates' font at 96 dpi (4 by 8 units are 6 by 13 pixels).
#pragma once

#include "platform/dialog_window.h"
#include "resources/dialog_templates.h"
#include "tests/support/recorder.h"

#include <map>
#include <queue>
#include <set>
#include <vector>

namespace partkeep {

class CScriptedWindow;

using UserAction = std::function<void(CScriptedWindow&)>;

class CScriptedWindows : public IDialogWindows {
public:
    explicit CScriptedWindows(Recorder& recorder_to_use) : recorder(recorder_to_use), messages(recorder_to_use) {}

    [[nodiscard]] std::unique_ptr<IDialogWindow> Make(const DialogTemplate& dialog) override;

    // What the user does in the next modal run of a template; further calls are for further runs. The run must
    // end with the last action; one that does not, or ends before, fails the test and is closed by its box.
    void Play(int number, std::vector<UserAction> actions) { scripts[number].push(std::move(actions)); }

    // The window of a template that exists now, or null.
    [[nodiscard]] CScriptedWindow* Find(int number) const;

    Recorder& recorder;
    CRecordingMessages messages;
    std::map<int, std::queue<std::vector<UserAction>>> scripts;
    std::function<std::unique_ptr<IHostedControl>(int id)> makeControl; // none: no control can be created
    bool canMakeWindows = true;
    IconHandle parentIcon = nullptr;

private:
    friend class CScriptedWindow;
    std::vector<CScriptedWindow*> windows_; // those that exist, the active one last
};

struct ScriptedRow {
    std::vector<std::u16string> cells;
    bool selected = false;
};

// What one control shows.
struct ControlModel {
    ControlKind kind = ControlKind::Label;
    Rect area; // in dialog coordinates
    std::u16string text;
    bool enabled = true;
    bool visible = true;
    bool readOnly = false;
    int check = 0;
    std::size_t limit = std::u16string::npos;
    std::size_t selectionStart = 0;
    std::size_t selectionEnd = 0;
    std::vector<std::u16string> entries; // or column headers
    int selectedEntry = -1;
    std::vector<ScriptedRow> rows;
};

struct PanelModel {
    Rect area; // client area, in dialog coordinates
    bool visible = true;
    std::function<void(IDeviceContext&)> painter;
};

class CScriptedWindow : public IDialogWindow {
public:
    CScriptedWindow(CScriptedWindows& windows, const DialogTemplate& dialog);
    ~CScriptedWindow() override;
    CScriptedWindow(const CScriptedWindow&) = delete;
    CScriptedWindow& operator=(const CScriptedWindow&) = delete;

    // The user. A window or control that is disabled or hidden ignores its user.
    void PressButton(int id); // tools too
    void PressKey(const KeyPress& press);
    void TypeText(int id, std::u16string_view text); // over what is selected, else at the end
    void SelectText(int id, std::size_t start, std::size_t end);
    void ChooseEntry(int id, int index);
    void SelectRows(int id, const std::set<int>& rows); // these and no others
    void PressCloseBox();
    void Paint() { handler_->OnPaint(); }

    std::map<int, ControlModel> controls;
    std::vector<std::shared_ptr<PanelModel>> panels; // in order of creation
    std::set<int> pressedTools;
    std::u16string title;
    int focused = 0;
    int waits = 0;
    bool visible = false;
    bool inputEnabled = true; // false while a window over this one has disabled it
    CScriptedWindow* owner = nullptr;

    int RunModal(IDialogHandler& handler) override;
    bool CreateModeless(IDialogHandler& handler, IDialogWindow* owner_window) override;
    void EndModal(int result) override;
    void Destroy() override;
    [[nodiscard]] bool Exists() const override { return handler_ != nullptr; }
    void SetTitle(std::u16string_view text) override;
    [[nodiscard]] IconHandle ParentSmallIcon() const override { return windows_.parentIcon; }
    void SetSmallIcon(IconHandle icon) override;
    void Show(bool now_visible) override;
    void EnableOwner(bool enabled) override;
    void Invalidate() override { Note("Invalidate"); }
    void UpdateNow() override { Note("UpdateNow"); }
    void BeginWait() override;
    void EndWait() override;
    [[nodiscard]] Rect ClientRect() const override;
    [[nodiscard]] IMessages& OwnerMessages() override { return windows_.messages; }
    void SetText(int id, std::u16string_view text) override;
    [[nodiscard]] std::u16string Text(int id) const override { return At(id).text; }
    void Enable(int id, bool enabled) override;
    void ShowControl(int id, bool now_visible) override;
    void SetReadOnly(int id) override;
    void LimitText(int id, int characters) override;
    void ClearSelectedText(int id) override;
    void SetCheck(int id, int state) override;
    [[nodiscard]] int Check(int id) const override { return At(id).check; }
    [[nodiscard]] Rect ControlClientRect(int id) const override;
    [[nodiscard]] Rect MapToDialog(int id, const Rect& client_area) const override;
    void MoveControl(int id, const Rect& area) override;
    void Focus(int id) override;
    [[nodiscard]] int FocusedControl() const override { return focused; }
    void MoveFocusByOrder(bool forward) override;
    void ResetEntries(int id) override;
    void InsertEntry(int id, int index, std::u16string_view text) override;
    void SelectEntry(int id, int index) override;
    [[nodiscard]] int SelectedEntry(int id) const override { return At(id).selectedEntry; }
    void InsertColumn(int id, int column, std::u16string_view header, int width) override;
    void SetFullRowSelect(int id) override { Note("SetFullRowSelect " + std::to_string(id)); }
    void InsertRow(int id, int row, std::u16string_view text) override;
    void SetCell(int id, int row, int column, std::u16string_view text) override;
    [[nodiscard]] std::u16string Cell(int id, int row, int column) const override;
    void DeleteRow(int id, int row) override;
    [[nodiscard]] int SelectedRowCount(int id) const override;
    [[nodiscard]] int NextSelectedRow(int id, int after) const override;
    bool CreateToolbar(const ToolbarTemplate& toolbar) override;
    [[nodiscard]] Rect ClientRectBesideToolbar() const override;
    void MoveAllControls(int dx, int dy) override;
    void PlaceToolbar() override { Note("PlaceToolbar"); }
    void EnableToolTips() override { Note("EnableToolTips"); }
    void PressTool(int command, bool pressed) override;
    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                      const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int id) override;
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

    [[nodiscard]] int Number() const { return template_.number; }

private:
    friend class CScriptedPanel;
    void Note(const std::string& what) { windows_.recorder.Note(std::to_string(Number()) + ": " + what); }
    template <typename... Arguments>
    ControlModel& NoteOn(int id, std::string what, const Arguments&... arguments);
    [[nodiscard]] const ControlModel& At(int id) const;
    [[nodiscard]] bool TakesInput(int id) const;
    void Open(IDialogHandler& handler);
    void Close();
    void PlayRun();
    void EraseSelection(ControlModel& edit) const;

    CScriptedWindows& windows_;
    const DialogTemplate& template_;
    IDialogHandler* handler_ = nullptr; // null: no window
    bool modalEnded_ = false;
    int modalResult_ = id_cancel;
    ControlModel missing_;
};

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
