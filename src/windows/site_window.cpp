#include "windows/site_window.h"

#include "windows/live_counts.h"

#include <iterator>
#include <string_view>

namespace partkeep {

namespace {

constexpr wchar_t site_class_name[] = L"PartkeepControlSite";
constexpr wchar_t frame_class_name[] = L"PartkeepHiddenFrame";

using ContentHolder = std::shared_ptr<CSiteContent>;

ContentHolder* HolderOf(HWND site)
{
    return reinterpret_cast<ContentHolder*>(GetWindowLongPtrW(site, GWLP_USERDATA));
}

void PaintSite(HWND site, CSiteContent& content)
{
    PAINTSTRUCT paint;
    HDC context = BeginPaint(site, &paint);
    RECT client;
    GetClientRect(site, &client);
    content.OnPaint(context, client);
    EndPaint(site, &paint);
}

// True when the message needs nothing more.
bool HandleSiteMessage(HWND site, CSiteContent& content, UINT message)
{
    RECT client;
    switch (message) {
    case WM_PAINT:
        PaintSite(site, content);
        return true;
    case WM_SIZE:
        GetClientRect(site, &client);
        content.OnSize(client);
        return false;
    case WM_SETFOCUS:
        content.OnFocus();
        return true;
    case WM_DESTROY:
        content.OnDestroy();
        return false;
    default:
        return false;
    }
}

LRESULT CALLBACK SiteProcedure(HWND site, UINT message, WPARAM word, LPARAM value) noexcept
{
    if (message == WM_NCCREATE) {
        SetWindowLongPtrW(site, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new (std::nothrow) ContentHolder));
        ++TheLiveCounts().windows;
        return HolderOf(site) != nullptr ? TRUE : FALSE;
    }
    ContentHolder* holder = HolderOf(site);
    if (holder != nullptr && *holder != nullptr) {
        const ContentHolder content = *holder; // what it does may destroy the window
        if (HandleSiteMessage(site, *content, message)) {
            return 0;
        }
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(site, GWLP_USERDATA, 0);
        delete holder;
        --TheLiveCounts().windows;
    }
    return DefWindowProcW(site, message, word, value);
}

void RegisterWindowClass(HINSTANCE module, const wchar_t* name, WNDPROC procedure)
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = procedure;
    description.hInstance = module;
    description.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_3DFACE + 1);
    description.lpszClassName = name;
    RegisterClassExW(&description);
}

} // namespace

void RegisterSiteWindows(HINSTANCE module)
{
    RegisterWindowClass(module, site_class_name, SiteProcedure);
    RegisterWindowClass(module, picture_control_class_name, SiteProcedure);
    RegisterWindowClass(module, frame_class_name, DefWindowProcW);
}

void UnregisterSiteWindows(HINSTANCE module)
{
    for (const wchar_t* name : {site_class_name, picture_control_class_name, frame_class_name}) {
        UnregisterClassW(name, module);
    }
}

HWND CreateSiteWindow(HINSTANCE module, HWND parent, int id, const RECT& area, DWORD style)
{
    return CreateWindowExW(0, site_class_name, L"", WS_CHILD | WS_CLIPCHILDREN | style, area.left, area.top,
                           area.right - area.left, area.bottom - area.top, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), module, nullptr);
}

bool IsMadeAtRunTime(HWND site)
{
    wchar_t name[std::size(site_class_name) + 1];
    return GetClassNameW(site, name, static_cast<int>(std::size(name))) != 0 &&
           std::wstring_view(name) == site_class_name;
}

void SetSiteContent(HWND site, std::shared_ptr<CSiteContent> content)
{
    if (ContentHolder* holder = HolderOf(site); holder != nullptr) {
        *holder = std::move(content);
    }
}

CSiteContent* ContentOfSite(HWND site)
{
    if (site == nullptr || reinterpret_cast<WNDPROC>(GetWindowLongPtrW(site, GWLP_WNDPROC)) != SiteProcedure) {
        return nullptr;
    }
    ContentHolder* holder = HolderOf(site);
    return holder != nullptr ? holder->get() : nullptr;
}

HWND CreateHiddenFrame(HINSTANCE module)
{
    return CreateWindowExW(0, frame_class_name, L"", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                           CW_USEDEFAULT, nullptr, nullptr, module, nullptr);
}

} // namespace partkeep
