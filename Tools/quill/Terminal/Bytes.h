// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QuillTool {

/// The value of an argument of a function: "@FILE" the bytes of a file, "hex:DE AD BE EF" the bytes of hexadecimal
/// digits, "text:..." what follows it, anything else itself.
/// @throws ToolError  the file cannot be read, or the digits are none
std::string readArgument(const std::string& argument);

/// The bytes of a file that is to go into a camera.
/// @throws ToolError  it cannot be read, is empty or has more than @p maximumSize bytes
std::vector<unsigned char> readFileForCamera(const std::string& path, std::size_t maximumSize);

/// Two small hexadecimal digits for each byte.
std::string toHex(std::string_view bytes);

/// Lines of 16 bytes: offset, counted from @p first, hexadecimal digits and characters.
std::string hexDump(std::string_view bytes, std::size_t first = 0);

/// Writes a file that appears whole or not at all. What is no regular file, such as a pipe, is written straight.
/// @throws ToolError
void writeWholeFile(const std::string& path, std::string_view bytes);

} // namespace QuillTool
