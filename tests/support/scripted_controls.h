// The controls of a dialog window without a screen, its report lists and its tool bar, as a model that notes every
// call that changes something as one line such as "202: SetText 219 '12'". Calls that only ask are not noted. Dialog
// units count as with the templates' font at 96 dpi (4 by 8 units are 6 by 13 pixels).
#pragma once

#include "platform/dialog_window.h"
#include "resources/dialog_templates.h"
#include "tests/support/recorder.h"

#include <algorithm>
#include <map>
#include <new>
#include <set>

namespace partkeep {

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

class CScriptedControls : public IDialogFields, public IReportList, public IToolbar {
public:
    CScriptedControls(Recorder& recorder, const DialogTemplate& dialog) : recorder_(recorder), template_(dialog) {}

    std::map<int, ControlModel> controls; // panels by -1, -2, ... in order of creation
    std::set<int> pressedTools;
    int focused = 0;
    bool inputEnabled = true; // false while a window over this one has disabled it

    [[nodiscard]] int Number() const { return template_.number; }

    // ---- Fields

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

    // ---- Report list

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

    void SelectAllRows(int id) override
    {
        for (ScriptedRow& row : NoteOn("SelectAllRows", id).rows) {
            row.selected = true;
        }
    }
    void FocusRow(int id, int row) override { NoteOn("FocusRow", id, row); }

    // ---- Tool bar

    bool CreateToolbar(const ToolbarTemplate& toolbar) override
    {
        Note("CreateToolbar", toolbar.number);
        return true;
    }
    [[nodiscard]] Rect ClientRectBesideToolbar() const override { return Moved(TemplateArea(), {3, 26, 0, 0}); }
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

protected:
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
            recorder_.Note(line);
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
        if (HasWindow()) { // a handler goes on behind a window that has gone
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

    [[nodiscard]] Rect TemplateArea() const { return InPixels(0, 0, template_.width, template_.height); }
    [[nodiscard]] bool HasWindow() const { return events_ != nullptr; }
    [[nodiscard]] bool TakesInput(int id) const
    {
        return HasWindow() && inputEnabled && At(id).enabled && At(id).visible;
    }

    Recorder& recorder_;
    const DialogTemplate& template_;
    IDialogEvents* events_ = nullptr; // null: no window
    ControlModel missing_;            // stands for every control that does not exist; nobody looks at it
};

} // namespace partkeep
