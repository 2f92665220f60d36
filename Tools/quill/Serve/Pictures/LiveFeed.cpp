// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/LiveFeed.h"

#include <algorithm>

#include <fmt/format.h>

#include "Serve/Cameras/Refusal.h"
#include "Serve/Pictures/FeedCore.h"
#include "Serve/Pictures/PixelReport.h"

namespace QuillTool::Serve {

using CameraInterface::Frame;
using CameraInterface::FrameQueue;
using Utilities::MutexLock;

namespace {

constexpr unsigned kLeastQuality = 10;
constexpr unsigned kMostQuality = 95;

} // namespace

class LiveFeed::Core::Place : public Viewer {
public:
    Place(std::shared_ptr<Core> core, std::shared_ptr<ViewerRecord> viewer)
        : m_Core(std::move(core)), m_Record(std::move(viewer)) {}
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() override { m_Core->leave(*m_Record); }

    void setView(View view) override {
        view.quality = std::clamp(view.quality, kLeastQuality, kMostQuality);
        const MutexLock lock(m_Core->m_Mutex);
        if (view != m_Record->view) {
            m_Record->view = view;
            m_Record->pictureShot = 0; // that frame is wanted anew
            m_Record->takenShot = 0;
        }
    }

    void demand() override {
        {
            const MutexLock lock(m_Core->m_Mutex);
            m_Record->isWaiting = true;
            m_Core->m_IsNewcomer = true;
        }
        m_Core->m_Changed.notify_all();
    }

    std::shared_ptr<const LivePicture> take() override {
        const MutexLock lock(m_Core->m_Mutex);
        if (m_Record->picture != nullptr) {
            m_Record->takenFrame = std::move(m_Record->pictureFrame);
            m_Record->takenShot = m_Record->pictureShot;
        }
        return std::exchange(m_Record->picture, nullptr);
    }

    std::uint64_t hold() override {
        const MutexLock lock(m_Core->m_Mutex);
        m_Record->heldFrame = m_Record->takenFrame;
        return m_Record->heldFrame.information.number;
    }

    void release() override {
        const MutexLock lock(m_Core->m_Mutex);
        m_Record->heldFrame = {};
    }

private:
    const std::shared_ptr<Core> m_Core;
    const std::shared_ptr<ViewerRecord> m_Record;
};

std::unique_ptr<LiveFeed::Viewer> LiveFeed::Core::join(OnPicture onPicture, OnState onState) {
    auto viewer = std::make_shared<ViewerRecord>();
    viewer->onPicture = std::move(onPicture);
    viewer->onState = std::move(onState);
    auto place = std::make_unique<Place>(shared_from_this(), viewer);
    {
        const MutexLock lock(m_Mutex);
        if (!m_IsEnding && !m_Thread.joinable()) {
            m_Thread = std::thread([self = shared_from_this()] { self->run(); });
            m_ThreadId = m_Thread.get_id();
        }
        m_Viewers.push_back(std::move(viewer));
        m_IsNewcomer = true;
    }
    m_Changed.notify_all();
    return place;
}

void LiveFeed::Core::leave(ViewerRecord& viewer) {
    // They end here rather than on the feed's thread, which may outlive what they refer to.
    OnPicture onPicture;
    OnState onState;
    {
        MutexLock lock(m_Mutex);
        viewer.isClosed = true;
        m_Viewers.erase(
            std::remove_if(m_Viewers.begin(), m_Viewers.end(),
                           [&viewer](const std::shared_ptr<ViewerRecord>& other) { return other.get() == &viewer; }),
            m_Viewers.end());
        if (std::this_thread::get_id() != m_ThreadId) {
            lock.wait(m_Changed, [&viewer] { return !viewer.isInCall; });
        }
        if (!viewer.isInCall) {
            onPicture.swap(viewer.onPicture);
            onState.swap(viewer.onState);
        }
    }
    m_Changed.notify_all();
}

void LiveFeed::Core::end() {
    std::thread thread;
    std::shared_ptr<FrameQueue> queue;
    {
        const MutexLock lock(m_Mutex);
        m_IsEnding = true;
        thread.swap(m_Thread);
        queue = m_Queue;
    }
    m_Changed.notify_all();
    if (queue != nullptr) {
        queue->close();
    }
    if (thread.joinable() && thread.get_id() == std::this_thread::get_id()) {
        thread.detach(); // a callback ended the feed; the thread ends after it
    } else if (thread.joinable()) {
        thread.join();
    }
}

Frame LiveFeed::Core::findFrame(std::optional<std::uint64_t> number) {
    const MutexLock lock(m_Mutex);
    if (m_Newest.image != nullptr && (!number || m_Newest.information.number == *number)) {
        return m_Newest;
    }
    const auto holder =
        std::find_if(m_Viewers.begin(), m_Viewers.end(), [&](const std::shared_ptr<ViewerRecord>& viewer) {
            return number && viewer->heldFrame.image != nullptr && viewer->heldFrame.information.number == *number;
        });
    if (holder == m_Viewers.end()) {
        throw Refusal(410, "FrameGone", number ? fmt::format("The frame {} is gone.", *number) : "There is no frame.",
                      "Hold a picture while you look at its pixels.");
    }
    return (*holder)->heldFrame;
}

LiveFeed::LiveFeed(OpenQueue openQueue) : m_Core(std::make_shared<Core>(std::move(openQueue))) {}

LiveFeed::~LiveFeed() {
    m_Core->end();
}

std::unique_ptr<LiveFeed::Viewer> LiveFeed::join(OnPicture onPicture, OnState onState) {
    return m_Core->join(std::move(onPicture), std::move(onState));
}

Json LiveFeed::pixels(unsigned x, unsigned y, unsigned width, unsigned height, std::optional<std::uint64_t> frame) {
    return reportPixels(m_Core->findFrame(frame), {x, y, width, height});
}

} // namespace QuillTool::Serve
