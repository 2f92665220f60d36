// SPDX-License-Identifier: Apache-2.0

#include "Settings/CameraSettings.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using KestrelExceptions::KestrelException;
using SoftwareDevices::Operation;
using ::testing::HasSubstr;
using TestSupport::expectThrown;
using TestSupport::Texts;

class CameraSettingsTest : public TestSupport::OrvexPropertyFixture {
protected:
    /// Writes another value into every property that can take one.
    void changeEverything(Camera& camera) {
        for (const auto& [name, value] : readSettings(camera).values) {
            Property& changed = camera.getProperty(name);
            if (changed.isAvailableForWriting() && name != "USB3 Vision Mode") {
                const Texts choices = changed.getValueList();
                const auto other = std::find_if(choices.begin(), choices.end(),
                                                [&value = value](const std::string& text) { return text != value; });
                changed.setValue(other != choices.end()          ? *other
                                 : value != changed.getMaximum() ? changed.getMaximum()
                                                                 : changed.getMinimum());
            }
        }
    }

    static Texts namesOf(const std::vector<SettingDifference>& differences) {
        Texts names;
        for (const SettingDifference& one : differences) {
            names.push_back(one.name);
        }
        return names;
    }
};

TEST_F(CameraSettingsTest, ARoundTripRestoresEveryDefaultDevice) {
    for (const auto& device : SoftwareDevices::defaultDevices()) {
        Camera& camera = connect(device);
        SCOPED_TRACE(camera.getModelName());
        for (const char* mode : {"Video", "Still"}) {
            set(camera, "Streaming Mode", mode);
            const std::string saved = toJson(readSettings(camera));
            changeEverything(camera);
            EXPECT_GT(compareSettings(camera, parseSettings(saved)).size(), 30U);
            const SettingsReport report = writeSettings(camera, parseSettings(saved));
            EXPECT_TRUE(report.isComplete()) << ::testing::PrintToString(namesOf(report.different));
            EXPECT_EQ(toJson(readSettings(camera)), saved);
            EXPECT_EQ(writeSettings(camera, parseSettings(saved)).written, Texts{}) << "nothing is left to write";
        }
    }
}

TEST_F(CameraSettingsTest, ReportsWhatDiffersFailsOrWasNotReached) {
    Camera& camera = connect(color());
    CameraSettings settings = readSettings(camera);
    put({20, 33, 0.02F, 2000, 10}); // behind the back of the library
    EXPECT_EQ(namesOf(compareSettings(camera, settings)), (Texts{"Exposure", "Video Exposure"}));
    settings.values = {{"Gamma", "2"},
                       {"Hue", "9999"},
                       {"Iris", "1"},
                       {"Model Name", "X"},
                       {"Shutter", "Round"},
                       {"Framerate", "2.500000"},
                       {"Video Clock Speed", "Clock 2"}};
    SoftwareDevices::setWritable(m_Serial, 3, false);
    settings.values["Saturation"] = "0.5";
    fail(Operation::sdkSetFormat); // a refusal that does not last
    const SettingsReport report = writeSettings(camera, settings);
    EXPECT_EQ(report.written, (Texts{"Video Clock Speed", "Gamma", "Hue", "Framerate"}));
    EXPECT_EQ(namesOf(report.different), Texts{"Hue"});
    EXPECT_EQ(report.different.at(0).present, "180.000000");
    EXPECT_EQ(namesOf(report.failed), (Texts{"Iris", "Model Name", "Saturation", "Shutter"}));
    EXPECT_EQ(report.failed.at(2).reason, "It cannot be written now.");
    EXPECT_THAT(report.failed.at(3).reason, HasSubstr("Provided string not found."));

    settings.values = {{"Brightness", "1"}, {"Contrast", "2"}, {"Gamma", "3"}};
    SettingsOptions options;
    options.progress = [](const std::string& name) {
        if (name == "Contrast") {
            throw std::runtime_error("enough");
        }
    };
    const SettingsReport interrupted = writeSettings(camera, settings, options);
    TestSupport::expectStandard<std::runtime_error>([&] { std::rethrow_exception(interrupted.interruption); },
                                                    "enough");
    EXPECT_EQ(interrupted.written, Texts{"Brightness"});
    EXPECT_EQ(namesOf(interrupted.failed), (Texts{"Contrast", "Gamma"}));
    options.progress = [this](const std::string& name) {
        if (name == "Gamma") {
            SoftwareDevices::unplug(m_Serial);
        }
    };
    const SettingsReport gone = writeSettings(camera, settings, options);
    EXPECT_TRUE(gone.interruption);
    EXPECT_EQ(gone.written, Texts{"Contrast"});
    EXPECT_EQ(namesOf(gone.failed), Texts{"Gamma"});
}

TEST_F(CameraSettingsTest, RefusesWhatIsNotTheSettingsOfThisModel) {
    Camera& camera = connect(color());
    CameraSettings settings = readSettings(camera);
    const std::string saved = toJson(settings);
    EXPECT_THAT(saved, HasSubstr(R"("kind": "software device",
    "model": "Model 613",
    "serial": "41500101")"));
    const struct {
        std::string text;
        const char* said;
    } cases[] = {
        {"", "parse error"},
        {saved.substr(0, saved.size() / 2), "parse error at line "},
        {"[]", R"("format" is missing.)"},
        {R"({"format": 2})", "Their format is not 1."},
        {R"({"format": 1, "camera": {"kind": 5}})", R"(The value of "kind" is not a text.)"},
        {R"({"format": 1, "camera": {"kind": "", "model": "", "serial": ""}, "properties": []})", "is not an object."},
        {R"({"format": 1, "camera": {"kind": "", "model": "", "serial": ""}, "properties": {"Gamma": 1}})",
         R"(The value of "Gamma" is not a text.)"},
        {std::string(1 << 21, ' '), "larger than 1 MiB"},
        {std::string(1 << 20, '['), "parse error"},
    };
    for (const auto& expected : cases) {
        const auto failure = expectThrown<KestrelException>([&] { parseSettings(expected.text); });
        EXPECT_STREQ(failure.who(), "SettingsInvalid");
        EXPECT_THAT(failure.why(), HasSubstr(expected.said));
        EXPECT_LT(std::string(failure.why()).size(), 300U);
    }
    settings.modelName = "Model 08A";
    settings.values = {{"Gamma", "2"}};
    EXPECT_STREQ(expectThrown<KestrelException>([&] { writeSettings(camera, settings); }).who(), "SettingsModel");
    SettingsOptions options;
    options.acceptOtherModels = true;
    EXPECT_TRUE(writeSettings(camera, settings, options).isComplete());
    EXPECT_EQ(value(camera, "Gamma"), "2.000000");
    camera.disconnect();
    EXPECT_STREQ(expectThrown<KestrelExceptions::KestrelException_Camera>([&] { readSettings(camera); }).who(),
                 "CameraConnection");
}

} // namespace
