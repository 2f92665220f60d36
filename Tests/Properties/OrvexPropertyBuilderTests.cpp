// SPDX-License-Identifier: Apache-2.0

#include "OrvexPropertyBuilder.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <new>

#include <gtest/gtest.h>

#include "OrvexApi/OrvexApi.h"
#include "PropertyNames.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace CameraInterface::PropertyNames;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::Texts;
using TestSupport::thrownBy;

using OrvexPropertyBuilderTest = TestSupport::OrvexPropertyFixture;

TEST_F(OrvexPropertyBuilderTest, ABareCameraGetsWhatNeedsNoAnswer) {
    connect(SoftwareDevices::bareDevice());
    EXPECT_EQ(m_Camera->getSupportedProperties(),
              (Texts{kApiVersion, kBufferLastFrame, kCameraId, kDriverVersion, kFpgaVersion, kFirmwareVersion,
                     kHardwareRevision, kModelName, kSerialNumber, kShutter, kStreamingMode, kStrobe,
                     kStrobeFromStartExposure, kTimeout, kVendorName}));
    EXPECT_EQ(property(kFirmwareVersion).getValue() + " " + property(kFpgaVersion).getValue(), "0.1 0.0");
}

TEST_F(OrvexPropertyBuilderTest, WhatDependsOnAMissingPropertyIsMissingToo) {
    const Texts all = connect(timing()).getSupportedProperties();
    static const OrvexAdapter::OrvexApi whole = OrvexAdapter::orvexApi();
    static std::uint32_t absent;
    static OrvexAdapter::OrvexApi api = whole;
    api.sdkGetProperty = [](void* handle, std::uint32_t number, float* value, std::int32_t* flags) {
        constexpr std::uint32_t kNowhere = 9999;
        return whole.sdkGetProperty(handle, number == absent ? kNowhere : number, value, flags);
    };
    use(&api);
    const std::vector<std::pair<std::uint32_t, Texts>> cases{
        {20, {kAutoExposure, kExposure, kVideoExposure}},
        {81, {kMaximumWidth, kWidth, kXOffset}},
        {84, {kHeight, kUnitHeight}},
        {106, {kClockSpeed, kSpeed, kStillClockSpeed}},
        {126, {kClockSpeed, kVideoClockSpeed}},
        {176, {kTapConfiguration, kVideoTapConfiguration}},
        {80, {kColorFormat, kEndianness}},
        {109, {kHardwareTapCorrection, kSoftwareTapCorrection}},
    };
    for (const auto& [number, lost] : cases) {
        absent = number;
        const Texts present = connect(timing()).getSupportedProperties();
        Texts missing;
        std::set_difference(all.begin(), all.end(), present.begin(), present.end(), std::back_inserter(missing));
        EXPECT_EQ(missing, lost) << number;
    }
    use(nullptr);
}

TEST_F(OrvexPropertyBuilderTest, AConditionalPropertyHasTheTypeOfItsPartners) {
    connect(color());
    EXPECT_EQ(thrownBy([&] {
                  OrvexAdapter::OrvexPropertyBuilder::makeConditional(kExposure, PROPERTY_TYPE::Integer, *m_Camera, 0);
              }),
              "PropertyTypeMismatch[Shared/src/OrvexPropertyBuilder.cpp]Error when comparing properties {Still "
              "Exposure & Video Exposure }: Property types don't match.");
}

TEST_F(OrvexPropertyBuilderTest, FramerateAndLinkedPropertiesNotifyEachOther) {
    Texts changed;
    connect(timing()).registerPropertyChangeCallback([&](Property& one) { changed.push_back(one.getName()); });
    for (const auto& [name, text, expected] : std::vector<std::tuple<const char*, const char*, Texts>>{
             {kFramerate, "10", {kVideoClockSpeed, kVideoTapConfiguration, kFramerate}},
             {kVideoClockSpeed, "Clock 1", {kFramerate, kVideoClockSpeed}},
             {kVideoTapConfiguration, "Dual", {kFramerate, kVideoTapConfiguration}}}) {
        changed.clear();
        property(name).setValue(text);
        EXPECT_EQ(changed, expected);
    }
    EXPECT_EQ(property(kFramerate).getValue(), "5.000000") << "half the rate at half the clock speed";
    m_Camera->registerPropertyChangeCallback({});
}

TEST_F(OrvexPropertyBuilderTest, TheCallbackGetsTheLimitsThatAnotherPropertyChanged) {
    std::map<std::string, std::string> maxima;
    connect(timing()).registerPropertyChangeCallback([&](Property& one) { maxima[one.getName()] = one.getMaximum(); });
    property(kClockSpeed).setValue("Clock 1"); // which stands for the video clock speed
    EXPECT_EQ(maxima[kFramerate], "10.000000");
    property(kStreamingMode).setValue("Still");
    EXPECT_EQ(maxima[kExposure], "10000.000000");
    EXPECT_EQ(maxima[kSpeed], "Clock 3");
    m_Camera->registerPropertyChangeCallback({});
}

TEST_F(OrvexPropertyBuilderTest, ASecondConnectionKeepsTheObjectsAndAddsWhatWasMissing) {
    DeviceDescription description = color();
    const auto exposure = std::find_if(description.properties.begin(), description.properties.end(),
                                       [](const auto& row) { return row.number == 50; });
    const SoftwareDevices::PropertyRow missing = *exposure;
    description.properties.erase(exposure);
    const Property* clock = &connect(description).getProperty(kStillClockSpeed);
    EXPECT_FALSE(m_Camera->isPropertySupported(kExposure));
    m_Camera->disconnect();
    put(missing);
    SoftwareDevices::PropertyRow speeds = at(106);
    speeds.maximum = 9;
    put(speeds);
    m_Camera->connect();
    EXPECT_EQ(&m_Camera->getProperty(kStillClockSpeed), clock);
    EXPECT_EQ(property(kStillClockSpeed).getValueList().size(), 4U);
    property(kStillClockSpeed).setValue("Clock 2");
    EXPECT_EQ(at(106).value, 2) << "on the reopened handle";
    EXPECT_TRUE(m_Camera->isPropertySupported(kExposure));
}

TEST_F(OrvexPropertyBuilderTest, AConstantTakesOverOnlyValuesThatCouldBeRead) {
    DeviceDescription description = color();
    description.hardwareRevision = 7;
    const Texts names{kCameraId, kHardwareRevision, kDriverVersion, kApiVersion};
    SoftwareDevices::failNext(description.serial, Operation::sdkQueryVersion, 99, 5);
    SoftwareDevices::failNext(description.serial, Operation::sdkGetHardwareRevision, 1, 5);
    connect(description);
    const auto texts = [&] {
        Texts all;
        std::transform(names.begin(), names.end(), std::back_inserter(all),
                       [&](const std::string& name) { return property(name).getValue(); });
        return all;
    };
    const auto reconnect = [&] {
        m_Camera->disconnect();
        m_Camera->connect();
    };
    EXPECT_EQ(texts(), (Texts{"0", "0", "0.0.0.0", "0.0.0.0"}));
    SoftwareDevices::clearFaults();
    property(kCameraId).addLinkedProperty(property(kTimeout));
    reconnect();
    const Texts read = texts();
    EXPECT_EQ(read[0] + " " + read[1], std::to_string(description.cameraId) + " 7");
    EXPECT_EQ(property(kCameraId).getMaximum(), read[0]);
    fail(Operation::sdkQueryVersion, 99);
    fail(Operation::sdkGetHardwareRevision);
    reconnect();
    EXPECT_EQ(texts(), read) << "values that can no longer be read stay";
    EXPECT_EQ(changesDuring(property(kTimeout), [&] { property(kCameraId).update(true); }), 1) << "so do links";
}

TEST_F(OrvexPropertyBuilderTest, AStandardExceptionEndsTheBuilding) {
    OrvexAdapter::OrvexApi api = OrvexAdapter::orvexApi();
    api.sdkGetSamplingDescription = [](void*, ORVEX_SAMPLING_DESCRIPTION*) -> std::uint32_t { throw std::bad_alloc(); };
    use(&api);
    EXPECT_THROW(connect(color()), std::bad_alloc);
    Camera& camera = Camera::getCamera(std::to_string(color().serial));
    EXPECT_TRUE(camera.isPropertySupported(kHeight)) << "properties made before stay";
    EXPECT_FALSE(camera.isPropertySupported(kPixelFormat));
    use(nullptr);
}

} // namespace
