// The one maker of host objects. It is made at the first request and kept; what holds the library is each reference
// that somebody outside has on it.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace partkeep {

class CHostObjectFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** result) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override; // never deletes: the object lives as long as the library
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** result) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    std::atomic<ULONG> references_{0};
};

} // namespace partkeep
