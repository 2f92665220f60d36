// SPDX-License-Identifier: Apache-2.0

#include "Flash/LongJob.h"

#include <fmt/format.h>

namespace QuillTool {

LongJob::LongJob(Context& context, const SelectedCamera& camera, const ProgressOptions& options)
    : m_Interrupt(context.interrupt), m_Camera(camera),
      m_Report(context.output, "camera " + camera.serialNumber(), options) {}

void LongJob::advance(std::string_view stage, double done, bool more) {
    m_Report.update(stage, done);
    if (more && m_Interrupt.requested()) {
        throw Interrupted{};
    }
}

void LongJob::endInterrupted(const JobPlace& place) {
    m_Report.fail("interrupted", place.details);
    throw ToolError(ExitCode::Interrupted,
                    m_Camera.about(fmt::format("interrupted while {}: {}", place.doing, place.state)));
}

void LongJob::endFailed(const JobPlace& place, const std::exception& failure) {
    m_Report.fail("failed", place.details);
    const ToolError error = m_Camera.explain(place.failed, failure);
    std::string sentence = error.what();
    sentence.erase(sentence.find_last_not_of('.') + 1);
    throw ToolError(error.code(), fmt::format("{}; {}", sentence, place.state));
}

} // namespace QuillTool
