#include "host/component/component_module.h"

#include "host/component/identity.h"
#include "platform/windows/win_registry.h"
#include "windows/hosted_control.h"
#include "windows/site_window.h"
#include "windows/win_dialog_window.h"
#include "windows/win_messages.h"

namespace __gnu_cxx {
void __freeres() noexcept; // declared in no header of the run-time
} // namespace __gnu_cxx

namespace partkeep {

CComponentModule& TheModule()
{
    static CComponentModule module;
    return module;
}

void CComponentModule::Start(HINSTANCE instance)
{
    instance_ = instance;
    RegisterSiteWindows(instance);
}

void CComponentModule::End(bool process_ends)
{
    if (process_ends) {
        return;
    }
    if (ITypeInfo* description = description_.exchange(nullptr); description != nullptr) {
        description->Release();
    }
    UnregisterSiteWindows(instance_);
    // The run-time that is linked in sets memory aside for exceptions when there is none left. Each load would leave
    // another such reserve behind in the host; nothing throws from here on.
    __gnu_cxx::__freeres();
}

std::wstring CComponentModule::FileName() const
{
    for (std::wstring path(MAX_PATH, L'\0');; path.assign(path.size() * 2, L'\0')) {
        const DWORD length = GetModuleFileNameW(instance_, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
    }
}

ITypeInfo* CComponentModule::LoadInterfaceDescription() const
{
    CComPtr<ITypeLib> library;
    ITypeInfo* description = nullptr;
    if (SUCCEEDED(LoadTypeLibEx(FileName().c_str(), REGKIND_NONE, library.Put()))) {
        library->GetTypeInfoOfGuid(host_interface_id, &description);
    }
    return description;
}

// Two threads may load it at once; the second one's copy is dropped.
CComPtr<ITypeInfo> CComponentModule::InterfaceDescription() noexcept
{
    try {
        if (description_ == nullptr) {
            ITypeInfo* loaded = LoadInterfaceDescription();
            ITypeInfo* none = nullptr;
            if (loaded != nullptr && !description_.compare_exchange_strong(none, loaded)) {
                loaded->Release();
            }
        }
    } catch (...) {
        return {};
    }
    return CComPtr<ITypeInfo>(description_);
}

HostServices CComponentModule::Services() const
{
    static const CWinRegistry registry;
    static CThreadMessages messages;
    static CHiddenControls controls(instance_);
    static CWinDialogs windows(instance_);
    return {registry, messages, controls, windows};
}

} // namespace partkeep
