// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QuillTool {

/// Returns the value of a function's argument: for "@FILE" the bytes of a file, for "hex:DE AD BE EF" the bytes of
/// hexadecimal digits, for "text:..." the rest, otherwise the argument itself.
/// @throws ToolError  the file cannot be read, or the digits are invalid
std::string readArgument(const std::string& argument);

/// Reads a file to be written to a camera.
/// @throws ToolError  the file cannot be read, is empty or has more than @p maximumSize bytes
std::vector<unsigned char> readFileForCamera(const std::string& path, std::size_t maximumSize);

/// The same for a text, which is standard input if the path is "-".
std::vector<unsigned char> readDocument(const std::string& path, std::size_t maximumSize);

/// Returns two lower-case hexadecimal digits per byte.
std::string toHex(std::string_view bytes);

/// Formats lines of 16 bytes: offset, counted from @p first, hexadecimal digits and characters.
std::string hexDump(std::string_view bytes, std::size_t first = 0);

/// Writes a file atomically, or a pipe or device directly.
/// @throws ToolError  it cannot be written
void writeWholeFile(const std::string& path, std::string_view bytes);

} // namespace QuillTool
