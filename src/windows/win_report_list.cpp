#include "windows/win_report_list.h"

#include "platform/windows/wide.h"
#include "platform/windows/wide_text.h"
#include "windows/dialog_scale.h"
#include "windows/win_dialog_fields.h"

#include <commctrl.h>

namespace partkeep {

namespace {

class CWinReportList final : public IReportList {
public:
    explicit CWinReportList(const HWND& window) : window_(window) {}

    void InsertColumn(int id, int column, std::u16string_view header, int width) override
    {
        std::wstring text = WideText(header);
        LVCOLUMNW description{};
        description.mask = LVCF_FMT | LVCF_TEXT | LVCF_WIDTH;
        description.fmt = LVCFMT_LEFT;
        description.pszText = text.data();
        description.cx = CDialogScale(window_).ToDevice(width);
        SendToControl(window_, id, LVM_INSERTCOLUMNW, static_cast<WPARAM>(column),
                      reinterpret_cast<LPARAM>(&description));
    }
    void SetFullRowSelect(int id) override
    {
        SendToControl(window_, id, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    }
    void InsertRow(int id, int row, std::u16string_view text) override
    {
        std::wstring cell = WideText(text);
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = row;
        item.pszText = cell.data();
        SendToControl(window_, id, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    void SetCell(int id, int row, int column, std::u16string_view text) override
    {
        std::wstring cell = WideText(text);
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = cell.data();
        SendToControl(window_, id, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    }
    // The list answers how much it has copied, never how much there is: the buffer grows until the text fits.
    [[nodiscard]] std::u16string Cell(int id, int row, int column) const override
    {
        for (std::wstring cell(256, L'\0');; cell.assign(cell.size() * 2, L'\0')) {
            LVITEMW item{};
            item.iSubItem = column;
            item.pszText = cell.data();
            item.cchTextMax = static_cast<int>(cell.size());
            const auto copied = static_cast<std::size_t>(SendToControl(
                window_, id, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item)));
            if (copied + 1 < cell.size()) {
                return FromWide({item.pszText, copied});
            }
        }
    }
    void DeleteRow(int id, int row) override { SendToControl(window_, id, LVM_DELETEITEM, static_cast<WPARAM>(row)); }
    [[nodiscard]] int SelectedRowCount(int id) const override
    {
        return static_cast<int>(SendToControl(window_, id, LVM_GETSELECTEDCOUNT));
    }
    [[nodiscard]] int NextSelectedRow(int id, int after) const override
    {
        if (GetDlgItem(window_, id) == nullptr) {
            return -1;
        }
        return static_cast<int>(SendToControl(window_, id, LVM_GETNEXTITEM, static_cast<WPARAM>(after), LVNI_SELECTED));
    }
    void SelectAllRows(int id) override { SetState(id, -1, LVIS_SELECTED, LVIS_SELECTED); }
    void FocusRow(int id, int row) override
    {
        SetState(id, row, LVIS_FOCUSED, LVIS_FOCUSED);
        SendToControl(window_, id, LVM_SETSELECTIONMARK, 0, row);
        SendToControl(window_, id, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    }

private:
    void SetState(int id, int row, UINT state, UINT mask) const // row -1: all
    {
        LVITEMW item{};
        item.state = state;
        item.stateMask = mask;
        SendToControl(window_, id, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    }

    const HWND& window_;
};

} // namespace

std::unique_ptr<IReportList> MakeWinReportList(const HWND& window)
{
    return std::make_unique<CWinReportList>(window);
}

} // namespace partkeep
