// SPDX-License-Identifier: Apache-2.0

#include "ChildProcess.h"

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

namespace {

/// The time after which a child counts as hanging, on any load.
constexpr std::chrono::seconds kTimeLimit{600};

/// The two ends of a stream: the one read here and the one that the child writes.
struct Channel {
    explicit Channel(bool terminal) {
        std::array<int, 2> ends{};
        const int failure = terminal ? openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) : pipe(ends.data());
        if (failure != 0) {
            throw std::runtime_error("No channel to a child process can be made.");
        }
        readEnd = ends[0];
        writeEnd = ends[1];
        fcntl(readEnd, F_SETFD, FD_CLOEXEC);
        fcntl(writeEnd, F_SETFD, FD_CLOEXEC);
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    ~Channel() { close(readEnd); }

    /// @return false at the end
    bool readMore() {
        std::array<char, 4096> bytes{};
        const ssize_t length = read(readEnd, bytes.data(), bytes.size());
        text.append(bytes.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
        return length > 0;
    }

    int readEnd;
    int writeEnd;
    std::string text;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

pid_t spawn(const ChildProcess& child, const Channel& output, const Channel& errors) {
    std::vector<std::string> arguments{child.program};
    arguments.insert(arguments.end(), child.arguments.begin(), child.arguments.end());
    std::vector<std::string> environment = child.environment; // the first entry of a name counts
    for (char** variable = environ; *variable != nullptr; ++variable) {
        environment.emplace_back(*variable);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, child.inputFile.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.writeEnd, STDERR_FILENO);
    pid_t process = -1;
    const int failure = posix_spawnp(&process, child.program.c_str(), &actions, nullptr, pointersTo(arguments).data(),
                                     pointersTo(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    close(output.writeEnd);
    close(errors.writeEnd);
    if (failure != 0) {
        throw std::runtime_error("The child process cannot be started: " + child.program);
    }
    return process;
}

} // namespace

bool canOpenTerminal() {
    try {
        close(Channel(true).writeEnd);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

ChildResult runChild(const ChildProcess& child) {
    Channel output(child.onTerminal);
    Channel errors(false);
    const pid_t process = spawn(child, output, errors);
    const auto deadline = std::chrono::steady_clock::now() + kTimeLimit;
    auto reaction = child.reactions.begin();
    std::array<pollfd, 2> waiting{pollfd{output.readEnd, POLLIN, 0}, pollfd{errors.readEnd, POLLIN, 0}};
    while (waiting[0].fd >= 0 || waiting[1].fd >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || poll(waiting.data(), waiting.size(), static_cast<int>(left.count())) <= 0) {
            kill(process, SIGKILL);
            break;
        }
        for (std::size_t index = 0; index < waiting.size(); ++index) {
            if (waiting[index].revents != 0 && !(index == 0 ? output : errors).readMore()) {
                waiting[index].fd = -1;
            }
        }
        while (reaction != child.reactions.end() && output.text.find(reaction->text) != std::string::npos) {
            reaction->action(process);
            ++reaction;
        }
    }
    int status = 0;
    waitpid(process, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), output.text, errors.text};
}

} // namespace TestSupport
