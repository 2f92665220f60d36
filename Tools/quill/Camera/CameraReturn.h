// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

#include <CLI/CLI.hpp>

#include "Camera/CameraChanges.h"
#include "Commands/Command.h"

namespace QuillTool {

/// Whether, and how long, somebody waits for a camera that restarts.
struct ReturnOptions {
    bool noWait = false;
    unsigned timeoutSeconds = 30;
    bool quiet = false;

    void describe(CLI::App& parser);
    /// The time alone.
    CLI::Option* describeTimeout(CLI::App& parser);
};

/// Waits for a camera that restarts: it leaves the list and comes back, maybe as one of another kind. Made before the
/// camera is told to restart, so that nothing is missed; the library's own watching finds out.
class CameraReturn {
public:
    CameraReturn(Context& context, const SelectedCamera& camera, const ReturnOptions& options);

    /// Tells on standard error what happens, unless it is to be quiet.
    /// @return whether the camera left; one that did not answers on
    /// @throws ToolError  it left and did not come back in time, or the wait was interrupted
    bool await();

private:
    using Clock = std::chrono::steady_clock;

    template <typename Condition>
    bool waitUntil(Clock::time_point deadline, Condition&& isMet);
    void waitForChange(Clock::time_point deadline);
    void tell(const std::string& what);

    Context& m_Context;
    SelectedCamera m_Camera;
    std::chrono::seconds m_Timeout;
    bool m_Quiet;
    CameraChanges m_Changes;
    bool m_Left = false;
};

} // namespace QuillTool
