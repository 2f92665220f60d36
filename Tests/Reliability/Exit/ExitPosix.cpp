// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Reliability/Exit/Exit.h"

namespace {

using CameraInterface::Camera;

/// Children of a process in which everything runs: they convert, run a thread of their own, and exit as usual.
void inForkedChildren() {
    constexpr int kChildren = 10;
    static Utilities::Watchdog watchdog; // of the application
    watchdog.start(0, [] { return true; });
    convertLargeImages();
    open().startStream();
    for (int child = 0; child < kChildren; ++child) {
        Imaging::createImage(1024, 1024, {}, 8, true, Imaging::IMAGE_FORMAT::MONO); // leaves memory in the pool
        const pid_t process = fork();
        if (process == 0) {
            bool listIsEmpty = false;
            std::thread([&] { listIsEmpty = Camera::getCamerasList().empty(); }).join();
            convertLargeImages();
            watchdog.restart();
            std::exit(listIsEmpty ? EXIT_SUCCESS : EXIT_FAILURE);
        }
        int status = 0;
        if (waitpid(process, &status, 0) != process || status != 0) {
            std::exit(EXIT_FAILURE);
        }
    }
}

/// Whether an action fails with this sentence.
template <typename Action>
bool failsBecause(const std::string& sentence, Action action) {
    try {
        action();
    } catch (const KestrelExceptions::KestrelException_Stream& failure) {
        return failure.why() == "An error with the video stream occured. " + sentence;
    }
    return false;
}

/// A stream that runs out of memory reports it, and can run again when there is memory.
void underAMemoryLimit() {
#ifndef QUILL_SANITIZED // these need the whole address space
    Camera& camera = open(2560, 1920);
    camera.startStream();
    camera.getImage();
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit limit{pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (40U << 20), RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &limit);
    std::vector<std::unique_ptr<Imaging::Image>> images;
    const bool isReported = failsBecause("There was not enough memory for the next frame.", [&] {
        while (true) {
            images.push_back(camera.getImage());
        }
    });
    camera.stopStream();
    const bool isRefused = failsBecause("There is not enough memory for a frame.", [&camera] { camera.startStream(); });
    images.clear();
    camera.getImage();
    if (!isReported || !isRefused) {
        std::exit(EXIT_FAILURE);
    }
#endif
}

} // namespace

void exitAtOnce() {
    std::quick_exit(EXIT_SUCCESS);
}

std::vector<WayToExit> waysOfThisPlatform() {
    return {{"InForkedChildren", inForkedChildren}, {"UnderAMemoryLimit", underAMemoryLimit}};
}
