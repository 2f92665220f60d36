// SPDX-License-Identifier: Apache-2.0

#include "Cameras/Camera.h"

#include <system_error>

#include <gtest/gtest.h>

#include "Cameras/CameraList.h"
#include "Exceptions/KestrelExceptions.h"
#include "Support/CameraListFixture.h"
#include "Support/Event.h"
#include "Support/FakeCamera.h"
#include "Support/ListMaintenance.h"
#include "Support/NoThreads.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using TestSupport::dropVanishedCameras;
using TestSupport::expectFailure;
using TestSupport::FakeBus;
using Listed = std::map<std::string, std::string>;

class CameraListTest : public TestSupport::CameraListFixture {
protected:
    CameraListTest() { useAdapters({m_Bus.adapter(), m_OtherBus.adapter()}); }
    ~CameraListTest() override { useAdapters({}); }

    FakeBus m_Bus;
    FakeBus m_OtherBus;
};

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
        EXPECT_TRUE(TestSupport::eventually([] { return Camera::getCamerasList().empty(); }));
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
    Camera::searchForNewCameras();
    device->unreadable = true;
    EXPECT_EQ(Camera::getCamerasList(), Listed{});
    dropVanishedCameras();
    EXPECT_NO_THROW(Camera::getCamera("1"));
}

TEST_F(CameraListTest, VanishedCamerasAreDroppedAccordingToTheirState) {
    for (const char* serial : {"connected", "disconnected", "suspended", "present"}) {
        m_Bus.plug(serial);
    }
    std::vector<std::pair<std::string, std::string>> reported;
    Camera::registerDisconnectCallback([&](const std::string& modelName, const std::string& serialNumber) {
        EXPECT_EQ(Camera::getCamerasList().count(serialNumber), 0U) << "the list already reflects the change";
        reported.emplace_back(modelName, serialNumber);
        throw std::runtime_error("escaped");
    });
    Camera::searchForNewCameras();
    Camera& connected = Camera::getCamera("connected");
    connected.connect();
    connected.startStream();
    Camera::getCamera("suspended").connect();
    Camera::getCamera("suspended").suspend();
    for (const char* serial : {"connected", "disconnected", "suspended"}) {
        m_Bus.unplug(serial);
    }
    dropVanishedCameras();
    EXPECT_EQ(Camera::getCamerasList(), (Listed{{"present", "Model F"}, {"suspended", "Model F"}}));
    EXPECT_EQ(reported, (std::vector<std::pair<std::string, std::string>>{{"Model F", "connected"},
                                                                          {"Model F", "disconnected"}}));
    Camera::registerDisconnectCallback({});
    // The reference is still usable.
    EXPECT_FALSE(connected.isStreaming());
    EXPECT_EQ(connected.getProperty("Gain").getValue(), "1");
    connected.disconnect();
    expectFailure<KestrelException_Camera>([&] { connected.connect(); }, "CameraConnection",
                                           "Failed to connect to camera.");
}

TEST_F(CameraListTest, NothingIsDroppedWhileTheBusIsSilent) {
    m_Bus.plug("1");
    Camera::searchForNewCameras();
    // The cameras of a failing adapter count as absent, except those that are connected.
    Camera::getCamera("1").connect();
    m_Bus.failEnumeration(true);
    dropVanishedCameras();
    EXPECT_EQ(Camera::getCamerasList().size(), 1U);
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

} // namespace
