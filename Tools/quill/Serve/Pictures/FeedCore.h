// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <Quill.h>

#include "Serve/Pictures/LiveFeed.h"
#include "Serve/Pictures/PictureCache.h"

namespace QuillTool::Serve {

/// The state of a stream, as viewers get it.
struct StreamState {
    std::string status;
    std::string text;
    bool operator!=(const StreamState& other) const { return status != other.status || text != other.text; }
};

/// A viewer, as the feed knows it.
struct ViewerRecord {
    LiveFeed::OnPicture onPicture;
    LiveFeed::OnState onState;
    View view;
    bool isWaiting = false;
    bool isInCall = false; // one of the callbacks runs
    bool isClosed = false;
    std::uint64_t toldState = 0;                // number of the state
    std::shared_ptr<const LivePicture> picture; // to be taken
    CameraInterface::Frame pictureFrame;
    std::uint64_t pictureShot = 0; // the feed's number of that frame
    CameraInterface::Frame takenFrame;
    std::uint64_t takenShot = 0;
    CameraInterface::Frame heldFrame;
};

using ViewerRecords = std::vector<std::shared_ptr<ViewerRecord>>;

/// The viewers of a feed, and the thread that works for them.
class LiveFeed::Core : public std::enable_shared_from_this<Core> {
public:
    explicit Core(OpenQueue openQueue) : m_OpenQueue(std::move(openQueue)) {}

    std::unique_ptr<Viewer> join(OnPicture onPicture, OnState onState);
    /// Ends the thread and all callbacks.
    void end();
    CameraInterface::Frame findFrame(std::optional<std::uint64_t> number);

private:
    class Place;

    void leave(ViewerRecord& viewer);
    void run();
    bool waitForViewers();
    std::shared_ptr<CameraInterface::FrameQueue> openedQueue();
    void dropQueue();
    CameraInterface::FrameQueueStatus receive(CameraInterface::FrameQueue& queue);
    void serve();
    void report(CameraInterface::FrameQueueStatus status);
    void setState(StreamState state);
    void tellState();
    void rest(CameraInterface::FrameQueue& queue, CameraInterface::FrameQueueStatus status);
    void restFor(std::chrono::milliseconds limit);
    /// Calls one of a viewer's callbacks; the caller has set isInCall.
    template <typename Callback>
    void call(ViewerRecord& viewer, Callback callback);
    bool isUnsatisfied(const ViewerRecord& viewer) const { return viewer.isWaiting && viewer.takenShot != m_Shot; }
    bool canShow() const { return m_Pictures.frame().image != nullptr && m_FailedShot != m_Shot; }

    const OpenQueue m_OpenQueue;

    Utilities::Mutex m_Mutex; // guards the following, and the fields of viewers
    std::condition_variable m_Changed;
    ViewerRecords m_Viewers QUILL_GUARDED_BY(m_Mutex);
    bool m_IsNewcomer QUILL_GUARDED_BY(m_Mutex) = false; // somebody joined or asked
    bool m_IsEnding QUILL_GUARDED_BY(m_Mutex) = false;
    std::thread m_Thread QUILL_GUARDED_BY(m_Mutex); // runs from the first viewer on
    std::thread::id m_ThreadId QUILL_GUARDED_BY(m_Mutex);
    std::shared_ptr<CameraInterface::FrameQueue> m_Queue QUILL_GUARDED_BY(m_Mutex);
    CameraInterface::Frame m_Newest QUILL_GUARDED_BY(m_Mutex); // of those that became pictures
    StreamState m_State QUILL_GUARDED_BY(m_Mutex);
    std::uint64_t m_StateNumber QUILL_GUARDED_BY(m_Mutex) = 0;

    // Used by the thread alone. A shot is the feed's number of a frame: cameras count anew in each run.
    PictureCache m_Pictures;
    std::uint64_t m_Shot = 0;
    std::uint64_t m_FailedShot = 0;
    std::string m_Failure;
};

} // namespace QuillTool::Serve
