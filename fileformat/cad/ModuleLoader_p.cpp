#include "fileformat/cad/ModuleLoader_p.h"

#include <stdexcept>

#include <dlfcn.h>

namespace kr::cad {

namespace {

constexpr char kModuleLibrary[] = KRCORE_CAD_LIBRARY;

// The directory with its slash; empty when it is not known.
std::string OwnDirectory()
{
    Dl_info info;
    if (!dladdr(&kModuleLibrary, &info) || !info.dli_fname)
        return {};
    const std::string library = info.dli_fname;
    return library.substr(0, library.rfind('/') + 1);
}

std::string LoaderMessage()
{
    const char* const message = dlerror();
    return message ? message : "no reason given";
}

} // namespace

ImportFunction LoadModule(const std::vector<std::string>& libraries)
{
    std::string reasons;
    for (const std::string& library : libraries) {
        void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        void* const entry = handle ? dlsym(handle, kModuleEntry) : nullptr;
        if (entry)
            return reinterpret_cast<ModuleEntry>(entry)();
        reasons += "; " + LoaderMessage();
    }
    throw std::runtime_error("STEP and IGES files cannot be read without " + std::string(kModuleLibrary) +
                             reasons);
}

ImportFunction Module()
{
    // By its path first: the directories that the loader searches need not be those in which it found us.
    static const ImportFunction kModule = LoadModule({OwnDirectory() + kModuleLibrary, kModuleLibrary});
    return kModule;
}

} // namespace kr::cad
