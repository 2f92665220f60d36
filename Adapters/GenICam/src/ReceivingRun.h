// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arv.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "Device.h"
#include "GObjects.h"
#include "PixelFormats.h"
#include "Streams/FrameHub.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// What is fixed when a run starts.
struct RunSettings {
    const PixelFormat* format = nullptr;
    std::size_t payloadBytes = 0; ///< of the largest frame that the camera announces
    double framesPerSecond = 0;   ///< 0 if the camera does not say
    bool packetSocket = false;
};

/// One run of a stream: Aravis receives frames into buffers of the library's pool, and a worker hands them over.
///
/// Aravis' own thread is never kept waiting: it marks each finished frame, which the worker then takes. While a queue
/// holds the worker back, the buffers run out, and Aravis counts the frames for which there is none.
class ReceivingRun {
public:
    ReceivingRun(std::shared_ptr<Device> device, const RunSettings& settings,
                 std::shared_ptr<CameraInterface::FrameRun> frames,
                 std::shared_ptr<CameraInterface::StreamStatistics> statistics);
    ReceivingRun(const ReceivingRun&) = delete;
    ReceivingRun& operator=(const ReceivingRun&) = delete;
    ~ReceivingRun();

    /// Prepares the reception. The camera may start to send afterwards.
    /// @throws std::exception  says why not
    void start();
    /// Ends the reception, after the frames that are here. The camera no longer sends, or is gone.
    void stop() noexcept;

    CameraInterface::FrameRun& frames() const { return *m_Frames; }
    /// The camera, before stop().
    Device& device() const { return *m_Device; }
    const PixelFormat& format() const { return *m_Settings.format; }
    /// The geometry of the last whole frame.
    CameraInterface::FrameGeometry geometry() const QUILL_EXCLUDES(m_GeometryMutex);
    /// Whether a whole frame came after that time.
    bool hasReceivedSince(std::chrono::steady_clock::time_point time) const { return m_LastWhole.load() >= time; }

private:
    using Clock = std::chrono::steady_clock;

    /// Frames that may wait for the worker.
    static constexpr std::size_t kMostBuffers = 64;

    /// A buffer of the pool that Aravis fills. The Aravis object of its memory is kept for the next time.
    struct Receptacle {
        std::vector<unsigned char> bytes;
        std::uint64_t lastFrameId = 0; ///< of the frame that was in it before
    };

    /// When a frame was complete, and how long after its first packet.
    struct Arrival {
        Clock::time_point time;
        double receivingSeconds = 0;
    };

    /// Aravis' counts of the stream, as far as they are counted here.
    struct Counted {
        std::uint64_t underruns = 0; ///< packets for which no buffer was free
        std::uint64_t resentPackets = 0;
        std::uint64_t missingPackets = 0;
    };

    static void onEvent(void* self, ArvStreamCallbackType type, ArvBuffer* buffer);
    static Receptacle& receptacleOf(ArvBuffer* buffer);

    void configureNetwork(std::size_t buffers);
    void setPatience(double seconds);
    void growSocketBuffer();
    void offer(std::vector<unsigned char> bytes);
    /// Lets Aravis fill a buffer again.
    void giveBack(ObjectPointer<ArvBuffer> buffer);
    void runThread() noexcept;
    void receive();
    void take(ObjectPointer<ArvBuffer> buffer, const Arrival& arrival);
    bool countFailure(ArvBuffer* buffer);
    /// Counts the frames of which nothing was received, by the number of the next one.
    void countGap(ArvBuffer* buffer);
    void countPackets();
    std::uint64_t underruns() const;
    void publish(ObjectPointer<ArvBuffer> buffer, const PixelFormat& format, const Arrival& arrival);

    std::shared_ptr<Device> m_Device; // until the end of the run, which its waiters may outlive
    const RunSettings m_Settings;
    const std::shared_ptr<CameraInterface::FrameRun> m_Frames;
    const std::shared_ptr<CameraInterface::StreamStatistics> m_Statistics;

    ObjectPointer<ArvStream> m_Stream;
    std::unordered_map<const void*, ObjectPointer<ArvBuffer>> m_Idle; // Aravis objects by their memory; of the worker
    std::optional<std::uint64_t> m_LastFrameId;
    std::uint64_t m_UnnumberedSince = 0; // frames without their first packet, which has the number
    bool m_IsExtendedId = false;         // wider than 16 bits
    Counted m_Counted;

    std::atomic<Clock::time_point> m_LastWhole{Clock::time_point::min()}; // set on Aravis' thread

    mutable Utilities::Mutex m_GeometryMutex; // guards the geometry
    CameraInterface::FrameGeometry m_Geometry QUILL_GUARDED_BY(m_GeometryMutex);

    Utilities::Mutex m_FinishedMutex; // guards the following members; taken on Aravis' thread
    std::condition_variable m_Finished;
    std::array<Arrival, kMostBuffers> m_Arrivals QUILL_GUARDED_BY(m_FinishedMutex); // a ring, by buffer
    std::size_t m_FirstArrival QUILL_GUARDED_BY(m_FinishedMutex) = 0;
    std::size_t m_ArrivalCount QUILL_GUARDED_BY(m_FinishedMutex) = 0; // frames not yet taken
    bool m_StopRequested QUILL_GUARDED_BY(m_FinishedMutex) = false;

    std::thread m_Thread;
};

} // namespace GenICamAdapter
