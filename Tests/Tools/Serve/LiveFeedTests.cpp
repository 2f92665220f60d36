// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/LiveFeed.h"

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Serve/Cameras/Refusal.h"
#include "Support/Event.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace QuillTool::Serve;
using CameraInterface::Camera;
using TestSupport::Event;
using TestSupport::eventually;
using TestSupport::kLongEnough;

/// What a feed tells a viewer, and the viewer.
struct Guest {
    explicit Guest(LiveFeed& feed)
        : viewer(feed.join([this] { pictures.raise(); },
                           [this](const std::string& status, const std::string& text) {
                               EXPECT_FALSE(text.empty());
                               const std::lock_guard lock(mutex);
                               states.push_back(status);
                           })) {}

    std::string lastState() {
        const std::lock_guard lock(mutex);
        return states.empty() ? "" : states.back();
    }
    bool reaches(const std::string& status) {
        return eventually([&] { return lastState() == status; });
    }
    /// Asks for a picture and takes it.
    std::shared_ptr<const LivePicture> next() {
        viewer->demand();
        EXPECT_TRUE(pictures.wait(++asked));
        return viewer->take();
    }

    Event pictures;
    int asked = 0;
    std::mutex mutex;
    std::vector<std::string> states;
    std::unique_ptr<LiveFeed::Viewer> viewer; // ends first: its callbacks use the others
};

class LiveFeedTest : public TestSupport::SoftwareDeviceFixture {
protected:
    LiveFeedTest() : m_Serial(SoftwareDevices::defaultDevices()[0].serial) {
        m_Camera = &open(SoftwareDevices::defaultDevices()[0]);
        setRegion(*m_Camera, 64, 48);
    }
    ~LiveFeedTest() override { m_Feed.reset(); }

    Camera& camera() const { return *m_Camera; }
    LiveFeed& feed() { return *m_Feed; }

    const std::uint32_t m_Serial;
    Camera* m_Camera;
    std::atomic<bool> m_IsRefusing{false};
    std::unique_ptr<LiveFeed> m_Feed = std::make_unique<LiveFeed>([this] {
        if (m_IsRefusing) {
            throw std::runtime_error("refused");
        }
        return Camera::getCamera(std::to_string(m_Serial))
            .openFrameQueue({2, CameraInterface::WhenFull::DropOldest, "viewers"});
    });
};

TEST_F(LiveFeedTest, GivesEachViewerPicturesThatItHasNotTaken) {
    Guest guest(feed());
    camera().startStream();
    std::uint64_t last = 0;
    for (int k = 0; k < 5; ++k) {
        const auto picture = guest.next();
        ASSERT_NE(picture, nullptr);
        EXPECT_GT(picture->frame, last);
        last = picture->frame;
        EXPECT_EQ(picture->description["frame"], last);
        EXPECT_EQ(picture->description["pictureWidth"], 64);
        EXPECT_EQ(picture->jpeg.substr(0, 2), "\xFF\xD8");
    }
    EXPECT_EQ(guest.viewer->take(), nullptr);
    EXPECT_EQ(guest.pictures.count(), 5); // none that was not asked for
}

TEST_F(LiveFeedTest, EncodesAFrameOnceForEachView) {
    Guest first(feed());
    camera().startStream();
    first.next();
    camera().stopStream();
    EXPECT_TRUE(first.reaches("Stopped"));
    first.viewer->setView({2, 50});
    const auto picture = first.next(); // of the last frame again, since the view is another
    EXPECT_EQ(picture->description["pictureWidth"], 32);
    Guest second(feed());
    second.viewer->setView({2, 50});
    EXPECT_EQ(second.next(), picture);
    second.viewer->setView({2, 51});
    const auto other = second.next();
    EXPECT_NE(other, picture);
    EXPECT_EQ(other->frame, picture->frame);
}

TEST_F(LiveFeedTest, TellsTheStateOfTheStreamAndFindsTheCameraAgain) {
    m_IsRefusing = true;
    Guest guest(feed());
    EXPECT_TRUE(guest.reaches("NotConnected"));
    m_IsRefusing = false;
    EXPECT_TRUE(guest.reaches("Stopped"));
    camera().startStream();
    EXPECT_TRUE(guest.reaches("Running"));
    camera().stopStream();
    EXPECT_TRUE(guest.reaches("Stopped"));
    Guest late(feed());
    EXPECT_TRUE(late.reaches("Stopped"));
    camera().suspend();
    EXPECT_TRUE(guest.reaches("Suspended"));
    camera().connect();
    EXPECT_TRUE(guest.reaches("Stopped"));
    Camera::initialiseWorkspace(); // from now on, cameras leave the list
    SoftwareDevices::unplug(m_Serial);
    EXPECT_TRUE(guest.reaches("NotConnected"));
    SoftwareDevices::replug(m_Serial);
    Camera::searchForNewCameras();
    Camera& returned = Camera::getCamera(std::to_string(m_Serial));
    returned.connect();
    returned.startStream();
    EXPECT_TRUE(guest.reaches("Running"));
    EXPECT_NE(guest.next(), nullptr);
}

TEST_F(LiveFeedTest, KeepsAHeldFrameForItsPixels) {
    const auto statusOf = [this](std::optional<std::uint64_t> frame) {
        try {
            return feed().pixels(0, 0, 1, 1, frame)["frame"].get<int>();
        } catch (const Refusal& refusal) {
            return -refusal.status;
        }
    };
    Guest guest(feed());
    EXPECT_EQ(statusOf({}), -410);
    EXPECT_EQ(guest.viewer->hold(), 0U);
    camera().startStream();
    const std::uint64_t held = guest.next()->frame;
    EXPECT_EQ(guest.viewer->hold(), held);
    const auto newest = static_cast<int>(guest.next()->frame);
    EXPECT_EQ(statusOf(held), static_cast<int>(held));
    EXPECT_EQ(statusOf({}), newest);
    guest.viewer->release();
    EXPECT_EQ(statusOf(held), -410);
}

TEST_F(LiveFeedTest, CallsNoViewerThatIsGone) {
    camera().startStream();
    Event entered;
    Event mayReturn;
    auto viewer = feed().join(
        [&] {
            entered.raise();
            mayReturn.wait();
        },
        [](const std::string&, const std::string&) {});
    viewer->demand();
    EXPECT_TRUE(entered.wait());
    std::atomic<bool> hasReturned{false};
    auto leaving = std::async(std::launch::async, [&] {
        viewer.reset();
        EXPECT_TRUE(hasReturned);
    });
    // Passes also if the thread has not come to leave yet; it cannot make a correct feed fail.
    EXPECT_EQ(leaving.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    hasReturned = true;
    mayReturn.raise();
    EXPECT_EQ(leaving.wait_for(kLongEnough), std::future_status::ready);

    // One that leaves during its own call.
    Event asked;
    Event left;
    viewer = feed().join(
        [&] {
            asked.wait(); // a viewer belongs to one thread at a time
            viewer.reset();
            left.raise();
        },
        [](const std::string&, const std::string&) {});
    viewer->demand();
    asked.raise();
    EXPECT_TRUE(left.wait());
    // Viewers outlive the feed.
    Guest guest(feed());
    m_Feed.reset();
    guest.viewer->demand();
    EXPECT_EQ(guest.viewer->take(), nullptr);
}

} // namespace
