// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QuillTool {

/// Splits a line into words, quoted as in a shell: '...' is literal, "..." accepts \" and \\, a backslash outside of
/// quotes makes the next character literal, and a # at the start of a word begins a comment.
/// @throws ToolError  an unclosed quote, or a backslash at the end
std::vector<std::string> splitWords(std::string_view line);

} // namespace QuillTool
