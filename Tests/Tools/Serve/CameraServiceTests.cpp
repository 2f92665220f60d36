// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Serve/Cameras/CameraService.h"
#include "Support/Event.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Tools/ChildProcess.h"
#include "Tools/Serve/Refusals.h"

namespace {

using namespace QuillTool;
using namespace QuillTool::Serve;
using CameraInterface::Camera;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::Event;
using TestSupport::eventually;

/// Devices with small pictures, and a service of their cameras.
class CameraServiceTest : public TestSupport::SoftwareDeviceFixture {
protected:
    static constexpr std::size_t kColor = 0;
    static constexpr std::size_t kMono = 1;

    ~CameraServiceTest() override {
        SoftwareDevices::unplugAll(); // ends calls that wait
        m_Service.reset();
    }

    static std::string plugSmall(std::size_t defaultDevice) {
        DeviceDescription device = SoftwareDevices::defaultDevices()[defaultDevice];
        device.sensorWidth = 64;
        device.sensorHeight = 48;
        return std::to_string(SoftwareDevices::plug(device));
    }
    static std::uint32_t number(const std::string& serialNumber) {
        return static_cast<std::uint32_t>(std::stoul(serialNumber));
    }

    CameraService& start(bool viewOnly = false) {
        m_Service = std::make_unique<CameraService>(
            [this](const std::string& event, const Json& data) {
                const std::lock_guard lock(m_Mutex);
                m_Events.emplace_back(event, data);
            },
            viewOnly);
        return *m_Service;
    }
    /// Plugs a device in, starts the service and connects the camera.
    std::string startWith(std::size_t defaultDevice) {
        const std::string serialNumber = plugSmall(defaultDevice);
        start().connect(serialNumber);
        return serialNumber;
    }

    bool isTold(const std::string& event, const std::function<bool(const Json&)>& holds) {
        const std::lock_guard lock(m_Mutex);
        return std::any_of(m_Events.begin(), m_Events.end(),
                           [&](const auto& told) { return told.first == event && holds(told.second); });
    }
    bool eventuallyTold(const std::string& event, const std::function<bool(const Json&)>& holds) {
        return eventually([&] { return isTold(event, holds); });
    }

    /// What a camera changes by itself, only a look at it can tell.
    bool tellsOfChangesFromOutside(const std::string& serial) {
        SoftwareDevices::PropertyRow temperature = SoftwareDevices::property(number(serial), 108);
        const Json first = value(serial, "Camera Temperature");
        return eventually([&] {
            temperature.value += 0.5F;
            SoftwareDevices::setProperty(number(serial), temperature);
            return isTold("property", [&](const Json& data) {
                return data["camera"] == serial && data["property"]["name"] == "Camera Temperature" &&
                       data["property"]["value"] != first;
            });
        });
    }

    Json value(const std::string& serialNumber, const char* property, const char* member = "value") {
        return m_Service->property(serialNumber, property)["property"][member];
    }
    std::size_t camerasListed() { return m_Service->list()["cameras"].size(); }

    std::unique_ptr<CameraService> m_Service;

private:
    std::mutex m_Mutex;
    std::vector<std::pair<std::string, Json>> m_Events;
};

TEST_F(CameraServiceTest, RefusalsSayWhoseFaultItIs) {
    const std::string closed = plugSmall(kColor);
    const std::string serial = startWith(kMono);
    CameraService& service = *m_Service;
    const std::pair<int, std::function<void()>> cases[] = {
        {404, [&] { service.describe("1"); }},
        {404, [&] { service.live("1"); }},
        {409, [&] { service.properties(closed); }},
        {409, [&] { service.startStream(closed); }},
        {409, [&] { service.capture(closed, "png"); }},
        {404, [&] { service.property(serial, "No Such Property"); }},
        {422, [&] { service.writeProperty(serial, "Video Exposure", "a while"); }},
        {422, [&] { service.writeProperty(serial, "Video Exposure", 1e9); }},
        {409, [&] { service.writeProperty(serial, "Maximum Width", "64"); }},
        {400,
         [&] {
             service.writeRegion(serial, Json{{"x", 0}});
         }},
        {400, [&] { service.capture(serial, "bmp"); }},
        {422, [&] { service.capture(serial, "dng"); }},
        {422, [&] { service.loadSettings(serial, "{"); }},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        expectRefused(cases[i].first, cases[i].second);
    }
}

TEST_F(CameraServiceTest, WhoMayOnlyLookStartsNoStream) {
    const std::string serial = plugSmall(kMono);
    CameraService& service = start(true);
    Camera::getCamera(serial).connect();
    expectRefused(403, [&] { service.capture(serial, "png"); });
    expectRefused(403, [&] { service.series(serial, 1, "png", [](std::string_view) { return true; }); });
    EXPECT_FALSE(SoftwareDevices::isStreaming(number(serial)));
}

TEST_F(CameraServiceTest, ARegionIsTheNearestThatTheCameraTakes) {
    struct Case {
        std::uint64_t x, y, width, height; ///< as wanted
        bool isTaken;                      ///< as it is
    };
    constexpr Case kCases[] = {
        {0, 0, 64, 48, true}, {8, 4, 16, 12, true},     {3, 5, 10, 7, false},
        {0, 0, 1, 1, false},  {60, 40, 100, 99, false}, {1000, 1000, 1000, 1000, false},
    };
    const std::string serial = startWith(kColor);
    for (const Case& wanted : kCases) {
        SCOPED_TRACE(wanted.x);
        const Json given = m_Service->writeRegion(
            serial, {{"x", wanted.x}, {"y", wanted.y}, {"width", wanted.width}, {"height", wanted.height}});
        const Json& region = given["region"];
        EXPECT_EQ(given["difference"] == "", wanted.isTaken) << given;
        EXPECT_EQ(m_Service->region(serial)["region"], region);
        EXPECT_EQ(std::stod(value(serial, "Width").get<std::string>()), region["width"].get<double>());
        const std::uint64_t begin = region["x"];
        const std::uint64_t end = begin + region["width"].get<std::uint64_t>();
        EXPECT_LE(begin, wanted.x);
        EXPECT_GE(end, std::min<std::uint64_t>(wanted.x + wanted.width, 64));
        EXPECT_LE(end, 64U);
        EXPECT_LE(region["y"].get<std::uint64_t>() + region["height"].get<std::uint64_t>(), 48U);
    }
}

TEST_F(CameraServiceTest, AListenerIsToldOfLimitsThatFollowAndOfChangesFromOutside) {
    const std::string serial = startWith(kColor);
    m_Service->setListening(true);
    const Json fastest = value(serial, "Framerate", "choices");
    const Json slowestClock = value(serial, "Video Clock Speed", "choices").back();
    ASSERT_NE(value(serial, "Video Clock Speed"), slowestClock);
    m_Service->writeProperty(serial, "Video Clock Speed", slowestClock);
    const auto isOf = [&](const Json& data, const char* name) {
        return data["camera"] == serial && data["property"]["name"] == name;
    };
    EXPECT_TRUE(eventuallyTold("property", [&](const Json& data) {
        return isOf(data, "Framerate") && data["property"]["choices"] != fastest;
    }));

    EXPECT_TRUE(tellsOfChangesFromOutside(serial));
}

TEST_F(CameraServiceTest, AViewerSeesACameraLeaveAndComeBack) {
    const std::string serial = startWith(kMono);
    m_Service->setListening(true);
    m_Service->startStream(serial);
    Event pictures;
    Event ends;
    const std::unique_ptr<LiveFeed::Viewer> viewer =
        m_Service->live(serial)->join([&] { pictures.raise(); },
                                      [&](const std::string& status, const std::string& text) {
                                          EXPECT_FALSE(text.empty());
                                          if (status != "Running") {
                                              ends.raise();
                                          }
                                      });
    viewer->demand();
    ASSERT_TRUE(pictures.wait());
    ASSERT_NE(viewer->take(), nullptr);
    const int endsBefore = ends.count();
    const int picturesBefore = pictures.count();
    SoftwareDevices::unplug(number(serial));
    EXPECT_TRUE(ends.wait(endsBefore + 1));
    EXPECT_TRUE(eventuallyTold("cameras", [](const Json& data) { return data["cameras"].empty(); }));
    expectRefused(404, [&] { m_Service->connect(serial); });

    SoftwareDevices::replug(number(serial));
    ASSERT_TRUE(eventually([&] { return camerasListed() == 1; }));
    EXPECT_EQ(m_Service->list()["cameras"][0]["isStreaming"], false);
    m_Service->connect(serial);
    m_Service->startStream(serial);
    viewer->demand();
    EXPECT_TRUE(pictures.wait(picturesBefore + 1));
}

TEST_F(CameraServiceTest, ACameraRestartedInTheOtherModeIsServedAsWhatItIs) {
    const std::string serial = startWith(kColor);
    m_Service->setListening(true);
    m_Service->writeProperty(serial, "USB3 Vision Mode", "Enabled");
    m_Service->startStream(serial);
    Event ends;
    const auto viewer = m_Service->live(serial)->join([] {},
                                                      [&](const std::string& status, const std::string&) {
                                                          if (status != "Running") {
                                                              ends.raise();
                                                          }
                                                      });
    viewer->demand();
    std::vector<std::string> mode{"Firmware"};
    Camera::getCamera(serial).perform("Reboot", mode);
    EXPECT_TRUE(ends.wait());
    EXPECT_TRUE(eventuallyTold("cameras", [&](const Json& data) {
        return data["cameras"].size() == 1 && data["cameras"][0]["kind"] == "USB3 Vision";
    }));
    expectRefused(409, [&] { m_Service->properties(serial); });
    m_Service->connect(serial);
    expectRefused(409, [&] { m_Service->startStream(serial); });
    EXPECT_TRUE(eventually([&] { return value(serial, "USB3 Vision Mode") == "Enabled"; }));
}

TEST_F(CameraServiceTest, ACameraPulledDuringACaptureEndsIt) {
    const std::string serial = startWith(kMono);
    SoftwareDevices::unplugDuring(number(serial), Operation::sdkCaptureVideoFrames, 1);
    try {
        m_Service->capture(serial, "png");
        ADD_FAILURE() << "captured";
    } catch (const Refusal& refusal) {
        EXPECT_TRUE(refusal.status == 404 || refusal.status == 410) << refusal.status << ' ' << refusal.what();
    }
    EXPECT_TRUE(eventually([&] { return camerasListed() == 0; }));
}

TEST_F(CameraServiceTest, ASlowCameraHoldsUpNoOther) {
    const std::string quick = plugSmall(kColor);
    const std::string slow = startWith(kMono);
    m_Service->connect(quick);
    m_Service->setListening(true);
    SoftwareDevices::delay(number(slow), Operation::sdkSetProperty, std::chrono::hours(1));
    const auto written = std::async(
        std::launch::async, [&] { EXPECT_THROW(m_Service->writeProperty(slow, "Video Exposure", 5), Refusal); });
    EXPECT_GT(m_Service->properties(quick)["properties"].size(), 10U);
    EXPECT_EQ(camerasListed(), 2U);
    EXPECT_FALSE(m_Service->capture(quick, "jpeg").bytes.empty());
    EXPECT_TRUE(tellsOfChangesFromOutside(quick));
    EXPECT_EQ(written.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    SoftwareDevices::unplug(number(slow)); // ends the delay
    written.wait();
}

TEST_F(CameraServiceTest, RecordingsEndWithTheServer) {
    const std::string serial = startWith(kMono);
    unsigned parts = 0;
    expectRefused(503, [&] {
        m_Service->series(serial, 1000, "png", [&](std::string_view /*bytes*/) {
            m_Service->endRecordings();
            ++parts;
            return true;
        });
    });
    EXPECT_LE(parts, 3U); // of one frame
    expectRefused(503, [&] { m_Service->capture(serial, "png"); });
}

TEST_F(CameraServiceTest, ASeriesIsAnArchiveThatEndsWhenItsReaderDoes) {
    const std::string serial = startWith(kColor);
    TestSupport::TemporaryFolder folder;
    constexpr unsigned kFrames = 5;
    std::string archive;
    m_Service->series(serial, kFrames, "png", [&](std::string_view bytes) {
        archive += bytes;
        return true;
    });
    const TestSupport::ChildResult unpacked =
        TestSupport::runChild({"tar", {"-xf", folder.write("series.tar", archive), "-C", folder.path()}, {}});
    EXPECT_EQ(unpacked.exitCode, 0) << unpacked.errors;
    std::set<std::string> pictures;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        if (entry.path().extension() == ".png") {
            EXPECT_EQ(TestSupport::readFile(entry.path()).substr(1, 3), "PNG");
            pictures.insert(entry.path().filename());
        }
    }
    EXPECT_EQ(pictures.size(), kFrames);

    int parts = 0;
    m_Service->series(serial, 1000, "png", [&](std::string_view) { return ++parts < 3; });
    EXPECT_EQ(parts, 3);
    EXPECT_FALSE(SoftwareDevices::isStreaming(number(serial)));
}

TEST_F(CameraServiceTest, TheFirstOfTwoSeriesDoesNotEndTheStreamOfTheSecond) {
    const std::string serial = startWith(kMono);
    const std::size_t pieces = 3; // of a frame
    std::future<std::size_t> second;
    Event begun;
    m_Service->series(serial, 1000, "jpeg", [&](std::string_view) {
        if (!second.valid()) {
            second = std::async(std::launch::async, [&] {
                std::size_t parts = 0;
                m_Service->series(serial, 20, "jpeg", [&](std::string_view) {
                    begun.raise();
                    return ++parts > 0;
                });
                return parts;
            });
        }
        return begun.count() == 0;
    });
    EXPECT_EQ(second.get(), 20 * pieces + 1);
    EXPECT_FALSE(SoftwareDevices::isStreaming(number(serial)));
}

TEST_F(CameraServiceTest, ACaptureLeavesARunningStreamRunning) {
    const std::string serial = startWith(kMono);
    EXPECT_EQ(m_Service->capture(serial, "tiff").mediaType, "image/tiff");
    EXPECT_FALSE(SoftwareDevices::isStreaming(number(serial)));
    m_Service->startStream(serial);
    EXPECT_EQ(m_Service->capture(serial, "png").mediaType, "image/png");
    EXPECT_TRUE(SoftwareDevices::isStreaming(number(serial)));
}

TEST_F(CameraServiceTest, SettingsComeBackAsTheyWere) {
    const std::string serial = startWith(kMono);
    const std::string before = m_Service->settings(serial);
    EXPECT_TRUE(m_Service->compareSettings(serial, before)["differences"].empty());
    m_Service->writeProperty(serial, "Video Exposure", 7.5);
    const Json differences = m_Service->compareSettings(serial, before)["differences"];
    EXPECT_TRUE(std::any_of(differences.begin(), differences.end(),
                            [](const Json& one) { return one["name"] == "Video Exposure"; }));
    const Json report = m_Service->loadSettings(serial, before);
    EXPECT_FALSE(report["written"].empty());
    EXPECT_TRUE(report["failed"].empty()) << report;
    EXPECT_TRUE(m_Service->compareSettings(serial, before)["differences"].empty());
}

} // namespace
