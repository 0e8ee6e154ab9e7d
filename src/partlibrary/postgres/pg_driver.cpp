#include "partlibrary/postgres/pg_driver.h"

#include "partlibrary/library/library_text.h"

#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

namespace {

// Beside the library that this code is in, beside the libraries for a program in a folder of programs, and where the
// system's loader looks. A program knows itself by the name that it was called by, which may be of any folder.
std::vector<std::string> Places()
{
    Dl_info here{};
    const bool known = dladdr(reinterpret_cast<const void*>(&LoadPqDriver), &here) != 0 && here.dli_fname != nullptr;
    const bool in_library = known && std::string_view(here.dli_fname).find(".so") != std::string_view::npos;
    const std::unique_ptr<char, void (*)(void*)> path(realpath(in_library ? here.dli_fname : "/proc/self/exe", nullptr),
                                                      std::free);
    std::vector<std::string> places;
    if (path != nullptr) {
        std::string folder(path.get());
        folder.erase(folder.rfind('/') + 1);
        for (const char* beside : {"partkeep-read/", "../" PARTKEEP_LIBRARY_FOLDER "/partkeep-read/"}) {
            places.push_back(folder + beside + postgres_module_file);
        }
    }
    places.emplace_back(postgres_module_file);
    return places;
}

const PqDriver* Load(QString& why)
{
    for (const std::string& place : Places()) {
        void* const module = dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            why = FromUtf8(dlerror());
            continue;
        }
        void* const entry = dlsym(module, postgres_module_entry);
        const PqDriver* const driver = entry != nullptr ? reinterpret_cast<PostgresModuleEntry*>(entry)() : nullptr;
        if (driver != nullptr && driver->bytes == sizeof(PqDriver)) {
            return driver;
        }
        why = FromUtf8(place) + QStringLiteral(": of another release");
    }
    return nullptr;
}

} // namespace

const PqDriver* LoadPqDriver(LibraryProblem& problem)
{
    static QString reason;
    static const PqDriver* const driver = Load(reason);
    if (driver == nullptr) {
        problem = {
            LibraryFault::CannotOpen, {}, QStringLiteral("the module for databases is not installed: ") + reason};
    }
    return driver;
}

} // namespace partkeep
