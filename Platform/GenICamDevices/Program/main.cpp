// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "CommandLine.h"
#include "GigECamera.h"

namespace {

using namespace GenICamDevices;
using namespace GigECameraProgram;

constexpr std::size_t kLongestLine = 4096;

void printLine(const std::string& line) {
    std::cout << line << std::endl; // at once: who reads it waits for it
}

std::string countsOf(const GigECamera& camera) {
    const CameraCounts counts = camera.counts();
    return "{\"framesSent\": " + std::to_string(counts.framesSent) +
           ", \"packetsSent\": " + std::to_string(counts.packetsSent) +
           ", \"packetsDropped\": " + std::to_string(counts.packetsDropped) +
           ", \"resendsAnswered\": " + std::to_string(counts.resendsAnswered) + "}";
}

/// Does what a line of standard input says.
/// @return whether the camera goes on
bool obey(const std::string& line, GigECamera& camera) {
    if (line == "quit") {
        printLine("ok quit");
        return false;
    }
    if (line == "counts") {
        printLine("ok counts " + countsOf(camera));
    } else if (line == "help") {
        printLine("ok help: counts, quit, " + faultHelp());
    } else if (const std::size_t blank = line.find(' '); blank == std::string::npos) {
        printLine("error: '" + line + "' has no value, write NAME VALUE; 'help' lists names and values");
    } else {
        try {
            Faults faults = camera.faults();
            setFault(faults, line.substr(0, blank), line.substr(blank + 1));
            camera.setFaults(faults);
            printLine("ok " + line);
        } catch (const std::invalid_argument& failure) {
            printLine(std::string("error: ") + failure.what());
        }
    }
    return true;
}

/// Takes whole lines off what came through standard input.
/// @return whether the camera goes on
bool obeyLines(std::string& input, GigECamera& camera) {
    for (std::size_t end = input.find('\n'); end != std::string::npos; end = input.find('\n')) {
        const std::string line = input.substr(0, end);
        input.erase(0, end + 1);
        if (!line.empty() && !obey(line, camera)) {
            return false;
        }
    }
    if (input.size() > kLongestLine) {
        input.clear();
        printLine("error: a line of standard input is too long");
    }
    return true;
}

void run(GigECamera& camera, int signals, bool untilEof) {
    std::string input;
    std::array<pollfd, 2> waiting{pollfd{signals, POLLIN, 0}, pollfd{STDIN_FILENO, POLLIN, 0}};
    while (poll(waiting.data(), waiting.size(), -1) >= 0 || errno == EINTR) {
        if (waiting[0].revents != 0) {
            return;
        }
        if (waiting[1].revents == 0) {
            continue;
        }
        std::array<char, 1024> part{};
        const ssize_t size = read(STDIN_FILENO, part.data(), part.size());
        if (size > 0) {
            input.append(part.data(), static_cast<std::size_t>(size));
            if (!obeyLines(input, camera)) {
                return;
            }
        } else if (untilEof) {
            return;
        } else {
            waiting[1].fd = -1; // which poll() ignores
        }
    }
}

} // namespace

int main(int argumentCount, char* arguments[]) try {
    const CommandLine line = parseCommandLine(std::vector<std::string>(arguments + 1, arguments + argumentCount));
    if (line.wantsHelp || line.wantsVersion) {
        std::cout << (line.wantsHelp ? helpText() : "quill-gige-camera " QUILL_GIGE_CAMERA_VERSION "\n");
        return 0;
    }
    // Blocked before the first thread starts, so that no thread gets them.
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    const int signals = signalfd(-1, &ends, SFD_CLOEXEC);
    if (signals < 0 || std::signal(SIGPIPE, SIG_IGN) == SIG_ERR) {
        throw std::runtime_error("Signals cannot be waited for");
    }

    GigECamera camera(line.camera);
    printLine("ready " + camera.address());
    run(camera, signals, line.untilEof);
    printLine(countsOf(camera));
    return 0;
} catch (const std::invalid_argument& failure) {
    std::cerr << "quill-gige-camera: " << failure.what() << '\n';
    return 2;
} catch (const std::exception& failure) {
    std::cerr << "quill-gige-camera: " << failure.what() << '\n';
    return 1;
}
