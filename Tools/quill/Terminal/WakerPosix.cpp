// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Waker.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include "Terminal/ToolError.h"

namespace QuillTool {

Waker::Waker() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw ToolError(ExitCode::Failed,
                        fmt::format("cannot create a pipe: {}", std::generic_category().message(errno)));
    }
    std::copy(ends.begin(), ends.end(), m_Ends.begin());
}

Waker::~Waker() {
    close(static_cast<int>(m_Ends[0]));
    close(static_cast<int>(m_Ends[1]));
}

void Waker::wake() const noexcept {
    // A full pipe wakes the thread as well.
    [[maybe_unused]] const auto written = write(static_cast<int>(m_Ends[1]), "", 1);
}

void Waker::drain() const noexcept {
    std::array<char, 64> bytes{};
    while (read(static_cast<int>(m_Ends[0]), bytes.data(), bytes.size()) > 0) {
    }
}

std::optional<std::size_t> waitForAny(std::initializer_list<const Waker*> wakers,
                                      std::optional<std::chrono::milliseconds> limit) {
    std::vector<pollfd> waiting;
    for (const Waker* waker : wakers) {
        waiting.push_back({static_cast<int>(waker->waitable()), POLLIN, 0});
    }
    const int limitMs = limit ? std::max(0, static_cast<int>(limit->count())) : -1;
    while (poll(waiting.data(), waiting.size(), limitMs) < 0) { // a signal came
    }
    const auto awake = std::find_if(waiting.begin(), waiting.end(), [](const pollfd& end) { return end.revents != 0; });
    return awake == waiting.end() ? std::nullopt
                                  : std::optional(static_cast<std::size_t>(std::distance(waiting.begin(), awake)));
}

} // namespace QuillTool
