#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "OrvexApi/OrvexRecords.h"
#include "Streams/FrameHandover.h"
#include "Streams/Stream.h"
#include "Utilities/Mutex.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The stream of an SDK camera: a worker thread captures frame after frame and hands over the ones that somebody waits
/// for.
///
/// The mode and the settings of a run are read from the camera's properties when it starts. getImageData() waits for as
/// long as the run's "Timeout" says (milliseconds); at -1 for 5 seconds and the exposure.
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
    static void frameCallback(void* context, std::uint32_t unused1, std::uint32_t unused2);

    void startCapture() QUILL_REQUIRES(m_ControlMutex);
    void startWorker() QUILL_REQUIRES(m_ControlMutex);
    void stopCapture() QUILL_REQUIRES(m_ControlMutex);
    void joinWorker() QUILL_REQUIRES(m_ControlMutex);
    std::int32_t& callbackIdOf(CameraInterface::StreamMode mode) QUILL_REQUIRES(m_ControlMutex);
    void captureLoop(CameraInterface::StreamMode mode, std::size_t frameBufferSize);
    bool captureFrame(CameraInterface::StreamMode streamMode, std::vector<unsigned char>& buffer);
    void deliverFrame(std::vector<unsigned char>& frame);
    std::chrono::milliseconds exposureTime();
    [[noreturn]] void raiseWithoutFrame(FrameHandover::Outcome outcome);

    OrvexCamera* m_Camera; // owns the stream
    CameraInterface::StreamStatistics m_Statistics;
    FrameHandover m_Handover;
    std::atomic<bool> m_Streaming{false}; // a worker is there
    std::atomic<bool> m_StopRequested{false};
    std::atomic<float> m_TimeoutMs{-1.0F};                                               // of the present run
    std::atomic<CameraInterface::StreamMode> m_Mode{CameraInterface::StreamMode::Video}; // of the present run

    Utilities::Mutex m_ImageFormatMutex; // guards the format
    ORVEX_IMAGE_FORMAT m_ImageFormat QUILL_GUARDED_BY(m_ImageFormatMutex);

    Utilities::Mutex
        m_ControlMutex; // serialises start and stop and guards what follows; held while the worker is joined
    ORVEX_SNAPSHOT m_Snapshot QUILL_GUARDED_BY(m_ControlMutex){};
    std::int32_t m_VideoCallbackId QUILL_GUARDED_BY(m_ControlMutex) = -1;
    std::int32_t m_StillCallbackId QUILL_GUARDED_BY(m_ControlMutex) = -1;
    std::thread m_Thread QUILL_GUARDED_BY(m_ControlMutex);
};

} // namespace OrvexAdapter
