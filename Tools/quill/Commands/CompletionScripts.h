// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace QuillTool {

// The files of the folder Completion.
extern const char* const kBashScript;
extern const char* const kZshScript;
extern const char* const kFishScript;

} // namespace QuillTool
