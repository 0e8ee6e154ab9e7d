#include "desktop/qt_report_list.h"

#include "desktop/control_widgets.h"
#include "partlibrary/library/library_text.h"

namespace partkeep {

void CQtReportList::InsertColumn(int id, int column, std::u16string_view header, int width)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->AddColumn(column, FromWide(header), width);
    }
}

void CQtReportList::SetFullRowSelect(int id)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->setAllColumnsShowFocus(true);
    }
}

void CQtReportList::InsertRow(int id, int row, std::u16string_view text)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->AddRow(row, FromWide(text));
    }
}

void CQtReportList::SetCell(int id, int row, int column, std::u16string_view text)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->SetCell(row, column, FromWide(text));
    }
}

std::u16string CQtReportList::Cell(int id, int row, int column) const
{
    const auto* list = controls_.As<CReportList>(id);
    return list == nullptr ? std::u16string() : ToWide(list->Cell(row, column));
}

void CQtReportList::DeleteRow(int id, int row)
{
    if (auto* list = controls_.As<CReportList>(id)) {
        list->RemoveRow(row);
    }
}

int CQtReportList::SelectedRowCount(int id) const
{
    const auto* list = controls_.As<CReportList>(id);
    return list == nullptr ? 0 : list->SelectedCount();
}

int CQtReportList::NextSelectedRow(int id, int after) const
{
    const auto* list = controls_.As<CReportList>(id);
    return list == nullptr ? -1 : list->NextSelected(after);
}

} // namespace partkeep
