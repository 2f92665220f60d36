// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Camera/Context.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

/// Runs a command line, given as words without the program's name, and reports its failure.
/// Throws nothing but OutputClosed.
ExitCode runCommandLine(const std::vector<std::string>& words, Context& context);

} // namespace QuillTool
