// SPDX-License-Identifier: Apache-2.0

#include <dlfcn.h>

#include "Base/SharedLibrary.h"

namespace Base {

std::string getLibraryFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&getLibraryFolder), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    const std::string path = info.dli_fname;
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

} // namespace Base
