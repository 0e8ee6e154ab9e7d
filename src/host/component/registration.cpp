#include "host/component/registration.h"

#include "host/component/component_module.h"
#include "host/component/identity.h"
#include "host/component/resources.h"

#include <oleauto.h>

namespace partkeep {

// The system's interpreter of registration scripts, by the slots of its interface. It stands outside the
// unnamed namespace on purpose: of a type that nobody else can derive from, the compiler concludes that the calls
// can never arrive.
struct IScriptRegistrar : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE AddReplacement(LPCOLESTR key, LPCOLESTR item) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearReplacements() = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegisterSz(LPCOLESTR file, LPCOLESTR id, LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(LPCOLESTR file, LPCOLESTR id, LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileRegister(LPCOLESTR file) = 0;
    virtual HRESULT STDMETHODCALLTYPE FileUnregister(LPCOLESTR file) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringRegister(LPCOLESTR script) = 0;
    virtual HRESULT STDMETHODCALLTYPE StringUnregister(LPCOLESTR script) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegister(LPCOLESTR file, UINT id, LPCOLESTR type) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregister(LPCOLESTR file, UINT id, LPCOLESTR type) = 0;
};

namespace {

constexpr CLSID registrar_class_id{0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
constexpr IID registrar_id{0x44EC053B, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};

CComPtr<IScriptRegistrar> MakeRegistrar(const std::wstring& module_path)
{
    CComPtr<IScriptRegistrar> registrar;
    if (FAILED(
            CoCreateInstance(registrar_class_id, nullptr, CLSCTX_INPROC_SERVER, registrar_id, registrar.PutVoid()))) {
        return {};
    }
    if (FAILED(registrar->AddReplacement(L"MODULE", QuotedForScript(module_path).c_str()))) {
        return {};
    }
    return registrar;
}

using ScriptMode = HRESULT (STDMETHODCALLTYPE IScriptRegistrar::*)(LPCOLESTR, UINT, LPCOLESTR);

HRESULT RunScript(const std::wstring& module_path, ScriptMode mode)
{
    const HRESULT started = CoInitialize(nullptr); // a registering tool may not have done so
    HRESULT status = REGDB_E_CLASSNOTREG;
    if (const CComPtr<IScriptRegistrar> registrar = MakeRegistrar(module_path); registrar) {
        status = (registrar.Get()->*mode)(module_path.c_str(), RES_REGISTRATION_SCRIPT, L"REGISTRY");
    }
    if (SUCCEEDED(started)) {
        CoUninitialize();
    }
    return status;
}

std::wstring UpToLast(const std::wstring& path, wchar_t separator)
{
    const std::size_t found = path.rfind(separator);
    return found == std::wstring::npos ? path : path.substr(0, found);
}

// The library as part of the module's file or, where that has none, in a file beside it.
HRESULT RegisterTypes(const std::wstring& module_path)
{
    CComPtr<ITypeLib> library;
    std::wstring path = module_path;
    HRESULT status = LoadTypeLib(path.c_str(), library.Put());
    if (FAILED(status)) {
        path = UpToLast(path, L'.') + L".tlb";
        status = LoadTypeLib(path.c_str(), library.Put());
    }
    if (FAILED(status)) {
        return status;
    }
    std::wstring help_folder = path.substr(0, path.rfind(L'\\') + 1); // a drive alone would be its current folder
    return RegisterTypeLib(library.Get(), path.data(), help_folder.data());
}

} // namespace

std::wstring QuotedForScript(std::wstring_view path)
{
    std::wstring quoted;
    for (const wchar_t unit : path) {
        quoted.append(unit == L'\'' ? 2 : 1, unit);
    }
    return quoted;
}

HRESULT RegisterComponent(const CComponentModule& module)
{
    const std::wstring path = module.FileName();
    const HRESULT status = RunScript(path, &IScriptRegistrar::ResourceRegister);
    return FAILED(status) ? status : RegisterTypes(path);
}

void UnregisterComponent(const CComponentModule& module)
{
    constexpr SYSKIND kind = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;
    RunScript(module.FileName(), &IScriptRegistrar::ResourceUnregister);
    UnRegisterTypeLib(type_library_id, type_library_major, type_library_minor, LOCALE_NEUTRAL, kind);
}

} // namespace partkeep
