// The one maker of host objects. It is made at the first request and kept: it does not hold the library.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace partkeep {

class HostObjectFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; } // lives as long as the library
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** result) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;
};

} // namespace partkeep
