// Asks for one quantity, by keyboard or by a block of large digit buttons: the only place where a quantity is
// entered and tested. One object per question, so that the field always starts empty.
#pragma once

#include "selection/event_door.h"

#include <string>

namespace partkeep {

class CQuantityKeypadDlg : private IDialogHandler {
public:
    // The icon is borrowed; null for none.
    CQuantityKeypadDlg(CEventDoor& door, IconHandle icon);

    // id_ok when a valid quantity was accepted, id_cancel otherwise.
    int DoModal() { return entrance_.RunModal(); }

    // After id_ok: the field's text as entered, 007 and blanks at its end included.
    [[nodiscard]] std::u16string Quantity() const { return quantityText_; }

private:
    void OnInitDialog() override;
    void OnCommand(int id) override;
    void OnTextChange(int id) override;
    void OnDigit(const char16_t* digits);
    void OnOK();

    CDialogEntrance entrance_;
    IDialogWindow& window_; // the entrance's
    IconHandle dialogIcon_;
    std::u16string quantityText_; // always what the field holds
};

} // namespace partkeep
