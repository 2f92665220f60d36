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
#include "Streams/FrameHandover.h"
#include "Streams/ModeOperations.h"
#include "Utilities/Mutex.h"

namespace OrvexAdapter {

/// One run of a stream: a worker thread that captures frame after frame and hands over those that somebody waits for.
///
/// A run has everything that its worker uses. The stream, the worker and whoever waits for a frame share it, so that a
/// worker that the SDK never lets go may outlive the stream.
class CaptureRun : public std::enable_shared_from_this<CaptureRun> {
public:
    /// @param lastFormat of the last frame before this run
    /// @throws std::exception  there is no memory for a frame
    CaptureRun(CameraInterface::StreamMode mode, void* handle, const ORVEX_SNAPSHOT& settings,
               std::shared_ptr<CameraInterface::StreamStatistics> statistics, const ORVEX_IMAGE_FORMAT& lastFormat);
    CaptureRun(const CaptureRun&) = delete;
    CaptureRun& operator=(const CaptureRun&) = delete;
    ~CaptureRun();

    CameraInterface::StreamMode mode() const { return m_Mode; }
    void* handle() const { return m_Handle; }
    /// How long a caller waits for a frame; nothing: the default applies.
    std::optional<std::chrono::nanoseconds> timeout() const;
    FrameHandover& handover() { return m_Handover; }
    /// Of the last whole frame.
    ORVEX_IMAGE_FORMAT imageFormat();

    // One thread at a time calls what follows.

    /// @throws std::exception  no thread can be had
    void start();
    void requestStop() { m_StopRequested = true; }
    void join();
    /// Joins the worker, which was asked to stop, unless the SDK keeps it in a capture for longer than @p patience.
    /// Such a worker calls the SDK no more when it comes back, so that its handle may be closed.
    /// @return whether the worker has ended
    bool joinWithin(std::chrono::milliseconds patience);
    /// Lets a worker that joinWithin() could not join run on by itself, and keeps this library loaded for it.
    void detach();

private:
    void runThread() noexcept;
    FrameHandover::Outcome captureLoop();
    bool beginCapture();
    bool endCapture();
    void takeFrame(const ORVEX_IMAGE_FORMAT& format);
    void deliverFrame();

    const CameraInterface::StreamMode m_Mode;
    void* const m_Handle;
    const float m_TimeoutMs;
    const std::size_t m_FrameBufferSize;
    const std::shared_ptr<CameraInterface::StreamStatistics> m_Statistics;
    FrameHandover m_Handover;
    std::vector<unsigned char> m_Buffer; // the worker's, from its start on
    std::thread m_Thread;
    std::atomic<bool> m_StopRequested{false};

    Utilities::Mutex m_ImageFormatMutex; // guards the format
    ORVEX_IMAGE_FORMAT m_ImageFormat QUILL_GUARDED_BY(m_ImageFormatMutex);

    Utilities::Mutex m_StateMutex; // guards what follows
    std::condition_variable m_StateChanged;
    bool m_Capturing QUILL_GUARDED_BY(m_StateMutex) = false; // the worker is in a call that may block
    bool m_LetGo QUILL_GUARDED_BY(m_StateMutex) = false;     // the worker may call the SDK no more
    bool m_Ended QUILL_GUARDED_BY(m_StateMutex) = false;     // all that the worker still does is to return
};

} // namespace OrvexAdapter
