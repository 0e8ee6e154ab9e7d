// The children of a dialog window that are made at run time.

#include "resources/dialog_templates.h"
#include "windows/dialog_init_data.h"
#include "windows/dialog_scale.h"
#include "windows/hosted_control.h"
#include "windows/picture_panel.h"
#include "windows/win_dialog_window.h"
#include "windows/win_panel.h"

#include <objbase.h>

#include <array>

namespace partkeep {

std::unique_ptr<IHostedControl> CWinDialogWindow::CreateHostedControl(const ClassId& class_id, int id, const Rect& area)
{
    HWND site = CreateSiteWindow(module_, window_, id, CDialogScale(window_).ToDevice(area), WS_VISIBLE | WS_TABSTOP);
    if (site == nullptr) {
        return nullptr;
    }
    std::shared_ptr<CSiteContent> content = CreateControlInSite(site, {SystemClassId(class_id), true, std::nullopt});
    if (content == nullptr) {
        DestroyWindow(site);
        return nullptr;
    }
    return MakeHostedControl(std::move(content));
}

// A place whose control is not installed shows pictures by itself.
std::unique_ptr<IHostedControl> CWinDialogWindow::TemplateControl(int id)
{
    HWND site = GetDlgItem(window_, id);
    std::array<wchar_t, 64> class_name{};
    ControlOrder order;
    if (site == nullptr || GetClassNameW(site, class_name.data(), static_cast<int>(class_name.size())) == 0 ||
        FAILED(CLSIDFromString(class_name.data(), &order.class_id))) {
        return nullptr;
    }
    order.extent = InitialExtent(module_, template_.number, id);
    std::shared_ptr<CSiteContent> content = CreateControlInSite(site, order);
    if (content == nullptr) {
        content = MakePicturePanel(site);
        SetSiteContent(site, content);
    }
    return MakeHostedControl(std::move(content));
}

void CWinDialogWindow::CreateLabel(int id, const Rect& area)
{
    const RECT place = CDialogScale(window_).ToDevice(area);
    HWND label = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_LEFT | SS_CENTERIMAGE | SS_NOPREFIX,
                                 place.left, place.top, place.right - place.left, place.bottom - place.top, window_,
                                 reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), module_, nullptr);
    if (label != nullptr) {
        SendMessageW(label, WM_SETFONT, static_cast<WPARAM>(SendMessageW(window_, WM_GETFONT, 0, 0)), FALSE);
    }
}

std::unique_ptr<IPanelWindow> CWinDialogWindow::CreatePanel(int id, const Rect& area)
{
    return MakePanel(module_, window_, id, CDialogScale(window_).ToDevice(area));
}

} // namespace partkeep
