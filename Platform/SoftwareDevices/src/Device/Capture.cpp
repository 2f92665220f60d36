// SPDX-License-Identifier: Apache-2.0

#include "Device/Capture.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "Device/Faults.h"
#include "Refusal.h"
#include "Sensor/FrameGeometry.h"

namespace SoftwareDevices {

namespace {

constexpr float kDefaultTimeout = 5000; // milliseconds
constexpr float kLongestTime = 3600000; // milliseconds

/// In the order of the SDK's stream counters.
enum Counter : std::size_t { kCompleted = 0, kDropped = 1, kActuallyDropped = 2, kPartialLines = 6 };

std::chrono::nanoseconds toTime(float milliseconds) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double, std::milli>(milliseconds));
}

ORVEX_IMAGE_FORMAT imageFormatOf(const FrameGeometry& geometry, std::size_t bytes) {
    return {sizeof(ORVEX_IMAGE_FORMAT),
            geometry.width,
            geometry.height,
            geometry.layout.code,
            static_cast<std::uint32_t>(bytes),
            {}};
}

} // namespace

Capture::Capture(std::shared_ptr<Device> device) : m_Device(std::move(device)) {}

void Capture::start(FrameKind kind, const ORVEX_SNAPSHOT& settings) {
    const Lock lock(m_Mutex);
    require(!m_Closed, kCameraGone);
    m_Device->requirePresent();
    Run& started = run(kind);
    if (!started.running) {
        m_Device->beginStream();
    }
    started.running = true;
    started.cancelled = false;
    started.settings = settings;
    started.frames = 0;
    ++started.starts;
    started.image.reset();
    if (kind == FrameKind::Video) {
        m_NextFrame = Clock::now() + m_Device->frameInterval();
    } else {
        m_Triggers = 0;
    }
    if (!m_Thread.joinable()) {
        m_Thread = std::thread([self = shared_from_this()] { self->runDeviceThread(); });
    }
    m_Changed.notify_all();
}

void Capture::stop(FrameKind kind) {
    const Lock lock(m_Mutex);
    stopLocked(run(kind));
}

void Capture::stopLocked(Run& run) {
    if (run.running) {
        run.running = false;
        m_Device->endStream();
        m_Changed.notify_all();
    }
}

void Capture::cancel(FrameKind kind) {
    const Lock lock(m_Mutex);
    run(kind).cancelled = true;
    m_Changed.notify_all();
}

bool Capture::isOverLocked(const Run& run, std::uint64_t start) const {
    return run.cancelled || !run.running || run.starts != start || m_Closed || m_Device->isGone();
}

void Capture::requireRunningLocked(const Run& run, std::uint64_t start) const {
    require(!m_Closed && !m_Device->isGone(), kCameraGone);
    require(!isOverLocked(run, start), kCaptureEnded);
}

bool Capture::completeFrameLocked(Run& run) {
    ++run.frames;
    if (m_Device->takeDrop()) {
        ++m_Statistics.counters[kDropped];
        ++m_Statistics.counters[kActuallyDropped];
        return false;
    }
    ++m_Statistics.counters[kCompleted];
    ++run.arrived;
    ++run.unannounced;
    m_Changed.notify_all();
    return true;
}

void Capture::captureVideo(std::uint8_t* buffer) {
    Lock lock(m_Mutex);
    Run& video = run(FrameKind::Video);
    const std::uint64_t start = video.starts;
    const std::uint64_t arrivedBefore = video.arrived;
    requireRunningLocked(video, start);
    prepare(lock, video, m_Device->videoExposure());
    while (video.arrived == arrivedBefore) {
        requireRunningLocked(video, start);
        if (m_Device->hardware().isAsFastAsAsked()) {
            completeFrameLocked(video);
        } else {
            m_Changed.wait(lock);
        }
    }
    requireRunningLocked(video, start);
    deliver(lock, video, m_Device->videoExposure(), buffer);
}

void Capture::captureStill(std::uint8_t* buffer) {
    Lock lock(m_Mutex);
    Run& still = run(FrameKind::Still);
    const std::uint64_t start = still.starts;
    requireRunningLocked(still, start);
    const ORVEX_SNAPSHOT settings = still.settings;
    prepare(lock, still, m_Device->stillExposure(settings));
    const auto exposureTime = toTime(settings.exposureDelay + settings.exposure);
    do {
        if (settings.useHardwareTrigger != 0) {
            waitForTriggerLocked(lock, still, start);
        }
        m_Changed.wait_for(lock, exposureTime,
                           [&] { return isOverLocked(still, start) || m_Device->hardware().isAsFastAsAsked(); });
        requireRunningLocked(still, start);
    } while (!completeFrameLocked(still));
    deliver(lock, still, m_Device->stillExposure(settings), buffer);
}

void Capture::waitForTriggerLocked(Lock& lock, const Run& still, std::uint64_t start) {
    const float asked = still.settings.timeout;
    const float timeout = asked >= 0 ? std::min(asked, kLongestTime) : kDefaultTimeout;
    m_Changed.wait_for(lock, toTime(timeout), [&] { return m_Triggers > 0 || isOverLocked(still, start); });
    requireRunningLocked(still, start);
    require(m_Triggers > 0, kTimedOut);
    --m_Triggers;
}

void Capture::prepare(Lock& lock, const Run& run, const Exposure& exposure) {
    const ORVEX_FRAME_FORMAT format = run.settings.format;
    lock.unlock();
    m_Device->hardware().sensor().prepare(format, exposure);
    lock.lock();
}

void Capture::deliver(Lock& lock, Run& run, const Exposure& exposure, std::uint8_t* buffer) {
    const ORVEX_FRAME_FORMAT format = run.settings.format;
    const FrameGeometry geometry = frameGeometry(m_Device->description(), format);
    const std::uint64_t frameNumber = run.frames;
    lock.unlock();

    Faults::reachMiddleOfCall();
    m_Device->requirePresent();
    Sensor& sensor = m_Device->hardware().sensor();
    const std::size_t bytes = m_Device->takeTruncation(geometry.imageBytes());
    if (bytes == geometry.imageBytes()) {
        sensor.takeFrame(format, exposure, frameNumber, buffer);
    } else {
        std::vector<std::uint8_t> whole(geometry.imageBytes());
        sensor.takeFrame(format, exposure, frameNumber, whole.data());
        std::copy_n(whole.begin(), bytes, buffer);
    }

    lock.lock();
    if (bytes < geometry.imageBytes()) {
        ++m_Statistics.counters[kPartialLines];
    }
    run.image = imageFormatOf(geometry, bytes);
}

bool Capture::trigger() {
    const Lock lock(m_Mutex);
    const Run& still = run(FrameKind::Still);
    if (isOverLocked(still, still.starts) || still.settings.useHardwareTrigger == 0) {
        return false;
    }
    ++m_Triggers;
    m_Changed.notify_all();
    return true;
}

ORVEX_IMAGE_FORMAT Capture::imageFormat(FrameKind kind) const {
    const Lock lock(m_Mutex);
    if (run(kind).image) {
        return *run(kind).image;
    }
    const ORVEX_FRAME_FORMAT next = run(kind).running ? run(kind).settings.format : m_Device->format();
    const FrameGeometry geometry = frameGeometry(m_Device->description(), next);
    return imageFormatOf(geometry, geometry.imageBytes());
}

_ORVEX_STREAM_STATS Capture::statistics() const {
    const Lock lock(m_Mutex);
    return m_Statistics;
}

void Capture::wake() {
    const Lock lock(m_Mutex);
    m_Changed.notify_all();
}

void Capture::close() {
    {
        const Lock lock(m_Mutex);
        m_Closed = true;
        for (Run& run : m_Runs) {
            stopLocked(run);
        }
        m_Changed.notify_all();
    }
    if (!m_Thread.joinable()) {
        return;
    }
    if (m_Thread.get_id() == std::this_thread::get_id()) {
        m_Thread.detach(); // closed by a callback; the thread keeps this object alive until it has ended
    } else {
        m_Thread.join();
    }
}

void Capture::runDeviceThread() {
    Lock lock(m_Mutex);
    const Run& video = run(FrameKind::Video);
    while (!m_Closed && !m_Device->isGone()) {
        const bool anyUnannounced =
            std::any_of(m_Runs.begin(), m_Runs.end(), [](const Run& run) { return run.unannounced > 0; });
        if (anyUnannounced) {
            announceLocked(lock);
        } else if (!video.running || m_Device->hardware().isAsFastAsAsked()) {
            m_Changed.wait(lock);
        } else if (Clock::now() < m_NextFrame) {
            m_Changed.wait_until(lock, m_NextFrame);
        } else {
            m_NextFrame = std::max(m_NextFrame, Clock::now() - m_Device->frameInterval()) + m_Device->frameInterval();
            completeFrameLocked(run(FrameKind::Video));
        }
    }
}

void Capture::announceLocked(Lock& lock) {
    for (const FrameKind kind : {FrameKind::Video, FrameKind::Still}) {
        for (; run(kind).unannounced > 0 && !m_Closed; --run(kind).unannounced) {
            lock.unlock();
            try {
                m_Callbacks.run(kind);
            } catch (const std::bad_alloc&) {
                // The callbacks miss this frame.
            }
            lock.lock();
        }
    }
}

} // namespace SoftwareDevices
