#include "host/component/class_factory.h"

#include "host/component/component_module.h"
#include "host/component/host_object.h"

namespace partkeep {

HRESULT CHostObjectFactory::QueryInterface(REFIID id, void** result)
{
    if (result == nullptr) {
        return E_POINTER;
    }
    const bool known = id == IID_IUnknown || id == IID_IClassFactory;
    *result = known ? static_cast<IClassFactory*>(this) : nullptr;
    if (!known) {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG CHostObjectFactory::AddRef()
{
    TheModule().Lock();
    return ++references_;
}

// The lock goes last: without it the library may be taken away from under this very call.
ULONG CHostObjectFactory::Release()
{
    const ULONG left = --references_;
    TheModule().Unlock();
    return left;
}

HRESULT CHostObjectFactory::CreateInstance(IUnknown* outer, REFIID id, void** result)
{
    if (result == nullptr) {
        return E_POINTER;
    }
    *result = nullptr;
    try {
        return CHostObject::Create(outer, id, result);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CHostObjectFactory::LockServer(BOOL lock)
{
    if (lock != FALSE) {
        TheModule().Lock();
    } else {
        TheModule().Unlock();
    }
    return S_OK;
}

} // namespace partkeep
