#include "tests/support/scripted_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace partkeep {

namespace {

constexpr int toolbar_height = 26;

Rect InPixels(int x, int y, int width, int height)
{
    return {x * 6 / 4, y * 13 / 8, (x + width) * 6 / 4, (y + height) * 13 / 8};
}

Rect Moved(const Rect& area, int dx, int dy)
{
    return {area.left + dx, area.top + dy, area.right + dx, area.bottom + dy};
}

std::string Shown(const Rect& area)
{
    return std::to_string(area.left) + "," + std::to_string(area.top) + "," + std::to_string(area.right) + "," +
           std::to_string(area.bottom);
}

std::string Shown(bool on)
{
    return on ? "on" : "off";
}

std::string Shown(int number)
{
    return std::to_string(number);
}

std::string Shown(std::u16string_view text)
{
    return Quoted(text);
}

bool IsEdit(ControlKind kind)
{
    return kind == ControlKind::Edit || kind == ControlKind::ReadOnlyEdit;
}

bool IsButton(ControlKind kind)
{
    return kind == ControlKind::PushButton || kind == ControlKind::DefaultPushButton;
}

} // namespace

class CScriptedPanel : public IPanelWindow {
public:
    CScriptedPanel(CScriptedWindow& window, std::shared_ptr<PanelModel> model)
        : window_(window), model_(std::move(model)), name_("panel " + std::to_string(window.panels.size()) + " ")
    {
    }

    void SetPainter(std::function<void(IDeviceContext&)> painter) override { model_->painter = std::move(painter); }
    [[nodiscard]] Rect ClientRect() const override { return {0, 0, model_->area.Width(), model_->area.Height()}; }
    [[nodiscard]] Rect MapToDialog(const Rect& area) const override
    {
        return Moved(area, model_->area.left, model_->area.top);
    }
    void Move(const Rect& area) override { window_.Note(name_ + "Move " + Shown(model_->area = area)); }
    void Show(bool visible) override { window_.Note(name_ + "Show " + Shown(model_->visible = visible)); }
    void Invalidate(bool erase) override { window_.Note(name_ + "Invalidate " + Shown(erase)); }

private:
    CScriptedWindow& window_;
    std::shared_ptr<PanelModel> model_;
    std::string name_;
};

std::unique_ptr<IDialogWindow> CScriptedWindows::Make(const DialogTemplate& dialog)
{
    return std::make_unique<CScriptedWindow>(*this, dialog);
}

CScriptedWindow* CScriptedWindows::Find(int number) const
{
    const auto window = std::find_if(windows_.begin(), windows_.end(), [number](const CScriptedWindow* candidate) {
        return candidate->Number() == number;
    });
    return window == windows_.end() ? nullptr : *window;
}

CScriptedWindow::CScriptedWindow(CScriptedWindows& windows, const DialogTemplate& dialog)
    : windows_(windows), template_(dialog)
{
}

CScriptedWindow::~CScriptedWindow()
{
    Close();
}

// ---- The user

bool CScriptedWindow::TakesInput(int id) const
{
    return Exists() && inputEnabled && At(id).enabled && At(id).visible;
}

void CScriptedWindow::PressButton(int id)
{
    if (!TakesInput(id)) {
        return;
    }
    if (At(id).kind == ControlKind::CheckBox) {
        controls[id].check = 1 - controls[id].check;
    }
    focused = controls.count(id) != 0 ? id : focused; // a tool leaves it
    handler_->OnCommand(id);
}

void CScriptedWindow::PressKey(const KeyPress& press)
{
    if (!inputEnabled || handler_->PreTranslateMessage(press)) {
        return;
    }
    if (press.key == key_tab) {
        MoveFocusByOrder(!press.shift);
    } else if (press.key == key_escape) {
        handler_->OnCommand(id_cancel);
    } else if (press.key == key_return) {
        handler_->OnCommand(IsButton(At(focused).kind) ? focused : id_ok);
    } else {
        Note("key " + std::to_string(press.key) + " to " + std::to_string(focused));
    }
}

void CScriptedWindow::TypeText(int id, std::u16string_view text)
{
    ControlModel& edit = controls.at(id);
    if (!TakesInput(id) || edit.readOnly) {
        return;
    }
    focused = id;
    for (const char16_t unit : text) {
        EraseSelection(edit);
        if (edit.text.size() < edit.limit) {
            edit.text += unit;
            handler_->OnTextChange(id);
        }
    }
}

void CScriptedWindow::SelectText(int id, std::size_t start, std::size_t end)
{
    ControlModel& edit = controls.at(id);
    edit.selectionStart = std::min(start, edit.text.size());
    edit.selectionEnd = std::min(end, edit.text.size());
}

void CScriptedWindow::ChooseEntry(int id, int index)
{
    if (TakesInput(id)) {
        controls[id].selectedEntry = index;
        handler_->OnSelectionChange(id);
    }
}

void CScriptedWindow::SelectRows(int id, const std::set<int>& rows)
{
    int number = 0;
    for (ScriptedRow& row : controls.at(id).rows) {
        row.selected = rows.count(number++) != 0;
    }
}

void CScriptedWindow::PressCloseBox()
{
    if (inputEnabled) {
        handler_->OnCommand(id_cancel);
    }
}

// ---- Life

int CScriptedWindow::RunModal(IDialogHandler& handler)
{
    if (!windows_.canMakeWindows) {
        return -1;
    }
    Note("RunModal");
    owner = windows_.windows_.empty() ? nullptr : windows_.windows_.back();
    modalEnded_ = false;
    Open(handler);
    visible = true;
    PlayRun();
    Close();
    Note("result " + std::to_string(modalResult_));
    return modalResult_;
}

void CScriptedWindow::PlayRun()
{
    auto& scripts = windows_.scripts[Number()];
    std::vector<UserAction> actions;
    if (!scripts.empty()) {
        actions = std::move(scripts.front());
        scripts.pop();
    }
    for (const UserAction& action : actions) {
        if (modalEnded_) {
            ADD_FAILURE() << "window " << Number() << " ended before its user was done";
            return;
        }
        action(*this);
    }
    if (!modalEnded_) {
        ADD_FAILURE() << "window " << Number() << " is open and its user has nothing more to do";
        PressCloseBox();
    }
}

bool CScriptedWindow::CreateModeless(IDialogHandler& handler, IDialogWindow* owner_window)
{
    if (!windows_.canMakeWindows) {
        return false;
    }
    Note("CreateModeless");
    owner = static_cast<CScriptedWindow*>(owner_window);
    Open(handler);
    return true;
}

void CScriptedWindow::Open(IDialogHandler& handler)
{
    handler_ = &handler;
    controls.clear();
    for (const auto& source : template_.controls) {
        ControlModel& control = controls[source.id];
        control.kind = source.kind;
        control.area = InPixels(source.x, source.y, source.width, source.height);
        control.text = source.kind == ControlKind::HostedControl ? u"" : source.caption;
        control.readOnly = source.kind == ControlKind::ReadOnlyEdit;
    }
    windows_.windows_.push_back(this);
    handler.OnInitDialog();
    if (focused == 0) {
        MoveFocusByOrder(true);
    }
}

void CScriptedWindow::Close()
{
    if (IDialogHandler* handler = handler_) {
        handler->OnDestroy();
        handler_ = nullptr;
        visible = false;
        std::erase(windows_.windows_, this);
    }
}

void CScriptedWindow::EndModal(int result)
{
    Note("EndModal " + Shown(result));
    modalEnded_ = true;
    modalResult_ = result;
}

void CScriptedWindow::Destroy()
{
    if (Exists()) {
        Note("Destroy");
        Close();
    }
}

// ---- The window as a whole

// Notes a call on a control and gives its model; a control that does not exist has one that nobody looks at.
template <typename... Arguments>
ControlModel& CScriptedWindow::NoteOn(int id, std::string what, const Arguments&... arguments)
{
    what += " " + std::to_string(id);
    ((what += " " + Shown(arguments)), ...);
    Note(what);
    const auto control = controls.find(id);
    return control == controls.end() ? missing_ = {} : control->second;
}

void CScriptedWindow::SetTitle(std::u16string_view text)
{
    Note("SetTitle " + Shown(text));
    title = text;
}

void CScriptedWindow::SetSmallIcon(IconHandle icon)
{
    Note(icon == nullptr               ? "SetSmallIcon none"
         : icon == windows_.parentIcon ? "SetSmallIcon parent's"
                                       : "SetSmallIcon other");
}

void CScriptedWindow::Show(bool now_visible)
{
    Note("Show " + Shown(visible = now_visible));
}

void CScriptedWindow::EnableOwner(bool enabled)
{
    Note("EnableOwner " + Shown(enabled));
    if (owner != nullptr) {
        owner->inputEnabled = enabled;
    }
}

void CScriptedWindow::BeginWait()
{
    Note("BeginWait");
    ++waits;
}

void CScriptedWindow::EndWait()
{
    Note("EndWait");
    --waits;
}

Rect CScriptedWindow::ClientRect() const
{
    return InPixels(0, 0, template_.width, template_.height);
}

// ---- Controls by id

const ControlModel& CScriptedWindow::At(int id) const
{
    static const ControlModel none;
    const auto control = controls.find(id);
    return control == controls.end() ? none : control->second;
}

void CScriptedWindow::SetText(int id, std::u16string_view text)
{
    ControlModel& control = NoteOn(id, "SetText", text);
    control.text = text;
    control.selectionStart = control.selectionEnd = 0;
    if (IsEdit(control.kind)) {
        handler_->OnTextChange(id);
    }
}

void CScriptedWindow::Enable(int id, bool enabled)
{
    NoteOn(id, "Enable", enabled).enabled = enabled;
}

void CScriptedWindow::ShowControl(int id, bool now_visible)
{
    NoteOn(id, "ShowControl", now_visible).visible = now_visible;
}

void CScriptedWindow::SetReadOnly(int id)
{
    NoteOn(id, "SetReadOnly").readOnly = true;
}

void CScriptedWindow::LimitText(int id, int characters)
{
    NoteOn(id, "LimitText", characters).limit = static_cast<std::size_t>(characters);
}

void CScriptedWindow::ClearSelectedText(int id)
{
    ControlModel& edit = NoteOn(id, "ClearSelectedText");
    if (edit.selectionStart < edit.selectionEnd) {
        EraseSelection(edit);
        handler_->OnTextChange(id);
    }
}

void CScriptedWindow::EraseSelection(ControlModel& edit) const
{
    edit.text.erase(edit.selectionStart, edit.selectionEnd - edit.selectionStart);
    edit.selectionStart = edit.selectionEnd = 0;
}

void CScriptedWindow::SetCheck(int id, int state)
{
    NoteOn(id, "SetCheck", state).check = state == 0 ? 0 : 1;
}

Rect CScriptedWindow::ControlClientRect(int id) const
{
    return {0, 0, At(id).area.Width(), At(id).area.Height()};
}

Rect CScriptedWindow::MapToDialog(int id, const Rect& client_area) const
{
    return Moved(client_area, At(id).area.left, At(id).area.top);
}

void CScriptedWindow::MoveControl(int id, const Rect& area)
{
    NoteOn(id, "MoveControl", area).area = area;
}

// ---- Focus

void CScriptedWindow::Focus(int id)
{
    NoteOn(id, "Focus");
    if (controls.count(id) != 0) {
        focused = id;
    }
}

// A control made at run time has no place of its own here: the dialog's logic gives it one.
void CScriptedWindow::MoveFocusByOrder(bool forward)
{
    std::vector<int> stops;
    for (const auto& source : template_.controls) {
        if (source.kind != ControlKind::Label && TakesInput(source.id)) {
            stops.push_back(source.id);
        }
    }
    if (stops.empty()) {
        return;
    }
    if (!forward) {
        std::reverse(stops.begin(), stops.end());
    }
    const auto here = std::find(stops.begin(), stops.end(), focused);
    focused = here == stops.end() || here + 1 == stops.end() ? stops.front() : *(here + 1);
}

// ---- Lists

void CScriptedWindow::ResetEntries(int id)
{
    ControlModel& list = NoteOn(id, "ResetEntries");
    list.entries.clear();
    list.selectedEntry = -1;
}

void CScriptedWindow::InsertEntry(int id, int index, std::u16string_view text)
{
    auto& entries = NoteOn(id, "InsertEntry", index, text).entries;
    entries.insert(entries.begin() + index, std::u16string(text));
}

void CScriptedWindow::SelectEntry(int id, int index)
{
    ControlModel& list = NoteOn(id, "SelectEntry", index);
    list.selectedEntry = index >= 0 && index < static_cast<int>(list.entries.size()) ? index : -1;
}

void CScriptedWindow::InsertColumn(int id, int column, std::u16string_view header, int width)
{
    auto& headers = NoteOn(id, "InsertColumn", column, header, width).entries;
    headers.insert(headers.begin() + column, std::u16string(header));
}

void CScriptedWindow::InsertRow(int id, int row, std::u16string_view text)
{
    ControlModel& list = NoteOn(id, "InsertRow", row, text);
    ScriptedRow inserted;
    inserted.cells.resize(std::max<std::size_t>(list.entries.size(), 1));
    inserted.cells[0] = text;
    list.rows.insert(list.rows.begin() + row, inserted);
}

void CScriptedWindow::SetCell(int id, int row, int column, std::u16string_view text)
{
    NoteOn(id, "SetCell", row, column, text)
        .rows.at(static_cast<std::size_t>(row))
        .cells.at(static_cast<std::size_t>(column)) = text;
}

std::u16string CScriptedWindow::Cell(int id, int row, int column) const
{
    return At(id).rows.at(static_cast<std::size_t>(row)).cells.at(static_cast<std::size_t>(column));
}

void CScriptedWindow::DeleteRow(int id, int row)
{
    auto& rows = NoteOn(id, "DeleteRow", row).rows;
    rows.erase(rows.begin() + row);
}

int CScriptedWindow::SelectedRowCount(int id) const
{
    const auto& rows = At(id).rows;
    return static_cast<int>(
        std::count_if(rows.begin(), rows.end(), [](const ScriptedRow& row) { return row.selected; }));
}

int CScriptedWindow::NextSelectedRow(int id, int after) const
{
    const auto& rows = At(id).rows;
    for (auto row = static_cast<std::size_t>(after + 1); row < rows.size(); ++row) {
        if (rows[row].selected) {
            return static_cast<int>(row);
        }
    }
    return -1;
}

// ---- Toolbar and children made at run time

bool CScriptedWindow::CreateToolbar(const ToolbarTemplate& toolbar)
{
    Note("CreateToolbar " + Shown(toolbar.number));
    return true;
}

Rect CScriptedWindow::ClientRectBesideToolbar() const
{
    Rect rest = ClientRect();
    rest.top += toolbar_height;
    return rest;
}

void CScriptedWindow::MoveAllControls(int dx, int dy)
{
    Note("MoveAllControls " + Shown(dx) + "," + Shown(dy));
    for (auto& [id, control] : controls) {
        control.area = Moved(control.area, dx, dy);
    }
    for (const auto& panel : panels) {
        panel->area = Moved(panel->area, dx, dy);
    }
}

void CScriptedWindow::PressTool(int command, bool pressed)
{
    Note("PressTool " + Shown(command) + " " + Shown(pressed));
    if (pressed) {
        pressedTools.insert(command);
    } else {
        pressedTools.erase(command);
    }
}

std::unique_ptr<IHostedControl> CScriptedWindow::CreateHostedControl(const ClassId& class_id, int id, const Rect& area)
{
    char class_start[16];
    std::snprintf(class_start, sizeof class_start, "%08X", static_cast<unsigned>(class_id.data1));
    Note("CreateHostedControl " + Shown(id) + " " + class_start + " " + Shown(area));
    auto control = windows_.makeControl ? windows_.makeControl(id) : nullptr;
    if (control != nullptr) {
        controls[id].kind = ControlKind::HostedControl;
        controls[id].area = area;
    }
    return control;
}

std::unique_ptr<IHostedControl> CScriptedWindow::TemplateControl(int id)
{
    const bool hosted = At(id).kind == ControlKind::HostedControl;
    return hosted && windows_.makeControl ? windows_.makeControl(id) : nullptr;
}

std::unique_ptr<IPanelWindow> CScriptedWindow::CreatePanel(int id, const Rect& area)
{
    Note("CreatePanel " + Shown(id) + " " + Shown(area));
    panels.push_back(std::make_shared<PanelModel>(PanelModel{area, true, nullptr}));
    return std::make_unique<CScriptedPanel>(*this, panels.back());
}

} // namespace partkeep
