// SPDX-License-Identifier: Apache-2.0

#include "Terminal/WakePipe.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "Terminal/ToolError.h"

namespace QuillTool {

WakePipe::WakePipe() {
    if (pipe2(m_Ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw ToolError(ExitCode::Failed,
                        fmt::format("cannot create a pipe: {}", std::generic_category().message(errno)));
    }
}

WakePipe::~WakePipe() {
    close(m_Ends[0]);
    close(m_Ends[1]);
}

void WakePipe::wake() const noexcept {
    // A full pipe wakes the thread as well.
    [[maybe_unused]] const auto written = write(m_Ends[1], "", 1);
}

void WakePipe::drain() const noexcept {
    std::array<char, 64> bytes{};
    while (read(m_Ends[0], bytes.data(), bytes.size()) > 0) {
    }
}

} // namespace QuillTool
