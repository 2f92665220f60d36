// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <Quill.h>

#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// How a viewer wants its pictures.
struct View {
    unsigned scale = 1;    ///< 1, 2, 4 or 8: the picture has one pixel for so many columns and rows of the frame
    unsigned quality = 80; ///< of JPEG, 10 to 95

    bool operator==(const View& other) const { return scale == other.scale && quality == other.quality; }
    bool operator!=(const View& other) const { return !(*this == other); }
};

/// A frame as a picture. All viewers of the same view share it.
struct LivePicture {
    LivePicture(Json description, std::string jpeg, std::uint64_t frame)
        : description(std::move(description)), jpeg(std::move(jpeg)), frame(frame) {}

    Json description; ///< as the contract of the stream of pictures says, without "sent"
    std::string jpeg;
    std::uint64_t frame; ///< the frame's number in the run of the stream
};

/// The pictures of one camera's stream, for any number of viewers. Works on a thread of its own while there are
/// viewers. A frame is encoded once for each view that a viewer waits for, and not at all if nobody waits. Thread-safe.
class LiveFeed {
public:
    /// Called on the feed's thread: the next picture can be taken. Must not block.
    using OnPicture = std::function<void()>;
    /// Called on the feed's thread when the stream does not run, or runs again; with the name of a FrameQueueStatus, or
    /// "Running", "NotConnected" or "Failed" (frames cannot become pictures), and a sentence. Must not block. The
    /// latest state goes to each viewer that joins.
    using OnState = std::function<void(const std::string& status, const std::string& text)>;
    /// Opens a queue of the camera's frames. Throws if the camera is not there, or not connected.
    using OpenQueue = std::function<CameraInterface::FrameQueue()>;

    /// A viewer's place; destroying it ends its callbacks. Belongs to one thread at a time.
    class Viewer {
    public:
        virtual ~Viewer() = default;

        /// The next picture may be of the frame that was taken last, if the view is another.
        virtual void setView(View view) = 0;
        /// Asks for the next picture that is newer than the last one taken.
        virtual void demand() = 0;
        /// Returns the picture that was asked for, once; null if there is none.
        virtual std::shared_ptr<const LivePicture> take() = 0;
        /// Keeps the frame of the last picture taken for pixels(), until release() or the end of the viewer.
        /// @return its number, 0 if none was taken
        virtual std::uint64_t hold() = 0;
        virtual void release() = 0;
    };

    explicit LiveFeed(OpenQueue openQueue);
    LiveFeed(const LiveFeed&) = delete;
    LiveFeed& operator=(const LiveFeed&) = delete;
    /// Viewers may outlive it: they get no more pictures.
    ~LiveFeed();

    std::unique_ptr<Viewer> join(OnPicture onPicture, OnState onState);

    /// Returns the pixels of a part of the newest frame that became a picture, or of one that a viewer holds.
    /// @throws Refusal  422 outside of the frame or more than 64 x 64, 410 "FrameGone"
    Json pixels(unsigned x, unsigned y, unsigned width, unsigned height, std::optional<std::uint64_t> frame);

private:
    class Core;
    std::shared_ptr<Core> m_Core;
};

} // namespace QuillTool::Serve
