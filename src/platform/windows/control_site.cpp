#include "platform/windows/control_site.h"

namespace partkeep {

HRESULT ControlSite::QueryInterface(REFIID id, void** result)
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

ULONG ControlSite::Release()
{
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ControlSite::GetMoniker(DWORD, DWORD, IMoniker** moniker)
{
    *moniker = nullptr;
    return E_NOTIMPL;
}

HRESULT ControlSite::GetContainer(IOleContainer** container)
{
    *container = nullptr;
    return E_NOINTERFACE;
}

HRESULT ControlSite::GetWindow(HWND* window)
{
    *window = window_;
    return window_ != nullptr ? S_OK : E_FAIL;
}

HRESULT ControlSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT place,
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

HRESULT ControlSite::GetExtendedControl(IDispatch** control)
{
    *control = nullptr;
    return E_NOTIMPL;
}

HRESULT ControlSite::GetTypeInfoCount(UINT* count)
{
    *count = 0;
    return S_OK;
}

HRESULT ControlSite::Invoke(DISPID property, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*)
{
    if (result == nullptr) {
        return E_POINTER;
    }
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
    default:
        return DISP_E_MEMBERNOTFOUND;
    }
}

} // namespace partkeep
