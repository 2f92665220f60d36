// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexInformationProperties.h"

#include <gtest/gtest.h>

#include "PropertyNames.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace CameraInterface::PropertyNames;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::propertyFailure;
using TestSupport::thrownBy;

constexpr std::uint32_t kAfeMetadata = 0x190F00;

class OrvexInformationTest : public TestSupport::OrvexPropertyFixture {
protected:
    /// Whether a camera of this model and these versions has a property.
    bool has(const std::string& name, std::uint32_t model, std::uint32_t firmware, std::uint32_t fpga = 0x100) {
        DeviceDescription description = color();
        description.cameraId = model;
        description.firmware = firmware;
        description.fpga = fpga;
        return connect(description).isPropertySupported(name);
    }
};

TEST_F(OrvexInformationTest, ModelAndVersionsSayWhatThereIs) {
    EXPECT_FALSE(has(kFpga2Version, 1584, 0xFF));
    EXPECT_TRUE(has(kFpga2Version, 1584, 0x100));
    EXPECT_FALSE(has(kFpga2Version, 1584, 0x100, 0));
    EXPECT_FALSE(has(kColorFormat, 1584, 0x100, 0x10000)) << "a version that reads 0.0";
    EXPECT_TRUE(has(kAfeTimingVersion, 1585, 0));
    EXPECT_FALSE(has(kAfeTimingVersion, 1586, 0));
    for (const std::uint32_t model : {1538U, 1540U, 1584U, 1585U, 1603U, 1605U, 1609U, 1612U, 1809U}) {
        EXPECT_TRUE(has(kUsb3VisionMode, model, 0x0205)) << model;
    }
    for (const std::uint32_t model : {1555U, 1558U, 1561U, 1564U}) {
        EXPECT_TRUE(has(kUsb3VisionMode, model, 0x0105)) << model;
        EXPECT_FALSE(has(kUsb3VisionMode, model, 0x0205)) << model;
    }
    EXPECT_FALSE(has(kUsb3VisionMode, 1538, 0x00FF));
    EXPECT_FALSE(has(kUsb3VisionMode, 1539, 0x0205));
    fail(Operation::sdkGetFormat, 99);
    EXPECT_FALSE(has(kWidth, 1584, 0x100));
}

TEST_F(OrvexInformationTest, AfeTimingVersionIsReadOutOfTheFileName) {
    connect(timing());
    for (const std::string& row :
         TestSupport::Texts{"timing_1A.0F.bin=26.15", "t1.2.3.bin=2.3", "123.4.bin=35.4", "t1.234.bin=0.0",
                            "t.23.bin=0.0", "23.bin=0.0", "t1..bin=0.0", "timing.bin=0.0", "1.2=0.0", "\3771.2.bin=0.0",
                            std::string(249, 'x') + "1.2.bin=1.2"}) {
        const std::size_t end = row.find('=');
        std::vector<std::uint8_t> stored(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(end));
        stored.push_back(0);
        stored.resize(256, 'z');
        SoftwareDevices::writeFlash(m_Serial, kAfeMetadata, stored);
        EXPECT_EQ(property(kAfeTimingVersion).getValue(), row.substr(end + 1)) << row;
    }
    fail(Operation::sdkReadFlash);
    EXPECT_EQ(property(kAfeTimingVersion).getValue(), "0.0") << "the camera is alive";
    fail(Operation::sdkReadFlash, 99);
    fail(Operation::sdkQueryVersion, 99);
    for (const auto& [name, className] :
         std::map<std::string, std::string>{{kAfeTimingVersion, "OrvexAfeTimingVersion"},
                                            {kFirmwareVersion, "OrvexFirmwareVersion"},
                                            {kFpgaVersion, "OrvexFpgaVersion"},
                                            {kFpga2Version, "OrvexFpga2Version"},
                                            {kUsb3VisionMode, "OrvexUsb3VisionMode"}}) {
        EXPECT_EQ(thrownBy([&, n = name] { property(n).getValue(); }),
                  propertyFailure("PropertyReadFailure", className, name, "Property value could not be read."));
    }
}

TEST_F(OrvexInformationTest, PowerModeIsKeptByTheCamera) {
    DeviceDescription description = color();
    description.powerMode = 7;
    connect(description);
    EXPECT_EQ(property(kPowerMode).getValue(), "Y-Cable") << "any number except 0";
    property(kPowerMode).resetToDefault();
    EXPECT_EQ(SoftwareDevices::powerMode(m_Serial), 0U);
    property(kPowerMode).setValue("Y-Cable");
    EXPECT_EQ(SoftwareDevices::powerMode(m_Serial), 1U);
    fail(Operation::sdkGetPowerMode);
    fail(Operation::sdkSetPowerMode);
    const std::string unknown = propertyFailure("PropertyUnknown", "OrvexPowerMode", kPowerMode, "Unknown property.");
    EXPECT_EQ(thrownBy([&] { property(kPowerMode).getValue(); }), unknown);
    EXPECT_EQ(thrownBy([&] { property(kPowerMode).setValue("USB"); }), unknown);
}

TEST_F(OrvexInformationTest, Usb3VisionModeThatCannotBeWrittenSaysSo) {
    connect(color());
    fail(Operation::sdkUpdateFlash);
    EXPECT_EQ(thrownBy([&] { property(kUsb3VisionMode).setValue("Enabled"); }),
              propertyFailure("PropertyWriteFailure", "OrvexUsb3VisionMode", kUsb3VisionMode,
                              "Property value could not be written."));
}

} // namespace
