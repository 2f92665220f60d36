#include "Cameras/Camera.h"

#include <random>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

#include "Cameras/CameraList.h"
#include "Exceptions/KestrelExceptions.h"
#include "Support/CameraListFixture.h"
#include "Support/Event.h"
#include "Support/FakeCamera.h"
#include "Support/NoThreads.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using TestSupport::Event;
using TestSupport::expectFailure;
using TestSupport::FakeBus;
using Listed = std::map<std::string, std::string>;

const char* const kNotFound = "Camera was not found in the list of available cameras.";

/// Waits until the list looks like this; the disconnect check runs twice a second.
bool waitForList(const Listed& expected) {
    const auto end = std::chrono::steady_clock::now() + TestSupport::kLongEnough;
    while (Camera::getCamerasList() != expected && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return Camera::getCamerasList() == expected;
}

class CameraListTest : public TestSupport::CameraListFixture {
protected:
    CameraListTest() { useAdapters({m_Bus.adapter(), m_OtherBus.adapter()}); }
    ~CameraListTest() override { useAdapters({}); }

    FakeBus m_Bus;
    FakeBus m_OtherBus;
};

TEST_F(CameraListTest, IsEmptyOutsideTheWorkspace) {
    m_Bus.plug("1");
    EXPECT_EQ(Camera::getCamerasList(), Listed{});
    expectFailure<KestrelException_Camera>([] { Camera::getCamera("1"); }, "CameraNotFound", kNotFound);
    Camera::initialiseWorkspace();
    EXPECT_EQ(Camera::getCamerasList().size(), 1U);
    EXPECT_EQ(Camera::searchForNewCameras(), 0U);
    Camera::unitialisedWorkpace();
    EXPECT_EQ(Camera::getCamerasList(), Listed{});
    Camera::unitialisedWorkpace();
}

TEST_F(CameraListTest, WatchingStartsOnceThreadsCanBeHad) {
    for (const bool isFirstStart : {true, false}) {
        if (!isFirstStart) {
            Camera::initialiseWorkspace();
        }
        {
            const TestSupport::NoThreads none;
            EXPECT_THROW(isFirstStart ? Camera::initialiseWorkspace() : Camera::registerDisconnectCallback({}),
                         std::system_error);
        }
        m_Bus.plug("1");
        Camera::initialiseWorkspace();
        m_Bus.unplug("1");
        EXPECT_TRUE(waitForList({}));
        Camera::unitialisedWorkpace();
    }
}

TEST_F(CameraListTest, OneObjectPerSerialNumberFromTheAdapterAskedFirst) {
    const auto first = m_Bus.plug("1", "Model A");
    const auto second = m_OtherBus.plug("1", "Model B");
    m_OtherBus.plug("2", "Model C");
    Camera::initialiseWorkspace();
    Camera::initialiseWorkspace();
    EXPECT_EQ(Camera::getCamerasList(), (Listed{{"1", "Model A"}, {"2", "Model C"}}));
    EXPECT_EQ(second->objects, 0);
    m_Bus.plug("3");
    EXPECT_EQ(Camera::searchForNewCameras(), 1U);
    EXPECT_EQ(&Camera::getCamera("1"), &Camera::getCamera("1"));
}

TEST_F(CameraListTest, AFailingAdapterStopsNobodyAndIsNamed) {
    m_Bus.failEnumeration(true);
    m_OtherBus.plug("2");
    Camera::initialiseWorkspace();
    EXPECT_EQ(Camera::getCamerasList().size(), 1U);
    EXPECT_EQ(Camera::getEnumerationFailures(), (Listed{{"fake cameras", "The bus does not answer."}}));
    m_Bus.failEnumeration(false);
    Camera::searchForNewCameras();
    EXPECT_EQ(Camera::getEnumerationFailures(), Listed{});
}

TEST_F(CameraListTest, ACameraThatCannotSayItsNameIsLeftOutButKept) {
    const auto device = m_Bus.plug("1");
    Camera::initialiseWorkspace();
    device->unreadable = true;
    EXPECT_EQ(Camera::getCamerasList(), Listed{});
    const int enumerations = m_Bus.enumerations();
    while (m_Bus.enumerations() < enumerations + 2) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // two disconnect checks
    }
    EXPECT_NO_THROW(Camera::getCamera("1"));
}

TEST_F(CameraListTest, VanishedCamerasAreDroppedAccordingToTheirState) {
    for (const char* serial : {"connected", "disconnected", "suspended", "present"}) {
        m_Bus.plug(serial);
    }
    std::vector<std::pair<std::string, std::string>> reported;
    Event disconnects;
    Camera::registerDisconnectCallback([&](const std::string& modelName, const std::string& serialNumber) {
        EXPECT_EQ(Camera::getCamerasList().count(serialNumber), 0U) << "the list already reflects the change";
        reported.emplace_back(modelName, serialNumber);
        disconnects.raise();
        throw std::runtime_error("escaped");
    });
    Camera::initialiseWorkspace();
    Camera& connected = Camera::getCamera("connected");
    connected.connect();
    connected.startStream();
    Camera::getCamera("suspended").connect();
    Camera::getCamera("suspended").suspend();
    for (const char* serial : {"connected", "disconnected", "suspended"}) {
        m_Bus.unplug(serial);
    }
    EXPECT_TRUE(disconnects.wait(2));
    EXPECT_TRUE(waitForList({{"present", "Model F"}, {"suspended", "Model F"}}));
    Camera::registerDisconnectCallback({}); // a barrier: what the callback uses may go
    EXPECT_EQ(reported.size(), 2U);
    EXPECT_EQ(reported[0].first, "Model F") << "model name first, then serial number";
    // The reference is still good for clear answers.
    EXPECT_FALSE(connected.isStreaming());
    EXPECT_EQ(connected.getProperty("Gain").getValue(), "1");
    connected.disconnect();
    expectFailure<KestrelException_Camera>([&] { connected.connect(); }, "CameraConnection",
                                           "Failed to connect to camera.");
}

TEST_F(CameraListTest, NothingIsDroppedWhileTheBusIsSilent) {
    m_Bus.plug("1");
    Camera::initialiseWorkspace();
    // An adapter that fails is one whose cameras are not there: only its own connected cameras stay.
    Camera::getCamera("1").connect();
    m_Bus.failEnumeration(true);
    const int enumerations = m_Bus.enumerations();
    while (m_Bus.enumerations() < enumerations + 2) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(Camera::getCamerasList().size(), 1U);
}

TEST_F(CameraListTest, ACallbackThatWouldWaitForItselfIsToldSo) {
    const auto device = m_Bus.plug("1");
    Camera::initialiseWorkspace();
    Event refused;
    std::string words;
    Camera::registerDisconnectCallback([&](const std::string&, const std::string&) {
        const std::vector<std::function<void()>> operations{
            [] { Camera::registerDisconnectCallback({}); },
            [] { Camera::registerNewConnectCallback({}); },
            [] { Camera::unitialisedWorkpace(); },
            [] { Camera::initialiseWorkspace(); },
        };
        for (const auto& operation : operations) {
            try {
                operation();
            } catch (const KestrelException& exception) {
                words += std::string(exception.who()) + ";";
            }
        }
        EXPECT_EQ(Camera::searchForNewCameras(), 0U) << "the list itself may be used";
        refused.raise();
    });
    m_Bus.unplug("1");
    ASSERT_TRUE(refused.wait());
    Camera::registerDisconnectCallback({}); // a barrier: the callback does not run any more
    EXPECT_EQ(words, "WouldWaitForItself;WouldWaitForItself;WouldWaitForItself;WouldWaitForItself;");
}

TEST_F(CameraListTest, TheCallbackForNewCamerasComesFromTheWatchdog) {
    Event arrived;
    Camera::registerNewConnectCallback([&] { arrived.raise(); });
    Camera::initialiseWorkspace();
    m_Bus.plug("1");
    EXPECT_TRUE(arrived.wait()); // within 5 seconds
    EXPECT_EQ(Camera::getCamerasList().size(), 1U);
    Camera::registerNewConnectCallback({});
    EXPECT_EQ(arrived.count(), 1);
}

TEST_F(CameraListTest, TenThousandReplugsLeaveMemoryFlat) {
    CameraList list;
    const auto device = m_Bus.plug("1");
    const auto enumerate = m_Bus.adapter().m_GetListOfCameras;
    for (int cycle = 0; cycle < 10'000; ++cycle) {
        ASSERT_EQ(list.add(enumerate()), 1U);
        ASSERT_TRUE(list.retire("1"));
        ASSERT_FALSE(list.retire("1"));
        ASSERT_LE(device->objects, static_cast<int>(CameraList::kMaximumRetired));
    }
    EXPECT_EQ(device->objects, static_cast<int>(CameraList::kMaximumRetired));
    list.clear();
    EXPECT_EQ(device->objects, 0);
}

TEST_F(CameraListTest, EverythingAtOnceIsSafe) {
    // Threads that list, look up, connect, read, search and register while a bus plugs and unplugs and the workspace
    // ends and starts.
    std::atomic<bool> done{false};
    std::atomic<int> operations{0};
    const auto storm = [&](const std::function<void(std::mt19937&)>& operation, unsigned seed) {
        return std::thread([&done, &operations, operation, seed] {
            std::mt19937 random(seed);
            while (!done) {
                try {
                    operation(random);
                } catch (const KestrelException&) {
                    // Cameras come and go: refusals are right answers.
                }
                ++operations;
                std::this_thread::yield();
            }
        });
    };
    const auto serial = [](std::mt19937& random) { return std::to_string(random() % 6); };
    Camera::initialiseWorkspace();
    std::vector<std::thread> threads;
    threads.push_back(storm([](std::mt19937&) { Camera::getCamerasList(); }, 1));
    threads.push_back(storm([](std::mt19937&) { Camera::searchForNewCameras(); }, 2));
    threads.push_back(storm([&](std::mt19937& random) { m_Bus.plug(serial(random)); }, 3));
    threads.push_back(storm([&](std::mt19937& random) { m_Bus.unplug(serial(random)); }, 4));
    threads.push_back(storm(
        [&](std::mt19937&) {
            Camera::registerDisconnectCallback([](const std::string&, const std::string& serialNumber) {
                Camera::getCamerasList().count(serialNumber);
            });
        },
        5));
    threads.push_back(storm(
        [&](std::mt19937& random) {
            Camera& camera = Camera::getCamera(serial(random));
            camera.connect();
            camera.startStream();
            camera.getProperty("Gain").setValue("2");
            camera.getImage();
            camera.disconnect();
        },
        6));
    std::this_thread::sleep_for(std::chrono::milliseconds(1500)); // long enough for three disconnect checks
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GT(operations, 100);
    std::thread other([] { Camera::searchForNewCameras(); });
    Camera::unitialisedWorkpace();
    other.join();
}

} // namespace
