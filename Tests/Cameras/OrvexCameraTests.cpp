// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/OrvexCamera.h"

#include <gtest/gtest.h>

#include "OrvexApi/OrvexApi.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace OrvexAdapter;
using Imaging::IMAGE_FORMAT;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::expectStandard;

class OrvexCameraTest : public TestSupport::SoftwareDeviceFixture {
protected:
    static DeviceDescription color() { return SoftwareDevices::defaultDevices()[0]; }
    static DeviceDescription mono() { return SoftwareDevices::defaultDevices()[1]; }

    static DeviceDescription withSerial(std::uint32_t serial, std::uint32_t cameraId = 0x1CE) {
        DeviceDescription description = mono();
        description.serial = serial;
        description.cameraId = cameraId;
        return description;
    }
};

TEST(OrvexApi, AMissingLibraryAnswersFailureEverywhere) {
    const OrvexApi api = OrvexApi::bindTo("/nonexistent");
    useOrvexApi(&api);
    EXPECT_TRUE(OrvexCamera::getListOfCameras().empty());
    EXPECT_EQ(api.sdkAddStreamingCallback(nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(api.sdkCameraOpen(1), nullptr);
    EXPECT_EQ(api.sdkQueryVersion(nullptr, nullptr), 0U);
    useOrvexApi(nullptr);
}

TEST_F(OrvexCameraTest, EveryDeviceIsListedUnderItsUnsignedSerialNumber) {
    EXPECT_TRUE(Camera::getCamerasList().empty());
    SoftwareDevices::plug(withSerial(4294967295U));
    SoftwareDevices::plug(withSerial(1, 0xFFFF));
    EXPECT_EQ(Camera::searchForNewCameras(), 2U);
    EXPECT_EQ(Camera::getCamerasList(), (std::map<std::string, std::string>{{"1", ""}, {"4294967295", "Model 1CE"}}));
    EXPECT_STREQ(getKindName(Camera::getCamera("1").getKind()), "software device");
    // An enumeration fails if the bus fills fewer records than it announces; an impossible count is not enumerated.
    Camera::unitialisedWorkpace();
    SoftwareDevices::failNext(SoftwareDevices::kNoDevice, Operation::sdkEnumCameras, 1, 1);
    EXPECT_EQ(Camera::searchForNewCameras(), 0U);
    OrvexApi api = orvexApi();
    api.sdkNumCameras = [] { return 1000000; };
    api.sdkEnumCameras = [](ORVEX_VERSION*, std::uint32_t) -> std::int32_t {
        ADD_FAILURE();
        return 0;
    };
    useOrvexApi(&api);
    EXPECT_EQ(Camera::searchForNewCameras(), 0U);
    useOrvexApi(nullptr);
}

TEST_F(OrvexCameraTest, MosaicsOfTheCamerasOwnLayoutAreConvertedByTheCamera) {
    struct Case {
        const char* name;
        unsigned depth;
        IMAGE_FORMAT from;
        IMAGE_FORMAT to;
        const char* operation; ///< empty: the camera does not convert
    };
    Camera& camera = open(color());
    const std::vector<Case> cases{
        {"mono 8", 8, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::MONO, "sdkConvertToMono8"},
        {"mono 16", 12, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::MONO, "sdkConvertToMono16"},
        {"BGR 8", 8, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::BGR, "sdkConvertToBgr24"},
        {"BGR 16", 16, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::BGR, "sdkConvertToBgr48"},
        {"BGRA 8", 8, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::BGRA, "sdkConvertToBgra32"},
        {"BGRA 16", 16, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::BGRA, ""},
        {"RGB", 8, IMAGE_FORMAT::BAYER_RGGB, IMAGE_FORMAT::RGB, ""},
        {"another layout", 8, IMAGE_FORMAT::BAYER_GRBG, IMAGE_FORMAT::BGR, ""},
        {"no mosaic", 8, IMAGE_FORMAT::RGB, IMAGE_FORMAT::BGR, ""},
    };
    for (const Case& row : cases) {
        const auto image = Imaging::createImage(6, 5, {}, row.depth, true, row.from);
        SoftwareDevices::startLog();
        const auto result = camera.convertImage(image, row.to);
        std::string performed;
        for (const SoftwareDevices::CallRecord& call : SoftwareDevices::takeLog()) {
            performed += call.name.rfind("sdkConvert", 0) == 0 ? call.name : "";
        }
        EXPECT_EQ(performed, row.operation) << row.name;
        EXPECT_EQ(result->getFormat(), row.to) << row.name;
    }
    const auto mosaic = Imaging::createImage(6, 5, {}, 8, true, IMAGE_FORMAT::BAYER_RGGB);
    SoftwareDevices::failNext(color().serial, Operation::sdkConvertToBgr24, 1, 1);
    expectStandard<std::runtime_error>([&] { camera.convertImage(mosaic, IMAGE_FORMAT::BGR); },
                                       "Failed to convert image.");
}

} // namespace
