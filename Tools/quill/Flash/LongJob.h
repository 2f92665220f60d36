// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "Camera/Context.h"
#include "Terminal/ProgressReport.h"

namespace QuillTool {

/// The place that a job has reached, in the words of its errors.
struct JobPlace {
    std::string failed; ///< failed action: "0x0..0x40000 cannot be written at 0x1A000"
    std::string doing;  ///< current action: "writing at 0x1A000 of 0x0..0x40000"
    std::string state;  ///< resulting state of the camera
    Json details;       ///< the same as JSON
};

/// Runs long work on a camera. Reports progress, ends when interrupted, and reports the resulting state of the camera
/// if the work does not complete.
class LongJob {
public:
    LongJob(Context& context, const SelectedCamera& camera, const ProgressOptions& options);

    ProgressReport& report() { return m_Report; }

    /// Reports the progress. Call it only from inside run().
    /// @param more  whether work remains, which an interrupt prevents
    void advance(std::string_view stage, double done, bool more);

    /// Does the work. Calls @p place for a JobPlace when the work fails.
    /// @throws ToolError  the work failed, or was interrupted
    template <typename Work, typename Place>
    void run(Work&& work, Place&& place) {
        try {
            std::forward<Work>(work)();
        } catch (const Interrupted&) {
            endInterrupted(place());
        } catch (const std::exception& failure) {
            endFailed(place(), failure);
        }
    }

private:
    /// Thrown in the progress function to end the library's operation.
    struct Interrupted {};

    [[noreturn]] void endInterrupted(const JobPlace& place);
    [[noreturn]] void endFailed(const JobPlace& place, const std::exception& failure);

    Interrupt& m_Interrupt;
    SelectedCamera m_Camera;
    ProgressReport m_Report;
};

} // namespace QuillTool
