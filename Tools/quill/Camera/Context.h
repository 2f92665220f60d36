// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Camera/Session.h"
#include "Terminal/Interrupt.h"
#include "Terminal/Output.h"

namespace QuillTool {

/// The environment of every command.
struct Context {
    Session& session;
    Output& output;
    Interrupt& interrupt;
    bool inShell = false;
};

} // namespace QuillTool
