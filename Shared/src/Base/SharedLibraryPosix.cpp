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

void keepThisLibraryLoaded() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&keepThisLibraryLoaded), &info) != 0 && info.dli_fname != nullptr) {
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
}

} // namespace Base
