// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QuillTool {

/// The words of a line, quoted as in a shell: '...' is literal, "..." knows \" and \\, a backslash outside of quotes
/// takes the next character literally, and a # at the start of a word begins a comment.
/// @throws ToolError  a quote that is not closed, or a backslash at the end
std::vector<std::string> splitWords(std::string_view line);

} // namespace QuillTool
