// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Camera/Session.h"
#include "Terminal/Output.h"

namespace QuillTool {

/// A stream that runs, and is stopped at the end whatever happens.
class RunningStream {
public:
    /// @throws ToolError
    explicit RunningStream(const SelectedCamera& camera);
    RunningStream(const RunningStream&) = delete;
    RunningStream& operator=(const RunningStream&) = delete;
    ~RunningStream();

    /// Stops the stream and tells if that fails.
    /// @throws ToolError
    void stop();

private:
    SelectedCamera m_Camera;
};

/// How the commands that take images set a camera up.
class StreamRun {
public:
    void describe(CLI::App& parser);
    /// Writes the properties that were asked for, and the mode.
    /// @throws ToolError
    void prepare(Output& output, const SelectedCamera& camera) const;

private:
    std::vector<std::string> m_Assignments;
    bool m_Still = false;
};

} // namespace QuillTool
