// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>

#include "Boundary/BoundaryCall.h"
#include "Sensor/FrameGeometry.h"

// Streaming and capture.

namespace SoftwareDevices::Boundary {

namespace {

int32_t addCallback(Operation operation, void* handle, FrameKind kind, ORVEX_FRAME_CALLBACK callback, void* context) {
    return onHandle(operation, handle, int32_t{-1}, {}, [&](Session& session) {
        session.device->requirePresent();
        requirePointer(callback);
        return session.capture->callbacks().add(kind, callback, context);
    });
}

uint32_t removeCallback(Operation operation, void* handle, FrameKind kind, int32_t id) {
    return onHandle(operation, handle, uint32_t{0}, {static_cast<double>(id)}, [&](Session& session) {
        require(session.capture->callbacks().remove(kind, id), kInvalidArgument);
        return kSuccess;
    });
}

void checkStillSettings(const Device& device, const ORVEX_SNAPSHOT& snapshot) {
    constexpr float kLongestTime = 3600000; // milliseconds
    const float times[] = {snapshot.exposure, snapshot.exposureDelay};
    const float gains[] = {snapshot.gain, snapshot.gainRed, snapshot.gainBlue, snapshot.gainGreen1,
                           snapshot.gainGreen2};
    const bool goodTimes =
        std::all_of(std::begin(times), std::end(times), [](float time) { return time >= 0 && time <= kLongestTime; });
    const bool goodGains =
        std::all_of(std::begin(gains), std::end(gains), [](float gain) { return gain >= 0 && std::isfinite(gain); });
    const bool goodShutter =
        snapshot.shutterType == 0 || (snapshot.shutterType == 1 && device.description().hasRollingShutter);
    const bool goodTrigger = snapshot.useHardwareTrigger == 0 || device.description().hasHardwareTrigger;
    require(goodTimes && goodGains && goodShutter && goodTrigger, kInvalidStillFormat);
    try {
        checkFormat(device.description(), snapshot.format);
    } catch (const Refusal&) {
        throw Refusal{kInvalidStillFormat};
    }
}

} // namespace

int32_t sdkAddStreamingCallback(void* handle, ORVEX_FRAME_CALLBACK callback, void* context) noexcept {
    return addCallback(Operation::sdkAddStreamingCallback, handle, FrameKind::Video, callback, context);
}

uint32_t sdkRemoveStreamingCallback(void* handle, int32_t id) noexcept {
    return removeCallback(Operation::sdkRemoveStreamingCallback, handle, FrameKind::Video, id);
}

int32_t sdkAddStillCallback(void* handle, ORVEX_FRAME_CALLBACK callback, void* context) noexcept {
    return addCallback(Operation::sdkAddStillCallback, handle, FrameKind::Still, callback, context);
}

uint32_t sdkRemoveStillCallback(void* handle, int32_t id) noexcept {
    return removeCallback(Operation::sdkRemoveStillCallback, handle, FrameKind::Still, id);
}

uint32_t sdkStreamVideoControl(void* handle, uint32_t command, uint32_t zero) noexcept {
    constexpr uint32_t kStop = 0;
    constexpr uint32_t kStart = 1;
    return onCamera(Operation::sdkStreamVideoControl, handle, {static_cast<double>(command), static_cast<double>(zero)},
                    [&](Session& session) {
                        require(command == kStart || command == kStop, kInvalidArgument);
                        if (command == kStop) {
                            session.capture->stop(FrameKind::Video);
                            return;
                        }
                        ORVEX_SNAPSHOT settings{};
                        settings.format = session.device->format();
                        session.capture->start(FrameKind::Video, settings);
                    });
}

uint32_t sdkEnableStillMode(void* handle, ORVEX_SNAPSHOT* snapshot) noexcept {
    return onCamera(Operation::sdkEnableStillMode, handle, {}, [&](Session& session) {
        requirePointer(snapshot);
        require(session.device->hardware().hasSensor(), kUnsupported);
        checkStillSettings(*session.device, *snapshot);
        session.capture->start(FrameKind::Still, *snapshot);
    });
}

uint32_t sdkDisableStillMode(void* handle) noexcept {
    return onCamera(Operation::sdkDisableStillMode, handle, {},
                    [](Session& session) { session.capture->stop(FrameKind::Still); });
}

uint32_t sdkCancelVideoCapture(void* handle) noexcept {
    return onCamera(Operation::sdkCancelVideoCapture, handle, {},
                    [](Session& session) { session.capture->cancel(FrameKind::Video); });
}

uint32_t sdkCancelStillCapture(void* handle) noexcept {
    return onCamera(Operation::sdkCancelStillCapture, handle, {},
                    [](Session& session) { session.capture->cancel(FrameKind::Still); });
}

uint32_t sdkCaptureVideoFrames(void* handle, uint32_t count, uint8_t* buffer) noexcept {
    return onCamera(Operation::sdkCaptureVideoFrames, handle, {static_cast<double>(count)}, [&](Session& session) {
        requirePointer(buffer);
        require(count > 0, kInvalidArgument);
        uint8_t* frame = buffer;
        for (uint32_t i = 0; i < count; ++i) {
            session.capture->captureVideo(frame);
            frame += session.capture->imageFormat(FrameKind::Video).imageSize;
        }
    });
}

uint32_t sdkCaptureStillFrame(void* handle, uint8_t* buffer) noexcept {
    return onCamera(Operation::sdkCaptureStillFrame, handle, {}, [&](Session& session) {
        requirePointer(buffer);
        session.capture->captureStill(buffer);
    });
}

uint32_t sdkGetVideoImageFormat(void* handle, ORVEX_IMAGE_FORMAT* format) noexcept {
    return onCamera(Operation::sdkGetVideoImageFormat, handle, {}, [&](Session& session) {
        requirePointer(format);
        *format = session.capture->imageFormat(FrameKind::Video);
    });
}

uint32_t sdkGetStillImageFormat(void* handle, ORVEX_IMAGE_FORMAT* format) noexcept {
    return onCamera(Operation::sdkGetStillImageFormat, handle, {}, [&](Session& session) {
        requirePointer(format);
        *format = session.capture->imageFormat(FrameKind::Still);
    });
}

uint32_t sdkGetStreamStats(void* handle, uint32_t kind, _ORVEX_STREAM_STATS* statistics, uint32_t size) noexcept {
    return onCamera(Operation::sdkGetStreamStats, handle, {static_cast<double>(kind), static_cast<double>(size)},
                    [&](Session& session) {
                        requirePointer(statistics);
                        require(kind == 1 && size == sizeof *statistics, kInvalidArgument);
                        *statistics = session.capture->statistics();
                    });
}

} // namespace SoftwareDevices::Boundary
