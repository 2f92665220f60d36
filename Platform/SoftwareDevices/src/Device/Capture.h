// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "Device/Device.h"
#include "Device/FrameCallbacks.h"

namespace SoftwareDevices {

/// Video and stills of one open handle. Thread-safe. Operations throw a Refusal if they cannot be performed.
class Capture : public std::enable_shared_from_this<Capture> {
public:
    explicit Capture(std::shared_ptr<Device> device);

    FrameCallbacks& callbacks() { return m_Callbacks; }

    void start(FrameKind kind, const ORVEX_SNAPSHOT& settings);
    /// Ends the captures in progress, also if nothing runs.
    void stop(FrameKind kind);
    /// Ends the captures in progress, and later ones until the next start.
    void cancel(FrameKind kind);

    /// Waits for the next frame.
    void captureVideo(std::uint8_t* buffer);
    void captureStill(std::uint8_t* buffer);

    /// @return false if nothing waits for a trigger
    bool trigger();

    /// The format of the last captured frame, or of the next one.
    ORVEX_IMAGE_FORMAT imageFormat(FrameKind kind) const;
    _ORVEX_STREAM_STATS statistics() const;

    /// Makes waiting threads check the device again.
    void wake();
    /// Stops everything and ends the device thread. Must be called at most once.
    void close();

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;

    /// The state of video, or of stills.
    struct Run {
        bool running = false;
        bool cancelled = false;
        ORVEX_SNAPSHOT settings{}; ///< for video, only the format
        std::uint64_t starts = 0;
        std::uint64_t frames = 0;      ///< since the start
        std::uint64_t arrived = 0;     ///< since opening
        std::uint32_t unannounced = 0; ///< frames whose callbacks are still to be called
        std::optional<ORVEX_IMAGE_FORMAT> image;
    };

    Run& run(FrameKind kind) { return m_Runs[static_cast<std::size_t>(kind)]; }
    const Run& run(FrameKind kind) const { return m_Runs[static_cast<std::size_t>(kind)]; }

    void stopLocked(Run& run);
    /// Whether the run that began with this start is over.
    bool isOverLocked(const Run& run, std::uint64_t start) const;
    void requireRunningLocked(const Run& run, std::uint64_t start) const;
    /// @return whether the frame arrived
    bool completeFrameLocked(Run& run);
    void waitForTriggerLocked(Lock& lock, const Run& still, std::uint64_t start);
    /// Computes ahead what the next frame needs, while it is not due.
    void prepare(Lock& lock, const Run& run, const Exposure& exposure);
    void deliver(Lock& lock, Run& run, const Exposure& exposure, std::uint8_t* buffer);

    void runDeviceThread();
    void announceLocked(Lock& lock);

    const std::shared_ptr<Device> m_Device;
    FrameCallbacks m_Callbacks;
    std::thread m_Thread; ///< started with the first run; changed under m_Mutex, joined by close

    mutable std::mutex m_Mutex; // guards the following members; the device's mutex is locked under it
    std::condition_variable m_Changed;
    std::array<Run, 2> m_Runs; ///< by FrameKind
    std::uint32_t m_Triggers = 0;
    Clock::time_point m_NextFrame; ///< completion of the next video frame
    _ORVEX_STREAM_STATS m_Statistics{};
    bool m_Closed = false;
};

} // namespace SoftwareDevices
