// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/SimulatedCamera.h"

#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Cameras/SimulatedCamera/DescriptionParser.h"
#include "Exceptions/KestrelExceptions.h"
#include "Support/CameraListFixture.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using namespace CameraInterface::SimulatedAdapter;
using namespace KestrelExceptions;
using nlohmann::json;
using TestSupport::expectFailure;
using TestSupport::expectStandard;
using Texts = std::vector<std::string>;
/// Compilers differ in whether a list of one JSON value is an array of it or the value itself.
using Entries = std::vector<json>;

json property(const std::string& name, const std::string& value, bool readOnly = false) {
    return {{"Name", name},           {"Type", "Float"},      {"Minimum", "0"},    {"Maximum", "100"},
            {"Default", value},       {"ReadOnly", readOnly}, {"Discrete", false}, {"AvailableForWriting", !readOnly},
            {"ValueList", {"a", "b"}}};
}

json function(const std::string& name) {
    const json address{{"Type", "Integer"}, {"Label", "Address"}};
    return {{"Name", name},
            {"Parameters", {address, {{"Type", "String"}, {"Label", "Data"}}}},
            {"Return Format", json::array({address})}};
}

json camera(const std::string& serial, Entries properties = {}, Entries functions = {}) {
    return {{"Identification", {{"Model Name", "Model " + serial}, {"Serial Number", serial}}},
            {"Properties", std::move(properties)},
            {"Functions", std::move(functions)}};
}

std::string listOf(Entries cameras) {
    return json{{"Cameras", std::move(cameras)}}.dump();
}

class SimulatedCameraTest : public TestSupport::CameraListFixture {
protected:
    Camera& open(const std::string& list, const std::string& serial = "1") {
        describeCameras(list);
        Camera::initialiseWorkspace();
        Camera& camera = Camera::getCamera(serial);
        camera.connect();
        return camera;
    }

    Camera& openFlash() {
        Entries functions;
        for (const char* name : {"Read Flash", "Write Flash", "Erase Flash", "Update Flash", "Read Flash Status",
                                 "Write Flash Status", "Reboot", "Jtag"}) {
            functions.push_back(function(name));
        }
        return open(listOf({camera("1", {}, functions)}));
    }
};

Texts perform(Camera& camera, const std::string& name, Texts parameters) {
    return camera.perform(name, parameters);
}

TEST_F(SimulatedCameraTest, HasNoStream) {
    Camera& camera = open(listOf({::camera("1")}));
    expectFailure<KestrelException>([&] { camera.startStream(); }, "StreamUnsupported", "The camera has no stream.");
}

TEST_F(SimulatedCameraTest, PropertiesKeepTheirTextsUncheckedAcrossConnections) {
    Camera& camera = open(listOf({::camera("1", {property("Gain", "1"), property("Version", "1.0", true)})}));
    Texts changed;
    camera.registerPropertyChangeCallback([&](Property& property) { changed.push_back(property.getName()); });
    Property& gain = camera.getProperty("Gain");
    gain.setValue("999");
    camera.getProperty("Version").setValue("2.0");
    camera.getProperty("Version").resetToDefault();
    EXPECT_EQ(camera.getProperty("Version").getValue(), "1.0");
    EXPECT_EQ(changed, Texts{"Gain"});
    camera.disconnect();
    describeCameras(listOf({::camera("1", {property("Gain", "5"), property("New", "6")})}));
    camera.connect();
    EXPECT_EQ(&camera.getProperty("Gain"), &gain);
    EXPECT_EQ(gain.getValue(), "999");
    camera.getProperty("New").setValue("7");
    EXPECT_EQ(changed, (Texts{"Gain", "New"})) << "a later property has the callback, too";
    gain.resetToDefault();
    EXPECT_EQ(gain.getValue(), "1");
    EXPECT_EQ(gain.getValueList(), (Texts{"a", "b"}));
}

TEST_F(SimulatedCameraTest, InfoHoldsTheDescriptivePropertiesThatThereAre) {
    Camera& camera = open(listOf({::camera("1", {property("Firmware Version", "1.2"), property("Gain", "1")})}));
    EXPECT_EQ(camera.getCameraInfo(), (std::map<std::string, std::string>{{"Firmware Version", "1.2"}}));
}

TEST_F(SimulatedCameraTest, FlashReadsBackWhatWasWritten) {
    Camera& camera = openFlash();
    EXPECT_EQ(perform(camera, "Read Flash", {"0x100", "4"}), Texts{"\xFF\xFF\xFF\xFF"});
    EXPECT_EQ(perform(camera, "Write Flash", {"0x101", std::string("\x12\x00\x34", 3)}), Texts{});
    EXPECT_EQ(perform(camera, "Read Flash", {"0x100", "5", "ignored"}), Texts{std::string("\xFF\x12\x00\x34\xFF", 5)});
    EXPECT_EQ(perform(camera, "Erase Flash", {"257", "1"}), Texts{});
    EXPECT_EQ(perform(camera, "Read Flash", {"0401", "3"}), Texts{std::string("\xFF\x00\x34", 3)});
    camera.disconnect();
    camera.connect();
    EXPECT_EQ(perform(camera, "Read Flash", {"0x103", "1"}), Texts{"\x34"}) << "memory outlives the connection";
    // Across pages, and at the end of the address range.
    const std::string data(10'000, 'q');
    perform(camera, "Update Flash", {"4000", data});
    perform(camera, "Erase Flash", {"4090", "8200"});
    EXPECT_EQ(perform(camera, "Read Flash", {"4000", "10000"}),
              Texts{std::string(90, 'q') + std::string(8200, '\xFF') + std::string(1710, 'q')});
    perform(camera, "Write Flash", {"-2", "abcd"});
    EXPECT_EQ(perform(camera, "Read Flash", {"0", "2"}), Texts{"cd"}) << "addresses wrap modulo 2^32";
    perform(camera, "Erase Flash", {"0", "2147483647"});
    EXPECT_EQ(perform(camera, "Read Flash", {"0", "2"}), Texts{"\xFF\xFF"});
    EXPECT_EQ(perform(camera, "Read Flash", {"-2", "1"}), Texts{"a"});
    EXPECT_EQ(perform(camera, "Read Flash", {"-1", "0"}), Texts{""});
}

TEST_F(SimulatedCameraTest, StatusRegistersAreAMemoryOfTheirOwn) {
    Camera& camera = openFlash();
    EXPECT_EQ(perform(camera, "Read Flash Status", {"7"}), Texts{std::string(1, '\0')});
    perform(camera, "Write Flash Status", {"7", "\x80\x81"});
    EXPECT_EQ(perform(camera, "Read Flash Status", {"8"}), Texts{"\x81"});
    EXPECT_EQ(perform(camera, "Read Flash", {"7", "1"}), Texts{"\xFF"});
    EXPECT_EQ(perform(camera, "Reboot", {"Bootloader"}), Texts{});
    EXPECT_TRUE(camera.isConnected());
    EXPECT_EQ(perform(camera, "Jtag", {}), Texts{}) << "a function without simulated behaviour accepts any parameters";
    EXPECT_EQ(camera.getFunction("Jtag").getParameters()[1].m_Label, "Data");
    EXPECT_EQ(camera.getFunction("Jtag").getReturnFormat()[0].m_Type, PARAMETER_TYPE::Integer);
}

TEST_F(SimulatedCameraTest, FunctionsRefuseWhatTheyCannotDo) {
    Camera& camera = openFlash();
    for (const char* name : {"Read Flash", "Write Flash", "Erase Flash", "Update Flash", "Write Flash Status"}) {
        for (const Texts& parameters : {Texts{}, Texts{"0"}}) {
            expectFailure<KestrelException_InvalidArgument>([&] { perform(camera, name, parameters); }, "ArgumentEmpty",
                                                            "Provided argument is empty.");
        }
        expectStandard<std::invalid_argument>([&] { perform(camera, name, {"x", "0"}); }, "invalid stoi argument");
        expectStandard<std::out_of_range>(
            [&] {
                perform(camera, name, {"0x80000000", "0"});
            },
            "stoi argument out of range");
    }
    for (const char* name : {"Read Flash Status", "Reboot"}) {
        expectFailure<KestrelException_InvalidArgument>([&] { perform(camera, name, {}); }, "ArgumentEmpty",
                                                        "Provided argument is empty.");
    }
    for (const Texts& range : {Texts{"0", "-1"}, Texts{"-16", "32"}, Texts{"-16", "16"}}) {
        expectFailure<KestrelException_Function>([&] { perform(camera, "Read Flash", range); }, "FunctionExecution",
                                                 "Failed to execute function.");
        EXPECT_EQ(perform(camera, "Erase Flash", range), Texts{}) << "erases nothing and reports nothing";
    }
    EXPECT_NO_THROW(perform(camera, "Read Flash", {"-16", "15"}));
    expectStandard<std::invalid_argument>([&] { perform(camera, "Reboot", {"firmware"}); }, "Reboot mode not valid.");
}

TEST_F(SimulatedCameraTest, TheEnumerationReadsTheListOnce) {
    EXPECT_EQ(SimulatedCamera::getListOfCameras().size(), 0U);
    describeCameras("{\"Cameras\": [");
    EXPECT_THROW(SimulatedCamera::getListOfCameras(), json::parse_error) << "not kept: the next call retries";
    Camera::initialiseWorkspace();
    EXPECT_NE(Camera::getEnumerationFailures().at("simulated cameras").find("parse error"), std::string::npos);
    describeCameras(listOf({camera("1")}));
    EXPECT_EQ(SimulatedCamera::getListOfCameras().size(), 1U);
    EXPECT_EQ(Camera::searchForNewCameras(), 1U);
}

class DescriptionFileTest : public TestSupport::CameraListFixture {};

TEST_F(DescriptionFileTest, NoListIsAnEmptyOneAndABrokenOneIsQuotedInPart) {
    removeCameraList();
    EXPECT_TRUE(loadSimulatedCameraList().empty() && loadPropertyDescriptions("1").empty() &&
                loadFunctionDescriptions("1").empty());
    describeCameras("{\"Cameras\": [{}], \"Cameras\": [");
    EXPECT_THROW(loadPropertyDescriptions("1"), json::parse_error) << "a fault of an entry does not hide it";
    describeCameras(std::string(100'000, '['));
    EXPECT_THROW(loadPropertyDescriptions("1"), json::parse_error) << "deep nesting";
    Camera::initialiseWorkspace();
    const auto failures = Camera::getEnumerationFailures();
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_LT(failures.begin()->second.size(), 1100U) << "the reason quotes the document";
}

/// @p count times @p piece as the elements of an array.
std::string arrayOf(const std::string& piece, std::size_t count) {
    std::string text = "[";
    for (std::size_t i = 0; i < count; ++i) {
        text += (i == 0 ? "" : ",") + piece;
    }
    return text + "]";
}

TEST_F(DescriptionFileTest, OnlyWhatIsReadCountsAndIsLimited) {
    const std::string many = arrayOf("0", kMostValuesOfCamera);
    describeCameras("{\"Other\": " + many +
                    R"(, "Cameras": [{"Identification": {"Model Name": "A", "Serial Number": "1"},
                    "Properties": [], "Functions": )" +
                    many + R"(}, )" + many + "]} text after it");
    ASSERT_EQ(loadSimulatedCameraList().size(), 2U);
    EXPECT_EQ(loadSimulatedCameraList()[0].m_SerialNumber, "1");
    EXPECT_THROW(loadFunctionDescriptions("1"), std::length_error);
    describeCameras("{\"Cameras\": " + arrayOf("{}", kMostCameras) + "}");
    EXPECT_THROW(loadPropertyDescriptions("1"), json::out_of_range);
    describeCameras("{\"Cameras\": " + arrayOf("{}", kMostCameras + 1) + "}");
    EXPECT_THROW(loadPropertyDescriptions("1"), std::length_error);
    std::filesystem::resize_file(getDescriptionFilePath(), kLargestDescriptionFile + 1);
    EXPECT_THROW(loadPropertyDescriptions("1"), std::length_error);
}

} // namespace
