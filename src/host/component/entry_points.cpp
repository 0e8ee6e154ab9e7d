// What the system calls in the library.

#include "host/component/class_factory.h"
#include "host/component/component_module.h"
#include "host/component/identity.h"
#include "host/component/registration.h"

using namespace partkeep;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID process_ends)
{
    // The ends of threads are left on: the run-time that is linked in frees there what it keeps for each.
    if (reason == DLL_PROCESS_ATTACH) {
        TheModule().Start(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        TheModule().End(process_ends != nullptr);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID class_id, REFIID id, LPVOID* result)
{
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    if (class_id != host_object_class_id) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    static CHostObjectFactory factory;
    return factory.QueryInterface(id, result);
}

STDAPI DllCanUnloadNow()
{
    return TheModule().MayUnload() ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer()
{
    try {
        return RegisterComponent(TheModule());
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

STDAPI DllUnregisterServer()
{
    try {
        UnregisterComponent(TheModule());
    } catch (...) {
        return S_OK; // what could be taken away is gone
    }
    return S_OK;
}
