// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QuillTool {

/// Returns the name that a mistyped text most likely stands for: the one that the fewest changes make of the text, if
/// they are at most a third of its letters. A change replaces, adds or removes a letter, or exchanges two neighbours;
/// capitals count as small letters. Empty if no name is near.
std::string nearestName(std::string_view text, const std::vector<std::string>& names);

} // namespace QuillTool
