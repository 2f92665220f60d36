#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Output.h"
#include "Session.h"

namespace QuillTool {

/// How the commands that take images set a camera up and stream from it.
class StreamRun {
public:
    void describe(CLI::App& parser);
    /// Writes the properties that were asked for, and the mode.
    /// @throws ToolError
    void prepare(Output& output, const SelectedCamera& camera) const;
    static void start(const SelectedCamera& camera);
    /// Stops a stream that runs.
    static void end(const SelectedCamera& camera);

private:
    std::vector<std::string> m_Assignments;
    bool m_Still = false;
};

} // namespace QuillTool
