// SPDX-License-Identifier: Apache-2.0

#include "Base/FilePath.h"

#include <windows.h>

namespace Base {

namespace {

/// Paths with this prefix may have 32,767 characters; they are full paths with backslashes only.
constexpr const wchar_t* kLongPathPrefix = L"\\\\?\\";

std::filesystem::path withoutLimit(std::filesystem::path path) {
    path.make_preferred();
    if (path.native().substr(0, 2) == L"\\\\") { // of the network, or with the prefix
        return path;
    }
    const std::wstring full = std::filesystem::absolute(path).lexically_normal();
    return full.size() < MAX_PATH ? full : kLongPathPrefix + full;
}

} // namespace

std::filesystem::path filePath(const std::string& text) {
    return withoutLimit(std::filesystem::u8path(text));
}

std::FILE* openToRead(const wchar_t* path) {
    return _wfopen(withoutLimit(path).c_str(), L"rb");
}

} // namespace Base
