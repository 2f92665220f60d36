// SPDX-License-Identifier: Apache-2.0

#include "Base/FilePath.h"

#include "Base/Utf8.h"

namespace Base {

std::filesystem::path filePath(const std::string& text) {
    return text;
}

std::FILE* openToRead(const wchar_t* path) {
    return std::fopen(toUtf8<WideConverter>(path).c_str(), "rbe");
}

} // namespace Base
