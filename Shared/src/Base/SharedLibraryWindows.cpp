// SPDX-License-Identifier: Apache-2.0

#include "Base/SharedLibrary.h"

#include <filesystem>
#include <system_error>

#include <windows.h>

#include "Base/FilePath.h"

namespace Base {

// The current folder and PATH are not searched, not even for what the library needs.
SharedLibrary::SharedLibrary(const std::string& folder, const std::string& baseName) {
    try {
        const std::filesystem::path path = filePath(folder + '/' + baseName + ".dll");
        m_Library =
            LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
        if (m_Library == nullptr) {
            const std::error_code failure(static_cast<int>(GetLastError()), std::system_category());
            m_Failure = path.u8string() + ": " + failure.message();
        }
    } catch (const std::exception& failure) { // the folder is not valid text
        m_Failure = baseName + ".dll: " + failure.what();
    }
}

void* SharedLibrary::find(const char* name) const {
    return m_Library == nullptr ? nullptr
                                : reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_Library), name));
}

void* SharedLibrary::find(const char* /*prefix*/, unsigned number) const {
    return find(MAKEINTRESOURCEA(number));
}

} // namespace Base
