// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Camera/Context.h"

namespace QuillTool {

/// Returns what the last word, which may be empty, can become: commands, options, serial numbers of cameras, names of
/// properties and functions, values, formats. Empty where a file or a free text is wanted, or the words make no sense.
/// To know a camera's properties, it connects the camera; one that refuses has none.
/// @param words  of a command line, without the program's name
std::vector<std::string> completions(std::vector<std::string> words, Context& context);

} // namespace QuillTool
