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

/// The stream of an SDK camera: starts and stops the runs, whose frames it hands out.
///
/// The mode and the settings of a run are read from the camera's properties when it starts. getImageData() waits for as
/// long as the run's "Timeout" says (milliseconds); when that is negative for 5 seconds and the frame's own time: in
/// video exposure and frame period, in still mode exposure and exposure delay.
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

private:
    /// Which steps of ending a run the device confirmed.
    struct Ending {
        bool released; // a capture that is under way comes back
        bool stopped;
        bool removed;
    };

    std::shared_ptr<CaptureRun> makeRun(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    void clearLeftOver(void* handle) QUILL_REQUIRES(m_ControlMutex);
    void startCapture(const CaptureRun& run) QUILL_REQUIRES(m_ControlMutex);
    bool startVideo(void* handle) QUILL_REQUIRES(m_ControlMutex);
    bool startStill(void* handle) QUILL_REQUIRES(m_ControlMutex);
    void startWorker(const std::shared_ptr<CaptureRun>& run) QUILL_REQUIRES(m_ControlMutex);
    Ending endCapture(CameraInterface::StreamMode mode, void* handle) QUILL_REQUIRES(m_ControlMutex);
    void letGo(const std::shared_ptr<CaptureRun>& run) QUILL_REQUIRES(m_ControlMutex);
    FrameCallbackId& callbackIdOf(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    std::shared_ptr<CaptureRun> currentRun() QUILL_EXCLUDES(m_RunMutex);
    FrameHandover::Outcome waitForFrame(const CaptureRun& run, FrameHandover::Request& request);
    [[noreturn]] void raiseWithoutFrame(CameraInterface::StreamMode mode, FrameHandover::Outcome outcome);

    OrvexCamera* m_Camera; // owns the stream
    const std::shared_ptr<CameraInterface::StreamStatistics> m_Statistics;
    std::atomic<bool> m_Streaming{false}; // a worker is there that was not joined

    Utilities::Mutex m_RunMutex;                                    // guards the pointer
    std::shared_ptr<CaptureRun> m_Run QUILL_GUARDED_BY(m_RunMutex); // the present one, or the last

    Utilities::Mutex
        m_ControlMutex; // serialises start and stop and guards what follows; held while the worker is joined
    ORVEX_SNAPSHOT m_Snapshot QUILL_GUARDED_BY(m_ControlMutex){};
    ORVEX_FRAME_FORMAT m_FrameFormat QUILL_GUARDED_BY(m_ControlMutex){};
    FrameCallbackId m_VideoCallbackId QUILL_GUARDED_BY(m_ControlMutex);
    FrameCallbackId m_StillCallbackId QUILL_GUARDED_BY(m_ControlMutex);
    /// What the device was started in and never stopped, with the handle.
    std::optional<std::pair<CameraInterface::StreamMode, void*>> m_Running QUILL_GUARDED_BY(m_ControlMutex);
    std::shared_ptr<CaptureRun> m_LetGo QUILL_GUARDED_BY(m_ControlMutex); // its worker did not end in time
};

} // namespace OrvexAdapter
