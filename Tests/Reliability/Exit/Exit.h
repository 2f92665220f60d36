// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include <Quill.h>

struct WayToExit {
    const char* name;
    void (*run)();
};

/// Those that not every system has.
std::vector<WayToExit> waysOfThisPlatform();

/// Exits with success without calling what was registered for the exit.
[[noreturn]] void exitAtOnce();

constexpr std::uint32_t kSerial = 7; ///< of the camera that open() opens

CameraInterface::Camera& open(std::uint32_t width = 64, std::uint32_t height = 48);

/// Converts on several threads, the library's and OpenCV's.
void convertLargeImages();
