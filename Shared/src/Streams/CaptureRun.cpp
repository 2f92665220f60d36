// SPDX-License-Identifier: Apache-2.0

#include "Streams/CaptureRun.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Exceptions/KestrelException.h"
#include "Process/Process.h"
#include "Streams/StreamSettings.h"
#include "Utilities/Stopwatch.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using Utilities::MutexLock;

namespace {

// Error codes of the SDK.
constexpr std::uint32_t kCaptureEndedError = 14;
constexpr std::uint32_t kCameraGoneError = 40;
constexpr std::uint32_t kTimedOutError = 41;

/// A device that refuses at once may do so for a while, above all one that is gone.
constexpr std::chrono::milliseconds kPauseAfterRefusal{1};

// The device's counters of a stream, and the two of them that count frames.
constexpr std::uint32_t kStreamCounters = 1;
constexpr std::size_t kCompletedCounter = 0;
constexpr std::size_t kDroppedCounter = 2;
/// A larger increase between two frames is a counter that started again.
constexpr std::uint32_t kMostLostAtOnce = 1U << 31;

/// Bits per pixel; 0 for a pixel format that is not one of the SDK's.
std::uint32_t bitsPerPixelOf(const ORVEX_IMAGE_FORMAT& format) {
    try {
        return getBitsPerPixel(format.pixelFormat);
    } catch (const KestrelExceptions::KestrelException&) {
        return 0;
    }
}

/// The bytes of the image in a captured frame; nothing if the frame is incomplete, or larger than requested, which is
/// invalid. An invalid pixel format is left to the caller that requests the format.
std::optional<std::size_t> imageBytes(const ORVEX_IMAGE_FORMAT& format, std::uint32_t bitsPerPixel,
                                      std::size_t bufferSize) {
    const std::size_t bytes =
        bitsPerPixel == 0 ? format.imageSize : getFrameSize(format.width, format.height, format.pixelFormat);
    const bool isWhole = bytes > 0 && bytes <= format.imageSize && bytes <= bufferSize;
    return isWhole ? std::optional(bytes) : std::nullopt;
}

} // namespace

CaptureRun::CaptureRun(StreamMode mode, void* handle, const ORVEX_SNAPSHOT& settings, std::shared_ptr<FrameRun> frames,
                       std::shared_ptr<StreamStatistics> statistics, const ORVEX_IMAGE_FORMAT& lastFormat)
    : m_Mode(mode), m_Handle(handle), m_TimeoutMs(settings.timeout),
      m_FrameBufferSize(getFrameSize(settings.format.width, settings.format.height, settings.format.pixelFormat)),
      m_Statistics(std::move(statistics)), m_Frames(std::move(frames)),
      m_Buffer(m_Frames->takeBuffer(m_FrameBufferSize)), m_ImageFormat(lastFormat) {}

CaptureRun::~CaptureRun() {
    m_Frames->giveBack(std::move(m_Buffer));
}

std::optional<std::chrono::nanoseconds> CaptureRun::timeout() const {
    if (m_TimeoutMs >= 0) {
        return toWaitingTime(m_TimeoutMs);
    }
    return std::nullopt;
}

ORVEX_IMAGE_FORMAT CaptureRun::imageFormat() {
    const MutexLock lock(m_ImageFormatMutex);
    return m_ImageFormat;
}

void CaptureRun::start() {
    m_Frames->begin();
    m_Thread = std::thread([self = shared_from_this()] { self->runThread(); });
}

void CaptureRun::requestStop() {
    {
        const MutexLock lock(m_StateMutex);
        m_StopRequested = true;
    }
    m_StateChanged.notify_all();
    m_Frames->letPass();
}

void CaptureRun::pause() {
    MutexLock lock(m_StateMutex);
    lock.waitFor(m_StateChanged, kPauseAfterRefusal, [this] { return m_StopRequested.load(); });
}

void CaptureRun::join() {
    m_Thread.join();
}

bool CaptureRun::joinWithin(std::chrono::milliseconds patience) {
    {
        MutexLock lock(m_StateMutex);
        const auto hasEnded = [this]() QUILL_REQUIRES(m_StateMutex) { return m_Ended; };
        if (!lock.waitFor(m_StateChanged, patience, hasEnded)) {
            // Outside a capture, the worker is about to end.
            const auto isLost = [this]() QUILL_REQUIRES(m_StateMutex) { return m_Ended || m_Capturing; };
            lock.wait(m_StateChanged, isLost);
        }
        m_LetGo = !m_Ended;
        if (m_LetGo) {
            return false;
        }
    }
    m_Thread.join();
    return true;
}

void CaptureRun::detach() {
    Process::keepThisLibraryLoaded();
    m_Thread.detach();
}

void CaptureRun::runThread() noexcept {
    auto why = FrameHandover::Outcome::OutOfMemory;
    try {
        why = captureLoop();
    } catch (const std::exception&) {
        // There is no memory for the next frame; no other exception occurs.
    }
    m_Frames->end(why);
    m_Frames->giveBack(std::move(m_Buffer)); // the run may live long
    const MutexLock lock(m_StateMutex);
    m_Ended = true;
    m_StateChanged.notify_all();
}

FrameHandover::Outcome CaptureRun::captureLoop() {
    const OrvexApi& api = orvexApi();
    const ModeOperations& mode = operationsOf(m_Mode);
    Utilities::Stopwatch stopwatch;
    while (true) {
        stopwatch.reset();
        if (m_Buffer.capacity() < m_FrameBufferSize) {
            m_Buffer = m_Frames->takeBuffer(m_FrameBufferSize);
        }
        m_Buffer.resize(m_FrameBufferSize);
        if (!m_DeviceCounts && m_Frames->hasQueues()) {
            m_DeviceCounts = deviceCounts();
        }
        if (!beginCapture()) {
            return FrameHandover::Outcome::Stopped;
        }
        stopwatch.start();
        const bool captured = mode.capture(api, m_Handle, m_Buffer.data()) != 0;
        const auto arrival = std::chrono::steady_clock::now();
        if (!endCapture()) {
            return FrameHandover::Outcome::Stopped;
        }
        ORVEX_IMAGE_FORMAT format{};
        format.size = sizeof format;
        const bool described = (api.*mode.getImageFormat)(m_Handle, &format) != 0;
        stopwatch.stop();
        const std::uint32_t error = captured && described ? 0 : api.sdkGetLastErrorForCamera(m_Handle);
        const bool hasFrame = captured || (error != kCameraGoneError && error != kTimedOutError);
        countLostFrames(hasFrame);
        if (captured && described) {
            m_Statistics->setCaptureTime(stopwatch.delta());
            takeFrame(format, arrival);
            continue;
        }
        if (error == kCaptureEndedError) {
            // A stop also cancels the capture, after it has requested the end.
            return m_StopRequested ? FrameHandover::Outcome::Stopped : FrameHandover::Outcome::CaptureEnded;
        }
        if (captured) {
            m_Frames->lose(FrameLoss::Undescribed);
        } else {
            if (hasFrame) {
                m_Frames->lose(FrameLoss::Refused);
            }
            pause();
        }
    }
}

std::optional<CaptureRun::DeviceCounts> CaptureRun::deviceCounts() const {
    OrvexApi::_ORVEX_STREAM_STATS read{};
    if (orvexApi().sdkGetStreamStats(m_Handle, kStreamCounters, &read, sizeof read) == 0) {
        return std::nullopt;
    }
    return DeviceCounts{read.counters[kCompletedCounter], read.counters[kDroppedCounter]};
}

void CaptureRun::countLostFrames(bool hasFrame) {
    const std::optional<DeviceCounts> before = m_DeviceCounts;
    const std::optional<DeviceCounts> now = m_Frames->hasQueues() ? deviceCounts() : std::nullopt;
    if (now || !m_Frames->hasQueues()) { // if the device does not answer, the next increase has all
        m_DeviceCounts = now;
    }
    if (!before || !now) {
        return;
    }
    const auto lose = [this](FrameLoss why, std::uint32_t frames) {
        if (frames > 0 && frames < kMostLostAtOnce) {
            m_Frames->lose(why, frames);
        }
    };
    const std::uint32_t completed = now->completed - before->completed;
    lose(FrameLoss::Missed, completed - std::min<std::uint32_t>(completed, hasFrame ? 1 : 0));
    lose(FrameLoss::DroppedByCamera, now->dropped - before->dropped);
}

bool CaptureRun::beginCapture() {
    const MutexLock lock(m_StateMutex);
    m_Capturing = !m_StopRequested;
    return m_Capturing;
}

bool CaptureRun::endCapture() {
    const MutexLock lock(m_StateMutex);
    m_Capturing = false;
    return !m_LetGo;
}

void CaptureRun::takeFrame(const ORVEX_IMAGE_FORMAT& format, std::chrono::steady_clock::time_point arrival) {
    const std::uint32_t bitsPerPixel = bitsPerPixelOf(format);
    const std::optional<std::size_t> bytes = imageBytes(format, bitsPerPixel, m_Buffer.size());
    if (!bytes) {
        m_Statistics->incrementIncompleteFrameCount();
        m_Frames->loseIncomplete(format.imageSize, m_FrameBufferSize);
        return;
    }
    {
        const MutexLock lock(m_ImageFormatMutex);
        m_ImageFormat = format;
    }
    FrameInformation known;
    known.arrival = arrival;
    if (m_Frames->publish(m_Buffer, *bytes, {format.height, format.width, bitsPerPixel}, known)) {
        m_Statistics->setImageDataTransferTime(m_Frames->transferSeconds());
    }
}

} // namespace OrvexAdapter
