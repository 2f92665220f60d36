#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Internal/QuillInternal.h"
#include "Support/CameraListFixture.h"
#include "Support/ListMaintenance.h"
#include "Support/Throws.h"
#include "TarnuLibrary/TarnuLibrary.h"

namespace {

using namespace CameraInterface;
using namespace KestrelExceptions;
using namespace Usb3VisionAdapter;
using QuillInternal::Usb3VisionInfo;
using TestSupport::dropVanishedCameras;
using TestSupport::expectFailure;
using TestSupport::expectStandard;
using TestSupport::propertyFailure;
using TestSupport::thrownBy;
using Texts = std::vector<std::string>;

const char* const kMode = "USB3 Vision Mode";
const char* const kConnection = "Failed to connect to camera.";

/// A bus with USB3 Vision cameras, all of which have one flash.
struct Bus {
    std::vector<Usb3VisionCameraRecord> cameras;
    std::optional<std::uint32_t> announced; ///< how many cameras it says there are, if not their number
    std::optional<std::uint32_t> filled;    ///< what the enumeration answers, if not the number of cameras
    int enumerations = 0;
    int opened = 0;
    int open = 0; ///< handles that are open now
    bool refuseOpen = false;
    bool refuseClose = false;
    std::vector<CameraState> closings; ///< in which state the camera was
    Usb3VisionInfo info{};
    std::vector<unsigned char> file;
    std::deque<bool> reads; ///< whether the next reads of the flash succeed; the later ones do
    int fileReads = 0;
    std::vector<std::uint32_t> bootSequences;
    bool refuseWrites = false;
    std::vector<std::vector<std::uint32_t>> singleWrites;
};

Bus bus;

std::uint32_t readFlash(void* /*handle*/, std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    if (!bus.reads.empty()) {
        const bool succeeds = bus.reads.front();
        bus.reads.pop_front();
        if (!succeeds) {
            return 0;
        }
    }
    if (address == QuillInternal::kUsb3VisionInfoAddress && length == sizeof(bus.info)) {
        std::memcpy(buffer, &bus.info, length);
        return 1;
    }
    ++bus.fileReads;
    if (address != QuillInternal::kUsb3VisionFileAddress || length != bus.file.size()) {
        return 0;
    }
    std::copy(bus.file.begin(), bus.file.end(), buffer);
    return 1;
}

TarnuLibrary busLibrary() {
    TarnuLibrary library;
    library.TarnuNumCameras = [] { return bus.announced.value_or(static_cast<std::uint32_t>(bus.cameras.size())); };
    library.TarnuEnumCameras = [](Usb3VisionCameraRecord* records, std::uint32_t count) {
        ++bus.enumerations;
        std::copy_n(bus.cameras.begin(), std::min<std::size_t>(count, bus.cameras.size()), records);
        return bus.filled.value_or(count);
    };
    library.TarnuOpenCamera = [](const Usb3VisionCameraRecord* record) -> void* {
        const auto same = [&](const Usb3VisionCameraRecord& camera) {
            return std::memcmp(&camera, record, sizeof(camera)) == 0;
        };
        const auto camera = std::find_if(bus.cameras.begin(), bus.cameras.end(), same);
        if (bus.refuseOpen || camera == bus.cameras.end()) {
            return nullptr;
        }
        ++bus.opened;
        ++bus.open;
        return &bus;
    };
    library.TarnuCloseCamera = [](void* /*handle*/) -> std::uint32_t {
        if (Camera::getCamerasList().count("42") != 0) {
            bus.closings.push_back(Camera::getCamera("42").getState());
        }
        if (bus.refuseClose) {
            return 0;
        }
        --bus.open;
        return 1;
    };
    library.TarnuFlashRead = readFlash;
    library.TarnuWriteBootSequence = [](void* /*handle*/, std::uint32_t usb3Vision) -> std::uint32_t {
        bus.bootSequences.push_back(usb3Vision);
        return bus.refuseWrites ? 0 : 1;
    };
    library.TarnuSglWrite = [](void* /*handle*/, std::uint32_t first, std::uint32_t second, std::uint32_t value,
                               std::uint32_t length, const std::uint8_t* data) -> std::uint32_t {
        bus.singleWrites.push_back({first, second, value, length, *data});
        return bus.refuseWrites ? 0 : 1;
    };
    return library;
}

Usb3VisionCameraRecord record(const std::string& modelName, std::uint32_t serialNumber) {
    Usb3VisionCameraRecord record{};
    std::copy_n(modelName.begin(), std::min(modelName.size(), sizeof(record.modelName)), record.modelName);
    record.serialNumber = serialNumber;
    return record;
}

class Usb3VisionCameraTest : public TestSupport::CameraListFixture {
protected:
    Usb3VisionCameraTest() {
        bus = Bus{};
        bus.info.mode = 1;
        useTarnuLibrary(&m_Library);
        useAdapters({{"USB3 Vision cameras", Usb3VisionCamera::getListOfCameras}});
    }
    ~Usb3VisionCameraTest() override {
        Camera::unitialisedWorkpace();
        EXPECT_EQ(bus.open, 0) << "no handle is left open";
        useTarnuLibrary(nullptr);
    }

    /// The camera of the only device, which is not connected.
    static Camera& find() {
        bus.cameras = {record("X", 42)};
        Camera::searchForNewCameras();
        return Camera::getCamera("42");
    }
    static Camera& open() {
        Camera& camera = find();
        camera.connect();
        return camera;
    }
    /// Puts a file into the flash, described by its block.
    static void store(const std::vector<unsigned char>& file) {
        bus.file = file;
        bus.info.fileSize = static_cast<std::uint32_t>(file.size());
        const std::vector<unsigned char> hash = QuillInternal::calculateSha1Hash(file);
        std::copy(hash.begin(), hash.end(), bus.info.fileHash);
    }

private:
    TarnuLibrary m_Library = busLibrary();
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
    EXPECT_TRUE(Usb3VisionCamera::getListOfCameras().empty());
    EXPECT_EQ(bus.enumerations, 0) << "there is nothing to fill";
    const std::string unterminated(100, 'm');
    bus.cameras = {record("X", 42), record(unterminated, 4294967295U), record("", 0)};
    EXPECT_EQ(Camera::searchForNewCameras(), 3U);
    EXPECT_EQ(Camera::getCamerasList(),
              (std::map<std::string, std::string>{{"0", ""}, {"42", "X"}, {"4294967295", unterminated}}));
    for (const std::uint32_t filled : {0U, 2U, 4U}) {
        bus.filled = filled;
        expectFailure<KestrelException>([] { Usb3VisionCamera::getListOfCameras(); }, "CameraEnumeration ",
                                        "Failed to enumerate cameras.");
    }
    bus.announced = 0xFFFFFFFF;
    const int enumerations = bus.enumerations;
    expectFailure<KestrelException>([] { Usb3VisionCamera::getListOfCameras(); }, "CameraEnumeration ",
                                    "Failed to enumerate cameras.");
    EXPECT_EQ(bus.enumerations, enumerations) << "there cannot be so many";
}

TEST_F(Usb3VisionCameraTest, ACameraIsOpenedByTheRecordThatItHasNow) {
    Camera& camera = find();
    bus.cameras = {record("Y", 41), record("Y", 42)}; // replugged with another name before a check could see it gone
    camera.connect();
    EXPECT_TRUE(camera.isConnected());
    camera.disconnect();
    bus.cameras.pop_back();
    bus.announced = 0xFFFFFFFF;
    expectFailure<KestrelException_Camera>([&] { camera.connect(); }, "CameraConnection", kConnection);
}

TEST_F(Usb3VisionCameraTest, StatesChangeByTheirRules) {
    Camera& camera = find();
    camera.disconnect();
    EXPECT_TRUE(camera.getCameraInfo().empty());
    expectFailure<KestrelException_CameraState>([&] { camera.suspend(); }, "CameraState",
                                                TestSupport::kTransitionRefused);
    camera.connect();
    camera.connect();
    EXPECT_EQ(bus.opened, 1);
    bus.refuseClose = true;
    camera.disconnect();
    EXPECT_TRUE(camera.isConnected()) << "a close that fails leaves the camera as it was";
    EXPECT_EQ(bus.closings, std::vector<CameraState>{CameraState::Connected}) << "and as it was meanwhile";
    camera.suspend();
    camera.connect();
    EXPECT_EQ(bus.closings.size(), 2U) << "each handle is closed once";
    EXPECT_EQ(std::exchange(bus.open, 1), 2) << "what is not closed is left open";
    bus.refuseClose = false;
    bus.opened = 1;
    camera.suspend();
    EXPECT_EQ(camera.getState(), CameraState::Suspended);
    expectFailure<KestrelException_CameraState>([&] { camera.disconnect(); }, "CameraState",
                                                TestSupport::kTransitionRefused);
    camera.connect();
    EXPECT_EQ(bus.opened, 2);
    EXPECT_EQ(bus.open, 1) << "opened anew, with the former handle closed";
    camera.disconnect();
    EXPECT_EQ(bus.open, 0);
    bus.refuseOpen = true;
    expectFailure<KestrelException_Camera>([&] { camera.connect(); }, "CameraConnection", kConnection);
    EXPECT_EQ(camera.getState(), CameraState::Disconnected);
    bus.refuseOpen = false;
    camera.connect();
    camera.suspend(); // and destroyed in this state
}

TEST_F(Usb3VisionCameraTest, ACameraThatLeftTheListIsNotConnected) {
    Camera& camera = open();
    const std::vector<Usb3VisionCameraRecord> cameras = std::exchange(bus.cameras, {});
    bus.reads.assign(6, false); // asked twice
    dropVanishedCameras();
    bus.cameras = cameras;
    expectFailure<KestrelException_Camera>([&] { camera.connect(); }, "CameraConnection", kConnection);
    EXPECT_NO_THROW(open());
}

TEST_F(Usb3VisionCameraTest, DescribesItselfAndDeliversNothing) {
    Camera& camera = find();
    Texts changed;
    camera.registerPropertyChangeCallback([&](Property& property) { changed.push_back(property.getName()); });
    camera.connect();
    std::map<std::string, std::string> info{
        {"Model Name", "X"}, {"Serial Number", "42"}, {kMode, "Disabled"}, {"Vendor Name", "Meridane"}};
    EXPECT_EQ(camera.getCameraInfo(), info);
    EXPECT_EQ(camera.getSupportedProperties().size(), info.size());
    bus.reads = {false};
    info.erase(kMode);
    EXPECT_EQ(camera.getCameraInfo(), info) << "what cannot be read is left out";
    Property& vendor = camera.getProperty("Vendor Name");
    vendor.setValue("x");
    EXPECT_EQ(vendor.getValue(), "Meridane");
    EXPECT_FALSE(vendor.isAvailableForWriting());
    EXPECT_EQ(changed, Texts{});
    vendor.update(false);
    EXPECT_EQ(changed, Texts{"Vendor Name"}) << "the callback is there before the properties are";
    expectStandard<std::runtime_error>([&] { camera.getImage(); }, "Method not implemented.");
    EXPECT_FALSE(camera.isStreaming());
    for (const auto& operation : {&Camera::startStream, &Camera::stopStream}) {
        expectFailure<KestrelException>([&] { (camera.*operation)(); }, "StreamUnsupported",
                                        "The camera has no stream.");
    }
}

TEST_F(Usb3VisionCameraTest, TwoFailedReadsMakeACameraDead) {
    Camera& camera = open();
    struct Row {
        std::deque<bool> reads;
        bool alive;
        std::size_t unread;
    };
    for (const Row& row : {Row{{true, false, false}, true, 2}, Row{{false, true, false}, true, 1},
                           Row{{false, false, true}, false, 0}, Row{{false, false, false}, false, 0}}) {
        bus.reads = row.reads;
        EXPECT_EQ(camera.isCameraAlive(), row.alive) << testing::PrintToString(row.reads);
        EXPECT_EQ(bus.reads.size(), row.unread) << testing::PrintToString(row.reads);
    }
}

TEST_F(Usb3VisionCameraTest, ModeIsTurnedOnOnlyOverAValidFile) {
    Property& mode = open().getProperty(kMode);
    constexpr std::uint32_t kRoom = 0x1000000 - 0x1B8000;
    store(std::vector<unsigned char>(kRoom, 0x5A));
    EXPECT_TRUE(mode.isAvailableForWriting()) << "up to the end of the flash";
    bus.fileReads = 0;
    for (const std::uint32_t size : {kRoom + 1, 0xFFFF8000U, 0xFFFFFFFFU}) {
        bus.info.fileSize = size;
        EXPECT_FALSE(mode.isAvailableForWriting()) << size;
    }
    EXPECT_EQ(bus.fileReads, 0) << "no buffer is made for what cannot be there";
    store({});
    EXPECT_TRUE(mode.isAvailableForWriting()) << "the digest of no bytes";
    store({1, 2, 3});
    bus.file[1] = 7;
    EXPECT_FALSE(mode.isAvailableForWriting()) << "another file than the hash says";
    mode.setValue("Enabled");
    EXPECT_TRUE(bus.bootSequences.empty());
    bus.file[1] = 2;
    mode.setValue("Enabled");
    bus.info.mode = 0;
    bus.file[1] = 7;
    EXPECT_EQ(mode.getValue(), "Enabled");
    mode.setValue("Disabled");
    EXPECT_EQ(bus.bootSequences, (std::vector<std::uint32_t>{1, 0})) << "an enabled mode can always be turned off";
    EXPECT_EQ(thrownBy([&] { mode.setValue("On"); }).substr(0, 23), "PropertyValueConversion");
}

TEST_F(Usb3VisionCameraTest, ModeReportsWhichAccessFailed) {
    Property& mode = open().getProperty(kMode);
    store({1, 2, 3});
    const auto failure = [](const std::string& word, const std::string& sentence) {
        return propertyFailure(word, "Usb3VisionUsb3VisionMode", kMode, sentence);
    };
    const std::string unread = failure("PropertyReadFailure", "Property value could not be read.");
    // Reads: the mode, the block and the file to see whether it can be written, the block once more.
    for (std::size_t good = 0; good < 4; ++good) {
        bus.reads.assign(good, true);
        bus.reads.push_back(false);
        EXPECT_EQ(thrownBy([&] { mode.setValue("Enabled"); }), unread) << good;
    }
    EXPECT_TRUE(bus.bootSequences.empty());
    bus.refuseWrites = true;
    EXPECT_EQ(thrownBy([&] { mode.setValue("Enabled"); }),
              failure("PropertyWriteFailure", "Property value could not be written."));
}

TEST_F(Usb3VisionCameraTest, RebootFailsOnlyOnACameraThatStillAnswers) {
    Camera& camera = open();
    const auto reboot = [&](Texts parameters) {
        return thrownBy([&] { EXPECT_EQ(camera.perform("Reboot", parameters), Texts{}); });
    };
    EXPECT_EQ(camera.getFunction("Reboot").getParameters().at(0).m_Label, "Mode");
    EXPECT_EQ(reboot({}), "ArgumentEmpty[Shared/src/Functions/Usb3Vision/Usb3VisionReboot.cpp]"
                          "The argument \"parameters\" is invalid. Provided argument is empty.");
    EXPECT_EQ(reboot({"firmware"}), "Reboot mode not valid.");
    EXPECT_TRUE(bus.singleWrites.empty());
    EXPECT_EQ(reboot({"Bootloader"}), "nothing");
    EXPECT_EQ(reboot({"Firmware", "ignored"}), "nothing");
    EXPECT_EQ(bus.singleWrites,
              (std::vector<std::vector<std::uint32_t>>{{0x1B, 0x1B, 0, 1, 0}, {0x1B, 0x1B, 1, 1, 0}}));
    bus.refuseWrites = true;
    EXPECT_EQ(reboot({"Firmware"}), "Failed to reboot camera in the desired mode.");
    bus.reads = {false, false, false};
    EXPECT_EQ(reboot({"Firmware"}), "nothing") << "it has left to reboot";
}

} // namespace
