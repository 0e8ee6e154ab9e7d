// Between the window's events and the dialog's operations: keys, unit box, filter tools, Cancel.

#include "resources/resource_ids.h"
#include "selection/partkeep_read_dlg.h"

namespace partkeep {

// Enter and Ctrl+A are taken before any control sees them: Enter never presses the button that has the focus, it
// means Load everywhere, whether the Load button is enabled or not.
bool CPartkeepReadDlg::TakesKey(const KeyPress& press) const
{
    const bool all_parts = press.key == key_a && press.control && multiSelection;
    return press.key == key_return || press.key == key_tab || all_parts;
}

void CPartkeepReadDlg::OnKey(const KeyPress& press)
{
    if (press.key == key_return) {
        OnLoad();
    } else if (press.key == key_tab) {
        OnTabKey(!press.shift);
    } else {
        browser_.SelectAllParts(1);
    }
}

// The browser stands between Cancel and the unit box in the keyboard's order, in both directions, and has an order
// of its own inside.
void CPartkeepReadDlg::OnTabKey(bool forward)
{
    const int focused = window_->Fields().FocusedControl();
    const std::int16_t code = forward ? focus_forward : focus_backward;
    if (focused == RES_BROWSER) {
        if (browser_.MoveFocus(code) == 0) {
            window_->Fields().Focus(forward ? RES_UNIT : id_cancel);
        }
        return;
    }
    window_->Fields().MoveFocusByOrder(forward);
    if (focused == (forward ? id_cancel : RES_UNIT)) {
        browser_.MoveFocus(code);
    }
}

void CPartkeepReadDlg::OnCommand(int id)
{
    switch (id) {
    case RES_LOAD:
        OnLoad();
        return;
    case RES_ADD:
        OnAdd();
        return;
    case RES_CHOOSE_PART:
        OnChoosePart();
        return;
    case id_cancel:
        OnCancel();
        return;
    default:
        break;
    }
    if (const MachineFilter* filter = FindFilterByCommand(id)) {
        OnFilter(*filter);
    }
}

// What is wanted is one part where only one can be taken, and a part more where several are collected.
void CPartkeepReadDlg::OnChoosePart()
{
    if (multiSelection) {
        OnAdd();
    } else {
        OnLoad();
    }
}

void CPartkeepReadDlg::OnSelectionChange(int id)
{
    if (id == RES_UNIT) {
        OnUnitChange();
    }
}

void CPartkeepReadDlg::OnUnitChange()
{
    state_.displayUnit = window_->Fields().SelectedEntry(RES_UNIT) == 0 ? 0 : 1;
    SendDisplayUnit();
    browser_.RefreshPartList();
}

void CPartkeepReadDlg::SendDisplayUnit()
{
    browser_.SetDisplayUnit(static_cast<std::int16_t>(state_.displayUnit));
}

// The tools are plain buttons, so they are kept exclusive here.
void CPartkeepReadDlg::OnFilter(const MachineFilter& filter)
{
    for (const MachineFilter& other : machine_filters) {
        if (other.command != filter.command) {
            window_->Toolbar().PressTool(other.command, false);
        }
    }
    window_->Toolbar().PressTool(filter.command, true);
    filter_.dataKind = filter.dataKind;
    browser_.SetPartFilter(filter.dataKind);
    filter_.FilterState = filter.FilterState;
}

void CPartkeepReadDlg::OnPaint()
{
    if (browser_.HasControl()) {
        browser_.MoveFocus(focus_at_paint);
    }
}

void CPartkeepReadDlg::OnCancel()
{
    selectedPartsDlg_->EmptyAndDestroy();
    entrance_->EndModal(id_cancel);
}

} // namespace partkeep
