// SPDX-License-Identifier: Apache-2.0

#include "Camera/StreamRun.h"

#include <CLI/CLI.hpp>

#include "Camera/PropertyAccess.h"
#include "Camera/Region.h"

namespace QuillTool {

RunningStream::RunningStream(const SelectedCamera& camera) : m_Camera(camera) {
    attemptStart(m_Camera, "it cannot stream", [&] { m_Camera->startStream(); });
}

RunningStream::~RunningStream() {
    try {
        stop();
    } catch (const ToolError&) {
        // The failure that ended the command has been reported.
    }
}

void RunningStream::stop() {
    if (m_Camera->isStreaming()) {
        m_Camera.attempt("its stream cannot be stopped", [&] { m_Camera->stopStream(); });
    }
}

void StreamRun::describe(CLI::App& parser) {
    constexpr int kMostTogether = 1000;
    parser.add_option("--set", m_Assignments, "Property to write first, as NAME=VALUE; repeatable")
        ->take_all()
        ->expected(1, kMostTogether)
        ->allow_extra_args(false); // see addTexts()
    parser.add_flag("--still", m_Still, "Single captures instead of video");
}

void StreamRun::prepare(Output& output, const SelectedCamera& camera) const {
    writeProperties(output, camera, m_Assignments);
    if (m_Still) {
        writeProperty(output, camera, CameraInterface::PropertyNames::kStreamingMode, "Still");
    }
}

} // namespace QuillTool
