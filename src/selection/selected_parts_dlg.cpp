#include "selection/selected_parts_dlg.h"

#include "platform/files.h"
#include "resources/dialog_templates.h"
#include "selection/event_guards.h"
#include "selection/quantity_keypad_dlg.h"
#include "settings/local_strings.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

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

constexpr int count_gap = 4; // pixels

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
    MakeCountLabel();
}

// Where the template has nothing: between the window's edge and the first button.
void CSelectedPartsDlg::MakeCountLabel()
{
    IDialogFields& fields = window_->Fields();
    const Rect button = fields.MapToDialog(RES_REMOVE, fields.ControlClientRect(RES_REMOVE));
    const Rect list = fields.MapToDialog(RES_PART_LIST, fields.ControlClientRect(RES_PART_LIST));
    const Rect area{list.left + count_gap, button.top, button.left - count_gap, button.bottom};
    window_->CreateLabel(RES_PARTS_COLLECTED, area);
}

// The number alone, which reads the same in every language.
void CSelectedPartsDlg::ShowCount()
{
    const std::string digits = selectedParts.empty() ? std::string() : std::to_string(selectedParts.size());
    window_->Fields().SetText(RES_PARTS_COLLECTED, std::u16string(digits.begin(), digits.end()));
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
    if (!WindowExists()) {
        return;
    }
    AddRow(static_cast<int>(selectedParts.size()) - 1, selectedParts.back());
    ShowCount();
}

void CSelectedPartsDlg::AddAllRows()
{
    int row = 0;
    for (const PartRecord& part : selectedParts) {
        AddRow(row++, part);
    }
    if (row > 0) {
        ShowCount();
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
    removed_.clear();
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

bool CSelectedPartsDlg::TakesKey(const KeyPress& press) const
{
    const bool plain = !press.control && !press.shift;
    const bool with_control = press.control && !press.shift;
    return (plain && (press.key == key_delete || press.key == key_f2)) ||
           (with_control && (press.key == key_a || press.key == key_z));
}

void CSelectedPartsDlg::OnKey(const KeyPress& press)
{
    switch (press.key) {
    case key_delete:
        OnRemove();
        break;
    case key_f2:
        OnChangeQty();
        break;
    case key_a:
        window_->ReportList().SelectAllRows(RES_PART_LIST);
        break;
    default:
        OnPutBack();
        break;
    }
}

// Each deletion shifts the rows below it, so each pass asks anew for the first selected row. Keys go on from the row
// that takes the place of the last one removed.
void CSelectedPartsDlg::OnRemove()
{
    IReportList& list = window_->ReportList();
    std::list<PartRecord> removed;
    int next = -1;
    for (int left = list.SelectedRowCount(RES_PART_LIST); left > 0; --left) {
        const int row = list.NextSelectedRow(RES_PART_LIST, -1);
        if (row < 0 || row >= static_cast<int>(selectedParts.size())) {
            break;
        }
        list.DeleteRow(RES_PART_LIST, row);
        removed.splice(removed.end(), selectedParts, std::next(selectedParts.begin(), row));
        next = row;
    }
    if (removed.empty()) {
        return;
    }
    removed_.push_back(std::move(removed));
    ShowCount();
    if (!selectedParts.empty()) {
        FocusRow(std::min(next, static_cast<int>(selectedParts.size()) - 1));
    }
}

void CSelectedPartsDlg::FocusRow(int row)
{
    window_->ReportList().FocusRow(RES_PART_LIST, row);
    window_->Fields().Focus(RES_PART_LIST);
}

bool CSelectedPartsDlg::IsListed(const PartRecord& part) const
{
    return std::any_of(selectedParts.begin(), selectedParts.end(),
                       [&part](const PartRecord& listed) { return IsSamePart(listed, part); });
}

// At the end, as if added again; the files were staged when it was. What has been added meanwhile stands already.
void CSelectedPartsDlg::OnPutBack()
{
    if (removed_.empty()) {
        return;
    }
    const std::list<PartRecord> back = std::move(removed_.back());
    removed_.pop_back();
    for (const PartRecord& part : back) {
        if (!IsListed(part)) {
            selectedParts.push_back(part);
            AddLastPartRow();
        }
    }
    FocusRow(static_cast<int>(selectedParts.size()) - 1); // what was not added again stands already
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
