// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "Imaging/Image.h"
#include "ReceivingRun.h"
#include "Streams/FrameHandover.h"
#include "Streams/Stream.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

class GenICamCamera;

/// The stream of a GenICam camera: continuous acquisition.
///
/// getImageData() waits for at most "Timeout" milliseconds; a negative one means 5 s plus the frame's own time.
class GenICamStream : public CameraInterface::Stream {
public:
    explicit GenICamStream(GenICamCamera& camera);
    GenICamStream(const GenICamStream&) = delete;
    GenICamStream& operator=(const GenICamStream&) = delete;
    ~GenICamStream() override;

    bool isStreaming() override;
    void startStream() override QUILL_EXCLUDES(m_ControlMutex);
    void stopStream() override QUILL_EXCLUDES(m_ControlMutex);
    void forceStop() noexcept override QUILL_EXCLUDES(m_ControlMutex);
    CameraInterface::StreamMode getStreamType() override;
    /// Any other mode than video is refused: "ArgumentUnhandled".
    void setStreamType(CameraInterface::StreamMode mode) override;
    std::vector<unsigned char> getImageData() override;
    CameraInterface::FrameGeometry getImageFormat() override;
    CameraInterface::StreamStatistics& getStreamStatistics() override;
    void describeFrames() override QUILL_EXCLUDES(m_ControlMutex);

    /// Whether a whole frame came after that time.
    bool hasReceivedSince(std::chrono::steady_clock::time_point time);
    /// Waits for the next frame, as an image. Throws what getImageData() throws.
    std::unique_ptr<Imaging::Image> takeImage();

private:
    RunSettings readSettings(const Device& device);
    CameraInterface::FrameDescription readDescription(const PixelFormat& format);
    std::optional<double> number(const char* property) const;
    static void setLock(Device& device, bool locked);
    /// Ends a run by the run's own means.
    void stopWithoutCamera() noexcept QUILL_EXCLUDES(m_ControlMutex);
    void endRun(bool isForced) QUILL_REQUIRES(m_ControlMutex);
    std::chrono::nanoseconds patience() const;
    /// Waits for the next frame.
    void waitForFrame(CameraInterface::FrameHandover::Request& request);
    std::shared_ptr<ReceivingRun> requireRun();
    [[noreturn]] void raiseWithoutFrame(CameraInterface::FrameHandover::Outcome outcome);
    std::shared_ptr<ReceivingRun> currentRun() QUILL_EXCLUDES(m_RunMutex);

    GenICamCamera* m_Camera;
    const std::shared_ptr<CameraInterface::StreamStatistics> m_Statistics;
    std::atomic<bool> m_Streaming{false};

    Utilities::Mutex m_ControlMutex; // held while a run is started or ended; never taken on its threads
    Utilities::Mutex m_RunMutex;     // guards the pointer to the present or last run
    std::shared_ptr<ReceivingRun> m_Run QUILL_GUARDED_BY(m_RunMutex);
};

} // namespace GenICamAdapter
