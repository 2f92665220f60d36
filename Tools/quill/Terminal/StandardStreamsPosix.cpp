// SPDX-License-Identifier: Apache-2.0

#include "Terminal/StandardStreams.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Terminal/Output.h"

namespace QuillTool {

namespace {

bool isRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// The wakers' descriptors, then a stream's.
std::vector<pollfd> pollfdsOf(std::initializer_list<const Waker*> wakers, int stream, short events) {
    std::vector<pollfd> waiting;
    for (const Waker* waker : wakers) {
        waiting.push_back({static_cast<int>(waker->waitable()), POLLIN, 0});
    }
    waiting.push_back({stream, events, 0});
    return waiting;
}

/// Waits for any of them.
/// @return the place of the first one; that of the stream is the last
std::size_t waitFor(std::vector<pollfd>& waiting) {
    while (poll(waiting.data(), waiting.size(), -1) <= 0) {
    }
    const auto ready = std::find_if(waiting.begin(), waiting.end(), [](const pollfd& end) { return end.revents != 0; });
    return static_cast<std::size_t>(std::distance(waiting.begin(), ready));
}

} // namespace

void prepareStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) { // one that fails on every use takes its number
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); // writing to a closed standard output fails with EPIPE
}

std::vector<std::string> programArguments(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

bool isTerminal(StandardStream stream) {
    return isatty(static_cast<int>(stream)) == 1;
}

bool showsColors(StandardStream stream) {
    const char* terminal = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe): nobody changes the environment
    return isTerminal(stream) && (terminal == nullptr || std::string_view(terminal) != "dumb");
}

int errorOfWriting() {
    return errno;
}

std::optional<std::string> readInput(const Waker& waker) {
    std::vector<pollfd> waiting = pollfdsOf({&waker}, STDIN_FILENO, POLLIN);
    if (waitFor(waiting) == 0) {
        return std::nullopt;
    }
    std::array<char, 4096> bytes{};
    const ssize_t length = read(STDIN_FILENO, bytes.data(), bytes.size());
    return std::string(bytes.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::size_t waitWhileOutputIsRead(std::initializer_list<const Waker*> wakers) {
    std::vector<pollfd> waiting = pollfdsOf(wakers, STDOUT_FILENO, 0);
    const std::size_t ready = waitFor(waiting);
    if ((waiting.back().revents & POLLERR) != 0) {
        throw OutputClosed{};
    }
    return ready;
}

std::optional<std::size_t> writeOutput(const unsigned char* bytes, std::size_t size,
                                       std::initializer_list<const Waker*> wakers) {
    std::vector<pollfd> waiting = pollfdsOf(wakers, STDOUT_FILENO, POLLOUT);
    if (waitFor(waiting) < wakers.size()) {
        return std::nullopt;
    }
    // A pipe that has space takes this much at once, so that the wait is here and not in the call.
    const std::size_t piece = isRegularFile(STDOUT_FILENO) ? size : std::min<std::size_t>(size, PIPE_BUF);
    const ssize_t count = ::write(STDOUT_FILENO, bytes, piece);
    if (count < 0 && errno == EPIPE) {
        throw OutputClosed{};
    }
    if (count < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category());
    }
    return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
}

} // namespace QuillTool
