// SPDX-License-Identifier: Apache-2.0

#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Internal/QuillInternal.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/SoftwareDeviceFixture.h"
#include "Support/Throws.h"
#include "TarnuLibrary/TarnuLibrary.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using namespace Usb3VisionAdapter;
using QuillInternal::kUsb3VisionFileAddress;
using QuillInternal::kUsb3VisionInfoAddress;
using QuillInternal::Usb3VisionInfo;
using SoftwareDevices::DeviceDescription;
using SoftwareDevices::Operation;
using TestSupport::expectFailure;
using TestSupport::propertyFailure;
using TestSupport::thrownBy;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;

const char* const kMode = "USB3 Vision Mode";
constexpr std::uint32_t kSerial = 42;

class Usb3VisionCameraTest : public TestSupport::SoftwareDeviceFixture {
protected:
    Usb3VisionCameraTest() { useTarnuLibrary(&m_Library); }
    ~Usb3VisionCameraTest() override {
        Camera::unitialisedWorkpace();
        useTarnuLibrary(nullptr);
    }

    static DeviceDescription device(std::uint32_t serial = kSerial, const std::string& modelName = "X") {
        DeviceDescription description = SoftwareDevices::defaultDevices()[0];
        description.serial = serial;
        description.modelName = modelName;
        return description;
    }
    static Camera& open() { return openUsb3Vision(device()); }

    /// Puts a file into the flash, described by its block, and turns the mode off.
    static void store(const Bytes& file) {
        Usb3VisionInfo info{};
        info.mode = 1;
        info.fileSize = static_cast<std::uint32_t>(file.size());
        const Bytes hash = QuillInternal::calculateSha1Hash(file);
        std::copy(hash.begin(), hash.end(), info.fileHash);
        Bytes block(sizeof(info));
        std::memcpy(block.data(), &info, sizeof(info));
        SoftwareDevices::writeFlash(kSerial, kUsb3VisionInfoAddress, block);
        SoftwareDevices::writeFlash(kSerial, kUsb3VisionFileAddress, file);
    }
    static Bytes storedBlock() {
        return SoftwareDevices::flash(kSerial, kUsb3VisionInfoAddress, sizeof(Usb3VisionInfo));
    }

    TarnuLibrary m_Library = tarnuLibrary(); ///< that of the devices, unless a test changes it
};

TEST(TarnuLibrary, AMissingLibraryAnswersFailureEverywhere) {
    const TarnuLibrary library = TarnuLibrary::bindTo("/nonexistent");
    useTarnuLibrary(&library);
    EXPECT_TRUE(Usb3VisionCamera::getListOfCameras().empty());
    EXPECT_EQ(library.TarnuOpenCamera(nullptr), nullptr);
    EXPECT_EQ(library.TarnuSglWrite(nullptr, 0, 0, 0, 0, nullptr), 0U);
    useTarnuLibrary(nullptr);
}

TEST_F(Usb3VisionCameraTest, EveryRecordIsACamera) {
    static std::vector<Usb3VisionCameraRecord> records;
    static std::uint32_t announced;
    static std::uint32_t filled;
    static int enumerations;
    records = {{"X", 42}, {"", 4294967295U}, {"", 0}};
    const std::string unterminated(sizeof(records[1].modelName), 'm');
    unterminated.copy(records[1].modelName, unterminated.size());
    announced = 0;
    enumerations = 0;
    m_Library.TarnuNumCameras = [] { return announced; };
    m_Library.TarnuEnumCameras = [](Usb3VisionCameraRecord* room, std::uint32_t count) {
        ++enumerations;
        std::copy_n(records.begin(), std::min<std::size_t>(count, records.size()), room);
        return filled;
    };
    EXPECT_EQ(Camera::searchForNewCameras(), 0U);
    EXPECT_EQ(enumerations, 0) << "there are no records to fill";
    announced = filled = 3;
    EXPECT_EQ(Camera::searchForNewCameras(), 3U);
    EXPECT_EQ(Camera::getCamerasList(),
              (std::map<std::string, std::string>{{"0", ""}, {"42", "X"}, {"4294967295", unterminated}}));
    const auto expectNone = [] {
        expectFailure<KestrelException>([] { Usb3VisionCamera::getListOfCameras(); }, "CameraEnumeration ",
                                        "Failed to enumerate cameras.");
    };
    for (const std::uint32_t wrong : {0U, 2U, 4U}) {
        filled = wrong;
        expectNone();
    }
    announced = filled = 0xFFFFFFFF;
    enumerations = 0;
    expectNone();
    EXPECT_EQ(enumerations, 0) << "the count is impossible";
}

TEST_F(Usb3VisionCameraTest, ACameraIsOpenedByTheRecordThatItHasNow) {
    openUsb3Vision(device(41, "Y"));
    Camera& camera = open();
    camera.disconnect();
    openUsb3Vision(device(kSerial, "Y")); // replugged with another name before a check notices its absence
    EXPECT_TRUE(camera.isConnected() && SoftwareDevices::isOpen(kSerial));
    camera.disconnect();
    SoftwareDevices::unplug(kSerial);
    SoftwareDevices::failNext(SoftwareDevices::kNoDevice, Operation::TarnuEnumCameras, 1, SoftwareDevices::kTimedOut);
    expectFailure<KestrelException_Camera>([&] { camera.connect(); }, "CameraConnection",
                                           "Failed to connect to camera.");
}

TEST_F(Usb3VisionCameraTest, DescribesItselfFromTheFirstConnectionOn) {
    open();
    Camera::unitialisedWorkpace();
    Camera::searchForNewCameras();
    Camera& camera = Camera::getCamera(std::to_string(kSerial));
    EXPECT_STREQ(getKindName(camera.getKind()), "USB3 Vision");
    Texts changed;
    camera.registerPropertyChangeCallback([&](Property& property) { changed.push_back(property.getName()); });
    camera.connect();
    std::map<std::string, std::string> info{
        {"Model Name", "X"}, {"Serial Number", "42"}, {kMode, "Enabled"}, {"Vendor Name", "Meridane"}};
    EXPECT_EQ(camera.getCameraInfo(), info);
    EXPECT_EQ(camera.getSupportedProperties().size(), info.size());
    EXPECT_EQ(camera.getSupportedFunctions(), Texts{"Reboot"});
    SoftwareDevices::failNext(kSerial, Operation::TarnuFlashRead, 1, SoftwareDevices::kTimedOut);
    info.erase(kMode);
    EXPECT_EQ(camera.getCameraInfo(), info) << "unreadable properties are omitted";
    camera.getProperty("Vendor Name").update(false);
    EXPECT_EQ(changed, Texts{"Vendor Name"}) << "the callback was registered before the properties existed";
}

/// A camera of the SDK turns its mode on as one in that mode does.
TEST_F(Usb3VisionCameraTest, ModeIsTurnedOnOnlyOverAValidFile) {
    struct Kind {
        Camera& (*open)(const DeviceDescription& description);
        bool takesEmptyFile;
        std::uint8_t off; ///< as it is stored
        const char* read;
    };
    constexpr std::uint32_t kRoom = 0x1000000 - 0x1B8000;
    for (const Kind& kind : {Kind{SoftwareDeviceFixture::open, false, 1, "sdkReadFlash"},
                             Kind{openUsb3Vision, true, 0xFF, "TarnuFlashRead"}}) {
        SCOPED_TRACE(kind.read);
        Camera::unitialisedWorkpace();
        Property& mode = kind.open(device()).getProperty(kMode);
        store(Bytes(kRoom, 0x5A));
        EXPECT_TRUE(mode.isAvailableForWriting()) << "up to the end of the flash";
        for (const std::uint32_t size : {kRoom + 1, 0xFFFF8000U, 0xFFFFFFFFU}) {
            Bytes bytes(sizeof(size));
            std::memcpy(bytes.data(), &size, sizeof(size));
            SoftwareDevices::writeFlash(kSerial, kUsb3VisionInfoAddress + offsetof(Usb3VisionInfo, fileSize), bytes);
            SoftwareDevices::startLog();
            EXPECT_FALSE(mode.isAvailableForWriting()) << size;
            const auto calls = SoftwareDevices::takeLog();
            ASSERT_EQ(calls.size(), 2U) << "the block alone: no buffer is made for what cannot be there";
            EXPECT_EQ(calls[1].name, kind.read);
            EXPECT_EQ(calls[1].numbers, (std::vector<double>{kUsb3VisionInfoAddress, sizeof(Usb3VisionInfo)}));
        }
        store({});
        EXPECT_EQ(mode.isAvailableForWriting(), kind.takesEmptyFile) << "the digest of no bytes";
        store({1});
        Bytes block = storedBlock();
        SoftwareDevices::writeFlash(kSerial, kUsb3VisionFileAddress, {7});
        EXPECT_FALSE(mode.isAvailableForWriting()) << "another file than the hash says";
        mode.setValue("Enabled");
        EXPECT_EQ(storedBlock(), block);
        SoftwareDevices::writeFlash(kSerial, kUsb3VisionFileAddress, {1});
        mode.setValue("Enabled");
        block[0] = 0;
        EXPECT_EQ(storedBlock(), block) << "nothing but the mode is changed";
        EXPECT_EQ(mode.getValue(), "Enabled");
        SoftwareDevices::writeFlash(kSerial, kUsb3VisionFileAddress, {7});
        mode.setValue("Disabled");
        EXPECT_EQ(storedBlock()[0], kind.off) << "an enabled mode can always be turned off";
        store({1});
        EXPECT_EQ(thrownBy([&] { mode.setValue("On"); }).substr(0, 23), "PropertyValueConversion");
    }
}

TEST(QuillInternal, AFileLiesWithinTheFlash) {
    Usb3VisionInfo info{};
    for (const auto& [size, valid] : std::map<std::uint32_t, bool>{
             {0, false}, {1, true}, {0xE48000, true}, {0xE48001, false}, {0xFFFF8001, false}}) {
        info.fileSize = size;
        EXPECT_EQ(QuillInternal::isUsb3VisionInfoValid(info), valid) << size;
    }
}

TEST_F(Usb3VisionCameraTest, ModeReportsWhichAccessFailed) {
    Property& mode = open().getProperty(kMode);
    store({1, 2, 3});
    // Reads the mode, the block and the file to check whether it can be written, and the block again; then writes.
    for (std::uint64_t call = 1; call <= 5; ++call) {
        SoftwareDevices::failCall(call, SoftwareDevices::kTimedOut);
        const auto [word, sentence] = call < 5
                                          ? std::pair("PropertyReadFailure", "Property value could not be read.")
                                          : std::pair("PropertyWriteFailure", "Property value could not be written.");
        EXPECT_EQ(thrownBy([&] { mode.setValue("Enabled"); }),
                  propertyFailure(word, "Usb3VisionUsb3VisionMode", kMode, sentence))
            << call;
        EXPECT_EQ(storedBlock()[0], 1U);
    }
}

TEST_F(Usb3VisionCameraTest, RebootWritesItsModeToTheRegister) {
    static std::vector<std::vector<std::uint32_t>> written;
    static std::uint32_t answer;
    written.clear();
    answer = 1;
    m_Library.TarnuSglWrite = [](void* /*handle*/, std::uint32_t first, std::uint32_t second, std::uint32_t value,
                                 std::uint32_t length, const std::uint8_t* data) -> std::uint32_t {
        written.push_back({first, second, value, length, *data});
        return answer;
    };
    Camera& camera = open();
    const auto reboot = [&](Texts parameters) {
        return thrownBy([&] { EXPECT_EQ(camera.perform("Reboot", parameters), Texts{}); });
    };
    EXPECT_EQ(camera.getFunction("Reboot").getParameters().at(0).m_Label, "Mode");
    EXPECT_EQ(reboot({}), "ArgumentEmpty[Shared/src/Functions/Usb3Vision/Usb3VisionReboot.cpp]"
                          "The argument \"parameters\" is invalid. Provided argument is empty.");
    EXPECT_EQ(reboot({"firmware"}), "Reboot mode not valid.");
    EXPECT_TRUE(written.empty());
    EXPECT_EQ(reboot({"Bootloader"}), "nothing");
    EXPECT_EQ(reboot({"Firmware", "ignored"}), "nothing");
    EXPECT_EQ(written, (std::vector<std::vector<std::uint32_t>>{{0x1B, 0x1B, 0, 1, 0}, {0x1B, 0x1B, 1, 1, 0}}));
    answer = 0;
    EXPECT_EQ(reboot({"Firmware"}), "Failed to reboot camera in the desired mode.") << "it stays";
}

/// A device that can start in either mode, asked for through both libraries.
class Usb3VisionRoundTripTest : public TestSupport::SoftwareDeviceFixture {
protected:
    Usb3VisionRoundTripTest() {
        Camera::registerDisconnectCallback([this](const std::string& model, const std::string& serial) {
            m_Events += "- " + model + " " + serial + "; ";
        });
        Camera::registerNewConnectCallback([this] { m_Events += "+; "; });
        m_Device = SoftwareDevices::defaultDevices()[0];
        m_Device.rebootTime = std::chrono::milliseconds(1);
        m_Serial = std::to_string(m_Device.serial);
    }
    ~Usb3VisionRoundTripTest() override {
        Camera::registerDisconnectCallback({});
        Camera::registerNewConnectCallback({});
    }

    Camera& camera() const { return Camera::getCamera(m_Serial); }

    void startReboot() {
        Texts mode{"Firmware"};
        camera().perform("Reboot", mode);
    }

    void reboot() {
        startReboot();
        TestSupport::dropVanishedCameras();
        const std::string without = m_Events;
        TestSupport::eventually([&] { return TestSupport::addNewCameras() && m_Events != without; });
        camera().connect();
    }

    DeviceDescription m_Device;
    std::string m_Serial;
    std::string m_Events; ///< what the callbacks reported
};

TEST_F(Usb3VisionRoundTripTest, ACameraThatComesBackAsAnotherKindBetweenTwoChecksIsDroppedAndFoundAgain) {
    struct Case {
        const char* name;
        void (*leave)(Camera&); // while it reboots
    };
    constexpr Case kCases[] = {{"connected", [](Camera&) {}},
                               {"disconnected", [](Camera& camera) { camera.disconnect(); }},
                               {"suspended", [](Camera& camera) { camera.suspend(); }}};
    open(m_Device);
    for (const char* mode : {"Enabled", "Disabled"}) {
        for (const Case& row : kCases) {
            SCOPED_TRACE(std::string(row.name) + ", USB3 Vision " + mode);
            set(camera(), kMode, mode);
            startReboot();
            row.leave(camera());
            TestSupport::eventually([] { return !SoftwareDevices::pluggedDevices().empty(); });
            m_Events.clear();
            if (camera().getState() == CameraState::Suspended) {
                TestSupport::dropVanishedCameras();
                EXPECT_EQ(m_Events, "") << "a suspended camera is kept";
                EXPECT_THROW(camera().connect(), KestrelException_Camera);
                EXPECT_EQ(camera().getState(), CameraState::Suspended);
                TestSupport::dropVanishedCameras();
            }
            TestSupport::dropVanishedCameras();
            TestSupport::addNewCameras();
            EXPECT_EQ(m_Events, "- Model 613 41500101; +; ");
            camera().connect();
            EXPECT_EQ(value(camera(), kMode), mode);
            if (mode == std::string("Enabled") || &row != std::end(kCases) - 1) { // and back for the next case
                set(camera(), kMode, mode == std::string("Enabled") ? "Disabled" : "Enabled");
                reboot();
            }
        }
    }
}

TEST_F(Usb3VisionRoundTripTest, AnUnpluggedCameraHasRebootedForAllOneKnows) {
    openUsb3Vision(m_Device);
    Texts mode{"Bootloader"};
    SoftwareDevices::unplugDuring(m_Device.serial, Operation::TarnuSglWrite, 1);
    EXPECT_NO_THROW(camera().perform("Reboot", mode));
    EXPECT_FALSE(camera().isCameraAlive());
    TestSupport::dropVanishedCameras();
    expectFailure<KestrelException_Camera>([&] { camera(); }, "CameraNotFound",
                                           "Camera was not found in the list of available cameras.");
}

} // namespace
