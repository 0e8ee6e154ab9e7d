#include "windows/others_disabled.h"

namespace partkeep {

namespace {

constexpr wchar_t disabled_property[] = L"PartkeepDisabledBy";

} // namespace

COthersDisabled::COthersDisabled(HWND owner) : owner_(owner)
{
    Disable(owner_);
    EnumThreadWindows(GetCurrentThreadId(), DisableDialog, reinterpret_cast<LPARAM>(this));
}

COthersDisabled::~COthersDisabled()
{
    Enable(owner_, reinterpret_cast<LPARAM>(this));
    EnumThreadWindows(GetCurrentThreadId(), Enable, reinterpret_cast<LPARAM>(this));
}

BOOL CALLBACK COthersDisabled::DisableDialog(HWND window, LPARAM self) noexcept
{
    if (GetPropW(window, dialog_property) != nullptr) {
        reinterpret_cast<COthersDisabled*>(self)->Disable(window);
    }
    return TRUE;
}

BOOL CALLBACK COthersDisabled::Enable(HWND window, LPARAM self) noexcept
{
    if (GetPropW(window, disabled_property) == reinterpret_cast<HANDLE>(self)) {
        RemovePropW(window, disabled_property);
        EnableWindow(window, TRUE);
    }
    return TRUE;
}

void COthersDisabled::Disable(HWND window)
{
    if (IsWindowEnabled(window) && SetPropW(window, disabled_property, this)) {
        EnableWindow(window, FALSE);
    }
}

} // namespace partkeep
