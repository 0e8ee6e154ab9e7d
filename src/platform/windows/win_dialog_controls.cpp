// Controls by id, the lists, the focus, and children made at run time.

#include "platform/windows/dialog_init_data.h"
#include "platform/windows/dialog_scale.h"
#include "platform/windows/hosted_control.h"
#include "platform/windows/picture_panel.h"
#include "platform/windows/wide.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/win_dialog_window.h"
#include "platform/windows/win_panel.h"
#include "resources/dialog_templates.h"

#include <commctrl.h>
#include <objbase.h>

#include <array>

namespace partkeep {

LRESULT WinDialogWindow::Send(int id, UINT message, WPARAM word, LPARAM value) const
{
    HWND control = Control(id);
    return control != nullptr ? SendMessageW(control, message, word, value) : 0;
}

void WinDialogWindow::SetText(int id, std::u16string_view text)
{
    SetDlgItemTextW(window_, id, WideText(text).c_str());
}

std::u16string WinDialogWindow::Text(int id) const
{
    HWND control = Control(id);
    if (control == nullptr) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return FromWide(text);
}

// A control that is disabled while it has the focus leaves it to nobody, and the keys with it. It gets it back.
void WinDialogWindow::Enable(int id, bool enabled)
{
    HWND control = Control(id);
    if (!enabled && control != nullptr && GetFocus() == control) {
        disabled_with_focus_ = id;
    }
    EnableWindow(control, enabled ? TRUE : FALSE);
    if (enabled && disabled_with_focus_ == id) {
        disabled_with_focus_ = 0;
        if (GetFocus() == nullptr && GetActiveWindow() == window_) {
            Focus(id);
        }
    }
}

void WinDialogWindow::ShowControl(int id, bool visible)
{
    ShowWindow(Control(id), visible ? SW_SHOW : SW_HIDE);
}

void WinDialogWindow::SetReadOnly(int id)
{
    Send(id, EM_SETREADONLY, TRUE);
}

void WinDialogWindow::LimitText(int id, int characters)
{
    Send(id, EM_LIMITTEXT, static_cast<WPARAM>(characters));
}

void WinDialogWindow::ClearSelectedText(int id)
{
    Send(id, WM_CLEAR);
}

void WinDialogWindow::SetCheck(int id, int state)
{
    Send(id, BM_SETCHECK, static_cast<WPARAM>(state));
}

int WinDialogWindow::Check(int id) const
{
    return static_cast<int>(Send(id, BM_GETCHECK));
}

Rect WinDialogWindow::ControlClientRect(int id) const
{
    return LogicalClientOf(Control(id));
}

Rect WinDialogWindow::MapToDialog(int id, const Rect& client_area) const
{
    HWND control = Control(id);
    return control != nullptr ? MapArea(control, window_, client_area) : Rect{};
}

void WinDialogWindow::MoveControl(int id, const Rect& area)
{
    if (HWND control = Control(id); control != nullptr) {
        MoveClientArea(control, area, true);
    }
}

void WinDialogWindow::Focus(int id)
{
    if (HWND control = Control(id); control != nullptr) {
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    }
}

HWND WinDialogWindow::FocusedChild() const
{
    HWND child = GetFocus();
    while (child != nullptr && GetAncestor(child, GA_PARENT) != window_) {
        child = GetAncestor(child, GA_PARENT);
    }
    return child;
}

int WinDialogWindow::FocusedControl() const
{
    HWND child = window_ != nullptr ? FocusedChild() : nullptr;
    return child != nullptr ? GetDlgCtrlID(child) : 0;
}

void WinDialogWindow::MoveFocusByOrder(bool forward)
{
    SendMessageW(window_, WM_NEXTDLGCTL, forward ? 0 : 1, FALSE);
}

void WinDialogWindow::ResetEntries(int id)
{
    Send(id, CB_RESETCONTENT);
}

void WinDialogWindow::InsertEntry(int id, int index, std::u16string_view text)
{
    const std::wstring entry = WideText(text);
    Send(id, CB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(entry.c_str()));
}

void WinDialogWindow::SelectEntry(int id, int index)
{
    Send(id, CB_SETCURSEL, static_cast<WPARAM>(index));
}

int WinDialogWindow::SelectedEntry(int id) const
{
    return Control(id) != nullptr ? static_cast<int>(Send(id, CB_GETCURSEL)) : -1;
}

void WinDialogWindow::InsertColumn(int id, int column, std::u16string_view header, int width)
{
    std::wstring text = WideText(header);
    LVCOLUMNW description{};
    description.mask = LVCF_FMT | LVCF_TEXT | LVCF_WIDTH;
    description.fmt = LVCFMT_LEFT;
    description.pszText = text.data();
    description.cx = DialogScale(window_).ToDevice(width);
    Send(id, LVM_INSERTCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&description));
}

void WinDialogWindow::SetFullRowSelect(int id)
{
    Send(id, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
}

void WinDialogWindow::InsertRow(int id, int row, std::u16string_view text)
{
    std::wstring cell = WideText(text);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.pszText = cell.data();
    Send(id, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void WinDialogWindow::SetCell(int id, int row, int column, std::u16string_view text)
{
    std::wstring cell = WideText(text);
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = cell.data();
    Send(id, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

// The list answers how much it has copied, never how much there is: the buffer grows until the text fits.
std::u16string WinDialogWindow::Cell(int id, int row, int column) const
{
    for (std::wstring cell(256, L'\0');; cell.assign(cell.size() * 2, L'\0')) {
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = cell.data();
        item.cchTextMax = static_cast<int>(cell.size());
        const auto copied = static_cast<std::size_t>(
            Send(id, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item)));
        if (copied + 1 < cell.size()) {
            return FromWide({item.pszText, copied});
        }
    }
}

void WinDialogWindow::DeleteRow(int id, int row)
{
    Send(id, LVM_DELETEITEM, static_cast<WPARAM>(row));
}

int WinDialogWindow::SelectedRowCount(int id) const
{
    return static_cast<int>(Send(id, LVM_GETSELECTEDCOUNT));
}

int WinDialogWindow::NextSelectedRow(int id, int after) const
{
    if (Control(id) == nullptr) {
        return -1;
    }
    return static_cast<int>(Send(id, LVM_GETNEXTITEM, static_cast<WPARAM>(after), LVNI_SELECTED));
}

std::unique_ptr<IHostedControl> WinDialogWindow::CreateHostedControl(const ClassId& class_id, int id, const Rect& area)
{
    HWND site = CreateSiteWindow(module_, window_, id, DialogScale(window_).ToDevice(area), WS_VISIBLE | WS_TABSTOP);
    if (site == nullptr) {
        return nullptr;
    }
    std::shared_ptr<SiteContent> content = CreateControlInSite(site, {SystemClassId(class_id), true, std::nullopt});
    if (content == nullptr) {
        DestroyWindow(site);
        return nullptr;
    }
    return MakeHostedControl(std::move(content));
}

// A place whose control is not installed shows pictures by itself.
std::unique_ptr<IHostedControl> WinDialogWindow::TemplateControl(int id)
{
    HWND site = Control(id);
    std::array<wchar_t, 64> class_name{};
    ControlOrder order;
    if (site == nullptr || GetClassNameW(site, class_name.data(), static_cast<int>(class_name.size())) == 0 ||
        FAILED(CLSIDFromString(class_name.data(), &order.class_id))) {
        return nullptr;
    }
    order.extent = InitialExtent(module_, template_.number, id);
    std::shared_ptr<SiteContent> content = CreateControlInSite(site, order);
    if (content == nullptr) {
        content = MakePicturePanel(site);
        SetSiteContent(site, content);
    }
    return MakeHostedControl(std::move(content));
}

std::unique_ptr<IPanelWindow> WinDialogWindow::CreatePanel(int id, const Rect& area)
{
    return MakePanel(module_, window_, id, DialogScale(window_).ToDevice(area));
}

} // namespace partkeep
