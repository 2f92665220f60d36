// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <string>

#include <windows.h>

#include "Base/SharedLibrary.h"

namespace Base {

std::string getLibraryFolder() {
    HMODULE library = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCWSTR>(&getLibraryFolder), &library) == 0) {
        return {};
    }
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(library, path.data(), static_cast<DWORD>(path.size()));
    while (length == path.size()) { // it did not fit
        path.resize(2 * path.size());
        length = GetModuleFileNameW(library, path.data(), static_cast<DWORD>(path.size()));
    }
    path.resize(length);
    return std::filesystem::path(path).parent_path().u8string();
}

} // namespace Base
