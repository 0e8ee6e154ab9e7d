// The small window beside the selection dialog that shows the parts collected so far and lets the user take some
// out or change their quantities. Owns the list of collected parts; touches neither files nor the browser.
#pragma once

#include "partdata/part_record.h"
#include "platform/dialog_window.h"

#include <list>
#include <memory>
#include <string_view>

namespace partkeep {

class CSelectedPartsDlg : public IDialogHandler {
public:
    // The icon is borrowed; null for none.
    CSelectedPartsDlg(IDialogWindows& windows, IconHandle icon) : windows_(windows), dialogIcon_(icon) {}

    // In order of adding; row i of the window shows element i. The selection dialog appends to it, always
    // followed by AddLastPartRow, and copies it.
    std::list<PartRecord> selectedParts;

    // Makes the window, not shown yet, over its owner. False when none can be made.
    bool Create(IDialogWindow& owner);
    [[nodiscard]] bool WindowExists() const { return window_ && window_->Exists(); }

    // Once, behind Create.
    void InitColumns();
    void AddLastPartRow();
    void Show();

    // Does no harm when repeated.
    void EmptyAndDestroy();

    void OnRemove();
    void OnChangeQty();
    void UpdatePartQty(std::u16string_view name, std::u16string_view path, std::u16string_view quantity);

    void OnInitDialog() override;
    void OnCommand(int id) override;

private:
    void SetSelectedQuantities(std::u16string_view quantity);

    IDialogWindows& windows_;
    IconHandle dialogIcon_;
    std::unique_ptr<IDialogWindow> window_;
};

} // namespace partkeep
