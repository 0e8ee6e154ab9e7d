// Asks for one quantity, by keyboard or by a block of large digit buttons: the only place where a quantity is
// entered and tested. One object per question, so that the field always starts empty.
#pragma once

#include "platform/dialog_window.h"

#include <memory>
#include <string>

namespace partkeep {

class CQuantityKeypadDlg : public IDialogHandler {
public:
    // The icon is borrowed; null for none.
    CQuantityKeypadDlg(IDialogWindows& windows, IconHandle icon) : windows_(windows), dialogIcon_(icon) {}

    // id_ok when a valid quantity was accepted, id_cancel otherwise.
    int DoModal();

    // After id_ok: the field's text as entered, 007 and blanks at its end included.
    [[nodiscard]] std::u16string Quantity() const { return quantityText_; }

    void OnInitDialog() override;
    void OnCommand(int id) override;
    void OnTextChange(int id) override;

private:
    void OnDigit(const char16_t* digits);
    void OnOK();

    IDialogWindows& windows_;
    IconHandle dialogIcon_;
    std::unique_ptr<IDialogWindow> window_;
    std::u16string quantityText_; // always what the field holds
};

} // namespace partkeep
