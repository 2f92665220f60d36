// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../Export.h"
#include "StreamStatistics.h"

namespace CameraInterface {

class FrameHub;

/// The mode of a stream: continuous video or single captures.
enum class StreamMode { Video = 0, Still = 1 };

/// The size of a stream's frames.
struct FrameGeometry {
    std::uint32_t height = 0;       ///< rows
    std::uint32_t width = 0;        ///< pixels per row
    std::uint32_t bitsPerPixel = 0; ///< all samples of a pixel together
};

/// The image stream of a camera, owned by it.
class QUILL_API Stream {
public:
    Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    virtual ~Stream();

    virtual bool isStreaming() = 0;
    /// Starts delivery in the selected mode. Does nothing if the stream runs.
    virtual void startStream() = 0;
    /// Stops delivery. Does nothing if the stream does not run.
    virtual void stopStream() = 0;
    virtual StreamMode getStreamType() = 0;
    /// Selects the mode of the next start.
    virtual void setStreamType(StreamMode mode) = 0;
    /// Waits for the next frame and hands over its bytes; the stream keeps no copy. Thread-safe: callers are served one
    /// after another in the order of their calls, each with a frame of its own.
    virtual std::vector<unsigned char> getImageData() = 0;
    /// The geometry of the frames that getImageData() returns.
    virtual FrameGeometry getImageFormat() = 0;
    /// The statistics, which the stream owns.
    virtual StreamStatistics& getStreamStatistics() = 0;
    /// Ends delivery even if the device refuses, because the camera is gone or about to be destroyed. Threads that wait
    /// for a frame get an exception that says so. The base implementation stops the stream and ignores exceptions.
    virtual void forceStop() noexcept;
    /// Finds out what frames of the present run are described by besides their bytes, for the queues: called when a
    /// queue is opened, and after a property of the description changed. The base implementation does nothing.
    /// @throws std::exception  the camera does not answer
    virtual void describeFrames();

protected:
    /// Where the stream's frames go.
    FrameHub& frames() const { return *m_Frames; }

private:
    friend class Camera;

    const std::shared_ptr<FrameHub> m_Frames;
};

} // namespace CameraInterface
