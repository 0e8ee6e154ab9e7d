#include "interface/windows_library.h"

#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

namespace partkeep {

std::string PartsFolder()
{
    Dl_info place{};
    if (dladdr(reinterpret_cast<const void*>(&PartsFolder), &place) == 0 || place.dli_fname == nullptr) {
        return {};
    }
    const std::unique_ptr<char, void (*)(void*)> path(realpath(place.dli_fname, nullptr), std::free);
    if (path == nullptr) {
        return {};
    }
    std::string folder(path.get());
    folder.erase(folder.rfind('/') + 1);
    return folder + parts_folder + "/";
}

bool CWindowsLibrary::IsThere() const
{
    return !folder_.empty() && access((folder_ + windows_part_file).c_str(), R_OK) == 0;
}

IWindowsPart* CWindowsLibrary::Part()
{
    if (part_ != nullptr) {
        return part_.get();
    }
    // Never unloaded: the toolkit leaves things behind that run when a thread or the process ends.
    void* library = dlopen((folder_ + windows_part_file).c_str(), RTLD_NOW | RTLD_LOCAL);
    void* make = library != nullptr ? dlsym(library, make_windows_part_name) : nullptr;
    if (make != nullptr) {
        part_.reset(reinterpret_cast<MakeWindowsPart*>(make)(registry_));
    }
    return part_.get();
}

} // namespace partkeep
