// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Commands/Command.h"

namespace QuillTool {

/// Runs one command line, its words without the program's name, and reports what fails.
/// Lets only OutputClosed escape.
ExitCode runCommandLine(const std::vector<std::string>& words, Context& context);

} // namespace QuillTool
