#include "selection/selected_parts_dlg.h"

#include "platform/files.h"
#include "resources/dialog_templates.h"
#include "selection/event_guards.h"
#include "selection/quantity_keypad_dlg.h"
#include "settings/local_strings.h"

#include <iterator>

namespace partkeep {

namespace {

enum Column { NameColumn, PathColumn, QuantityColumn };

struct ColumnLayout {
    Column column;
    LocalString header;
    int width;
};

constexpr ColumnLayout columns[] = {
    {NameColumn, LocalString::PartName, 130},
    {PathColumn, LocalString::Path, 150},
    {QuantityColumn, LocalString::Quantity, 55},
};

std::u16string PathOf(const PartRecord& part)
{
    return part.serverName + path_separator + part.folderName;
}

} // namespace

bool CSelectedPartsDlg::Create(CDialogEntrance& owner)
{
    if (entrance_ == nullptr) {
        entrance_ = std::make_unique<CDialogEntrance>(door_, selected_parts_dialog_template, Handler());
        window_ = &entrance_->Window();
    }
    return entrance_->CreateModeless(owner);
}

void CSelectedPartsDlg::OnInitDialog()
{
    window_->SetSmallIcon(dialogIcon_);
    window_->SetTitle(LoadLocalString(LocalString::SelectedParts));
    window_->Fields().SetText(RES_REMOVE, LoadLocalString(LocalString::Remove));
    window_->Fields().SetText(RES_CHANGE_QUANTITY, LoadLocalString(LocalString::ChangeQuantity));
}

void CSelectedPartsDlg::InitColumns()
{
    IReportList& list = window_->ReportList();
    for (const ColumnLayout& layout : columns) {
        list.InsertColumn(RES_PART_LIST, layout.column, LoadLocalString(layout.header), layout.width);
    }
    list.SetFullRowSelect(RES_PART_LIST);
}

void CSelectedPartsDlg::AddLastPartRow()
{
    if (!WindowExists() || selectedParts.empty()) {
        return;
    }
    AddRow(static_cast<int>(selectedParts.size()) - 1, selectedParts.back());
}

void CSelectedPartsDlg::AddAllRows()
{
    int row = 0;
    for (const PartRecord& part : selectedParts) {
        AddRow(row++, part);
    }
}

void CSelectedPartsDlg::AddRow(int row, const PartRecord& part)
{
    IReportList& list = window_->ReportList();
    list.InsertRow(RES_PART_LIST, row, part.PartName);
    list.SetCell(RES_PART_LIST, row, PathColumn, PathOf(part));
    list.SetCell(RES_PART_LIST, row, QuantityColumn, part.Qty);
}

void CSelectedPartsDlg::Show()
{
    if (WindowExists()) {
        window_->Show(true);
    }
}

void CSelectedPartsDlg::EmptyAndDestroy()
{
    selectedParts.clear();
    if (window_ != nullptr) {
        window_->Destroy();
    }
}

// Closing is only a hiding: the parts stay collected, and the next Add shows the window again.
void CSelectedPartsDlg::OnCommand(int id)
{
    switch (id) {
    case RES_REMOVE:
        OnRemove();
        break;
    case RES_CHANGE_QUANTITY:
        OnChangeQty();
        break;
    case id_ok:
    case id_cancel:
        window_->Show(false);
        break;
    default:
        break;
    }
}

// Each deletion shifts the rows below it, so each pass asks anew for the first selected row.
void CSelectedPartsDlg::OnRemove()
{
    IReportList& list = window_->ReportList();
    for (int left = list.SelectedRowCount(RES_PART_LIST); left > 0; --left) {
        const int row = list.NextSelectedRow(RES_PART_LIST, -1);
        if (row < 0 || row >= static_cast<int>(selectedParts.size())) {
            return;
        }
        list.DeleteRow(RES_PART_LIST, row);
        selectedParts.erase(std::next(selectedParts.begin(), row));
    }
}

void CSelectedPartsDlg::OnChangeQty()
{
    if (window_->ReportList().SelectedRowCount(RES_PART_LIST) == 0) {
        return;
    }
    CQuantityKeypadDlg keypad(door_, dialogIcon_);
    if (RunOverOwner(keypad) == id_ok) {
        SetSelectedQuantities(keypad.Quantity());
    }
}

int CSelectedPartsDlg::RunOverOwner(CQuantityKeypadDlg& keypad)
{
    const COwnerDisabled disabled(*window_);
    return keypad.DoModal();
}

void CSelectedPartsDlg::SetSelectedQuantities(std::u16string_view quantity)
{
    IReportList& list = window_->ReportList();
    int row = list.NextSelectedRow(RES_PART_LIST, -1);
    for (int left = list.SelectedRowCount(RES_PART_LIST); left > 0 && row >= 0; --left) {
        UpdatePartQty(list.Cell(RES_PART_LIST, row, NameColumn), list.Cell(RES_PART_LIST, row, PathColumn), quantity);
        list.SetCell(RES_PART_LIST, row, QuantityColumn, quantity);
        row = list.NextSelectedRow(RES_PART_LIST, row);
    }
}

void CSelectedPartsDlg::UpdatePartQty(std::u16string_view name, std::u16string_view path, std::u16string_view quantity)
{
    for (PartRecord& part : selectedParts) {
        if (part.PartName == name && PathOf(part) == path) {
            part.Qty = quantity;
        }
    }
}

} // namespace partkeep
