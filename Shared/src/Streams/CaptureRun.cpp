// SPDX-License-Identifier: Apache-2.0

#include "Streams/CaptureRun.h"

#include <exception>
#include <utility>

#include "Base/SharedLibrary.h"
#include "Exceptions/KestrelException.h"
#include "Imaging/BufferPool.h"
#include "Streams/StreamSettings.h"
#include "Utilities/Stopwatch.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using Imaging::BufferPool;
using Utilities::MutexLock;

namespace {

constexpr std::uint32_t kCaptureEndedError = 14;

/// The bytes of the image in a captured frame; nothing if the frame is incomplete, or larger than requested, which is
/// invalid. An invalid pixel format is left to the caller that requests the format.
std::optional<std::size_t> imageBytes(const ORVEX_IMAGE_FORMAT& format, std::size_t bufferSize) {
    const auto formatBytes = [&format]() -> std::size_t {
        try {
            return getFrameSize(format.width, format.height, format.pixelFormat);
        } catch (const KestrelExceptions::KestrelException&) {
            return format.imageSize;
        }
    };
    const std::size_t bytes = formatBytes();
    const bool isWhole = bytes > 0 && bytes <= format.imageSize && bytes <= bufferSize;
    return isWhole ? std::optional(bytes) : std::nullopt;
}

} // namespace

CaptureRun::CaptureRun(StreamMode mode, void* handle, const ORVEX_SNAPSHOT& settings,
                       std::shared_ptr<StreamStatistics> statistics, const ORVEX_IMAGE_FORMAT& lastFormat)
    : m_Mode(mode), m_Handle(handle), m_TimeoutMs(settings.timeout),
      m_FrameBufferSize(getFrameSize(settings.format.width, settings.format.height, settings.format.pixelFormat)),
      m_Statistics(std::move(statistics)), m_Buffer(BufferPool::instance().take(m_FrameBufferSize)),
      m_ImageFormat(lastFormat) {}

CaptureRun::~CaptureRun() {
    BufferPool::instance().giveBack(std::move(m_Buffer));
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
    m_Thread = std::thread([self = shared_from_this()] { self->runThread(); });
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
    Base::keepThisLibraryLoaded();
    m_Thread.detach();
}

void CaptureRun::runThread() noexcept {
    auto why = FrameHandover::Outcome::OutOfMemory;
    try {
        why = captureLoop();
    } catch (const std::exception&) {
        // There is no memory for the next frame; no other exception occurs.
    }
    m_Handover.close(why);
    BufferPool::instance().giveBack(std::move(m_Buffer)); // the run may live long
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
            m_Buffer = BufferPool::instance().take(m_FrameBufferSize);
        }
        m_Buffer.resize(m_FrameBufferSize);
        if (!beginCapture()) {
            return FrameHandover::Outcome::Stopped;
        }
        stopwatch.start();
        const bool captured = mode.capture(api, m_Handle, m_Buffer.data()) != 0;
        if (!endCapture()) {
            return FrameHandover::Outcome::Stopped;
        }
        ORVEX_IMAGE_FORMAT format{};
        format.size = sizeof format;
        const bool described = (api.*mode.getImageFormat)(m_Handle, &format) != 0;
        stopwatch.stop();
        if (captured && described) {
            m_Statistics->setCaptureTime(stopwatch.delta());
            takeFrame(format);
        } else if (api.sdkGetLastErrorForCamera(m_Handle) == kCaptureEndedError) {
            // A stop also cancels the capture, after it has requested the end.
            return m_StopRequested ? FrameHandover::Outcome::Stopped : FrameHandover::Outcome::CaptureEnded;
        }
    }
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

void CaptureRun::takeFrame(const ORVEX_IMAGE_FORMAT& format) {
    const std::optional<std::size_t> bytes = imageBytes(format, m_Buffer.size());
    if (!bytes) {
        m_Statistics->incrementIncompleteFrameCount();
        return;
    }
    {
        const MutexLock lock(m_ImageFormatMutex);
        m_ImageFormat = format;
    }
    if (m_Handover.isRequested()) {
        m_Buffer.resize(*bytes); // a sampled frame is smaller than its region
        deliverFrame();
    }
}

void CaptureRun::deliverFrame() {
    Utilities::Stopwatch stopwatch;
    stopwatch.start();
    m_Handover.deliver(std::move(m_Buffer));
    stopwatch.stop();
    m_Statistics->setImageDataTransferTime(stopwatch.delta());
}

} // namespace OrvexAdapter
