// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace Base {

/// The path of a file, from text in UTF-8. May be longer than the system's usual limit. Independent of the locale.
/// @throws std::exception  the text is not valid, where the system's paths are text
std::filesystem::path filePath(const std::string& text);

/// Opens a file of bytes for reading; null if it cannot be opened. Independent of the locale.
/// @throws std::exception  the path is not valid text
std::FILE* openToRead(const wchar_t* path);

} // namespace Base
