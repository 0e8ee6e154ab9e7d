// The controls of a scripted window by id, its toolbar and the children made at run time.

#include "tests/support/scripted_window_notes.h"

#include <algorithm>
#include <cstdio>

namespace partkeep {

namespace {

constexpr int toolbar_height = 26;

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
