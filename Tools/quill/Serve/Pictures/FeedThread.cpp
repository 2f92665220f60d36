// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <exception>
#include <iterator>

#include "Serve/Pictures/FeedCore.h"

namespace QuillTool::Serve {

using CameraInterface::Frame;
using CameraInterface::FrameQueue;
using CameraInterface::FrameQueueStatus;
using Utilities::MutexLock;

namespace {

constexpr std::chrono::seconds kUntilNextAttempt{1};
/// How late a viewer gets the present picture that asks while the next frame is awaited.
constexpr std::chrono::milliseconds kLongestPop{100};
/// How late a change of the stream's state is noticed while nobody waits for a picture, or the stream does not run.
constexpr std::chrono::milliseconds kLongestRest{200};

/// How the wait for a frame ended, if not with a frame or its absence.
struct EndName {
    const char* name;
    FrameQueueStatus status;
    bool isFinal; ///< the queue gets no more frames
};

constexpr EndName kEndNames[] = {
    {"Stopped", FrameQueueStatus::Stopped, false},         {"RunEnded", FrameQueueStatus::RunEnded, false},
    {"OutOfMemory", FrameQueueStatus::OutOfMemory, false}, {"Suspended", FrameQueueStatus::Suspended, false},
    {"CameraGone", FrameQueueStatus::CameraGone, true},    {"Closed", FrameQueueStatus::Closed, true},
};

/// Returns null if the stream runs.
const EndName* findEnd(FrameQueueStatus status) {
    const auto* const row = std::find_if(std::begin(kEndNames), std::end(kEndNames),
                                         [status](const EndName& name) { return name.status == status; });
    return row == std::end(kEndNames) ? nullptr : row;
}

} // namespace

void LiveFeed::Core::run() {
    while (waitForViewers()) {
        const std::shared_ptr<FrameQueue> queue = openedQueue();
        if (queue == nullptr) {
            serve();
            tellState();
            restFor(kUntilNextAttempt);
            continue;
        }
        const FrameQueueStatus status = receive(*queue);
        serve();
        report(status);
        tellState();
        rest(*queue, status);
    }
    dropQueue();
}

/// @return false if the feed ends
bool LiveFeed::Core::waitForViewers() {
    bool isAlone = false;
    {
        const MutexLock lock(m_Mutex);
        isAlone = m_Viewers.empty();
    }
    if (isAlone) {
        dropQueue();
    }
    MutexLock lock(m_Mutex);
    lock.wait(m_Changed, [this]() QUILL_REQUIRES(m_Mutex) { return m_IsEnding || !m_Viewers.empty(); });
    m_IsNewcomer = false;
    return !m_IsEnding;
}

std::shared_ptr<FrameQueue> LiveFeed::Core::openedQueue() {
    {
        const MutexLock lock(m_Mutex);
        if (m_Queue != nullptr) {
            return m_Queue;
        }
    }
    try {
        auto queue = std::make_shared<FrameQueue>(m_OpenQueue());
        const MutexLock lock(m_Mutex);
        return m_Queue = queue;
    } catch (const std::exception& failure) {
        setState({"NotConnected", failure.what()});
        return nullptr;
    }
}

void LiveFeed::Core::dropQueue() {
    std::shared_ptr<FrameQueue> dropped;
    const MutexLock lock(m_Mutex);
    dropped.swap(m_Queue);
}

/// Takes the newest frame; waits for one if a viewer has the present one already.
FrameQueueStatus LiveFeed::Core::receive(FrameQueue& queue) {
    bool isAwaited = false;
    {
        const MutexLock lock(m_Mutex);
        const auto isWaiting = [](const auto& viewer) { return viewer->isWaiting; };
        const auto isServed = [this](const auto& viewer) { return canShow() && isUnsatisfied(*viewer); };
        isAwaited = std::any_of(m_Viewers.begin(), m_Viewers.end(), isWaiting) &&
                    std::none_of(m_Viewers.begin(), m_Viewers.end(), isServed);
    }
    CameraInterface::FrameResult result = isAwaited ? queue.pop(kLongestPop) : queue.tryPop();
    Frame newest;
    while (result) {
        newest = std::move(result.frame);
        result = queue.tryPop();
    }
    if (newest.image != nullptr) {
        m_Pictures.setFrame(std::move(newest));
        ++m_Shot;
    }
    return result.status;
}

/// Gives the present frame to all who wait for it.
void LiveFeed::Core::serve() {
    ViewerRecords viewers;
    if (canShow()) {
        const MutexLock lock(m_Mutex);
        std::copy_if(m_Viewers.begin(), m_Viewers.end(), std::back_inserter(viewers),
                     [this](const auto& viewer) { return isUnsatisfied(*viewer); });
    }
    for (const std::shared_ptr<ViewerRecord>& viewer : viewers) {
        View view;
        {
            const MutexLock lock(m_Mutex);
            view = viewer->view;
        }
        std::shared_ptr<const LivePicture> picture;
        try {
            picture = m_Pictures.picture(view);
        } catch (const std::exception& failure) {
            m_FailedShot = m_Shot;
            m_Failure = failure.what();
            return;
        }
        m_Failure.clear();
        {
            const MutexLock lock(m_Mutex);
            m_Newest = m_Pictures.frame();
            if (viewer->isClosed || m_IsEnding) {
                continue;
            }
            viewer->picture = std::move(picture);
            viewer->pictureFrame = m_Pictures.frame();
            viewer->pictureShot = viewer->view == view ? m_Shot : 0;
            viewer->isWaiting = false;
            viewer->isInCall = true;
        }
        call(*viewer, [&viewer] { viewer->onPicture(); });
    }
}

void LiveFeed::Core::report(FrameQueueStatus status) {
    const EndName* const end = findEnd(status);
    if (end != nullptr) {
        setState({end->name, describe(status)});
        if (end->isFinal) {
            dropQueue();
        }
    } else if (!m_Failure.empty()) {
        setState({"Failed", m_Failure});
    } else {
        setState({"Running", "The stream runs."});
    }
}

void LiveFeed::Core::setState(StreamState state) {
    const MutexLock lock(m_Mutex);
    if (m_State != state) {
        m_State = std::move(state);
        ++m_StateNumber;
    }
}

void LiveFeed::Core::tellState() {
    ViewerRecords viewers;
    {
        const MutexLock lock(m_Mutex);
        viewers = m_Viewers;
    }
    for (const std::shared_ptr<ViewerRecord>& viewer : viewers) {
        StreamState state;
        {
            const MutexLock lock(m_Mutex);
            if (viewer->isClosed || m_IsEnding || viewer->toldState == m_StateNumber) {
                continue;
            }
            state = m_State;
            viewer->toldState = m_StateNumber;
            viewer->isInCall = true;
        }
        call(*viewer, [&] { viewer->onState(state.status, state.text); });
    }
}

template <typename Callback>
void LiveFeed::Core::call(ViewerRecord& viewer, Callback callback) {
    try {
        callback();
    } catch (const std::exception&) {
        // The viewer misses this one.
    }
    {
        const MutexLock lock(m_Mutex);
        viewer.isInCall = false;
    }
    m_Changed.notify_all();
}

void LiveFeed::Core::rest(FrameQueue& queue, FrameQueueStatus status) {
    const EndName* const end = findEnd(status);
    if (end == nullptr) {
        bool isAwaited = false;
        {
            const MutexLock lock(m_Mutex);
            isAwaited =
                std::any_of(m_Viewers.begin(), m_Viewers.end(), [](const auto& viewer) { return viewer->isWaiting; });
        }
        if (!isAwaited) {
            restFor(kLongestRest);
        }
    } else if (end->isFinal) {
        restFor(kUntilNextAttempt);
    } else {
        queue.waitForRun(kLongestRest);
    }
}

/// Waits until somebody joins or asks, at most for a time.
void LiveFeed::Core::restFor(std::chrono::milliseconds limit) {
    MutexLock lock(m_Mutex);
    lock.waitFor(m_Changed, limit,
                 [this]() QUILL_REQUIRES(m_Mutex) { return m_IsEnding || m_IsNewcomer || m_Viewers.empty(); });
}

} // namespace QuillTool::Serve
