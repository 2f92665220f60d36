// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace QuillTool {

/// Calls a function, in a signal handler or on another thread, once a person or a program wants this one to end. The
/// time after that, or if the function is null, the process ends at once.
void callAtNextInterrupt(void (*function)());

} // namespace QuillTool
