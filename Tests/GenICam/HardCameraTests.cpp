// SPDX-License-Identifier: Apache-2.0

// Cameras that lie, stall and vanish.

#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <set>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Quill.h>

#include "GenICam/FailingMemory.h"
#include "GenICam/GenICamTest.h"
#include "Support/TemporaryFolder.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using namespace TestSupport;
using namespace std::chrono_literals;

/// Connects once the camera permits it.
bool connectsAgain(const std::string& serialNumber) {
    return eventually([&] {
        try {
            Camera::searchForNewCameras();
            Camera::getCamera(serialNumber).connect();
            return true;
        } catch (const KestrelException&) {
            return false;
        }
    });
}

TEST_F(GenICamTest, AHarmfulDescriptionIsRefused) {
    const TemporaryFolder folder;
    const std::string file =
        folder.write("camera.xml", "<RegisterDescription><Integer Name='Width'><pValue>Width</pValue>"
                                   "</Integer></RegisterDescription>");
    const CameraProcess process(software("127.0.0.2", {"--xml", file}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = listed("Quill-One");
    const auto refusal = expectThrown<KestrelException_Camera>([&] { camera.connect(); });
    EXPECT_THAT(refusal.why(), ::testing::HasSubstr("refer to themselves"));
}

TEST_F(GenICamTest, ASlowCameraHoldsUpNobody) {
    const CameraProcess slow(software("127.0.0.2", {"--answer-late", "100"}, "Slow"));
    const CameraProcess quick(software("127.0.0.3", {}));
    lookOn({}, {"127.0.0.2", "127.0.0.3"});
    Camera& camera = listed("Quill-Slow");
    listed("Quill-One");
    auto opening = std::async(std::launch::async, [&] {
        const auto refusal = expectThrown<KestrelException_Camera>([&] { camera.connect(); });
        EXPECT_THAT(refusal.why(), ::testing::HasSubstr("too long to send its description"));
    });
    int openings = 0;
    while (opening.wait_for(0s) != std::future_status::ready) {
        Camera::getCamera("Quill-One").connect();
        Camera::getCamera("Quill-One").disconnect();
        ++openings;
    }
    opening.get();
    EXPECT_GT(openings, 3);
}

TEST_F(GenICamTest, ACameraThatAnswersLateStaysListed) {
    const CameraProcess process(software("127.0.0.2", {"--discovery-late", "400"}));
    lookOn({}, {"127.0.0.2"});
    listed("Quill-One");
    Event left;
    Camera::registerDisconnectCallback([&](const std::string&, const std::string&) { left.raise(); });
    Camera::initialiseWorkspace();
    std::this_thread::sleep_for(2s); // four rounds, in which it would leave twice
    EXPECT_LE(left.count(), 1) << "a busy computer may be late once";
    listed("Quill-One");
}

TEST_F(GenICamTest, AnImageHasTheSizeOfItsFrame) {
    const CameraProcess process(software("127.0.0.2", {"--size", "640x480", "--fps", "200", "--vary-height"}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Quill-One");
    camera.startStream();
    std::set<unsigned> heights;
    for (int i = 0; i < 40 || heights.size() < 2; ++i) {
        const auto image = camera.getImage();
        ASSERT_EQ(image->getImageSize(), std::size_t{640} * image->getHeight());
        heights.insert(image->getHeight());
    }
    EXPECT_THAT(heights, ::testing::ElementsAre(240U, 480U));
    camera.stopStream();
    camera.getProperty("Height").setValue("100");
    EXPECT_THAT(camera.getImage()->getHeight(), ::testing::AnyOf(50U, 100U)) << "of the new run";
    expectEveryFrameCounted(camera.getStreamCounters());
}

#ifndef QUILL_THREAD_SANITIZER // which defines the operators that would fail
TEST_F(GenICamTest, ARunWithoutMemoryEndsAndTheNextOneWorks) {
    const CameraProcess process(software("127.0.0.2", {"--size", "640x480", "--fps", "100"}));
    lookOn({}, {"127.0.0.2"});
    Camera& camera = connected("Quill-One");
    for (int run = 0; run < 3; ++run) {
        FrameQueue queue = camera.openFrameQueue({64, WhenFull::DropNewest, "test"});
        camera.startStream();
        std::vector<Frame> kept; // so that the next buffers are new
        failingSize = 640 * 480;
        FrameResult result = queue.pop(kLongEnough);
        for (; result; result = queue.pop(kLongEnough)) {
            kept.push_back(result.frame);
        }
        failingSize = 0;
        EXPECT_EQ(result.status, FrameQueueStatus::OutOfMemory);
        EXPECT_THAT(expectThrown<KestrelException_Stream>([&] { camera.getImage(); }).why(),
                    ::testing::HasSubstr("not enough memory"));
        camera.stopStream();
        expectEveryFrameCounted(camera.getStreamCounters());
    }
    EXPECT_TRUE(camera.getImage());
}
#endif

TEST_F(GenICamTest, AnOutageWithinTheTimeOutEndsWithACameraThatStreams) {
    const CameraProcess process(software("127.0.0.2", {"--size", "64x32"}));
    lookOn({}, {"127.0.0.2"}, 2 * std::chrono::milliseconds(kLongEnough).count());
    Camera& camera = connected("Quill-One");
    process.tell("silent on");
    EXPECT_TRUE(eventually([&] { return !camera.isCameraAlive(); }));
    std::this_thread::sleep_for(8s); // Aravis gives control up after 5 s
    EXPECT_THROW(camera.startStream(), KestrelException_Stream);
    process.tell("silent off");
    EXPECT_TRUE(eventually([&] { return camera.isCameraAlive(); }));
    EXPECT_TRUE(camera.getImage());
}

TEST_F(GenICamTest, AProcessThatWasStoppedFindsItsCameraOrSaysThatItIsGone) {
    const CameraProcess process(software("127.0.0.2", {"--size", "64x32"}));
    EXPECT_EXIT(
        {
            int wake[2];
            const pid_t suspended = getpid();
            if (pipe(wake) == 0 && fork() == 0) { // stops the process for longer than the camera's time-out of 1 s
                char byte = 0;
                close(wake[1]);
                if (read(wake[0], &byte, 1) != 1) {
                    _exit(0);
                }
                kill(suspended, SIGSTOP);
                sleep(3);
                kill(suspended, SIGCONT);
                _exit(0);
            }
            lookOn({}, {"127.0.0.2"}, 1000);
            listed("Quill-One");
            Camera::initialiseWorkspace();
            Camera& camera = connected("Quill-One");
            FrameQueue queue = camera.openFrameQueue({4, WhenFull::DropOldest, "test"});
            camera.startStream();
            const bool hadFrame = static_cast<bool>(queue.pop(kLongEnough));
            const bool isAsking = write(wake[1], "s", 1) == 1;
            wait(nullptr);
            while (queue.pop(kLongEnough)) { // until the camera is reported gone
            }
            const bool isGone = queue.pop().status == FrameQueueStatus::CameraGone;
            std::exit(hadFrame && isAsking && isGone && connectsAgain("Quill-One") &&
                              Camera::getCamera("Quill-One").getImage()
                          ? 0
                          : 1);
        },
        ::testing::ExitedWithCode(0), "^$");
}

/// A cable between a card "eth1" of this network, 192.168.7.1/24, and a card "camera0" of another one.
class Cable {
public:
    Cable() : m_There({"unshare", "--net", "sleep", "infinity"}) {
        const std::string other = std::to_string(m_There.process());
        isLaid = eventually([&] {
                     return run("test \"$(readlink /proc/self/ns/net)\" != \"$(readlink /proc/" + other + "/ns/net)\"");
                 }) &&
                 run("ip link add eth1 type veth peer name camera0 netns " + other) &&
                 run("ip address add 192.168.7.1/24 dev eth1 && ip link set eth1 up") &&
                 run(there("ip address add 192.168.7.2/24 dev camera0")) &&
                 run(there("ip address add 192.168.7.9/24 dev camera0")) && run(there("ip link set camera0 up"));
    }
    Cable(const Cable&) = delete;
    Cable& operator=(const Cable&) = delete;
    ~Cable() { run("ip link delete eth1"); }

    static bool run(const std::string& command) { return std::system((command + " 2>/dev/null").c_str()) == 0; }
    /// The words that start a camera at the other end.
    std::vector<std::string> camera(const std::string& address) const {
        std::vector<std::string> words{"nsenter", "--net=/proc/" + std::to_string(m_There.process()) + "/ns/net"};
        const auto camera = software(address, {"--card", "camera0", "--size", "64x32", "--mac", "02:00:00:00:00:01"});
        words.insert(words.end(), camera.begin(), camera.end());
        return words;
    }

    bool isLaid = false; ///< false if the system does not permit it

private:
    std::string there(const std::string& command) const {
        return "nsenter --net=/proc/" + std::to_string(m_There.process()) + "/ns/net " + command;
    }

    CameraProcess m_There;
};

TEST_F(GenICamTest, ComesBackWithItsCardAndAtAnotherAddress) {
    const Cable cable;
    if (!cable.isLaid) {
        GTEST_SKIP() << "This system permits no second network.";
    }
    CameraProcess first(cable.camera("192.168.7.2"));
    lookOn({"eth1"});
    listed("Quill-One");
    Event left;
    Camera::registerDisconnectCallback([&](const std::string&, const std::string&) { left.raise(); });
    Camera::initialiseWorkspace();
    const auto streams = [] {
        ASSERT_TRUE(connectsAgain("Quill-One"));
        FrameQueue queue = Camera::getCamera("Quill-One").openFrameQueue({});
        Camera::getCamera("Quill-One").startStream();
        ASSERT_TRUE(queue.pop(kLongEnough));
    };
    streams();
    ASSERT_TRUE(Cable::run("ip link set eth1 down"));
    ASSERT_TRUE(left.wait(1));
    ASSERT_TRUE(Cable::run("ip link set eth1 up"));
    streams();
    first.pull();
    const CameraProcess second(cable.camera("192.168.7.9"));
    ASSERT_TRUE(left.wait(2));
    streams();
    EXPECT_EQ(Camera::getCamera("Quill-One").getProperty("GevCurrentIPAddress").getValue(),
              "3232237321"); // 192.168.7.9
}

} // namespace
