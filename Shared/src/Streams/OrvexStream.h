// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "OrvexApi/OrvexRecords.h"
#include "Streams/CaptureRun.h"
#include "Streams/FrameCallbackId.h"
#include "Streams/Stream.h"
#include "Utilities/Mutex.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The stream of an SDK camera: starts and stops runs and hands out their frames.
///
/// The mode and the settings of a run are read from the camera's properties when it starts. getImageData() waits for at
/// most the run's "Timeout" in milliseconds; a negative one means 5 s plus the frame's own time (video: exposure and
/// frame period; still: exposure and exposure delay).
class OrvexStream : public CameraInterface::Stream {
public:
    explicit OrvexStream(OrvexCamera& camera);
    OrvexStream(const OrvexStream&) = delete;
    OrvexStream& operator=(const OrvexStream&) = delete;
    ~OrvexStream() override;

    bool isStreaming() override;
    void startStream() override QUILL_EXCLUDES(m_ControlMutex);
    void stopStream() override QUILL_EXCLUDES(m_ControlMutex);
    void forceStop() noexcept override QUILL_EXCLUDES(m_ControlMutex);
    CameraInterface::StreamMode getStreamType() override;
    void setStreamType(CameraInterface::StreamMode mode) override;
    std::vector<unsigned char> getImageData() override;
    CameraInterface::FrameGeometry getImageFormat() override;
    CameraInterface::StreamStatistics& getStreamStatistics() override;
    void describeFrames() override QUILL_EXCLUDES(m_ControlMutex);

private:
    /// The steps of ending a run that the device confirmed.
    struct Ending {
        bool released; // a capture in progress returns
        bool stopped;
        bool removed;
    };

    CameraInterface::FrameDescription readDescription(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    void describeFramesOfRun(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    std::shared_ptr<CaptureRun> makeRun(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    void clearLeftOver(void* handle) QUILL_REQUIRES(m_ControlMutex);
    void startCapture(const CaptureRun& run) QUILL_REQUIRES(m_ControlMutex);
    bool startVideo(void* handle) QUILL_REQUIRES(m_ControlMutex);
    bool startStill(void* handle) QUILL_REQUIRES(m_ControlMutex);
    void startWorker(const std::shared_ptr<CaptureRun>& run) QUILL_REQUIRES(m_ControlMutex);
    void endRun(CaptureRun& run) QUILL_REQUIRES(m_ControlMutex);
    Ending endCapture(CameraInterface::StreamMode mode, void* handle) QUILL_REQUIRES(m_ControlMutex);
    void letGo(const std::shared_ptr<CaptureRun>& run) QUILL_REQUIRES(m_ControlMutex);
    FrameCallbackId& callbackIdOf(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    std::shared_ptr<CaptureRun> currentRun() QUILL_EXCLUDES(m_RunMutex);
    CameraInterface::FrameHandover::Outcome waitForFrame(const CaptureRun& run,
                                                         CameraInterface::FrameHandover::Request& request);
    [[noreturn]] void raiseWithoutFrame(CameraInterface::StreamMode mode,
                                        CameraInterface::FrameHandover::Outcome outcome);

    OrvexCamera* m_Camera; // owns the stream
    const std::shared_ptr<CameraInterface::StreamStatistics> m_Statistics;
    std::atomic<bool> m_Streaming{false}; // there is a worker that was not joined

    Utilities::Mutex m_RunMutex;                                    // guards the pointer
    std::shared_ptr<CaptureRun> m_Run QUILL_GUARDED_BY(m_RunMutex); // the present run, or the last

    Utilities::Mutex
        m_ControlMutex; // serialises start and stop and guards the following members; held while the worker is joined
    ORVEX_SNAPSHOT m_Snapshot QUILL_GUARDED_BY(m_ControlMutex){};
    ORVEX_FRAME_FORMAT m_FrameFormat QUILL_GUARDED_BY(m_ControlMutex){};
    FrameCallbackId m_VideoCallbackId QUILL_GUARDED_BY(m_ControlMutex);
    FrameCallbackId m_StillCallbackId QUILL_GUARDED_BY(m_ControlMutex);
    /// The mode and the handle with which the device was started but not stopped.
    std::optional<std::pair<CameraInterface::StreamMode, void*>> m_Running QUILL_GUARDED_BY(m_ControlMutex);
    std::shared_ptr<CaptureRun> m_LetGo QUILL_GUARDED_BY(m_ControlMutex); // its worker did not end in time
};

} // namespace OrvexAdapter
