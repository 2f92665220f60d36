// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "../Export.h"
#include "../Utilities/FrameCounter.h"

namespace CameraInterface {

/// Selects one of the frame counters of a stream.
enum class STREAM_TYPE : std::uint8_t {
    Reserved = 0,  ///< not used by the library
    Delivered = 1, ///< frames that the stream handed out
    Received = 2   ///< frames that the camera delivered to the stream
};

/// The frame rates and the last capture and transfer times of a stream. Thread-safe.
///
/// A copy shares its counters with its source; the two times are copied by value.
class QUILL_API StreamStatistics {
public:
    StreamStatistics();
    StreamStatistics(const StreamStatistics& other);
    StreamStatistics(StreamStatistics&& other) noexcept;
    StreamStatistics& operator=(const StreamStatistics& other);
    StreamStatistics& operator=(StreamStatistics&& other) noexcept;
    ~StreamStatistics();

    /// Counts one frame.
    void incrementFrameCount(STREAM_TYPE type);
    /// Returns the rate of a counter, in frames per second.
    double getFramesPerSecond(STREAM_TYPE type);
    /// Returns the total of a counter. A frame that was received but not delivered was incomplete, or not requested in
    /// time.
    unsigned long long getFrameCount(STREAM_TYPE type);
    /// Returns the number of frames that were received and dropped, because bytes were missing or the camera described
    /// them wrongly.
    unsigned long long getIncompleteFrameCount() const;
    /// Counts one such frame.
    void incrementIncompleteFrameCount();
    /// The averaging interval of a counter, in seconds; initially 1.
    double getDesiredIntervalTime(STREAM_TYPE type);
    void setDesiredIntervalTime(STREAM_TYPE type, double seconds);

    /// The duration of the last capture, in seconds; of a GenICam camera's frame, from its first packet to its last.
    double getCaptureTime();
    void setCaptureTime(double seconds);
    /// The time taken to hand over the last image, in seconds.
    double getImageDataTransferTime();
    void setImageDataTransferTime(double seconds);

private:
    Utilities::FrameCounter& counter(STREAM_TYPE type);

    std::vector<std::shared_ptr<Utilities::FrameCounter>> m_FrameCounters; // by STREAM_TYPE
    std::shared_ptr<std::atomic<unsigned long long>> m_IncompleteFrames;
    std::atomic<double> m_CaptureTime{0};
    std::atomic<double> m_ImageDataTransferTime{0};
};

} // namespace CameraInterface
