// Two in-process servers under the class ids of the closed controls: windows and interfaces of the component model
// round the scripted part browser.

#include "tests/windows/stand_in.h"

#include "controls/zan_pic_ctrl.h"
#include "platform/windows/wide.h"

#include <ocidl.h>
#include <oleauto.h>
#include <olectl.h>

#include <array>
#include <cstring>
#include <string>

using namespace partkeep;

namespace partkeep {

StandIn::StandIn()
{
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
}

namespace {

constexpr IID event_interface{0x7E570001, 0x57A9, 0x4D11, {0x8F, 1, 2, 3, 4, 5, 6, 7}};
HINSTANCE module_instance;
StandIn state;

ControlArgument ArgumentOf(const VARIANT& variant)
{
    ControlArgument argument{static_cast<ControlType>(variant.vt), {}};
    if (variant.vt == VT_BSTR) {
        argument.value =
            std::u16string_view(reinterpret_cast<const char16_t*>(variant.bstrVal), SysStringLen(variant.bstrVal));
    } else if (variant.vt == VT_I2) {
        argument.value = static_cast<std::int16_t>(variant.iVal);
    } else if (variant.vt == VT_I4) {
        argument.value = static_cast<std::int32_t>(variant.lVal);
    } else {
        argument.value = variant.byref;
    }
    return argument;
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

class Control;
Control* live_browser = nullptr;

// All that a container asks of a control, and one sink.
class Control final : public IOleObject,
                      public IOleInPlaceObject,
                      public IDispatch,
                      public IConnectionPointContainer,
                      public IConnectionPoint,
                      public IProvideClassInfo2 {
public:
    explicit Control(bool browser) : browser_(browser), scripted_(state.script.MakeControl()) { ++state.controls; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override
    {
        *result = id == IID_IUnknown || id == IID_IOleObject            ? static_cast<IOleObject*>(this)
                  : id == IID_IOleInPlaceObject || id == IID_IOleWindow ? static_cast<IOleInPlaceObject*>(this)
                  : id == IID_IDispatch                                 ? static_cast<IDispatch*>(this)
                  : id == IID_IConnectionPointContainer                 ? static_cast<IConnectionPointContainer*>(this)
                  : id == IID_IProvideClassInfo2                        ? static_cast<IProvideClassInfo2*>(this)
                                                                        : static_cast<void*>(nullptr);
        if (*result == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --references_;
        if (left == 0) {
            --state.controls;
            delete this;
        }
        return left;
    }

    void Fire(long event)
    {
        DISPPARAMS none{};
        if (sink_ != nullptr) {
            sink_->Invoke(event, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
        }
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO*, UINT*) override
    {
        if (state.fireInsideCalls) {
            Fire(DISPID_CLICK);
        }
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
        if (result != nullptr) {
            PutResult(*result, type, answer);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* site) override
    {
        Replace(site_, site);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND parent, LPCRECT area) override
    {
        if (verb != OLEIVERB_INPLACEACTIVATE) {
            return S_OK;
        }
        window_ = CreateWindowExW(0, L"PartkeepStandIn", L"", WS_CHILD | WS_VISIBLE, area->left, area->top,
                                  area->right - area->left, area->bottom - area->top, parent, nullptr, module_instance,
                                  nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, browser_);
        if (browser_) {
            state.browserWindow = window_;
            live_browser = this;
            state.fire = [](long event) { live_browser->Fire(event); };
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Close(DWORD) override
    {
        DestroyWindow(window_);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD, DWORD* status) override
    {
        *status = OLEMISC_SETCLIENTSITEFIRST;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Update() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE IsUpToDate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD, LPOLESTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD, SIZEL* size) override
    {
        if (!browser_) {
            state.recorder.Note("extent " + std::to_string(size->cx) + " " + std::to_string(size->cy));
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD, SIZEL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override
    {
        *window = window_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE UIDeactivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT place, LPCRECT) override
    {
        MoveWindow(window_, place->left, place->top, place->right, place->bottom, TRUE);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID, IConnectionPoint** point) override
    {
        *point = this;
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD*) override
    {
        return sink->QueryInterface(event_interface, reinterpret_cast<void**>(&sink_));
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD) override
    {
        Replace(sink_, static_cast<IDispatch*>(nullptr));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD, GUID* id) override
    {
        *id = event_interface;
        return S_OK;
    }

private:
    template <class T>
    static void Replace(T*& held, T* next)
    {
        if (next != nullptr) {
            next->AddRef();
        }
        if (held != nullptr) {
            held->Release();
        }
        held = next;
    }

    bool browser_;
    std::unique_ptr<IHostedControl> scripted_;
    ULONG references_ = 1;
    HWND window_ = nullptr;
    IOleClientSite* site_ = nullptr;
    IDispatch* sink_ = nullptr;
};

// Beside the entries nothing is selected.
LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM word, LPARAM value)
{
    if (message == WM_LBUTTONDOWN && GetWindowLongPtrW(window, GWLP_USERDATA) != 0) {
        const auto row = static_cast<std::size_t>(HIWORD(value) / stand_in_row_height);
        SetFocus(window);
        state.script.selection.clear();
        if (row < state.script.list.size()) {
            state.script.selection.push_back(state.script.list[row]);
        }
        live_browser->Fire(DISPID_CLICK);
        return 0;
    }
    if (message == WM_KEYDOWN) {
        state.recorder.Note("key " + std::to_string(word));
    }
    return DefWindowProcW(window, message, word, value);
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

// For the machine: not every system version looks among the classes of the user.
void WriteRegistration(const ClassId& id, bool present)
{
    std::array<wchar_t, 40> text{};
    StringFromGUID2(reinterpret_cast<const GUID&>(id), text.data(), static_cast<int>(text.size()));
    const std::wstring key = std::wstring(L"CLSID\\") + text.data();
    if (!present) {
        RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
        return;
    }
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameW(module_instance, path.data(), MAX_PATH);
    RegSetKeyValueW(HKEY_CLASSES_ROOT, (key + L"\\InprocServer32").c_str(), nullptr, REG_SZ, path.data(),
                    static_cast<DWORD>((length + 1) * sizeof(wchar_t)));
    RegSetKeyValueW(HKEY_CLASSES_ROOT, (key + L"\\InprocServer32").c_str(), L"ThreadingModel", REG_SZ, L"Apartment",
                    20);
}

void WriteBoth(bool present)
{
    WriteRegistration(part_browser_class_id, present);
    WriteRegistration(picture_control_class_id, present);
}

} // namespace
} // namespace partkeep

extern "C" StandIn* FreshStandIn()
{
    std::destroy_at(&state);
    return std::construct_at(&state);
}

STDAPI DllGetClassObject(REFCLSID class_id, REFIID id, LPVOID* result)
{
    static Factory browser(true);
    static Factory picture(false);
    const bool is_browser = std::memcmp(&class_id, &part_browser_class_id, sizeof class_id) == 0;
    return (is_browser ? browser : picture).QueryInterface(id, result);
}

STDAPI DllCanUnloadNow()
{
    return S_FALSE;
}

STDAPI DllRegisterServer()
{
    WriteBoth(true);
    return S_OK;
}

STDAPI DllUnregisterServer()
{
    WriteBoth(false);
    return S_OK;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        module_instance = instance;
        WNDCLASSW description{};
        description.lpfnWndProc = WindowProcedure;
        description.hInstance = instance;
        description.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
        description.lpszClassName = L"PartkeepStandIn";
        RegisterClassW(&description);
    }
    return TRUE;
}
