// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Camera/Context.h"
#include "Commands/Command.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

/// All commands, in the order of the help.
const std::vector<CommandDescription>& allCommands();

/// Takes the places of the network where GenICam cameras are looked for out of the words, wherever they are, and looks
/// for cameras there.
/// @throws ToolError  no such places
void useNetworkOf(std::vector<std::string>& words);

/// Runs a command line, given as words without the program's name, and reports its failure.
/// Throws nothing but OutputClosed.
ExitCode runCommandLine(const std::vector<std::string>& words, Context& context);

} // namespace QuillTool
