#include "Streams/OrvexStream.h"

#include <exception>
#include <string>
#include <utility>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Imaging/BufferPool.h"
#include "OrvexApi/OrvexApi.h"
#include "Properties/OrvexEnumerations.h"
#include "PropertyNames.h"
#include "Streams/StreamSettings.h"
#include "Utilities/Stopwatch.h"
#include "Utilities/TextConversion.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

constexpr std::int32_t kNoCallback = -1;
constexpr std::uint32_t kInvalidFormatError = 9;
constexpr std::uint32_t kCaptureEndedError = 14;
constexpr std::chrono::milliseconds kDefaultTimeout{5000};

const char* const kVideoText = "Video";
const char* const kStillText = "Still";

/// A device that reports a larger frame than it was asked for is not believed. One that reports a pixel format which is
/// none is left to getImageFormat().
bool fits(const ORVEX_IMAGE_FORMAT& format, std::size_t bufferSize) {
    try {
        return getFrameSize(format.width, format.height, format.pixelFormat) <= bufferSize;
    } catch (const KestrelException&) {
        return true;
    }
}

/// What the SDK calls the same in both modes, but for the operation.
struct ModeOperations {
    const char* word;
    std::int32_t (*OrvexApi::*addCallback)(void* handle, ORVEX_FRAME_CALLBACK callback, void* context);
    std::uint32_t (*OrvexApi::*removeCallback)(void* handle, std::int32_t id);
    std::uint32_t (*start)(const OrvexApi& api, void* handle, ORVEX_SNAPSHOT& settings);
    std::uint32_t (*stop)(const OrvexApi& api, void* handle);
    std::uint32_t (*OrvexApi::*cancelCapture)(void* handle);
    std::uint32_t (*capture)(const OrvexApi& api, void* handle, std::uint8_t* buffer);
    std::uint32_t (*OrvexApi::*getImageFormat)(void* handle, ORVEX_IMAGE_FORMAT* format);
};

std::uint32_t startVideo(const OrvexApi& api, void* handle, ORVEX_SNAPSHOT& settings) {
    ORVEX_FRAME_FORMAT present{};
    float frameRate = 0;
    const bool started = api.sdkGetFormat(handle, &present, &frameRate) != 0 &&
                         api.sdkSetFormat(handle, &settings.format, frameRate) != 0 &&
                         api.sdkStreamVideoControl(handle, 1, 0) != 0;
    return started ? 1 : 0;
}

std::uint32_t startStill(const OrvexApi& api, void* handle, ORVEX_SNAPSHOT& settings) {
    const std::uint32_t started = api.sdkEnableStillMode(handle, &settings);
    if (started == 0 && api.sdkGetLastErrorForCamera(handle) == kInvalidFormatError) {
        raise<KestrelException>(QUILL_HERE, Errors::kInvalidStreamFormat);
    }
    return started;
}

constexpr ModeOperations kVideoOperations{
    "video",
    &OrvexApi::sdkAddStreamingCallback,
    &OrvexApi::sdkRemoveStreamingCallback,
    startVideo,
    [](const OrvexApi& api, void* handle) { return api.sdkStreamVideoControl(handle, 0, 0); },
    &OrvexApi::sdkCancelVideoCapture,
    [](const OrvexApi& api, void* handle, std::uint8_t* buffer) {
        return api.sdkCaptureVideoFrames(handle, 1, buffer);
    },
    &OrvexApi::sdkGetVideoImageFormat,
};

constexpr ModeOperations kStillOperations{
    "still",
    &OrvexApi::sdkAddStillCallback,
    &OrvexApi::sdkRemoveStillCallback,
    startStill,
    [](const OrvexApi& api, void* handle) { return api.sdkDisableStillMode(handle); },
    &OrvexApi::sdkCancelStillCapture,
    [](const OrvexApi& api, void* handle, std::uint8_t* buffer) { return api.sdkCaptureStillFrame(handle, buffer); },
    &OrvexApi::sdkGetStillImageFormat,
};

const ModeOperations& operationsOf(StreamMode mode) {
    return mode == StreamMode::Video ? kVideoOperations : kStillOperations;
}

} // namespace

OrvexStream::OrvexStream(OrvexCamera& camera) : m_Camera(&camera), m_ImageFormat{} {
    m_ImageFormat.size = sizeof m_ImageFormat;
}

OrvexStream::~OrvexStream() {
    OrvexStream::forceStop();
}

bool OrvexStream::isStreaming() {
    return m_Streaming;
}

void OrvexStream::startStream() {
    const MutexLock lock(m_ControlMutex);
    if (m_Streaming) {
        return;
    }
    m_Snapshot = buildStreamSettings(*m_Camera);
    m_Mode = getStreamType();
    startCapture();
    startWorker();
}

void OrvexStream::startCapture() {
    const OrvexApi& api = orvexApi();
    const ModeOperations& mode = operationsOf(m_Mode);
    void* const handle = m_Camera->getHandle();
    std::int32_t& callbackId = callbackIdOf(m_Mode);
    if (callbackId != kNoCallback) {
        (api.*mode.removeCallback)(handle, callbackId); // left behind by a start that failed
    }
    callbackId = (api.*mode.addCallback)(handle, frameCallback, this);
    if (callbackId == kNoCallback) {
        raise<KestrelException>(QUILL_HERE, Errors::kRegisterStreamCallback);
    }
    if (mode.start(api, handle, m_Snapshot) == 0) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStartStream, mode.word);
    }
}

void OrvexStream::startWorker() {
    m_StopRequested = false;
    m_TimeoutMs = m_Snapshot.timeout;
    m_Handover.open();
    m_Thread =
        std::thread(&OrvexStream::captureLoop, this, m_Mode.load(),
                    getFrameSize(m_Snapshot.format.width, m_Snapshot.format.height, m_Snapshot.format.pixelFormat));
    m_Streaming = true;
}

void OrvexStream::stopStream() {
    const MutexLock lock(m_ControlMutex);
    if (!m_Streaming) {
        return;
    }
    m_StopRequested = true;
    stopCapture();
    joinWorker();
}

void OrvexStream::stopCapture() {
    const OrvexApi& api = orvexApi();
    const ModeOperations& mode = operationsOf(m_Mode);
    void* const handle = m_Camera->getHandle();
    std::int32_t& callbackId = callbackIdOf(m_Mode);
    (api.*mode.cancelCapture)(handle);
    if (mode.stop(api, handle) == 0) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStopStream, mode.word);
    }
    if ((api.*mode.removeCallback)(handle, callbackId) == 0) {
        raise<KestrelException>(QUILL_HERE, Errors::kRemoveStreamCallback);
    }
    callbackId = kNoCallback;
}

std::int32_t& OrvexStream::callbackIdOf(StreamMode mode) {
    return mode == StreamMode::Video ? m_VideoCallbackId : m_StillCallbackId;
}

void OrvexStream::joinWorker() {
    m_Handover.close(FrameHandover::Outcome::Stopped);
    m_Thread.join();
    m_Streaming = false;
}

void OrvexStream::forceStop() noexcept {
    const MutexLock lock(m_ControlMutex);
    if (!m_Streaming) {
        return;
    }
    m_StopRequested = true;
    try {
        stopCapture();
    } catch (const KestrelException&) {
        // The capture is cancelled and the worker told to end; that is enough.
    }
    joinWorker();
}

StreamMode OrvexStream::getStreamType() {
    const std::string mode = m_Camera->getProperty(PropertyNames::kStreamingMode).getValue();
    if (mode == kVideoText) {
        return StreamMode::Video;
    }
    if (mode == kStillText) {
        return StreamMode::Still;
    }
    raise<KestrelException_InvalidArgument>(QUILL_HERE, Errors::kArgumentUnhandled, "mode");
}

void OrvexStream::setStreamType(StreamMode mode) {
    m_Camera->getProperty(PropertyNames::kStreamingMode).setValue(mode == StreamMode::Still ? kStillText : kVideoText);
}

std::vector<unsigned char> OrvexStream::getImageData() {
    const auto begin = std::chrono::steady_clock::now();
    const std::chrono::milliseconds timeout(static_cast<std::int64_t>(m_TimeoutMs.load()));
    std::chrono::milliseconds bound = timeout.count() < 0 ? kDefaultTimeout : timeout;
    std::vector<unsigned char> frame;
    FrameHandover::Outcome outcome = m_Handover.take(begin + bound, frame);
    if (timeout.count() < 0) {
        // A long exposure still gets its frame, and may have been lengthened during the wait.
        while (outcome == FrameHandover::Outcome::TimedOut && kDefaultTimeout + exposureTime() > bound) {
            bound = kDefaultTimeout + exposureTime();
            outcome = m_Handover.take(begin + bound, frame);
        }
    }
    if (outcome != FrameHandover::Outcome::Frame) {
        raiseWithoutFrame(outcome);
    }
    m_Statistics.incrementFrameCount(STREAM_TYPE::Delivered);
    return frame;
}

std::chrono::milliseconds OrvexStream::exposureTime() {
    double exposureMs = 0;
    try {
        const char* name = m_Mode == StreamMode::Video ? PropertyNames::kVideoExposure : PropertyNames::kStillExposure;
        Utilities::extractFirstWord(m_Camera->getProperty(name).getValue(), exposureMs);
    } catch (const std::exception&) {
        // A camera whose exposure cannot be read is given the default bound alone.
    }
    return std::chrono::milliseconds(static_cast<std::int64_t>(exposureMs));
}

void OrvexStream::raiseWithoutFrame(FrameHandover::Outcome outcome) {
    const char* const word = operationsOf(m_Mode).word;
    if (m_Camera->isRetired()) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamCameraGone, word);
    }
    if (outcome == FrameHandover::Outcome::TimedOut) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamTimeout, word);
    }
    raise<KestrelException_Stream>(
        QUILL_HERE, outcome == FrameHandover::Outcome::CaptureEnded ? Errors::kStreamEnded : Errors::kStreamStopped,
        word);
}

FrameGeometry OrvexStream::getImageFormat() {
    ORVEX_IMAGE_FORMAT format{};
    {
        const MutexLock lock(m_ImageFormatMutex);
        format = m_ImageFormat;
    }
    return {format.height, format.width, getBitsPerPixel(format.pixelFormat)};
}

StreamStatistics& OrvexStream::getStreamStatistics() {
    return m_Statistics;
}

void OrvexStream::frameCallback(void* context, std::uint32_t /*unused1*/, std::uint32_t /*unused2*/) {
    static_cast<OrvexStream*>(context)->m_Statistics.incrementFrameCount(STREAM_TYPE::Received);
}

void OrvexStream::captureLoop(StreamMode mode, std::size_t frameBufferSize) {
    Utilities::Stopwatch stopwatch;
    std::vector<unsigned char> buffer;
    auto why = FrameHandover::Outcome::Stopped;
    while (!m_StopRequested) {
        stopwatch.reset();
        if (buffer.size() != frameBufferSize) {
            buffer = Imaging::BufferPool::instance().take(frameBufferSize);
        }
        stopwatch.start();
        const bool captured = captureFrame(mode, buffer);
        stopwatch.stop();
        if (captured) {
            m_Statistics.setCaptureTime(stopwatch.delta());
            if (m_Handover.isRequested()) {
                deliverFrame(buffer);
            }
        } else if (orvexApi().sdkGetLastErrorForCamera(m_Camera->getHandle()) == kCaptureEndedError) {
            // A stop cancels the capture too, after it has asked for the end.
            why = m_StopRequested.exchange(true) ? why : FrameHandover::Outcome::CaptureEnded;
        }
    }
    m_Handover.close(why);
    Imaging::BufferPool::instance().giveBack(std::move(buffer));
}

bool OrvexStream::captureFrame(StreamMode streamMode, std::vector<unsigned char>& buffer) {
    const OrvexApi& api = orvexApi();
    const ModeOperations& mode = operationsOf(streamMode);
    void* const handle = m_Camera->getHandle();
    const bool captured = mode.capture(api, handle, buffer.data()) != 0;
    const MutexLock lock(m_ImageFormatMutex);
    const bool described = (api.*mode.getImageFormat)(handle, &m_ImageFormat) != 0;
    return captured && described && fits(m_ImageFormat, buffer.size());
}

void OrvexStream::deliverFrame(std::vector<unsigned char>& frame) {
    Utilities::Stopwatch stopwatch;
    stopwatch.start();
    m_Handover.deliver(std::move(frame));
    stopwatch.stop();
    m_Statistics.setImageDataTransferTime(stopwatch.delta());
}

} // namespace OrvexAdapter
