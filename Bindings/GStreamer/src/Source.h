// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <gst/base/gstbasesrc.h>

#include "CameraUse.h"
#include "FrameRates.h"
#include "VideoFormats.h"

namespace QuillGStreamer {

/// What the properties of the element are set to.
struct SourceOptions {
    std::string serialNumber; ///< empty: the first camera that has a stream
    int format = kAutomaticFormat;
    unsigned queueCapacity = 8;
    std::string settingsFile;    ///< empty: none
    std::string extraProperties; ///< as parseAssignments() reads them
};

/// A failure that ends the pipeline as a message of the element.
struct ElementError : std::runtime_error {
    ElementError(GQuark errorDomain, int errorCode, const std::string& sentence)
        : std::runtime_error(sentence), domain(errorDomain), code(errorCode) {}

    GQuark domain;
    int code;
};

/// The element "quillsrc" without its GObject: takes the frames of a camera from a queue and makes buffers of them.
///
/// The camera is used by the calls start(), stop(), unlockStop() and setExtraProperties(), and by adaptRate(); frames
/// are taken without it. Options, statistics, caps and unlock() are thread-safe; all else is called as GstBaseSrc calls
/// its virtual functions.
class Source {
public:
    /// @param element outlives the source
    explicit Source(GstBaseSrc& element) : m_Element(element) {}
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source();

    SourceOptions options() const;
    /// Calls @p change, a short function, with the options, which no other thread changes meanwhile.
    template <typename Change>
    void changeOptions(Change change) {
        const Utilities::MutexLock lock(m_Mutex);
        change(m_Options);
    }
    /// Writes the assignments at once if the camera is in use, and warns of a failure; otherwise keeps them for
    /// start().
    void setExtraProperties(const std::string& assignments);

    /// Connects the camera, sets it, and starts its stream.
    /// @throws ElementError
    void start();
    void stop();
    /// Ends the present and further calls of create() with GST_FLOW_FLUSHING.
    void unlock();
    void unlockStop();
    /// Says that the pipeline plays from now on: frames that arrived earlier are too old.
    void play() { m_PlaysSince = std::chrono::steady_clock::now(); }

    /// Whether a frame has shown what caps can be offered.
    bool isNegotiable() const;
    /// Returns the caps that can be offered now. The caller owns a reference.
    GstCaps* caps() const;
    /// The failure to agree on any of them.
    ElementError refusalOfDownstream() const;
    /// Takes the caps that were agreed on.
    bool setCaps(GstCaps* caps);
    /// Lets downstream say whether it takes rows without padding.
    void decideAllocation(GstQuery& query);
    /// Sets the camera to a frame rate that downstream accepts, if downstream has changed its mind.
    /// @throws ElementError
    void adaptRate();
    /// Waits for the next frame.
    /// @throws ElementError  no further frame will come
    GstFlowReturn create(GstBuffer*& buffer);

    /// Returns the shortest and the longest time between a frame's arrival and its buffer.
    std::pair<GstClockTime, GstClockTime> latency() const;
    /// Returns what became of the frames since the start. The caller owns the structure.
    GstStructure* statistics() const;

private:
    using Queue = std::shared_ptr<CameraInterface::FrameQueue>;
    using Image = std::shared_ptr<const Imaging::Image>;

    std::shared_ptr<CameraUse> use() const;
    void warn(const std::string& sentence);
    void writeSettings(CameraUse& camera, const CameraInterface::CameraSettings& settings);
    void openQueue();
    void setLayout(const ImageLayout& layout);
    GstFlowReturn deliver(const CameraInterface::Frame& frame, GstBuffer*& buffer);
    GstBuffer* wrap(const Image& image);
    void describe(GstBuffer& buffer, const CameraInterface::FrameInformation& information);
    void reportLoss(std::uint64_t lost, const GstBuffer& buffer);
    GstClockTime runningTime(std::chrono::steady_clock::time_point arrival) const;

    GstBaseSrc& m_Element;
    std::atomic<std::chrono::steady_clock::time_point> m_PlaysSince{};

    // Of the streaming thread, and of start() before it runs.
    std::optional<ImageLayout> m_Layout;
    const VideoFormat* m_Format = nullptr;
    GstVideoInfo m_VideoInfo{};    // of no format for a mosaic
    bool m_TakesAnyStride = false; // downstream understands GstVideoMeta
    GstCaps* m_Accepted = nullptr; // by downstream, when the frame rate was last looked at
    Queue m_LastQueue;             // that gave the last frame
    std::uint64_t m_Run = 0;       // of the last frame, 0 if there is none
    std::uint64_t m_Number = 0;    // of the last frame
    std::uint64_t m_Delivered = 0;
    std::uint64_t m_Lost = 0;

    mutable Utilities::Mutex m_Mutex; // guards what follows; never held while the camera is used
    SourceOptions m_Options QUILL_GUARDED_BY(m_Mutex);
    std::shared_ptr<CameraUse> m_Use QUILL_GUARDED_BY(m_Mutex); // null when stopped
    Queue m_Queue QUILL_GUARDED_BY(m_Mutex);                    // null when stopped
    std::string m_QueueFailure QUILL_GUARDED_BY(m_Mutex);       // why there is no open queue
    bool m_IsUnlocked QUILL_GUARDED_BY(m_Mutex) = false;
    std::map<std::string, std::uint64_t> m_FormerCounts QUILL_GUARDED_BY(m_Mutex); // of queues that were closed
    std::optional<ImageLayout> m_OfferedLayout QUILL_GUARDED_BY(m_Mutex);
    FrameRate m_Rate QUILL_GUARDED_BY(m_Mutex);
};

} // namespace QuillGStreamer
