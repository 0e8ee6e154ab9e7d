#include "desktop/qt_report_list.h"

#include "desktop/control_widgets.h"
#include "partlibrary/library/library_text.h"

namespace partkeep {

namespace {

class CQtReportList final : public IReportList {
public:
    explicit CQtReportList(CControlSet& controls) : controls_(controls) {}

    void InsertColumn(int id, int column, std::u16string_view header, int width) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->AddColumn(column, FromWide(header), width);
        }
    }
    void SetFullRowSelect(int id) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->setAllColumnsShowFocus(true);
        }
    }
    void InsertRow(int id, int row, std::u16string_view text) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->AddRow(row, FromWide(text));
        }
    }
    void SetCell(int id, int row, int column, std::u16string_view text) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->SetCell(row, column, FromWide(text));
        }
    }
    [[nodiscard]] std::u16string Cell(int id, int row, int column) const override
    {
        const auto* list = controls_.As<CReportList>(id);
        return list == nullptr ? std::u16string() : ToWide(list->Cell(row, column));
    }
    void DeleteRow(int id, int row) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->RemoveRow(row);
        }
    }
    [[nodiscard]] int SelectedRowCount(int id) const override
    {
        const auto* list = controls_.As<CReportList>(id);
        return list == nullptr ? 0 : list->SelectedCount();
    }
    [[nodiscard]] int NextSelectedRow(int id, int after) const override
    {
        const auto* list = controls_.As<CReportList>(id);
        return list == nullptr ? -1 : list->NextSelected(after);
    }
    void SelectAllRows(int id) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->selectAll();
        }
    }
    void FocusRow(int id, int row) override
    {
        if (auto* list = controls_.As<CReportList>(id)) {
            list->FocusRow(row);
        }
    }

private:
    CControlSet& controls_;
};

} // namespace

std::unique_ptr<IReportList> MakeQtReportList(CControlSet& controls)
{
    return std::make_unique<CQtReportList>(controls);
}

} // namespace partkeep
