// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "../Imaging/Image.h"

namespace CameraInterface {

/// What a camera's own timestamps count from.
enum class CameraClock : std::uint8_t {
    None,   ///< the camera has no timestamps
    Camera, ///< an instant of the camera's choice, usually when it was switched on
    Epoch   ///< 1970-01-01 00:00 TAI: the camera's clock is synchronised
};

/// Which frame an image is, and when it came.
struct FrameInformation {
    /// The run of the stream, counted from 1 by each camera object. A run lasts from a start to the next stop.
    std::uint64_t run = 0;
    /// The number in the run, counted from 1. Frames that were lost before they could be delivered are numbered, too:
    /// a gap is a lost frame, and Camera::getStreamCounters() says why.
    std::uint64_t number = 0;
    /// The number that the camera gave the frame, where it numbers them.
    std::optional<std::uint64_t> cameraNumber;
    /// The camera's own timestamp, on the clock cameraClock.
    std::optional<std::chrono::nanoseconds> cameraTime;
    CameraClock cameraClock = CameraClock::None;
    /// When the last byte of the frame was here, on this computer's steady clock: for intervals.
    std::chrono::steady_clock::time_point arrival;
    /// The same instant on the wall clock, which may jump: for people.
    std::chrono::system_clock::time_point arrivalWallTime;
    /// Exposure time in milliseconds, and gain in the unit of the camera's gain property, where they are known: as the
    /// library last read or wrote them before the frame arrived. A frame that is exposed while a setting changes may
    /// have the former value.
    std::optional<double> exposureMs;
    std::optional<double> gain;
};

/// An image and which one it is. All consumers of a frame share one image, which nobody changes. Copies are cheap.
struct Frame {
    std::shared_ptr<const Imaging::Image> image;
    FrameInformation information;
};

} // namespace CameraInterface
