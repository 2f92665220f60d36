// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

#include "Camera/CameraChanges.h"
#include "Camera/Context.h"
#include "Terminal/ParserFwd.h"

namespace QuillTool {

/// Options for waiting until a restarted camera is back.
struct ReturnOptions {
    bool noWait = false;
    unsigned timeoutSeconds = 30;
    bool quiet = false;

    void describe(CLI::App& parser);
    /// Adds only --timeout.
    CLI::Option* describeTimeout(CLI::App& parser);
};

/// Waits for a restarting camera to leave the list and return, possibly as another kind of camera. Construct it before
/// the restart, so that no change is missed. The library's watchdogs detect the changes.
class CameraReturn {
public:
    CameraReturn(Context& context, const SelectedCamera& camera, const ReturnOptions& options);

    /// Waits, and reports each change on standard error unless --quiet is given.
    /// @return whether the camera left the list; otherwise it kept responding
    /// @throws ToolError  the camera left and did not return in time, or the wait was interrupted
    bool await();

private:
    using Clock = std::chrono::steady_clock;

    template <typename Condition>
    bool waitUntil(Clock::time_point deadline, Condition&& isMet);
    void waitForChange(Clock::time_point deadline);
    void report(const std::string& what);

    Context& m_Context;
    SelectedCamera m_Camera;
    std::chrono::seconds m_Timeout;
    bool m_Quiet;
    CameraChanges m_Changes;
    bool m_Left = false;
};

} // namespace QuillTool
