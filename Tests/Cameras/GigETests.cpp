// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/GigE.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "OrvexApi/OrvexApi.h"
#include "Support/OrvexApiChange.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace OrvexAdapter;
using TestSupport::OrvexApiChange;
using TestSupport::thrownBy;

/// A GigE camera with the index 1.
class GigETest : public TestSupport::SoftwareDeviceFixture {
protected:
    GigETest() {
        SoftwareDevices::DeviceDescription description = SoftwareDevices::gigeDevice();
        description.network->cameraAddresses = {0xC0A80001, 0xC0A80002, 0xC0A80003};
        description.network->hostAddresses = {0x0A000000, 0x0A000001, 0x0A000002};
        m_Serial = SoftwareDevices::plug(description);
        orvexApi().sdkSelectInterface(4);
    }

    static std::string failure(const std::string& sentence) {
        return "GigEError[Shared/include/Cameras/OrvexCamera/GigE.h]" + sentence;
    }

    std::uint32_t m_Serial = 0;
    CGigE m_GigE;
};

TEST_F(GigETest, ReadsAndWritesTheSettingsOfACamera) {
    EXPECT_EQ(m_GigE.GetCamIPAddress(), "0.0.0.0");
    m_GigE.GetEthernetInfo(1);
    EXPECT_EQ(m_GigE.GetCamIPAddress(), "192.168.0.1");
    EXPECT_EQ(m_GigE.GetCamMaskAddress(), "192.168.0.2");
    EXPECT_EQ(m_GigE.GetCamGatewayAddress(), "192.168.0.3");
    EXPECT_EQ(m_GigE.GetHostIPAddress(), "10.0.0.0");
    EXPECT_EQ(m_GigE.GetHostMaskAddress(), "10.0.0.1");
    EXPECT_EQ(m_GigE.GetHostGatewayAddress(), "10.0.0.2");
    EXPECT_EQ(m_GigE.GetCamMacAddress(), "00:A:1B:3:4:F5") << "only the first byte is padded";
    EXPECT_EQ(m_GigE.GetHostMacAddress(), "00:1B:21:3C:9D:F8");

    m_GigE.SetCamIpAddress("1.2.3.4");
    m_GigE.SetCamMaskAddress("255.255.0.0");
    m_GigE.SetCamGatewayAddress("5.6.7.8");
    SoftwareDevices::startLog();
    m_GigE.SetEthernetInfo(1);
    EXPECT_EQ(SoftwareDevices::takeLog().back().operation, SoftwareDevices::Operation::sdkNumCameras);
    EXPECT_EQ(SoftwareDevices::network(m_Serial).cameraAddresses,
              (std::array<std::uint32_t, 3>{0x01020304, 0xFFFF0000, 0x05060708}));

    EXPECT_EQ(thrownBy([&] { m_GigE.GetEthernetInfo(3); }),
              failure("could not read ethernet information from camera index #3"));
    SoftwareDevices::startLog();
    EXPECT_EQ(thrownBy([&] { m_GigE.SetEthernetInfo(-1); }),
              failure("could not update camera ethernet setting for camera index #-1"));
    EXPECT_EQ(SoftwareDevices::takeLog().size(), 1U);
}

TEST_F(GigETest, ACameraThatSaysItIsOnTheNetworkDescribesIt) {
    SoftwareDevices::DeviceDescription description = SoftwareDevices::gigeDevice();
    description.interfaceNumber = 2; // an interface that is searched for cameras
    auto& camera = open(description);
    const std::optional<GigEDescription> network = readGigE(camera);
    ASSERT_TRUE(network);
    EXPECT_EQ(network->settings.value().GetCamMacAddress(), "00:A:1B:3:4:F5");
    EXPECT_EQ(network->settings.value().GetHostIPAddress(), "192.168.1.2");
    const std::string report = network->statistics.value();
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 32);
    EXPECT_FALSE(network->failure);
    // If one part cannot be read, only that is missing.
    SoftwareDevices::failNext(description.serial, SoftwareDevices::Operation::sdkGetStreamStats, 1, 7);
    const GigEDescription uncounted = readGigE(camera).value();
    EXPECT_TRUE(uncounted.settings && !uncounted.statistics);
    EXPECT_EQ(thrownBy([&] { std::rethrow_exception(uncounted.failure); }),
              failure("camera error #7, could not get GigE statistics from camera."));
    SoftwareDevices::failNext(description.serial, SoftwareDevices::Operation::sdkGetEthernetInfo, 1, 7);
    SoftwareDevices::failNext(description.serial, SoftwareDevices::Operation::sdkGetHardwareInterface, 1, 7);
    const GigEDescription unaddressed = readGigE(camera).value();
    EXPECT_TRUE(!unaddressed.settings && unaddressed.statistics && unaddressed.failure);
    camera.disconnect();
    EXPECT_FALSE(readGigE(camera));
    EXPECT_FALSE(readGigE(open(SoftwareDevices::defaultDevices()[1]))) << "on USB";
}

TEST_F(GigETest, TheSettingsAreThoseOfTheCameraEvenIfAnotherOneLeavesMeanwhile) {
    SoftwareDevices::DeviceDescription second = SoftwareDevices::gigeDevice();
    second.serial = 77;
    second.network->cameraMac = {1, 2, 3, 4, 5, 6};
    SoftwareDevices::plug(second);
    SoftwareDevices::DeviceDescription third = second;
    third.serial = 78;
    third.network->cameraMac = {6, 5, 4, 3, 2, 1};
    SoftwareDevices::plug(third);
    std::array<ORVEX_VERSION, 3> versions{};
    ASSERT_EQ(orvexApi().sdkEnumCameras(versions.data(), 3), 3);
    static std::uint32_t leaving;
    leaving = m_Serial;
    const OrvexApiChange change([](OrvexApi& api) {
        api.sdkGetEthernetInfo = [](std::int32_t index, std::uint8_t* cameraMac, std::uint32_t* camera,
                                    std::uint8_t* hostMac, std::uint32_t* host) {
            if (leaving != 0) {
                SoftwareDevices::unplug(std::exchange(leaving, 0)); // the first camera: the others move up
            }
            return OrvexApiChange::original().sdkGetEthernetInfo(index, cameraMac, camera, hostMac, host);
        };
    });
    EXPECT_EQ(OrvexCamera(versions[1], 4).getSerialNumber(), "01:2:3:4:5:6") << "otherwise the third one's";
    EXPECT_EQ(OrvexCamera(versions[2], 4).getSerialNumber(), "06:5:4:3:2:1");
}

TEST_F(GigETest, AFailureNamesTheLineThatThrowsIt) {
    static const OrvexApi failing;
    useOrvexApi(&failing);
    for (const auto& operation :
         std::vector<std::function<void()>>{[&] { m_GigE.GetEthernetInfo(1); }, [&] { m_GigE.SetEthernetInfo(1); },
                                            [&] { m_GigE.GetGigeCamStats(nullptr); }}) {
        const std::string where = TestSupport::expectThrown<KestrelExceptions::KestrelException>(operation).where();
        std::ifstream header(QUILL_TEST_SOURCE_FOLDER "/Shared/include/Cameras/OrvexCamera/GigE.h");
        std::string line;
        for (int number = std::stoi(where.substr(where.find('#') + 1)); number > 0; --number) {
            std::getline(header, line);
        }
        EXPECT_NE(line.find("raise(__LINE__"), std::string::npos) << where << line;
    }
    useOrvexApi(nullptr);
}

TEST_F(GigETest, ReportsTheCounters) {
    static OrvexApi api;
    api.sdkGetStreamStats = [](void*, std::uint32_t kind, ::_ORVEX_STREAM_STATS* statistics,
                               std::uint32_t size) -> std::uint32_t {
        for (std::uint32_t index = 0; index < size / 4; ++index) {
            statistics->counters[index] = 100 + index;
        }
        return kind == 1 ? 1 : 0;
    };
    useOrvexApi(&api);
    const std::string report = m_GigE.GetGigeCamStatsToString(nullptr);
    EXPECT_EQ(report, "\nActual frame drop: 102\nFrame completed: 100\nFrame dropped: 101\nGEV STATS\n"
                      "Block id missing: 117\nBlocks dropped: 116\nData over run: 105\nExpected resend: 103\n"
                      "Expected single resend: 109\nFull line missing: 107\nIgnored packet: 113\nLost packet: 104\n"
                      "Other errors: 108\nPacket Out of order: 115\nPartial line missing: 106\nRedundant packet: 114\n"
                      "Resend Group Requested: 111\nResend Packet requested: 112\nGEV RESULTS STATS\n"
                      "Image Error: 118\nMissing packets: 119\nResend Failure: 123\nState Error: 120\n"
                      "Too many consecutive resends: 122\nToo Many resends: 121\nGige USB stats\n"
                      "Unexpedted resend: 110\nBabble errors: 105\nOther Errors: 106\nShort Errors: 103\n"
                      "Xact Errors: 104\n");
    api = OrvexApi();
    EXPECT_THROW(m_GigE.GetGigeCamStats(nullptr), KestrelExceptions::KestrelException);
    EXPECT_EQ(m_GigE.GetGigeCamStatsString(), report) << "the last statistics stay";
    api.sdkGetLastErrorForCamera = [](void*) -> std::uint32_t { return 4000000000U; };
    EXPECT_EQ(thrownBy([&] { m_GigE.GetGigeCamStatsToString(nullptr); }),
              failure("camera error #4000000000, could not get GigE statistics from camera."));
    useOrvexApi(nullptr);
}

} // namespace
