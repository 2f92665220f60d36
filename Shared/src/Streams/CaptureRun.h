// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "OrvexApi/OrvexRecords.h"
#include "Streams/FrameHub.h"
#include "Streams/ModeOperations.h"
#include "Utilities/Mutex.h"

namespace OrvexAdapter {

/// One run of a stream: a worker thread that captures frame after frame and hands over those that callers wait for.
///
/// A run owns everything that its worker uses. The stream, the worker and threads that wait for a frame share it, so
/// that a worker that the SDK never releases may outlive the stream.
class CaptureRun : public std::enable_shared_from_this<CaptureRun> {
public:
    /// @param frames where the frames go
    /// @param lastFormat the format of the last frame before this run
    /// @throws std::exception  there is not enough memory for a frame
    CaptureRun(CameraInterface::StreamMode mode, void* handle, const ORVEX_SNAPSHOT& settings,
               std::shared_ptr<CameraInterface::FrameRun> frames,
               std::shared_ptr<CameraInterface::StreamStatistics> statistics, const ORVEX_IMAGE_FORMAT& lastFormat);
    CaptureRun(const CaptureRun&) = delete;
    CaptureRun& operator=(const CaptureRun&) = delete;
    ~CaptureRun();

    CameraInterface::StreamMode mode() const { return m_Mode; }
    void* handle() const { return m_Handle; }
    /// The timeout of a wait for a frame; nothing if the default applies.
    std::optional<std::chrono::nanoseconds> timeout() const;
    CameraInterface::FrameRun& frames() const { return *m_Frames; }
    /// The format of the last complete frame.
    ORVEX_IMAGE_FORMAT imageFormat();

    // The following functions are called by one thread at a time.

    /// @throws std::exception  the thread cannot be started
    void start();
    void requestStop();
    void join();
    /// Joins the worker, which has been asked to stop, unless the SDK holds it in a capture for longer than @p
    /// patience. Such a worker no longer calls the SDK when it returns, so that its handle may be closed.
    /// @return whether the worker has ended
    bool joinWithin(std::chrono::milliseconds patience);
    /// Detaches a worker that joinWithin() could not join, and keeps this library loaded for it.
    void detach();

private:
    /// Frames of the device's own statistics; both counters may wrap.
    struct DeviceCounts {
        std::uint32_t completed;
        std::uint32_t dropped;
    };

    void runThread() noexcept;
    CameraInterface::FrameHandover::Outcome captureLoop();
    bool beginCapture();
    bool endCapture();
    void takeFrame(const ORVEX_IMAGE_FORMAT& format, std::chrono::steady_clock::time_point arrival);
    void pause();
    void countLostFrames(bool hasFrame);
    std::optional<DeviceCounts> deviceCounts() const;

    const CameraInterface::StreamMode m_Mode;
    void* const m_Handle;
    const float m_TimeoutMs;
    const std::size_t m_FrameBufferSize;
    const std::shared_ptr<CameraInterface::StreamStatistics> m_Statistics;
    const std::shared_ptr<CameraInterface::FrameRun> m_Frames;
    std::vector<unsigned char> m_Buffer;        // used by the worker only, once it has started
    std::optional<DeviceCounts> m_DeviceCounts; // after the last capture, while queues are open
    std::thread m_Thread;
    std::atomic<bool> m_StopRequested{false};

    Utilities::Mutex m_ImageFormatMutex; // guards the format
    ORVEX_IMAGE_FORMAT m_ImageFormat QUILL_GUARDED_BY(m_ImageFormatMutex);

    Utilities::Mutex m_StateMutex; // guards the following members
    std::condition_variable m_StateChanged;
    bool m_Capturing QUILL_GUARDED_BY(m_StateMutex) = false; // the worker is in a call that may block
    bool m_LetGo QUILL_GUARDED_BY(m_StateMutex) = false;     // the worker must no longer call the SDK
    bool m_Ended QUILL_GUARDED_BY(m_StateMutex) = false;     // the worker is about to return
};

} // namespace OrvexAdapter
