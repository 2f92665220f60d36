// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Camera/Session.h"
#include "Terminal/Output.h"
#include "Terminal/ParserFwd.h"

namespace QuillTool {

/// Runs a stream and stops it in any case.
class RunningStream {
public:
    /// @throws ToolError
    explicit RunningStream(const SelectedCamera& camera);
    RunningStream(const RunningStream&) = delete;
    RunningStream& operator=(const RunningStream&) = delete;
    ~RunningStream();

    /// Stops the stream.
    /// @throws ToolError  the stream cannot be stopped
    void stop();

private:
    SelectedCamera m_Camera;
};

/// Sets up a camera for the commands that take images.
class StreamRun {
public:
    void describe(CLI::App& parser);
    /// Writes the requested properties and the mode.
    /// @throws ToolError
    void prepare(Output& output, const SelectedCamera& camera) const;

private:
    std::vector<std::string> m_Assignments;
    bool m_Still = false;
};

} // namespace QuillTool
