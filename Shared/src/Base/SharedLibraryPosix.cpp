// SPDX-License-Identifier: Apache-2.0

#include <dlfcn.h>

#include "Base/SharedLibrary.h"

namespace Base {

SharedLibrary::SharedLibrary(const std::string& folder, const std::string& baseName)
    : m_Library(dlopen((folder + "/lib" + baseName + ".so").c_str(), RTLD_NOW | RTLD_LOCAL)) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): glibc keeps the text for each thread
    const char* const failure = m_Library == nullptr ? dlerror() : nullptr;
    m_Failure = failure == nullptr ? "" : failure;
}

void* SharedLibrary::find(const char* name) const {
    return m_Library == nullptr ? nullptr : dlsym(m_Library, name);
}

void* SharedLibrary::find(const char* prefix, unsigned number) const {
    return find((std::string(prefix) + '_' + std::to_string(number)).c_str());
}

} // namespace Base
