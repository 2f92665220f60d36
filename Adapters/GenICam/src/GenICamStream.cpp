// SPDX-License-Identifier: Apache-2.0

#include "GenICamStream.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "Exceptions/Raise.h"
#include "GenICamCamera.h"
#include "Numbers.h"
#include "PropertyNames.h"

namespace GenICamAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

constexpr const char* kStreamWord = "video";
constexpr std::chrono::milliseconds kDefaultTimeout{5000};
constexpr double kLongestTimeoutMs = 1e12;
/// A larger frame is a wrong size.
constexpr std::size_t kLargestFrame = std::size_t{1} << 31;
/// What a payload may have beside its frame, such as chunk data; more is a wrong size, for which memory would be taken.
constexpr std::size_t kLargestAddition = std::size_t{16} << 20;

std::chrono::nanoseconds toTime(double milliseconds) {
    const double bounded = milliseconds > 0 ? std::min(milliseconds, kLongestTimeoutMs) : 0;
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double, std::milli>(bounded));
}

[[noreturn]] void raiseNotStarted(const ErrorKind& kind, const std::string& why) {
    throw KestrelException_Stream(kind.name, __FILE__, __LINE__, std::string(kind.description) + " " + why,
                                  kStreamWord);
}

std::int64_t integerOf(const Device& device, const char* feature) {
    Failure failure;
    const gint64 value = arv_device_get_integer_feature_value(device.get(), feature, failure.out());
    if (failure) {
        raiseNotStarted(Errors::kInvalidStreamSettings, failure.text());
    }
    return value;
}

std::string pixelFormatOf(const Device& device) {
    Failure failure;
    const char* const name = arv_device_get_string_feature_value(device.get(), "PixelFormat", failure.out());
    if (failure || name == nullptr) {
        raiseNotStarted(Errors::kInvalidStreamSettings, failure ? failure.text() : "The pixel format has no name.");
    }
    return name;
}

} // namespace

GenICamStream::GenICamStream(GenICamCamera& camera)
    : m_Camera(&camera), m_Statistics(std::make_shared<StreamStatistics>()) {
    frames().declarePackets();
}

GenICamStream::~GenICamStream() {
    stopWithoutCamera(); // whose own part is destroyed by now
}

bool GenICamStream::isStreaming() {
    return m_Streaming;
}

std::optional<double> GenICamStream::number(const char* property) const {
    try {
        Property* const found = m_Camera->findProperty(property);
        return found == nullptr ? std::nullopt : std::optional(parseFloat(found->getValue()));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

RunSettings GenICamStream::readSettings(const Device& device) {
    const std::string name = pixelFormatOf(device);
    RunSettings settings;
    settings.format = findPixelFormat(name);
    if (settings.format == nullptr) {
        raiseNotStarted(Errors::kInvalidStreamFormat, "The library cannot interpret the pixel format " + name + ".");
    }
    const std::int64_t width = integerOf(device, "Width");
    const std::int64_t height = integerOf(device, "Height");
    constexpr std::int64_t kLargestSide = std::numeric_limits<std::int32_t>::max();
    if (width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide) {
        raiseNotStarted(Errors::kInvalidStreamSettings, "The size of the image is invalid.");
    }
    const auto frame =
        settings.format->frameBytes(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    const std::int64_t payload = integerOf(device, "PayloadSize");
    if (!frame || *frame > kLargestFrame || payload <= 0 ||
        static_cast<std::size_t>(payload) > *frame + kLargestAddition) {
        raiseNotStarted(Errors::kInvalidStreamSettings, "The size of the payload is invalid.");
    }
    settings.payloadBytes = std::max(*frame, static_cast<std::size_t>(payload));
    settings.framesPerSecond = number(PropertyNames::kFramerate).value_or(0);
    settings.packetSocket = GenICam::getSettings().packetSocket;
    return settings;
}

FrameDescription GenICamStream::readDescription(const PixelFormat& format) {
    FrameDescription description;
    description.layout = format.layout;
    description.littleEndian = true;
    description.exposureMs = number(PropertyNames::kExposure);
    description.gain = number(PropertyNames::kGain);
    return description;
}

void GenICamStream::setLock(Device& device, bool locked) {
    // Cameras that have the feature rely on it.
    Failure failure;
    if (arv_device_get_feature(device.get(), kLockOfStream) != nullptr) {
        arv_device_set_integer_feature_value(device.get(), kLockOfStream, locked ? 1 : 0, failure.out());
        device.rememberLockOfStream(failure ? std::nullopt : std::optional(locked));
    }
}

void GenICamStream::startStream() {
    const MutexLock lock(m_ControlMutex);
    if (m_Streaming) {
        return;
    }
    const std::shared_ptr<Device> device = m_Camera->device();
    if (!device) {
        raise<KestrelException>(QUILL_HERE, Errors::kInvalidStreamSettings);
    }
    const RunSettings settings = readSettings(*device);
    frames().describe(readDescription(*settings.format));
    std::shared_ptr<ReceivingRun> run;
    try {
        run = std::make_shared<ReceivingRun>(device, settings, frames().makeRun(), m_Statistics);
        run->start();
    } catch (const std::bad_alloc&) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamMemory, kStreamWord);
    } catch (const std::exception& failure) {
        raiseNotStarted(Errors::kStartStream, failure.what());
    }
    setLock(*device, true);
    Failure failure;
    arv_device_execute_command(device->get(), "AcquisitionStart", failure.out());
    if (failure) {
        Failure ignored; // the command may have arrived, and its answer got lost
        arv_device_execute_command(device->get(), "AcquisitionStop", ignored.out());
        setLock(*device, false);
        run->stop();
        raiseNotStarted(Errors::kStartStream, failure.text());
    }
    const MutexLock runLock(m_RunMutex);
    m_Run = run;
    m_Streaming = true;
}

void GenICamStream::stopStream() {
    const MutexLock lock(m_ControlMutex);
    if (!m_Streaming) {
        return;
    }
    const std::shared_ptr<ReceivingRun> run = currentRun();
    Failure failure;
    arv_device_execute_command(run->device().get(), "AcquisitionStop", failure.out());
    if (failure) {
        throw KestrelException_Stream(Errors::kStopStream.name, __FILE__, __LINE__,
                                      std::string(Errors::kStopStream.description) + " " + failure.text(), kStreamWord);
    }
    setLock(run->device(), false);
    endRun(false);
}

void GenICamStream::forceStop() noexcept {
    stopWithoutCamera();
    if (m_Camera->isRetired()) {
        m_Camera->closeForGood();
    }
}

void GenICamStream::stopWithoutCamera() noexcept {
    const MutexLock lock(m_ControlMutex);
    if (m_Streaming) {
        endRun(true);
    }
}

void GenICamStream::endRun(bool isForced) {
    const std::shared_ptr<ReceivingRun> run = currentRun();
    if (isForced) {
        Failure failure;
        arv_device_execute_command(run->device().get(), "AcquisitionStop", failure.out());
        setLock(run->device(), false);
    }
    run->frames().handover().close(FrameHandover::Outcome::Stopped);
    run->stop();
    frames().describe(std::nullopt);
    m_Streaming = false;
}

std::shared_ptr<ReceivingRun> GenICamStream::currentRun() {
    const MutexLock lock(m_RunMutex);
    return m_Run;
}

StreamMode GenICamStream::getStreamType() {
    return StreamMode::Video;
}

void GenICamStream::setStreamType(StreamMode mode) {
    if (mode != StreamMode::Video) {
        raise<KestrelException_InvalidArgument>(QUILL_HERE, Errors::kArgumentUnhandled, "mode");
    }
}

std::chrono::nanoseconds GenICamStream::patience() const {
    const double timeoutMs = number(PropertyNames::kTimeout).value_or(-1);
    if (timeoutMs >= 0) {
        return toTime(timeoutMs);
    }
    const double rate = number(PropertyNames::kFramerate).value_or(0);
    return kDefaultTimeout + toTime(number(PropertyNames::kExposure).value_or(0)) + toTime(rate > 0 ? 1000 / rate : 0);
}

std::shared_ptr<ReceivingRun> GenICamStream::requireRun() {
    std::shared_ptr<ReceivingRun> run = currentRun();
    if (!run) {
        raiseWithoutFrame(FrameHandover::Outcome::Stopped);
    }
    return run;
}

void GenICamStream::waitForFrame(FrameHandover::Request& request) {
    const FrameHandover::Outcome outcome = request.wait(patience());
    if (outcome != FrameHandover::Outcome::Frame) {
        raiseWithoutFrame(outcome);
    }
    m_Statistics->incrementFrameCount(STREAM_TYPE::Delivered);
}

std::vector<unsigned char> GenICamStream::getImageData() {
    const std::shared_ptr<ReceivingRun> run = requireRun();
    FrameHandover::Request request(run->frames().handover());
    waitForFrame(request);
    return request.takeImageData();
}

bool GenICamStream::hasReceivedSince(std::chrono::steady_clock::time_point time) {
    const std::shared_ptr<ReceivingRun> run = currentRun();
    return m_Streaming && run && run->hasReceivedSince(time);
}

std::unique_ptr<Imaging::Image> GenICamStream::takeImage() {
    const std::shared_ptr<ReceivingRun> run = requireRun();
    FrameHandover::Request request(run->frames().handover());
    waitForFrame(request);
    const FrameGeometry geometry = request.geometry();
    return Imaging::createImage(geometry.width, geometry.height, request.takeImageData(), geometry.bitsPerPixel, true,
                                run->format().layout);
}

void GenICamStream::raiseWithoutFrame(FrameHandover::Outcome outcome) {
    const ErrorKind& kind = m_Camera->isRetired()                             ? Errors::kStreamCameraGone
                            : outcome == FrameHandover::Outcome::TimedOut     ? Errors::kStreamTimeout
                            : outcome == FrameHandover::Outcome::CaptureEnded ? Errors::kStreamEnded
                            : outcome == FrameHandover::Outcome::OutOfMemory  ? Errors::kStreamOutOfMemory
                                                                              : Errors::kStreamStopped;
    raise<KestrelException_Stream>(QUILL_HERE, kind, kStreamWord);
}

FrameGeometry GenICamStream::getImageFormat() {
    const std::shared_ptr<ReceivingRun> run = currentRun();
    return run ? run->geometry() : FrameGeometry{};
}

StreamStatistics& GenICamStream::getStreamStatistics() {
    return *m_Statistics;
}

void GenICamStream::describeFrames() {
    const MutexLock lock(m_ControlMutex);
    if (m_Streaming) { // otherwise the next start does it
        frames().describe(readDescription(currentRun()->format()));
    }
}

} // namespace GenICamAdapter
