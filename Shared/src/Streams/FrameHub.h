// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Export.h"
#include "Imaging/ImageFormat.h"
#include "Imaging/SharedImagePool.h"
#include "Streams/FrameCounts.h"
#include "Streams/FrameHandover.h"
#include "Streams/FrameQueue.h"
#include "Streams/Stream.h"
#include "Utilities/Mutex.h"

namespace CameraInterface {

class FrameRun;

/// What a stream knows of its frames besides their bytes.
struct FrameDescription {
    Imaging::IMAGE_FORMAT layout = Imaging::IMAGE_FORMAT::MONO;
    bool littleEndian = true;
    std::optional<double> exposureMs;
    std::optional<double> gain;
};

/// The one place that every frame of a camera goes through: numbers it, counts what becomes of it, and shares it among
/// the callers that wait for an image and the open queues. Belongs to a stream, whose runs and queues may outlive it.
/// Thread-safe.
class QUILL_ADAPTER_API FrameHub : public std::enable_shared_from_this<FrameHub> {
public:
    FrameHub();
    FrameHub(const FrameHub&) = delete;
    FrameHub& operator=(const FrameHub&) = delete;
    ~FrameHub();

    /// @throws std::bad_alloc
    FrameQueue openQueue(const FrameQueueSettings& settings);
    /// Whether a queue is open. Checked for every frame, without a lock.
    bool hasQueues() const { return m_HasQueues; }
    /// Sets what further frames are described by; nothing if it is not known.
    void describe(const std::optional<FrameDescription>& description);
    bool isDescribed() { return description().has_value(); }
    /// Prepares a run. @throws std::bad_alloc
    std::shared_ptr<FrameRun> makeRun();
    /// Says why the present run will end, or why none runs.
    void expectEnd(FrameQueueStatus reason);
    /// Marks the source as a stream of packets, which has further counters.
    void declarePackets();
    /// Ends all queues for good: the camera is gone.
    void retire();
    /// The counts of the camera, and what each open queue dropped.
    std::vector<StreamCounter> counters();

private:
    friend class FrameRun;
    using Queue = std::shared_ptr<FrameQueueState>;
    using Queues = std::vector<Queue>;

    /// The open queues. Forgets those that were closed.
    std::shared_ptr<const Queues> openQueues();
    std::optional<FrameDescription> description();
    std::uint64_t begin();
    void end(std::uint64_t run, FrameHandover::Outcome outcome);
    void letPass(std::uint64_t run);
    void setEndLocked(std::optional<FrameQueueStatus> end) QUILL_REQUIRES(m_Mutex);

    const std::shared_ptr<Imaging::SharedImagePool> m_Images;
    const std::shared_ptr<FrameCounts> m_Counts;
    std::atomic<bool> m_HasQueues{false}; // written under the mutex

    Utilities::Mutex m_Mutex; // guards the following members; the queues' mutexes may be locked under it
    std::shared_ptr<const Queues> m_Queues QUILL_GUARDED_BY(m_Mutex); // replaced, never changed
    std::optional<FrameDescription> m_Description QUILL_GUARDED_BY(m_Mutex);
    std::uint64_t m_Runs QUILL_GUARDED_BY(m_Mutex) = 0;
    std::uint64_t m_Running QUILL_GUARDED_BY(m_Mutex) = 0;    // the number of the present run; 0 if none
    std::uint64_t m_LetPassRun QUILL_GUARDED_BY(m_Mutex) = 0; // the last run that no queue holds back any more
    FrameQueueStatus m_ExpectedEnd QUILL_GUARDED_BY(m_Mutex) = FrameQueueStatus::Stopped;
    std::optional<FrameQueueStatus> m_End QUILL_GUARDED_BY(m_Mutex) = FrameQueueStatus::Stopped; // unless running
    bool m_Retired QUILL_GUARDED_BY(m_Mutex) = false;
};

/// One run of a stream, as its source sees it. A source hands over each frame by publish(), or says by lose() why it
/// cannot. begin(), publish() and lose() are called by one thread at a time, the others by any.
class QUILL_ADAPTER_API FrameRun {
public:
    explicit FrameRun(std::shared_ptr<FrameHub> hub);
    FrameRun(const FrameRun&) = delete;
    FrameRun& operator=(const FrameRun&) = delete;
    ~FrameRun();

    /// The callers that wait for an image.
    FrameHandover& handover() { return m_Handover; }

    /// Marks the run as running: the source is about to start.
    void begin();
    /// Returns a buffer of exactly @p size bytes with undefined content.
    std::vector<unsigned char> takeBuffer(std::size_t size);
    /// Takes a buffer back for reuse.
    void giveBack(std::vector<unsigned char> buffer) noexcept;
    /// Hands over a whole frame. Moves the bytes away if somebody takes them. May wait for a queue that holds the
    /// stream back.
    /// @param data the frame's bytes, and possibly more
    /// @param bytes the number of the frame's bytes
    /// @param geometry with 0 bits per pixel if the camera's pixel format is unknown
    /// @param known the arrival, and the camera's own number and time where it has them
    /// @return whether somebody has taken the bytes
    bool publish(std::vector<unsigned char>& data, std::size_t bytes, const FrameGeometry& geometry,
                 const FrameInformation& known);
    /// How long the last publish() took, without waits for queues that hold the stream back.
    double transferSeconds() const { return m_TransferSeconds; }
    /// Whether somebody wants to know of every frame.
    bool hasQueues() const { return m_Hub->hasQueues(); }
    /// Counts captured frames that cannot be handed over.
    void lose(FrameLoss why, std::uint64_t frames = 1);
    /// The same for a frame of which bytes are missing.
    void loseIncomplete(std::uint64_t receivedBytes, std::uint64_t expectedBytes);
    /// Counts packets: how many more the camera sent again, and how many more never came.
    void countPackets(std::uint64_t resent, std::uint64_t missing);
    /// Ends the waits of queues that hold the run back: the source is about to be stopped.
    void letPass();
    /// Ends the run. Callers and queues get the reason. Only the first call has an effect.
    void end(FrameHandover::Outcome outcome);

private:
    bool deliverToCaller(std::vector<unsigned char>& data, std::size_t bytes, const FrameGeometry& geometry);
    bool deliverCopy(const Imaging::Image& image, const FrameGeometry& geometry);
    Frame makeFrame(std::vector<unsigned char>& data, const FrameGeometry& geometry, const FrameInformation& known,
                    const FrameDescription& description);
    void countLoss(FrameLoss why, std::uint64_t frames);

    const std::shared_ptr<FrameHub> m_Hub;
    std::atomic<std::uint64_t> m_Run{0}; // 0 before begin()
    std::uint64_t m_Number = 0;          // of the last frame
    double m_TransferSeconds = 0;
    FrameHandover m_Handover;
};

} // namespace CameraInterface
