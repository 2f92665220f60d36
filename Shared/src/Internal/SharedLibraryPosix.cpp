#include <dlfcn.h>

#include "Internal/SharedLibrary.h"

namespace Internal {

SharedLibrary::SharedLibrary(const std::string& folder, const std::string& baseName)
    : m_Library(dlopen((folder + "/lib" + baseName + ".so").c_str(), RTLD_NOW | RTLD_LOCAL)) {}

void* SharedLibrary::find(const char* name) const {
    return m_Library == nullptr ? nullptr : dlsym(m_Library, name);
}

} // namespace Internal
