// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "Commands/Command.h"
#include "Terminal/ProgressReport.h"

namespace QuillTool {

/// Where a job stands, as its errors say it.
struct JobPlace {
    std::string failed; ///< what cannot be done: "0x0..0x40000 cannot be written at 0x1A000"
    std::string doing;  ///< what it was at: "writing at 0x1A000 of 0x0..0x40000"
    std::string state;  ///< in what state the camera is left
    Json details;       ///< the same for programs
};

/// Long work on a camera. It tells its progress, ends when interrupted, and says in what state it leaves the camera
/// when it does not come to its end.
class LongJob {
public:
    LongJob(Context& context, const SelectedCamera& camera, const ProgressOptions& options);

    ProgressReport& report() { return m_Report; }

    /// Tells the progress. Called from inside run() and nowhere else.
    /// @param more  there is still something to do, which an interrupt prevents
    void advance(std::string_view stage, double done, bool more);

    /// Does the work; @p place is asked for a JobPlace when it fails.
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
    /// Comes out of the library's operation through its progress function.
    struct Interrupted {};

    [[noreturn]] void endInterrupted(const JobPlace& place);
    [[noreturn]] void endFailed(const JobPlace& place, const std::exception& failure);

    Interrupt& m_Interrupt;
    SelectedCamera m_Camera;
    ProgressReport m_Report;
};

} // namespace QuillTool
