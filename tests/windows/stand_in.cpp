#include "tests/windows/stand_in.h"

#include "controls/zan_pic_ctrl.h"
#include "platform/windows/wide.h"
#include "windows/com_ptr.h"
#include "windows/hosted_control.h"

#include <ocidl.h>
#include <ole2.h>
#include <oleauto.h>
#include <olectl.h>

namespace partkeep {
namespace {

constexpr IID event_interface{0x7E570001, 0x57A9, 0x4D11, {0x8F, 1, 2, 3, 4, 5, 6, 7}};
constexpr wchar_t window_class[] = L"PartkeepStandIn";

StandIn* stand_in = nullptr;

ControlArgument ArgumentOf(const VARIANT& variant)
{
    const auto type = static_cast<ControlType>(variant.vt);
    switch (variant.vt) {
    case VT_BSTR:
        return {type,
                std::u16string_view(reinterpret_cast<const char16_t*>(variant.bstrVal), SysStringLen(variant.bstrVal))};
    case VT_I2:
        return {type, static_cast<std::int16_t>(variant.iVal)};
    case VT_I4:
        return {type, static_cast<std::int32_t>(variant.lVal)};
    default:
        return {type, variant.byref};
    }
}

void PutResult(VARIANT& variant, ControlType type, const ControlResult& result)
{
    variant.vt = static_cast<VARTYPE>(type);
    if (const auto* text = std::get_if<std::u16string>(&result)) {
        variant.bstrVal = SysAllocStringLen(AsWide(text->data()), static_cast<UINT>(text->size()));
    } else if (const auto* small = std::get_if<std::int16_t>(&result)) {
        variant.iVal = *small;
    } else if (const auto* number = std::get_if<std::int32_t>(&result)) {
        variant.lVal = *number;
    } else {
        variant.vt = VT_EMPTY;
    }
}

// All that a container asks of a control, and one sink.
class Control final : public IOleObject,
                      public IOleInPlaceObject,
                      public IOleInPlaceActiveObject,
                      public IDispatch,
                      public IConnectionPointContainer,
                      public IConnectionPoint,
                      public IProvideClassInfo2 {
public:
    explicit Control(bool browser) : browser_(browser) { ++stand_in->controls; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override
    {
        *result = id == IID_IUnknown || id == IID_IOleObject ? static_cast<IOleObject*>(this)
                  : id == IID_IOleInPlaceObject              ? static_cast<IOleInPlaceObject*>(this)
                  : id == IID_IOleInPlaceActiveObject        ? static_cast<IOleInPlaceActiveObject*>(this)
                  : id == IID_IDispatch                      ? static_cast<IDispatch*>(this)
                  : id == IID_IConnectionPointContainer      ? static_cast<IConnectionPointContainer*>(this)
                  : id == IID_IProvideClassInfo2             ? static_cast<IProvideClassInfo2*>(this)
                                                             : static_cast<void*>(nullptr);
        references_ += *result != nullptr ? 1 : 0;
        return *result != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references_;
        if (left == 0) {
            --stand_in->controls;
            delete this;
        }
        return left;
    }

    void Fire(DISPID event) const
    {
        DISPPARAMS none{};
        if (sink_) {
            sink_->Invoke(event, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
        }
    }

    VARIANT Ambient(DISPID property) const
    {
        VARIANT value;
        VariantInit(&value);
        DISPPARAMS none{};
        CComPtr<IDispatch> container;
        if (SUCCEEDED(site_->QueryInterface(IID_IDispatch, container.PutVoid()))) {
            container->Invoke(property, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &value, nullptr, nullptr);
        }
        return value;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO*, UINT*) override
    {
        std::vector<ControlArgument> arguments;
        for (UINT left = parameters->cArgs; left > 0; --left) {
            arguments.push_back(ArgumentOf(parameters->rgvarg[left - 1]));
        }
        const OperationSignature* signature = browser_ ? FindBrowserSignature(id) : nullptr;
        const ControlType type = result != nullptr && signature != nullptr ? signature->result : ControlType::None;
        const InvokeKind kind = flags == DISPATCH_METHOD        ? InvokeKind::Method
                                : flags == DISPATCH_PROPERTYPUT ? InvokeKind::PropertyPut
                                                                : InvokeKind::PropertyGet;
        const ControlResult answer = scripted_->Invoke(id, kind, arguments, type);
        const HRESULT status = std::exchange(stand_in->callStatus, S_OK);
        if (result != nullptr && SUCCEEDED(status)) {
            PutResult(*result, type, answer);
        }
        return status;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* site) override
    {
        site_ = CComPtr<IOleClientSite>(site);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND parent, LPCRECT area) override
    {
        if (verb != OLEIVERB_INPLACEACTIVATE) {
            return S_OK;
        }
        window_ =
            CreateWindowExW(0, window_class, L"", WS_CHILD | WS_VISIBLE, area->left, area->top,
                            area->right - area->left, area->bottom - area->top, parent, nullptr, nullptr, nullptr);
        if (browser_) {
            stand_in->browserWindow = window_;
            stand_in->fire = [this](DISPID event) { Fire(event); };
            stand_in->ambient = [this](DISPID property) { return Ambient(property); };
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Close(DWORD) override { return DestroyWindow(window_) ? S_OK : E_FAIL; }
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD, DWORD* status) override
    {
        *status = OLEMISC_SETCLIENTSITEFIRST;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD, SIZEL* size) override
    {
        if (!browser_) {
            stand_in->recorder.Note("extent " + std::to_string(size->cx) + " " + std::to_string(size->cy));
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Update() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsUpToDate() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD, LPOLESTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD, SIZEL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override
    {
        *window = window_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT place, LPCRECT) override
    {
        return MoveWindow(window_, place->left, place->top, place->right, place->bottom, TRUE) ? S_OK : E_FAIL;
    }
    // A control that would take every key for itself.
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG message) override
    {
        stand_in->recorder.Note("takes key " + std::to_string(message->wParam));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UIDeactivate() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID id, IConnectionPoint** point) override
    {
        *point = id == event_interface ? this : nullptr;
        references_ += *point != nullptr ? 1 : 0;
        return *point != nullptr ? S_OK : CONNECT_E_NOCONNECTION;
    }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD*) override
    {
        return sink->QueryInterface(event_interface, sink_.PutVoid());
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override
    {
        sink_.Reset();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD, GUID* id) override
    {
        *id = event_interface;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo**) override { return E_NOTIMPL; }

private:
    bool browser_;
    std::unique_ptr<IHostedControl> scripted_ = stand_in->script.MakeControl();
    ULONG references_ = 1;
    HWND window_ = nullptr;
    CComPtr<IOleClientSite> site_;
    CComPtr<IDispatch> sink_;
};

// Beside the entries nothing is selected.
LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM word, LPARAM value)
{
    ControlScript& script = stand_in->script;
    const bool selects = message == WM_LBUTTONDOWN;
    if (window != stand_in->browserWindow || (!selects && message != WM_RBUTTONDOWN)) {
        return DefWindowProcW(window, message, word, value);
    }
    SetFocus(window);
    if (selects) {
        const auto row = static_cast<std::size_t>(HIWORD(value) / StandIn::row_height);
        script.selection.clear();
        if (row < script.list.size()) {
            script.selection.push_back(script.list[row]);
        }
    }
    stand_in->fire(DISPID_CLICK);
    return 0;
}

class Factory final : public IClassFactory {
public:
    explicit Factory(bool browser) : browser_(browser) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** result) override
    {
        *result = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** result) override
    {
        auto* control = new Control(browser_);
        const HRESULT status = control->QueryInterface(id, result);
        control->Release();
        return status;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    bool browser_;
};

Factory factories[2]{Factory(true), Factory(false)};

} // namespace

StandIn::StandIn()
{
    stand_in = this;
    for (const char16_t* name : {u"ALPHA", u"BETA", u"GAMMA"}) {
        script.list.push_back({name, u"SERVER1", u"FOLDER1", 15000, u"SPCC", u"M1", u"made of steel"});
    }
    script.selection = script.list;
    script.On(BrowserOperation::GetCurrentServer, ControlResult(std::u16string(u"SERVER1")));
    script.On(BrowserOperation::GetCurrentFolder, ControlResult(std::u16string(u"FOLDER1")));
    script.filesByKind = {{part_data_kind, {u".iga"}}, {nct_data_kind, {u".NCD"}}};
    script.On(BrowserOperation::ConnectServer, [](ControlScript::Arguments arguments) -> ControlResult {
        return static_cast<std::int16_t>(std::get<std::u16string_view>(arguments[0].value) == u"SERVER1" ? -1 : 0);
    });
    OleInitialize(nullptr);
    WNDCLASSW description{};
    description.lpfnWndProc = WindowProcedure;
    description.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
    description.lpszClassName = window_class;
    RegisterClassW(&description);
    Offer(Browser);
    Offer(Picture);
}

StandIn::~StandIn()
{
    Withdraw(Browser);
    Withdraw(Picture);
    UnregisterClassW(window_class, nullptr);
    OleUninitialize();
}

void StandIn::Offer(Kind kind)
{
    const CLSID id = SystemClassId(kind == Browser ? part_browser_class_id : picture_control_class_id);
    CoRegisterClassObject(id, &factories[kind], CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &offered[kind]);
}

void StandIn::Withdraw(Kind kind)
{
    CoRevokeClassObject(std::exchange(offered[kind], 0));
}

void StandIn::Pump()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

} // namespace partkeep

// The library that serves them to any host; it stays loaded.
STDAPI DllGetClassObject(REFCLSID class_id, REFIID id, LPVOID* result)
{
    [[maybe_unused]] static const auto* served = new partkeep::StandIn;
    const bool browser = class_id == partkeep::SystemClassId(partkeep::part_browser_class_id);
    return partkeep::factories[browser ? 0 : 1].QueryInterface(id, result);
}
