#include "Cameras/Camera.h"

#include <array>
#include <atomic>
#include <functional>
#include <limits>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "Cameras/CameraWorkspace.h"
#include "Exceptions/KestrelExceptions.h"
#include "OrvexApi/OrvexApi.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/ProcessFigures.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace CameraInterface;
using OrvexAdapter::OrvexApi;
using TestSupport::residentBytes;

constexpr int kCycles = 10'000;
constexpr int kNone = std::numeric_limits<int>::max();
/// For so many cycles a reference is good after it was looked up: the list keeps twice as many retired cameras.
constexpr int kUsableCycles = CameraList::kMaximumRetired / 2;

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::kLongEnough;
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    return condition();
}

/// An application's thread: looks its camera up and uses it step by step, until a step fails or the reference is old.
class Application {
public:
    Application(std::uint32_t serial, const std::atomic<int>& cycle, void (*step)(Camera&))
        : m_SerialNumber(std::to_string(serial)), m_Cycle(cycle), m_Step(step), m_Thread([this] { run(); }) {}
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application() {
        m_Done = true;
        m_Thread.join();
    }

    /// Whether one more camera may retire without destroying one that is in use.
    bool letsRetire() const { return m_LookedUp > m_Cycle - kUsableCycles; }
    int steps() const { return m_Steps; }

private:
    void run() {
        while (!m_Done) {
            m_LookedUp = m_Cycle.load();
            try {
                Camera& camera = Camera::getCamera(m_SerialNumber);
                for (; !m_Done && m_Cycle < m_LookedUp + kUsableCycles / 2; ++m_Steps) {
                    m_Step(camera);
                }
            } catch (const KestrelExceptions::KestrelException&) {
                // Cameras come and go: refusals are right answers.
            }
            m_LookedUp = kNone;
        }
    }

    const std::string m_SerialNumber;
    const std::atomic<int>& m_Cycle;
    void (*const m_Step)(Camera&);
    std::atomic<int> m_LookedUp{kNone}; // the cycle in which the reference was looked up
    std::atomic<int> m_Steps{0};
    std::atomic<bool> m_Done{false};
    std::thread m_Thread;
};

void readAndWrite(Camera& camera) {
    camera.connect();
    for (const std::string& name : camera.getSupportedProperties()) {
        camera.getProperty(name).getValue();
    }
    // Each device has its serial number as its hardware revision; one that is unplugged meanwhile cannot say it.
    const std::string revision = camera.getProperty("Hardware Revision").getValue();
    EXPECT_TRUE(revision == camera.getSerialNumber() || revision == "0") << "connected to another device";
    camera.getProperty("Video Exposure").setValue("5");
    camera.disconnect();
}

void stream(Camera& camera) {
    camera.connect();
    camera.startStream();
    camera.getImage();
    camera.getImage();
    camera.stopStream();
}

/// Goes on asking a camera that may have left the list long ago.
void holdReference(Camera& camera) {
    try {
        camera.connect();
        camera.startStream();
    } catch (const KestrelExceptions::KestrelException&) {
        EXPECT_FALSE(camera.getSerialNumber().empty());
    }
    camera.isStreaming();
    camera.isCameraAlive();
    camera.getCameraInfo();
    std::this_thread::yield();
}

/// Three devices with a small picture. Counts the handles that are open.
class HotPlugTest : public TestSupport::SoftwareDeviceFixture {
protected:
    HotPlugTest() {
        s_Original = OrvexAdapter::orvexApi();
        m_Counting = s_Original;
        m_Counting.sdkCameraOpen = [](std::uint32_t index) {
            happenMeanwhile();
            void* const handle = s_Original.sdkCameraOpen(index);
            s_OpenHandles += handle != nullptr ? 1 : 0;
            return handle;
        };
        m_Counting.sdkCameraClose = [](void* handle) {
            const std::uint32_t closed = s_Original.sdkCameraClose(handle);
            s_OpenHandles -= closed != 0 ? 1 : 0;
            happenMeanwhile();
            return closed;
        };
        m_Counting.sdkQueryVersion = [](void* handle, ORVEX_VERSION* version) {
            happenMeanwhile();
            return s_Original.sdkQueryVersion(handle, version);
        };
        OrvexAdapter::useOrvexApi(&m_Counting);
        for (const std::uint32_t serial : kSerials) {
            SoftwareDevices::DeviceDescription description = SoftwareDevices::defaultDevices()[1];
            description.serial = description.hardwareRevision = serial;
            description.sensorWidth = 16;
            description.sensorHeight = 8;
            SoftwareDevices::plug(description);
        }
        SoftwareDevices::setAsFastAsAsked(kSerials[1], true);
    }
    ~HotPlugTest() override {
        Camera::unitialisedWorkpace();
        OrvexAdapter::useOrvexApi(nullptr);
    }

    static void happenMeanwhile() {
        if (s_Meanwhile) {
            std::exchange(s_Meanwhile, nullptr)();
        }
    }

    static constexpr std::array<std::uint32_t, 3> kSerials{1, 2, 3};
    inline static OrvexApi s_Original;
    inline static std::function<void()>
        s_Meanwhile; // what happens once, in the middle of the next opening, query or closing
    inline static std::atomic<int> s_OpenHandles{0};
    OrvexApi m_Counting;
};

TEST_F(HotPlugTest, WhatOthersDoInTheMiddleOfACheckOrAConnectMisleadsNobody) {
    Camera::searchForNewCameras();
    Camera& camera = Camera::getCamera("2");
    camera.connect();
    s_Meanwhile = [&] { camera.disconnect(); };
    TestSupport::dropVanishedCameras();
    camera.connect();
    s_Meanwhile = [] { TestSupport::dropVanishedCameras(); };
    camera.disconnect();
    EXPECT_EQ(Camera::getCamerasList().count("2"), 1U) << "it is closed, not gone";
    s_Meanwhile = [] { SoftwareDevices::unplug(kSerials[0]); };
    camera.connect(); // its place is that of another now: it is looked for again
    EXPECT_EQ(camera.getProperty("Hardware Revision").getValue(), "2");
    camera.disconnect();
    s_Meanwhile = [] { CameraWorkspace::instance().cameras().retire("2"); };
    EXPECT_THROW(camera.connect(), KestrelExceptions::KestrelException_Camera) << "it retired in the middle";
    EXPECT_EQ(s_OpenHandles, 0);
}

TEST_F(HotPlugTest, TenThousandReplugsUnderLoadAreReportedOnceEachAndLeaveNothingBehind) {
    ASSERT_EQ(Camera::searchForNewCameras(), kSerials.size());
    std::vector<std::string> events;
    Camera::registerDisconnectCallback([&](const std::string&, const std::string& serialNumber) {
        EXPECT_EQ(Camera::getCamerasList().count(serialNumber), 0U);
        events.push_back(serialNumber + " gone");
    });
    Camera::registerNewConnectCallback([&] {
        EXPECT_EQ(Camera::getCamerasList().size(), kSerials.size());
        events.emplace_back("back");
    });
    std::size_t residentEarly = 0;
    std::atomic<int> cycle{0};
    {
        Application applications[]{
            {kSerials[0], cycle, readAndWrite}, {kSerials[1], cycle, stream}, {kSerials[2], cycle, holdReference}};
        std::array<int, std::size(applications)> steps{};
        for (; cycle < kCycles; ++cycle) {
            for (std::size_t i = 0; i < std::size(applications); ++i) {
                ASSERT_TRUE(waitUntil([&] { return applications[i].letsRetire(); })) << i << " hangs";
                // Cameras mostly go as fast as they can, but now and then each application gets something first.
                if (cycle % 20 == 0) {
                    ASSERT_TRUE(waitUntil([&] { return applications[i].steps() > steps[i]; })) << i << " gets nothing";
                    steps[i] = applications[i].steps();
                }
            }
            const std::uint32_t serial = kSerials[static_cast<std::size_t>(cycle) % kSerials.size()];
            SoftwareDevices::unplug(serial);
            TestSupport::dropVanishedCameras();
            ASSERT_EQ(events, std::vector<std::string>{std::to_string(serial) + " gone"}) << "cycle " << cycle;
            SoftwareDevices::replug(serial);
            TestSupport::addNewCameras();
            ASSERT_EQ(events.size(), 2U) << "cycle " << cycle;
            ASSERT_EQ(events.back(), "back");
            events.clear();
            // Each camera, listed or retired, has one handle at most.
            ASSERT_LE(s_OpenHandles, static_cast<int>(kSerials.size() + CameraList::kMaximumRetired));
            residentEarly = cycle == kCycles / 10 ? residentBytes() : residentEarly;
        }
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // these keep freed memory for a while
    constexpr std::size_t kAllowance = 16U << 20;
    EXPECT_LT(residentBytes(), residentEarly + kAllowance);
#endif
    Camera::unitialisedWorkpace();
    EXPECT_EQ(s_OpenHandles, 0);
}

} // namespace
