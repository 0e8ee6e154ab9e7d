// The report lists of a dialog window by id. Borrows the window's set of controls.
#pragma once

#include "desktop/control_set.h"
#include "platform/dialog_window.h"

#include <string>
#include <string_view>

namespace partkeep {

class CQtReportList : public IReportList {
public:
    explicit CQtReportList(CControlSet& controls) : controls_(controls) {}

    void InsertColumn(int id, int column, std::u16string_view header, int width) override;
    void SetFullRowSelect(int id) override;
    void InsertRow(int id, int row, std::u16string_view text) override;
    void SetCell(int id, int row, int column, std::u16string_view text) override;
    [[nodiscard]] std::u16string Cell(int id, int row, int column) const override;
    void DeleteRow(int id, int row) override;
    [[nodiscard]] int SelectedRowCount(int id) const override;
    [[nodiscard]] int NextSelectedRow(int id, int after) const override;

private:
    CControlSet& controls_;
};

} // namespace partkeep
