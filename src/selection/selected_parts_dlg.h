// The small window beside the selection dialog that shows the parts collected so far and lets the user take some
// out or change their quantities. Owns the list of collected parts; touches neither files nor the browser.
#pragma once

#include "partdata/part_record.h"
#include "selection/event_door.h"

#include <list>
#include <memory>
#include <string_view>
#include <vector>

namespace partkeep {

class CQuantityKeypadDlg;

class CSelectedPartsDlg : private IDialogHandler {
public:
    // The icon is borrowed; null for none.
    CSelectedPartsDlg(CEventDoor& door, IconHandle icon) : door_(door), dialogIcon_(icon) {}

    // In order of adding; row i of the window shows element i. The selection dialog appends to it, always
    // followed by AddLastPartRow, and copies it.
    std::list<PartRecord> selectedParts;

    // Makes the window, not shown yet, over its owner. False when none can be made.
    bool Create(CDialogEntrance& owner);
    [[nodiscard]] bool WindowExists() const { return window_ != nullptr && window_->Exists(); }

    // Once, behind Create.
    void InitColumns();
    void AddLastPartRow();
    void AddAllRows(); // what was collected while no window could be made
    void Show();

    // Does no harm when repeated.
    void EmptyAndDestroy();

private:
    [[nodiscard]] IDialogHandler& Handler() { return *this; }
    void OnInitDialog() override;
    [[nodiscard]] bool TakesKey(const KeyPress& press) const override;
    void OnKey(const KeyPress& press) override;
    void OnCommand(int id) override;
    void OnRemove();
    void FocusRow(int row);
    void OnPutBack();
    [[nodiscard]] bool IsListed(const PartRecord& part) const;
    void MakeCountLabel();
    void ShowCount();
    void OnChangeQty();
    void UpdatePartQty(std::u16string_view name, std::u16string_view path, std::u16string_view quantity);
    void AddRow(int row, const PartRecord& part);
    int RunOverOwner(CQuantityKeypadDlg& keypad);
    void SetSelectedQuantities(std::u16string_view quantity);

    CEventDoor& door_;
    std::vector<std::list<PartRecord>> removed_; // by one command each, the last one last
    IconHandle dialogIcon_;
    std::unique_ptr<CDialogEntrance> entrance_; // from the first attempt to make the window on
    IDialogWindow* window_ = nullptr;           // the entrance's
};

} // namespace partkeep
