// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexStandardProperty.h"

#include <limits>

#include <gtest/gtest.h>

#include "OrvexApi/OrvexApi.h"
#include "PropertyNames.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace CameraInterface::PropertyNames;
using namespace OrvexAdapter;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::propertyFailure;
using TestSupport::Texts;
using TestSupport::thrownBy;

constexpr std::uint32_t kExposureNumber = 20;
const char* const kNotRead = "Property value could not be read.";
const char* const kNotWritten = "Property value could not be written.";

/// Special cases of properties, on devices that are made for them.
class OrvexPropertyTest : public TestSupport::OrvexPropertyFixture {
protected:
    Texts listOf(const std::string& name) { return property(name).getValueList(); }
};

/// The continuous property of one register.
class OrvexStandardPropertyTest : public OrvexPropertyTest {
protected:
    OrvexStandardPropertyTest() {
        connect(color());
        put({kExposureNumber, 12.5F, 0, 100, 10});
    }

    OrvexStandardProperty make() { return {"E", PROPERTY_TYPE::Float, *m_Camera, kExposureNumber}; }
    static std::string failureOf(const std::string& word, const std::string& sentence) {
        return propertyFailure(word, "OrvexStandardProperty", "E", sentence);
    }
};

TEST_F(OrvexStandardPropertyTest, IsThereUnlessTheCameraSaysThatItIsNot) {
    for (const std::uint32_t error : {20U, 21U, 22U, 83U}) {
        fail(Operation::sdkGetProperty, 1, error);
        EXPECT_EQ(thrownBy([&] { make(); }), failureOf("PropertyUnsupported", "Property is not supported.")) << error;
    }
    fail(Operation::sdkGetProperty, 2);
    OrvexStandardProperty property = make();
    EXPECT_EQ(thrownBy([&] { property.getValue(); }), failureOf("PropertyReadFailure", kNotRead));
    fail(Operation::sdkPropertyRange, 2);
    EXPECT_EQ(thrownBy([&] { property.getMaximum(); }),
              failureOf("PropertyRangeReadFailure", "Property range information could not be read."));
    EXPECT_EQ(thrownBy([&] { property.isReadOnly(); }), failureOf("PropertyErrorUnknown", "An unknown error occured."));
}

TEST_F(OrvexStandardPropertyTest, AWriteMakesNineCalls) {
    OrvexStandardProperty property = make();
    SoftwareDevices::startLog();
    property.setValue("99.5");
    Texts calls;
    for (const SoftwareDevices::CallRecord& call : SoftwareDevices::takeLog()) {
        calls.push_back(call.name.substr(3));
        EXPECT_TRUE(call.serial == m_Serial && call.succeeded);
    }
    EXPECT_EQ(calls, (Texts{"PropertyRange", "PropertyRange", "GetProperty", "SetProperty", "PropertyRange",
                            "PropertyRange", "GetProperty", "GetProperty", "SetProperty"}));
}

TEST_F(OrvexStandardPropertyTest, ReadsNumbersFromTextsAndReportsChanges) {
    struct Case {
        const char* text;
        float stored;
        int changes;
    };
    for (const Case& row : {Case{"150", 100, 1}, Case{"-1e39", 0, 1}, Case{" 3.5 ms", 3.5F, 1},
                            Case{"12.50000005", 12.5F, 0}, Case{"12.501", 12.501F, 1}, Case{"0x10", 16, 1}}) {
        put({kExposureNumber, 12.5F, 0, 100, 10, 0x1234});
        OrvexStandardProperty property = make();
        EXPECT_EQ(changesDuring(property, [&] { property.setValue(row.text); }), row.changes) << row.text;
        EXPECT_EQ(at(kExposureNumber).value, row.stored) << row.text;
        EXPECT_EQ(at(kExposureNumber).flags, 0x1234);
    }
    OrvexStandardProperty property = make();
    property.resetToDefault();
    EXPECT_EQ(at(kExposureNumber).value, 10);
    put({kExposureNumber, 0, 0, 0.1000004F, 0});
    property.setValue("0.1000003");
    EXPECT_EQ(at(kExposureNumber).value, 0.1F) << "the limit is that of its text, 0.100000";
    EXPECT_EQ(thrownBy([&] { property.setValue("x"); }), "invalid stod argument");
    EXPECT_EQ(thrownBy([&] { property.setValue("1e999"); }), "stod argument out of range");
}

TEST_F(OrvexStandardPropertyTest, IgnoresOrRefusesWhatTheCameraWillNotTake) {
    OrvexStandardProperty property = make();
    put({kExposureNumber, 12.5F, 0, 100, 10, 0, 0x00010000});
    property.setValue("x");
    EXPECT_TRUE(property.isReadOnly());
    put({kExposureNumber, 12.5F, 0, 100, 10, 0, ~0x00010000, false});
    EXPECT_FALSE(property.isReadOnly());
    put({kExposureNumber, 12.5F, 0, 100, 10, 0, 0, false});
    property.setValue("x");
    EXPECT_FALSE(property.isAvailableForWriting());
    SoftwareDevices::setWritable(m_Serial, kExposureNumber, true);
    fail(Operation::sdkSetProperty);
    EXPECT_EQ(thrownBy([&] { property.setValue("1"); }),
              failureOf("PropertyErrorUnknown", "An unknown error occured."));
    SoftwareDevices::failCall(9, 5); // the write that follows the probe
    EXPECT_EQ(thrownBy([&] { property.setValue("1"); }), failureOf("PropertyWriteFailure", kNotWritten));
    EXPECT_EQ(at(kExposureNumber).value, 12.5F);
}

TEST_F(OrvexPropertyTest, SwitchesChangeTheirBitsAndNothingElse) {
    connect(timing());
    struct Case {
        const char* name;
        const char* text;
        std::uint32_t number;
        float value;
        std::uint32_t flags;
        int changes;
    };
    const std::uint32_t other = 0x1; // a flag to be left alone
    put({20, 12.5F, 0, 100, 10, 0x1});
    put({109, 0.5F, 0, 1, 0, 0x1});
    put({118, 0, 0, 1, 0, 0x1});
    for (const Case& row : {
             Case{kAutoExposure, "Enabled", 20, 12.5F, other | 0x40000000, 1},
             Case{kAutoExposure, "Disabled", 20, 12.5F, other, 1},
             Case{kSoftwareTapCorrection, "Enabled", 109, 0.5F, other | 0x08000000, 1},
             Case{kHardwareTapCorrection, "Enabled", 109, 0.5F, other | 0x28000000, 1},
             Case{kSoftwareTapCorrection, "Disabled", 109, 0.5F, other | 0x20000000, 1},
             Case{kFan, "Enabled", 118, 1, other | 0x80000000, 2},
             Case{kFan, "Enabled", 118, 1, other | 0x80000000, 1},
             Case{kFan, "Disabled", 118, 0, other, 2},
         }) {
        Property& tested = property(row.name);
        EXPECT_EQ(changesDuring(tested, [&] { tested.setValue(row.text); }), row.changes) << row.name;
        EXPECT_EQ(at(row.number).value, row.value) << row.name;
        EXPECT_EQ(static_cast<std::uint32_t>(at(row.number).flags), row.flags) << row.name;
        EXPECT_EQ(tested.getValue(), row.text) << row.name;
    }
    for (const auto& [name, className] :
         std::map<std::string, std::string>{{kAutoExposure, "OrvexAutoExposure"},
                                            {kSoftwareTapCorrection, "OrvexTapCorrectionSW"},
                                            {kHardwareTapCorrection, "OrvexTapCorrectionHW"},
                                            {kFan, "OrvexFan"}}) {
        EXPECT_EQ(thrownBy([&, n = name] { property(n).setValue("On"); }),
                  "ArgumentUnhandled[Shared/src/Properties/" + className +
                      ".cpp]The argument \"value\" is invalid. Provided argument value cannot be handled.");
    }
    // A flag is written without a query; the fan queries first.
    SoftwareDevices::setWritable(m_Serial, 20, false);
    SoftwareDevices::setWritable(m_Serial, 118, false);
    EXPECT_EQ(thrownBy([&] { property(kAutoExposure).setValue("Enabled"); }),
              propertyFailure("PropertyWriteFailure", "OrvexStandardProperty", kAutoExposure, kNotWritten));
    property(kFan).setValue("On");
    EXPECT_EQ(at(118).value, 0);
}

TEST_F(OrvexPropertyTest, NumbersAreTruncatedToWhatTheTextsStandFor) {
    connect(timing());
    put({106, 1.9F, 0, 11, 0});
    put({173, 0x101, 0x100, 0x107, 0x200});
    EXPECT_EQ(property(kStillClockSpeed).getValue(), "Clock 1");
    EXPECT_EQ(textsOf(property(kTriggerMode)), (Texts{"Normal", "Bulb", "Normal", "Bulb"})) << "the low byte";
    DeviceDescription description = timing();
    description.properties.push_back({106, 0, 0, 11, 0});
    description.properties.push_back({176, 0, 0, 2, 0});
    connect(description);
    EXPECT_EQ(listOf(kStillClockSpeed)[2], "Clock 10") << "in the order of texts";
    EXPECT_EQ(listOf(kVideoTapConfiguration), Texts{"Single"});
}

TEST_F(OrvexPropertyTest, RangesAndCountsThatCannotBeAreNotBelieved) {
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
    DeviceDescription description = color();
    description.properties.push_back({106, 0, 0, 255, 0});
    EXPECT_EQ(connect(description).getProperty(kStillClockSpeed).getValueList().size(), 256U);
    for (const auto& [minimum, maximum] : std::vector<std::pair<float, float>>{
             {0, 256}, {0, 1e8F}, {-1e9F, 1e9F}, {0, kInfinite}, {kNothing, 3}, {0, kNothing}, {1e30F, 1e30F}}) {
        description.properties.back() = {106, 0, minimum, maximum, 0};
        EXPECT_FALSE(connect(description).isPropertySupported(kStillClockSpeed)) << minimum << " " << maximum;
    }
    for (const float size : {kInfinite, kNothing, 4294967296.0F, -4294967296.0F}) {
        description.properties.back() = {81, size};
        EXPECT_FALSE(connect(description).isPropertySupported(kMaximumWidth)) << size;
        EXPECT_FALSE(m_Camera->isPropertySupported(kWidth)) << "its limit is missing";
    }
    description.properties.back() = {81, 4294967040.0F}; // the largest below 2^32
    EXPECT_EQ(connect(description).getProperty(kWidth).getMaximum(), "4294967040");
    static std::uint32_t count;
    static const OrvexApi whole = orvexApi();
    static OrvexApi api = whole;
    api.sdkEnumAvailableFrameRates = [](void* handle, std::uint32_t slots, float* rates) {
        return slots == 0 && count != 0 ? count : whole.sdkEnumAvailableFrameRates(handle, slots, rates);
    };
    use(&api);
    count = 0xFFFFFFFF;
    EXPECT_FALSE(connect(color()).isPropertySupported(kFramerate));
    count = 0;
    connect(color());
    count = 1U << 30;
    EXPECT_EQ(thrownBy([&] { property(kFramerate).getValueList(); }),
              propertyFailure("PropertyReadFailure", "OrvexFramerate", kFramerate, kNotRead));
    use(nullptr);
}

TEST_F(OrvexPropertyTest, AConstantRefusesLoudlyAndKnowsOneValue) {
    connect(color());
    put({81, 2592, 2592, 2592, 2592});
    EXPECT_EQ(thrownBy([&] { property(kMaximumWidth).setValue("2592.000000"); }),
              propertyFailure("PropertyReadOnly", "OrvexConstantProperty", kMaximumWidth,
                              "Read only property value cannot be changed."));
    put({81, 640, 640, 640, 640});
    EXPECT_EQ(thrownBy([&] { property(kMaximumWidth).getValue(); }),
              "PropertyValueConversion[Shared/include/PropertyValueEnumerations.h]Failed to convert value to string. "
              "Provided value not found.");
}

TEST_F(OrvexPropertyTest, HardwareTriggerIsSwitchedOffAndRemembersWhatWasWritten) {
    connect(color());
    property(kHardwareTrigger).setValue("Enabled");
    EXPECT_TRUE(SoftwareDevices::hardwareTrigger(m_Serial));
    fail(Operation::sdkSetHardwareTrigger);
    EXPECT_EQ(thrownBy([&] { property(kHardwareTrigger).setValue("Disabled"); }),
              propertyFailure("PropertyWriteFailure", "OrvexHardwareTrigger", kHardwareTrigger, kNotWritten));
    EXPECT_EQ(property(kHardwareTrigger).getValue(), "Enabled");
    property(kHardwareTrigger).setValue("Disabled");
    EXPECT_EQ(property(kHardwareTrigger).getValue(), "Disabled");
    property(kHardwareTrigger).setValue("Enabled");
    m_Camera->disconnect();
    SoftwareDevices::startLog();
    m_Camera->connect();
    std::vector<double> switched;
    for (const SoftwareDevices::CallRecord& call : SoftwareDevices::takeLog()) {
        if (call.operation == Operation::sdkSetHardwareTrigger) {
            switched.push_back(call.numbers.back());
        }
    }
    EXPECT_EQ(switched, (std::vector<double>{0, 1})) << "switched off by the constructor, then restored";
    EXPECT_EQ(property(kHardwareTrigger).getValue(), "Enabled");
    EXPECT_TRUE(SoftwareDevices::hardwareTrigger(m_Serial));

    m_Camera->disconnect();
    Texts changes;
    m_Camera->registerPropertyChangeCallback([&](Property& changed) {
        Camera::searchForNewCameras(); // no lock is held
        changes.push_back(changed.getName() + " " + changed.getValue());
    });
    fail(Operation::sdkSetHardwareTrigger, 2);
    m_Camera->connect();
    EXPECT_EQ(changes, Texts{"Hardware Trigger Disabled"}) << "it could not be switched on again";
    m_Camera->registerPropertyChangeCallback({});
}

TEST_F(OrvexPropertyTest, ARegionIsLimitedButNotRounded) {
    connect(color());
    for (const auto& [name, text, stored] :
         std::vector<std::tuple<const char*, const char*, const char*>>{{kWidth, "3", "8"},
                                                                        {kWidth, "5000", "2592"},
                                                                        {kWidth, "333", "333"},
                                                                        {kHeight, "0", "2"},
                                                                        {kHeight, "-1", "1944"},
                                                                        {kXOffset, "2593", "2592"},
                                                                        {kXOffset, "0", "0"},
                                                                        {kYOffset, "1945", "1944"}}) {
        EXPECT_EQ(changesDuring(property(name), [&, n = name, t = text] { property(n).setValue(t); }), 1) << text;
        EXPECT_EQ(property(name).getValue(), stored);
    }
    EXPECT_EQ(thrownBy([&] { property(kWidth).setValue("wide"); }), "invalid stoul argument");
    EXPECT_EQ(thrownBy([&] { property(kWidth).setValue("4294967296"); }), "stoul argument out of range");
    EXPECT_EQ(SoftwareDevices::frameFormat(m_Serial).width, 2592U) << "the stream writes the region to the camera";
    for (const auto& [name, text] :
         std::map<std::string, std::string>{{kWidth, "640"}, {kHeight, "480"}, {kXOffset, "16"}, {kYOffset, "8"}}) {
        property(name).setValue(text);
    }
    m_Camera->startStream();
    m_Camera->stopStream();
    Camera::unitialisedWorkpace();
    Camera::searchForNewCameras();
    Camera& anew = Camera::getCamera(std::to_string(m_Serial));
    anew.connect();
    EXPECT_EQ(value(anew, kWidth) + value(anew, kHeight) + value(anew, kXOffset) + value(anew, kYOffset), "640480168");
}

TEST_F(OrvexPropertyTest, PixelFormatsAreTriedAndTheFormerOneRestored) {
    DeviceDescription description = color();
    description.pixelFormats = {6, 1, 7}; // the first is the initial one
    connect(description);
    EXPECT_EQ(listOf(kPixelFormat), (Texts{"16", "32", "48"}));
    EXPECT_EQ(textsOf(property(kPixelFormat)), (Texts{"16", "48", "32", "32"}));
    EXPECT_EQ(SoftwareDevices::frameFormat(m_Serial).pixelFormat, 6U);
    fail(Operation::sdkSetFormat, 6); // five formats and the restoration
    EXPECT_FALSE(connect(description).isPropertySupported(kPixelFormat));
}

TEST_F(OrvexPropertyTest, SamplingTextsCoverWhatTheCameraCanDo) {
    DeviceDescription description = color();
    description.sampling = SoftwareDevices::SamplingCapability{true, {2, 12}, {}};
    connect(description);
    EXPECT_EQ(listOf(kSamplingDescription), (Texts{"None (1x1)", "Subsampling (12x12)", "Subsampling (2x2)"}));
    EXPECT_EQ(property(kSamplingDescription).getMaximum(), "Subsampling (12x12)");
    description.sampling = SoftwareDevices::SamplingCapability{};
    connect(description);
    EXPECT_EQ(listOf(kSamplingDescription), Texts{"None (1x1)"});
    EXPECT_EQ(property(kSamplingDescription).getMaximum(), "None (1x1)");
    static OrvexApi api = orvexApi();
    api.sdkGetSamplingDescription = [](void*, ORVEX_SAMPLING_DESCRIPTION* sampling) -> std::uint32_t {
        *sampling = {0x80, 0, 255, 255, {2, 2, 2, 2, 2, 2, 2, 2}, {3, 3, 3, 3, 3, 3, 3, 3}};
        return 1;
    };
    use(&api);
    connect(color());
    EXPECT_EQ(property(kSamplingDescription).getMaximum(), "Subsampling (2x2)") << "at most eight factors are read";
    use(nullptr);
}

TEST_F(OrvexPropertyTest, FramerateTakesTheFirstRateThatContainsTheText) {
    DeviceDescription description = color();
    description.frameRates = {7.5F, 15, 30};
    connect(description);
    for (const auto& [text, rate] : std::map<std::string, float>{{"15", 15.0F}, {"5", 7.5F}, {"30", 30.0F}}) {
        property(kFramerate).setValue(text);
        EXPECT_EQ(SoftwareDevices::frameRate(m_Serial), rate);
    }
    const std::string refusal = "Desired value must be selected from one of the available options in the value list.";
    EXPECT_EQ(thrownBy([&] { property(kFramerate).setValue("8"); }), refusal);
    EXPECT_EQ(thrownBy([&] { property(kFramerate).setValue(""); }), refusal);
    fail(Operation::sdkSetFormat);
    EXPECT_EQ(thrownBy([&] { property(kFramerate).setValue("15"); }),
              propertyFailure("PropertyWriteFailure", "OrvexFramerate", kFramerate, kNotWritten));
    fail(Operation::sdkEnumAvailableFrameRates, 2);
    EXPECT_EQ(thrownBy([&] { property(kFramerate).getMaximum(); }),
              propertyFailure("PropertyReadFailure", "OrvexFramerate", kFramerate, kNotRead));

    // The default is as many rates below the fastest as the default clock is above the slowest.
    for (const auto& [minimum, maximum, defaultValue, rate] :
         std::vector<std::tuple<float, float, float, const char*>>{{0, 3, 0, "30.000000"},
                                                                   {0, 3, 2, "7.500000"},
                                                                   {1, 3, 2, "15.000000"},
                                                                   {0, 12, 9, "7.500000"},
                                                                   {3, 3, 9, "30.000000"},
                                                                   {0, 2, 9, "15.000000"},
                                                                   {250, 300, 1, "7.500000"}}) {
        put({126, minimum, minimum, maximum, defaultValue});
        EXPECT_EQ(property(kFramerate).getDefault(), rate) << minimum << " " << maximum << " " << defaultValue;
    }
    fail(Operation::sdkPropertyRange);
    EXPECT_EQ(property(kFramerate).getDefault(), "30.000000");
}

TEST_F(OrvexPropertyTest, AStreamingCameraKeepsItsModeAndRestartsAroundARate) {
    OrvexCamera& camera = connect(timing());
    camera.startStream();
    for (const char* name : {kStreamingMode, kFramerate, kVideoTapConfiguration}) {
        EXPECT_FALSE(property(name).isAvailableForWriting()) << name;
    }
    property(kStreamingMode).setValue("Still");
    property(kVideoTapConfiguration).setValue("Single");
    EXPECT_EQ(property(kStreamingMode).getValue(), "Video");
    EXPECT_EQ(at(176).value, 4);
    property(kFramerate).setValue("10");
    EXPECT_EQ(SoftwareDevices::frameRate(m_Serial), 10);
    EXPECT_TRUE(SoftwareDevices::isStreaming(m_Serial));
    EXPECT_THROW(property(kFramerate).setValue("31"), std::invalid_argument);
    EXPECT_FALSE(SoftwareDevices::isStreaming(m_Serial)) << "a write that fails leaves it stopped";
    EXPECT_TRUE(property(kStreamingMode).isAvailableForWriting());
}

} // namespace
