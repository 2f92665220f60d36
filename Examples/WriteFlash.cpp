// SPDX-License-Identifier: Apache-2.0

// Writes a file to a camera's flash with a display of progress; Ctrl-C cancels between two chunks.
// Arguments: serial number, address, file. A boot image goes through writeFirmwareToFlash(), which has the same shape.

#include <csignal>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include <Quill.h>

using CameraInterface::Camera;
using Utilities::Programmer;

namespace {

volatile std::sig_atomic_t isCancelled = 0;

/// Thrown by the function that is told of the progress: the flash keeps what was written so far.
struct Cancelled : std::runtime_error {
    Cancelled() : std::runtime_error("cancelled; write the range again before it is used") {}
};

void show(const char* stage, double done) {
    std::cerr << '\r' << stage << ' ' << static_cast<int>(done * 100) << " %   " << std::flush;
    if (isCancelled != 0) {
        throw Cancelled();
    }
}

} // namespace

int main(int argumentCount, char* arguments[]) try {
    if (argumentCount != 4) {
        throw std::invalid_argument("Arguments: serial number, address such as 0x40000, file");
    }
    std::ifstream file(arguments[3], std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), {}};
    const auto address = static_cast<unsigned>(std::stoul(arguments[2], nullptr, 0));
    constexpr unsigned kLargest = 1u << 20, kChunk = 4096;

    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(arguments[1]);
    camera.connect();
    std::signal(SIGINT, [](int) { isCancelled = 1; });
    Programmer::writeBufferToFlash(camera, bytes, address, kLargest, kChunk, [](double done) { show("write", done); });
    const bool isEqual =
        Programmer::compareFlash(camera, bytes, address, kChunk, [](double done) { show("verify", done); });
    std::cerr << '\n' << (isEqual ? "verified" : "the flash differs from the file") << '\n';
    Camera::unitialisedWorkpace();
    return isEqual ? 0 : 1;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
