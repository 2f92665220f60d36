// SPDX-License-Identifier: Apache-2.0

#include "OrvexPropertyTable.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "Properties/PropertyMetadata.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using SoftwareDevices::DeviceDescription;
using TestSupport::Texts;
using TestSupport::thrownBy;

/// The default devices.
enum Devices : unsigned { kColor = 1, kMono = 2, kTiming = 4, kEvery = kColor | kMono | kTiming };
constexpr const char* kDeviceNames[] = {"Color", "Mono", "Timing"};

struct Register {
    std::string name;
    std::uint32_t number = 0;
};

/// The continuous properties and their registers.
const char* const kContinuous = R"(
    0 Brightness, 1 Contrast, 2 Hue, 3 Saturation, 4 Sharpness, 5 Gamma, 20 Video Exposure, 21 Iris, 22 Focus,
    40 Video Gain, 41 Red Video Gain, 42 Blue Video Gain, 43 Green Video Gain One, 44 Green Video Gain Two,
    50 Still Exposure, 51 Still Gain, 52 Red Still Gain, 53 Green Still Gain One, 54 Green Still Gain Two,
    55 Blue Still Gain, 56 Still Strobe Delay, 69 Digital White Balance U, 70 Digital White Balance V,
    71 Digital Gain, 72 Red Digital Gain, 73 Green Digital Gain, 74 Blue Digital Gain, 85 Absolute Focus,
    86 Black Level, 96 Still Exposure Knee One, 97 Still Exposure Knee Two, 98 Still Exposure Knee Three,
    100 Still Exposure Delay, 103 Auto Exposure Target, 107 Auto Exposure Maximum, 108 Camera Temperature,
    110 Trigger Pin, 111 Custom Digital Gain, 113 Burst Exposure Interval, 115 Memory, 116 Still Strobe Duration,
    119 Synchronization Mode, 120 Burst Capture Count, 123 Auto Iris Maximum, 165 Threshold Low, 166 Threshold High,
    167 Sensor Temperature, 172 Strobe Pin, 174 Focal Length, 175 Iris Latency, 186 Auto Gain Minimum)";

/// "number name", separated by commas.
std::vector<Register> parsed(const char* text) {
    std::istringstream rows(text);
    std::vector<Register> registers;
    Register row;
    while (rows >> row.number && std::getline(rows >> std::ws, row.name, ',')) {
        registers.push_back(row);
    }
    return registers;
}

/// A register with named numbers.
struct NamedNumbers {
    Register location;
    const char* names;
};
const char* const kClocks = "0 Clock 0, 1 Clock 1, 2 Clock 2, 3 Clock 3";
const char* const kTaps = "0 Single, 1 Dual, 4 Quad";
const NamedNumbers kNamed[] = {
    {{"Correction Matrix", 65},
     "0 None, 1 Fluorescent, 2 Daylight, 3 Incandescent, 4 Xenon flash, 5 Halogen, 6 LED, 14 Identity, 15 Custom"},
    {{"Demosaic Method", 64}, "0 None, 8 Simple, 1 Fast, 2 High Quality, 3 Higher Quality"},
    {{"Flipping", 66}, "0 None, 1 X, 2 Y, 3 XY"},
    {{"Trigger Mode", 173}, "0 Normal, 1 Bulb"},
    {{"Still Clock Speed", 106}, kClocks},
    {{"Video Clock Speed", 126}, kClocks},
    {{"Still Tap Configuration", 177}, kTaps},
    {{"Video Tap Configuration", 176}, kTaps},
};

/// A property that reads the same for minimum, maximum, default and value, on the three devices; null if a device lacks
/// it.
struct Fixed {
    const char* name;
    std::array<const char*, 3> texts;
    bool isListed;
};
const Fixed kFixed[] = {
    {"Color Format", {"RGGB", "MONO", "GRBG"}, true},
    {"Endianness", {"Little Endian", "Big Endian", "Little Endian"}, true},
    {"Maximum Width", {"2592.000000", "1280.000000", "2048.000000"}, true},
    {"Maximum Height", {"1944.000000", "1024.000000", "1536.000000"}, true},
    {"Unit Width", {"8.000000", "4.000000", "8.000000"}, true},
    {"Unit Height", {"2.000000", "1.000000", "4.000000"}, true},
    {"Serial Number", {"41500101", "41500102", "41500103"}, false},
    {"Camera ID", {"1555", "394", "1584"}, false},
    {"Model Name", {"Model 613", "Model 08A", "Model 630"}, false},
    {"Vendor Name", {"Meridane", "Meridane", "Meridane"}, false},
    {"Hardware Revision", {"3", "1", "2"}, false},
    {"Driver Version", {"2.4.0.3", "2.4.0.3", "2.4.0.3"}, false},
    {"API Version", {"2.4.1.7", "2.4.1.7", "2.4.1.7"}, false},
    {"Firmware Version", {"1.5", "0.66", "2.3"}, true},
    {"FPGA Version", {"2.23", "1.18", "3.1"}, true},
    {"FPGA2 Version", {"1.20", nullptr, "2.9"}, true},
    {"AFE Timing Version", {nullptr, nullptr, "26.15"}, true},
};

/// A property whose range or list is not that of a register, with its initial texts on the devices.
struct Choice {
    std::string name;
    unsigned devices;
    std::string texts; ///< minimum, maximum, default, value
    const char* list;
};
const Choice kChoices[] = {
    {"Framerate", kColor, "3.750000, 15.000000, 15.000000, 15.000000", "3.750000, 7.500000, 15.000000"},
    {"Framerate", kMono, "7.500000, 60.000000, 60.000000, 60.000000", "7.500000, 15.000000, 30.000000, 60.000000"},
    {"Framerate", kTiming, "5.000000, 20.000000, 20.000000, 20.000000", "5.000000, 10.000000, 20.000000"},
    {"Power Mode", kColor, "USB, Y-Cable, USB, USB", "USB, Y-Cable"},
    {"Power Mode", kTiming, "USB, Y-Cable, USB, Y-Cable", "USB, Y-Cable"},
    {"Hardware Interface", kColor | kTiming, "USB 3.0, USB 3.0, USB 3.0, USB 3.0",
     "GigE Vision, USB 1.0, USB 2.0, USB 3.0"},
    {"Timeout", kEvery, "-1.00, 60000.00, -1.00, -1.00", ""},
    {"Streaming Mode", kEvery, "Still, Video, Video, Video", "Still, Video"},
    {"Shutter", kEvery, "Global, Rolling, Global, Global", "Global, Rolling"},
    {"Pixel Format", kColor, "8, 48, 8, 8", "16, 24, 32, 48, 8"},
    {"Pixel Format", kMono | kTiming, "8, 16, 8, 8", "16, 8"},
    {"Sampling Description", kColor, "None (1x1), Subsampling (4x4), None (1x1), None (1x1)",
     "Binning (2x2), Binning (4x4), None (1x1), Subsampling (2x2), Subsampling (3x3), Subsampling (4x4)"},
    {"Sampling Description", kMono, "None (1x1), Binning (4x4), None (1x1), None (1x1)",
     "Binning (2x2), Binning (4x4), None (1x1)"},
    {"Sampling Description", kTiming, "None (1x1), Subsampling (4x4), None (1x1), None (1x1)",
     "Binning (2x2), Binning (2x3), Binning (3x2), Binning (3x3), None (1x1), Subsampling (2x2), Subsampling (2x4), "
     "Subsampling (4x2), Subsampling (4x4)"},
};

/// Properties that are switched on and off, and initially off.
struct Switches {
    unsigned devices;
    Texts names;
};
const Switches kSwitches[] = {
    {kEvery, {"Auto Exposure", "Buffer Last Frame", "Strobe From Start Exposure", "Strobe", "Hardware Trigger"}},
    {kColor | kTiming, {"USB3 Vision Mode"}},
    {kTiming, {"Hardware Tap Correction", "Software Tap Correction", "Fan"}},
};

/// A property that stands for one of two properties with a register.
struct Conditional {
    const char* name;
    Register video;
    Register still;
};
const Register kStillClock{"Still Clock Speed", 106};
const Conditional kConditionals[] = {
    {"Exposure", {"Video Exposure", 20}, {"Still Exposure", 50}},
    {"Gain", {"Video Gain", 40}, {"Still Gain", 51}},
    {"Red Gain", {"Red Video Gain", 41}, {"Red Still Gain", 52}},
    {"Blue Gain", {"Blue Video Gain", 42}, {"Blue Still Gain", 55}},
    {"Green Gain One", {"Green Video Gain One", 43}, {"Green Still Gain One", 53}},
    {"Green Gain Two", {"Green Video Gain Two", 44}, {"Green Still Gain Two", 54}},
    {"Clock Speed", {"Video Clock Speed", 126}, kStillClock},
    {"Tap Configuration", {"Video Tap Configuration", 176}, {"Still Tap Configuration", 177}},
};

std::string text(float value) {
    return std::to_string(value);
}

std::string joined(const Texts& texts) {
    std::string line;
    for (const std::string& one : texts) {
        line += (line.empty() ? "" : ", ") + one;
    }
    return line;
}

/// Every default device in turn.
class OrvexDevicePropertyTest : public TestSupport::OrvexPropertyFixture, public ::testing::WithParamInterface<int> {
protected:
    OrvexDevicePropertyTest() { connect(SoftwareDevices::defaultDevices()[index()]); }

    static std::size_t index() { return static_cast<std::size_t>(GetParam()); }
    bool has(const Register& location) const { return SoftwareDevices::hasProperty(m_Serial, location.number); }
};

INSTANTIATE_TEST_SUITE_P(Default, OrvexDevicePropertyTest, ::testing::Range(0, 3),
                         [](const auto& device) { return std::string(kDeviceNames[device.param]); });

TEST_P(OrvexDevicePropertyTest, PropertiesAreExactlyWhatTheDeviceHasAndSayWhatItSays) {
    std::set<std::string> expected;
    for (const Fixed& row : kFixed) {
        if (const char* const fixed = row.texts[index()]) {
            expected.insert(row.name);
            Property& tested = property(row.name);
            EXPECT_EQ(changesDuring(tested, [&] { tested.setValue("1"); }), 0) << row.name;
            EXPECT_EQ(textsOf(tested), Texts(4, fixed)) << row.name;
            EXPECT_EQ(tested.getValueList(), row.isListed ? Texts{fixed} : Texts{}) << row.name;
            EXPECT_FALSE(tested.isAvailableForWriting()) << row.name;
        }
    }
    const DeviceDescription device = SoftwareDevices::defaultDevices()[index()];
    const std::string width = ", " + std::to_string(device.sensorWidth);
    const std::string height = ", " + std::to_string(device.sensorHeight);
    std::vector<Choice> choices(std::begin(kChoices), std::end(kChoices));
    choices.push_back({"Width", kEvery, std::to_string(device.unitWidth) + width + width + width, ""});
    choices.push_back({"Height", kEvery, std::to_string(device.unitHeight) + height + height + height, ""});
    choices.push_back({"X Offset", kEvery, "0" + width + ", 0, 0", ""});
    choices.push_back({"Y Offset", kEvery, "0" + height + ", 0, 0", ""});
    for (const auto& [name, unit] : std::map<std::string, unsigned>{{"Width", device.unitWidth},
                                                                    {"X Offset", device.unitWidth},
                                                                    {"Height", device.unitHeight},
                                                                    {"Y Offset", device.unitHeight}}) {
        EXPECT_EQ(property(name).getIncrement(), std::to_string(unit)) << name;
    }
    for (const Switches& row : kSwitches) {
        for (const std::string& name : row.names) {
            choices.push_back({name, row.devices, "Disabled, Enabled, Disabled, Disabled", "Disabled, Enabled"});
        }
    }
    for (const Choice& row : choices) {
        if ((row.devices & 1U << index()) != 0) {
            expected.insert(row.name);
            EXPECT_EQ(joined(textsOf(property(row.name))), row.texts) << row.name;
            EXPECT_EQ(joined(property(row.name).getValueList()), row.list) << row.name;
        }
    }
    const auto expectIf = [&](bool there, const std::string& name) {
        if (there) {
            expected.insert(name);
        }
    };
    for (const Register& row : parsed(kContinuous)) {
        expectIf(has(row), row.name);
    }
    for (const NamedNumbers& row : kNamed) {
        expectIf(has(row.location), row.location.name);
    }
    for (const Conditional& row : kConditionals) {
        expectIf(has(row.video) && has(row.still), row.name);
    }
    expectIf(has(kStillClock), "Speed");
    EXPECT_EQ(m_Camera->getSupportedProperties(), Texts(expected.begin(), expected.end()));
}

TEST_P(OrvexDevicePropertyTest, ContinuousPropertiesReachTheirRegisters) {
    for (const Register& row : parsed(kContinuous)) {
        if (!has(row)) {
            continue;
        }
        SCOPED_TRACE(row.name);
        SoftwareDevices::PropertyRow held = at(row.number);
        held.value = held.minimum;
        put(held);
        Property& tested = property(row.name);
        EXPECT_EQ(textsOf(tested),
                  (Texts{text(held.minimum), text(held.maximum), text(held.defaultValue), text(held.value)}));
        EXPECT_EQ(tested.getValueList(), Texts{});
        const bool readOnly = held.rangeFlags != 0;
        EXPECT_EQ(tested.isReadOnly(), readOnly);
        EXPECT_EQ(tested.isAvailableForWriting(), !readOnly);
        const float middle = (held.minimum + held.maximum) / 2;
        EXPECT_EQ(changesDuring(tested, [&] { tested.setValue(text(middle)); }), readOnly ? 0 : 1);
        EXPECT_FLOAT_EQ(at(row.number).value, readOnly ? held.value : middle);
    }
}

TEST_P(OrvexDevicePropertyTest, NamedNumbersReachTheirRegisters) {
    for (const NamedNumbers& row : kNamed) {
        if (!has(row.location)) {
            continue;
        }
        SCOPED_TRACE(row.location.name);
        const std::uint32_t number = row.location.number;
        Property& tested = property(row.location.name);
        const bool isTap = row.names == kTaps;
        const SoftwareDevices::PropertyRow range = at(number);
        std::map<float, std::string> names; // of the numbers in the range
        Texts list;
        for (const auto& [choice, stored] : parsed(row.names)) {
            if (stored >= range.minimum && stored <= range.maximum) {
                names[static_cast<float>(stored)] = choice;
                list.insert(list.begin(), choice);
            }
        }
        if (!isTap) { // the most taps come first
            std::sort(list.begin(), list.end());
        }
        EXPECT_EQ(tested.getValueList(), list);
        // A number without a name has that of the next lower one: a trigger mode of 7 is "Bulb".
        const auto nameOf = [&](float stored) { return std::prev(names.upper_bound(stored))->second; };
        EXPECT_EQ(textsOf(tested), (Texts{nameOf(range.minimum), nameOf(range.maximum), nameOf(range.defaultValue),
                                          nameOf(range.value)}));
        for (const auto& [stored, choice] : names) {
            const int changes = at(number).value == stored ? 0 : 1;
            EXPECT_EQ(changesDuring(tested, [&, text = choice] { tested.setValue(text); }), changes) << choice;
            EXPECT_EQ(at(number).value, stored) << choice;
            EXPECT_EQ(tested.getValue(), choice);
        }
        tested.resetToDefault();
        EXPECT_EQ(at(number).value, at(number).defaultValue);
        EXPECT_EQ(thrownBy([&] { tested.setValue("x"); }),
                  "PropertyValueConversion[Shared/include/PropertyValueEnumerations.h]Failed to convert string to "
                  "value. Provided string not found.");
        // The taps can be written while nothing streams; the other properties query the camera.
        SoftwareDevices::setWritable(m_Serial, number, false);
        EXPECT_EQ(tested.isAvailableForWriting(), isTap);
        if (!isTap) {
            tested.setValue(tested.getMaximum());
            EXPECT_EQ(at(number).value, at(number).defaultValue);
        }
    }
}

TEST_P(OrvexDevicePropertyTest, ConditionalPropertiesFollowTheStreamingModeAtOnce) {
    for (const char* mode : {"Video", "Still", "Video"}) {
        property("Streaming Mode").setValue(mode);
        const bool isVideo = mode == std::string("Video");
        for (const Conditional& row : kConditionals) {
            if (!has(row.video) || !has(row.still)) {
                continue;
            }
            SCOPED_TRACE(row.name + std::string(" in mode ") + mode);
            SoftwareDevices::PropertyRow video = at(row.video.number);
            SoftwareDevices::PropertyRow still = at(row.still.number);
            video.value = video.minimum;
            still.value = still.maximum;
            put(video);
            put(still);
            Property& partner = property(isVideo ? row.video.name : row.still.name);
            EXPECT_EQ(textsOf(property(row.name)), textsOf(partner));
            EXPECT_EQ(property(row.name).getValueList(), partner.getValueList());
            property(row.name).setValue(isVideo ? partner.getMaximum() : partner.getMinimum());
            EXPECT_EQ(at(row.video.number).value, isVideo ? video.maximum : video.minimum);
            EXPECT_EQ(at(row.still.number).value, isVideo ? still.maximum : still.minimum);
        }
        if (has(kStillClock)) {
            EXPECT_EQ(property("Speed").getValue(), property(isVideo ? "Framerate" : "Still Clock Speed").getValue());
            EXPECT_EQ(property("Speed").getUnit(), isVideo ? "fps" : "");
        }
    }
}

using DefaultDevicesTest = TestSupport::OrvexPropertyFixture;

TEST_F(DefaultDevicesTest, HaveEveryPropertyBetweenThem) {
    std::map<PROPERTY_TYPE, std::set<std::string>> found;
    for (const DeviceDescription& description : SoftwareDevices::defaultDevices()) {
        for (const std::string& name : connect(description).getSupportedProperties()) {
            found[property(name).getType()].insert(name);
        }
    }
    EXPECT_EQ(found[PROPERTY_TYPE::Integer].size(), 17U);
    EXPECT_EQ(found[PROPERTY_TYPE::Float].size(), 52U);
    EXPECT_EQ(found[PROPERTY_TYPE::String].size(), 30U);
    EXPECT_EQ(found[PROPERTY_TYPE::Boolean].size(), 7U);
    for (const auto& row : OrvexAdapter::getPropertyTable()) {
        EXPECT_EQ(getPropertyMetadata(row.m_Name).name, row.m_Name);
    }
}

} // namespace
