// The component as one loaded library: what it is made of for as long as it is loaded, and the count that decides
// when it may go.
#pragma once

#include "host/host_services.h"
#include "windows/com_ptr.h"

#include <windows.h>

#include <oaidl.h>

#include <atomic>
#include <string>

namespace partkeep {

class CComponentModule {
public:
    // In this order, at the load of the library: the module itself, then the hosting of controls.
    void Start(HINSTANCE instance);
    // At its end. Nothing of the component model is called when the whole process goes.
    void End(bool process_ends);

    void Lock() { ++locks_; } // one per object, per reference on the factory and per lock of a host
    void Unlock() { --locks_; }
    [[nodiscard]] bool MayUnload() const { return locks_ == 0; }

    [[nodiscard]] HINSTANCE Instance() const { return instance_; }
    [[nodiscard]] std::wstring FileName() const; // full path; empty when it cannot be had

    // The description of the host interface, out of this library's own resources: it works unregistered too.
    // Loaded at the first request. Null when it cannot be loaded.
    [[nodiscard]] CComPtr<ITypeInfo> InterfaceDescription() noexcept;

    // The platform's services that every object uses.
    [[nodiscard]] HostServices Services() const;

private:
    [[nodiscard]] ITypeInfo* LoadInterfaceDescription() const; // brings its own reference

    HINSTANCE instance_ = nullptr;
    std::atomic<long> locks_{0};
    std::atomic<ITypeInfo*> description_{nullptr};
};

[[nodiscard]] CComponentModule& TheModule();

} // namespace partkeep
