#include "windows/control_site.h"

#include "windows/dialog_scale.h"

#include <oleauto.h>

#include <cstdlib>
#include <string>

namespace partkeep {

namespace {

// A colour by its place in the user's scheme, which the control then follows by itself.
HRESULT PutSystemColor(VARIANT& result, int index)
{
    constexpr ULONG by_index = 0x8000'0000;
    result.vt = VT_I4;
    result.lVal = static_cast<LONG>(by_index | static_cast<ULONG>(index));
    return S_OK;
}

// The dialog's font; the system's own where the window has none.
HRESULT PutFont(VARIANT& result, HWND dialog)
{
    constexpr LONG points_per_inch = 72;
    constexpr LONG currency_unit = 10'000; // the size is told in it
    auto* handle = reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0));
    LOGFONTW font{};
    GetObjectW(handle != nullptr ? handle : GetStockObject(DEFAULT_GUI_FONT), sizeof font, &font);
    FONTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.lpstrName = font.lfFaceName;
    description.cySize.int64 =
        LONGLONG{MulDiv(std::abs(font.lfHeight), points_per_inch * currency_unit, DpiOf(dialog))};
    description.sWeight = static_cast<SHORT>(font.lfWeight);
    description.sCharset = font.lfCharSet;
    description.fItalic = font.lfItalic;
    const HRESULT status =
        OleCreateFontIndirect(&description, IID_IFontDisp, reinterpret_cast<void**>(&result.pdispVal));
    result.vt = static_cast<VARTYPE>(SUCCEEDED(status) ? VT_DISPATCH : VT_EMPTY);
    return status;
}

// What a control calls itself in a message of its own: by the title of the dialog that it is in.
HRESULT PutTitle(VARIANT& result, HWND dialog)
{
    std::wstring title(static_cast<std::size_t>(GetWindowTextLengthW(dialog)) + 1, L'\0');
    const int length = GetWindowTextW(dialog, title.data(), static_cast<int>(title.size()));
    result.bstrVal = SysAllocStringLen(title.data(), static_cast<UINT>(length));
    result.vt = static_cast<VARTYPE>(result.bstrVal != nullptr ? VT_BSTR : VT_EMPTY);
    return result.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
}

} // namespace

HRESULT CControlSite::QueryInterface(REFIID id, void** result)
{
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (id == IID_IUnknown || id == IID_IOleClientSite) {
        *result = static_cast<IOleClientSite*>(this);
    } else if (id == IID_IOleInPlaceSite || id == IID_IOleWindow) {
        *result = static_cast<IOleInPlaceSite*>(this);
    } else if (id == IID_IOleInPlaceFrame || id == IID_IOleInPlaceUIWindow) {
        *result = static_cast<IOleInPlaceFrame*>(this);
    } else if (id == IID_IOleControlSite) {
        *result = static_cast<IOleControlSite*>(this);
    } else if (id == IID_IDispatch) {
        *result = static_cast<IDispatch*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG CControlSite::Release()
{
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT CControlSite::GetMoniker(DWORD, DWORD, IMoniker** moniker)
{
    *moniker = nullptr;
    return E_NOTIMPL;
}

HRESULT CControlSite::GetContainer(IOleContainer** container)
{
    *container = nullptr;
    return E_NOINTERFACE;
}

HRESULT CControlSite::GetWindow(HWND* window)
{
    *window = window_;
    return window_ != nullptr ? S_OK : E_FAIL;
}

HRESULT CControlSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT place,
                                       LPRECT clip, LPOLEINPLACEFRAMEINFO info)
{
    *document = nullptr;
    *frame = nullptr;
    if (window_ == nullptr) {
        return E_FAIL;
    }
    *frame = static_cast<IOleInPlaceFrame*>(this);
    AddRef();
    GetClientRect(window_, place);
    *clip = *place;
    info->fMDIApp = FALSE;
    info->hwndFrame = GetAncestor(window_, GA_ROOT);
    info->haccel = nullptr;
    info->cAccelEntries = 0;
    return S_OK;
}

HRESULT CControlSite::GetExtendedControl(IDispatch** control)
{
    *control = nullptr;
    return E_NOTIMPL;
}

HRESULT CControlSite::GetTypeInfoCount(UINT* count)
{
    *count = 0;
    return S_OK;
}

HRESULT CControlSite::Invoke(DISPID property, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*)
{
    if (result == nullptr) {
        return E_POINTER;
    }
    VariantInit(result);
    switch (property) {
    case DISPID_AMBIENT_USERMODE:
        result->vt = VT_BOOL;
        result->boolVal = VARIANT_TRUE;
        return S_OK;
    case DISPID_AMBIENT_UIDEAD:
    case DISPID_AMBIENT_SHOWGRABHANDLES:
    case DISPID_AMBIENT_SHOWHATCHING:
        result->vt = VT_BOOL;
        result->boolVal = VARIANT_FALSE;
        return S_OK;
    case DISPID_AMBIENT_LOCALEID:
        result->vt = VT_I4;
        result->lVal = static_cast<LONG>(GetUserDefaultLCID());
        return S_OK;
    case DISPID_AMBIENT_BACKCOLOR:
        return PutSystemColor(*result, COLOR_3DFACE);
    case DISPID_AMBIENT_FORECOLOR:
        return PutSystemColor(*result, COLOR_BTNTEXT);
    case DISPID_AMBIENT_FONT:
        return PutFont(*result, GetAncestor(window_, GA_ROOT));
    case DISPID_AMBIENT_DISPLAYNAME:
        return PutTitle(*result, GetAncestor(window_, GA_ROOT));
    default:
        return DISP_E_MEMBERNOTFOUND;
    }
}

} // namespace partkeep
