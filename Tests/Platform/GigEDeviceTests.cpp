// SPDX-License-Identifier: Apache-2.0

#include "GigEDevice.h"

#include <chrono>
#include <random>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Support/GigEClient.h"

namespace {

using namespace GenICamDevices;
using namespace TestSupport;
using namespace std::chrono_literals;

constexpr Peer kOwner{0x7F000001, 5000};
constexpr Peer kOther{0x7F000001, 5001};

CameraOptions smallCamera() {
    CameraOptions options;
    options.width = 64;
    options.height = 32;
    options.serial = "T1";
    options.mac = 0x020000000001;
    return options;
}

/// A camera without sockets.
class GigEDeviceTest : public testing::Test {
protected:
    Bytes ask(GigECommand command, const Bytes& payload, const Peer& from = kOwner) {
        const Bytes packet = gigeRequest(command, ++id, payload);
        return device.handlePacket(from, packet.data(), packet.size(), now).answer;
    }
    GigEStatus write(std::uint32_t address, std::uint32_t value, const Peer& from = kOwner) {
        return gigeStatus(ask(GigECommand::WriteRegisters, gigeWords({address, value}), from));
    }
    std::uint32_t read(std::uint32_t address, const Peer& from = kOwner) {
        const Bytes answer = ask(GigECommand::ReadRegisters, gigeWords({address}), from);
        return answer.size() == 12 ? static_cast<std::uint32_t>(bigEndian(&answer[8], 4)) : 0xDEAD;
    }
    void start() {
        for (const auto& [address, value] : {std::pair{Address::kPrivilege, kControlAccess},
                                             {Address::kStreamDestination, kOwner.address},
                                             {Address::kStreamPort, 6000U},
                                             {Address::kAcquisitionStart, 1U}}) {
            ASSERT_EQ(write(address, value), GigEStatus::Success);
        }
    }

    GigEDevice device{smallCamera(), {0x7F000001, 0xFF000000, 0}};
    Clock::time_point now = Clock::now();
    std::uint16_t id = 0;
};

TEST_F(GigEDeviceTest, DescribesItselfInTheAnswerToADiscovery) {
    const Bytes answer = ask(GigECommand::Discovery, {}, kOther);
    ASSERT_EQ(answer.size(), kControlHeaderSize + kDiscoveryAnswerSize);
    EXPECT_EQ(bigEndian(&answer[0], 8), 0x0000000300F80001U);
    EXPECT_EQ(bigEndian(&answer[8 + Address::kMacHigh], 8), 0x020000000001U);
    EXPECT_EQ(bigEndian(&answer[8 + Address::kIp], 4), 0x7F000001U);
    EXPECT_STREQ(reinterpret_cast<const char*>(&answer[8 + Address::kSerial]), "T1");
    const Bytes url = ask(GigECommand::ReadMemory, gigeWords({Address::kFirstUrl, 512}));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&url[12])).rfind("Local:GigECamera.xml;100000;", 0), 0U);
}

TEST_F(GigEDeviceTest, RefusesWhatCannotBeWritten) {
    EXPECT_EQ(write(Address::kWidth, 32), GigEStatus::AccessDenied) << "nobody has control";
    start();
    const struct {
        std::uint32_t address;
        std::uint32_t value;
        GigEStatus status;
    } cases[] = {
        {Address::kWidth, 32, GigEStatus::AccessDenied}, // frames are sent
        {Address::kAcquisitionStop, 1, GigEStatus::Success},
        {Address::kWidth, 32, GigEStatus::Success},
        {Address::kOffsetX, 32, GigEStatus::Success},
        {Address::kWidth, 36, GigEStatus::InvalidParameter}, // beyond the sensor
        {Address::kOffsetX, 30, GigEStatus::InvalidParameter},
        {Address::kOffsetX, 0xFFFFFFFC, GigEStatus::InvalidParameter},
        {Address::kPixelFormat, 0x01080002, GigEStatus::InvalidParameter},
        {Address::kGain, 0x7FC00000, GigEStatus::InvalidParameter}, // not a number
        {Address::kStreamPacketSize, 100, GigEStatus::InvalidParameter},
        {Address::kPayloadSize, 1, GigEStatus::WriteProtect},
        {Address::kDescription, 1, GigEStatus::WriteProtect},
        {0x9000, 1, GigEStatus::InvalidAddress},
        {0xFFFFFFFC, 1, GigEStatus::InvalidAddress},
        {Address::kWidth + 2, 1, GigEStatus::BadAlignment},
        {Address::kTriggerSoftware, 1, GigEStatus::AccessDenied}, // the trigger is off
        {Address::kUserSetSave, 1, GigEStatus::AccessDenied},     // the default set
        {Address::kExposureAuto, 2, GigEStatus::Success},
        {Address::kExposureTime, 0x40C38800, GigEStatus::AccessDenied},
    };
    for (const auto& [address, value, status] : cases) {
        EXPECT_EQ(write(address, value), status) << std::hex << address << " " << value;
    }
    EXPECT_EQ(read(Address::kWidth), 32U);
    const Bytes two = ask(GigECommand::WriteRegisters,
                          gigeWords({Address::kGainSelector, 1, Address::kGainSelector, 9, Address::kGainSelector, 2}));
    EXPECT_EQ(gigeStatus(two), GigEStatus::InvalidParameter);
    EXPECT_EQ(bigEndian(&two[8], 4), 1U) << "registers written";
    EXPECT_EQ(read(Address::kGainSelector), 1U);
}

TEST_F(GigEDeviceTest, OneApplicationAtATimeHasControl) {
    start();
    EXPECT_EQ(write(Address::kPrivilege, kControlAccess, kOther), GigEStatus::AccessDenied);
    EXPECT_EQ(write(Address::kPrivilege, 0, kOther), GigEStatus::AccessDenied);
    EXPECT_EQ(write(Address::kUserNumber, 7, kOther), GigEStatus::AccessDenied);
    EXPECT_EQ(read(Address::kWidth, kOther), 64U);
    EXPECT_EQ(write(Address::kPrivilege, kExclusiveAccess), GigEStatus::Success);
    EXPECT_EQ(read(Address::kWidth, kOther), 0xDEADU);
    now += 2999ms;
    EXPECT_EQ(read(Address::kWidth), 64U) << "keeps control";
    now += 2999ms;
    EXPECT_EQ(write(Address::kPrivilege, kControlAccess, kOther), GigEStatus::AccessDenied);
    now += 2ms;
    EXPECT_EQ(write(Address::kPrivilege, kControlAccess, kOther), GigEStatus::Success) << "the heartbeat timed out";
    EXPECT_EQ(read(Address::kStreamPort), 0U);
    Faults faults;
    faults.deny = true;
    device.setFaults(faults);
    EXPECT_EQ(write(Address::kUserNumber, 7, kOther), GigEStatus::AccessDenied);
    EXPECT_EQ(read(Address::kPrivilege, kOther), kControlAccess);
}

TEST_F(GigEDeviceTest, PerformsARepeatedRequestOnce) {
    start();
    ASSERT_EQ(write(Address::kAcquisitionStop, 1), GigEStatus::Success);
    ASSERT_EQ(write(Address::kTriggerMode, 1), GigEStatus::Success);
    ASSERT_EQ(write(Address::kFrameRateEnable, 0), GigEStatus::Success);
    ASSERT_EQ(write(Address::kAcquisitionStart, 1), GigEStatus::Success);
    const Bytes trigger = gigeRequest(GigECommand::WriteRegisters, 99, gigeWords({Address::kTriggerSoftware, 1}));
    for (int times = 0; times < 3; ++times) {
        const Outcome outcome = device.handlePacket(kOwner, trigger.data(), trigger.size(), now);
        EXPECT_EQ(gigeStatus(outcome.answer), GigEStatus::Success);
    }
    EXPECT_TRUE(device.waitForFrame(now));
    EXPECT_FALSE(device.waitForFrame(Clock::now())) << "one trigger, one frame";
}

TEST_F(GigEDeviceTest, UserSetsComeBack) {
    start();
    const std::pair<std::uint32_t, std::uint32_t> steps[] = {
        {Address::kAcquisitionStop, 1}, {Address::kWidth, 32},         {Address::kPixelFormat, 0x010C0047},
        {Address::kUserSetSelector, 1}, {Address::kUserSetSave, 1},    {Address::kUserSetSelector, 0},
        {Address::kUserSetLoad, 1},     {Address::kUserSetSelector, 1}};
    for (const auto& [address, value] : steps) {
        ASSERT_EQ(write(address, value), GigEStatus::Success) << std::hex << address;
    }
    EXPECT_EQ(read(Address::kPayloadSize), 64U * 32);
    EXPECT_EQ(write(Address::kUserSetLoad, 1), GigEStatus::Success);
    EXPECT_EQ(read(Address::kPayloadSize), 32U * 12 / 8 * 32);
    EXPECT_EQ(write(Address::kDeviceReset, 1), GigEStatus::Success);
    EXPECT_TRUE(ask(GigECommand::Discovery, {}).empty()) << "it restarts";
    now += 500ms;
    EXPECT_EQ(read(Address::kPayloadSize), 64U * 32);
}

TEST_F(GigEDeviceTest, MovesOnlyWhenItIsMeantAndNobodyHasControl) {
    Bytes payload = gigeWords({0x00000200, 0x00000001, 0, 0, 0, 0x7F000005, 0, 0, 0, 0xFF000000, 0, 0, 0, 0x7F0000FE});
    const auto force = [&] {
        const Bytes packet = gigeRequest(GigECommand::ForceIp, ++id, payload);
        return device.handlePacket(kOther, packet.data(), packet.size(), now);
    };
    const Outcome outcome = force();
    ASSERT_TRUE(outcome.moveTo);
    EXPECT_EQ(outcome.moveTo->address, 0x7F000005U);
    EXPECT_EQ(outcome.moveTo->mask, 0xFF000000U);
    EXPECT_EQ(outcome.moveTo->gateway, 0x7F0000FEU);
    payload[7] = 2;
    EXPECT_TRUE(force().answer.empty()) << "another device's MAC address";
    payload[7] = 1;
    start();
    EXPECT_EQ(gigeStatus(force().answer), GigEStatus::AccessDenied);
}

// Every answer is whole, belongs to its request and fits into a packet, whatever the bytes of the request are.
TEST_F(GigEDeviceTest, SurvivesHostileRequests) {
    start();
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same requests in every run
    const std::uint32_t addresses[] = {0,
                                       0xF4,
                                       Address::kPrivilege,
                                       Address::kStreamPacketSize,
                                       Address::kDeviceReset,
                                       Address::kUserData,
                                       Address::kWidth,
                                       Address::kExposureTime,
                                       Address::kUserSetSave,
                                       Address::kDescription,
                                       0xFFFFFFF8};
    for (int round = 0; round < 50000; ++round) {
        now += 1ms;
        if (round % 1000 == 0) { // it may have restarted
            now += 500ms;
            start();
        }
        Bytes packet = gigeRequest(static_cast<GigECommand>(round % 16 == 0 ? random() : 0x80 + random() % 8), 0, {});
        const std::size_t words = random() % 140;
        for (std::size_t i = 0; i < words; ++i) {
            const std::uint32_t address = addresses[random() % std::size(addresses)] + random() % 64;
            appendBigEndian(packet, 4, i == 1 && random() % 2 == 0 ? random() % 600 : address);
        }
        putBigEndian(&packet[4], 2, packet.size() - (random() % 8 == 0 ? random() % 16 : kControlHeaderSize));
        packet.resize(packet.size() - (random() % 8 == 0 ? random() % packet.size() : 0));
        if (packet.size() >= kControlHeaderSize) {
            putBigEndian(&packet[6], 2, random()); // an id of its own
        }
        const Outcome outcome = device.handlePacket(kOwner, packet.data(), packet.size(), now);
        if (!outcome.answer.empty()) {
            ASSERT_LE(outcome.answer.size(), kControlHeaderSize + kLargestControlPayload);
            ASSERT_EQ(bigEndian(&outcome.answer[4], 2), outcome.answer.size() - kControlHeaderSize);
            ASSERT_EQ(bigEndian(&outcome.answer[2], 2), (bigEndian(&packet[2], 2) + 1) & 0xFFFF);
            ASSERT_EQ(bigEndian(&outcome.answer[6], 2), bigEndian(&packet[6], 2));
        }
        device.waitForFrame({}); // takes what is due
    }
    now += 1h; // so that a controller of a hostile heartbeat is gone, too
    EXPECT_EQ(ask(GigECommand::Discovery, {}).size(), kControlHeaderSize + kDiscoveryAnswerSize);
}

/// A camera at an address of its own, since tests run side by side.
class GigEStream : public testing::Test {
protected:
    static CameraOptions options() {
        CameraOptions options = smallCamera();
        const auto process = static_cast<unsigned int>(getpid());
        options.address = "127.9." + std::to_string(process >> 8 & 0xFF) + "." + std::to_string(process & 0xFF);
        options.idStart = 65534;
        return options;
    }
    /// Starts an acquisition in which each trigger is one frame.
    void start() {
        client.write(Address::kStreamPacketSize, 300);
        client.write(Address::kTriggerMode, 1);
        client.write(Address::kFrameRateEnable, 0);
        client.write(Address::kAcquisitionStart, 1);
    }
    /// @return the block id
    std::uint32_t receiveFrame() {
        client.forgetPackets();
        client.write(Address::kTriggerSoftware, 1);
        for (;;) {
            const Bytes packet = client.nextPacket();
            if (packet.empty() || packet[4] == static_cast<std::uint8_t>(GigEPacket::Trailer)) {
                return packet.empty() ? 0 : static_cast<std::uint32_t>(bigEndian(&packet[2], 2));
            }
        }
    }

    GigECamera camera{options()};
    GigEClient client{options().address};
};

std::uint32_t sampleIn(const Bytes& bytes, const PixelFormat& format, std::size_t index) {
    switch (format.packing) {
    case Packing::Bytes:
        return bytes[index];
    case Packing::LittleEndian:
        return bytes[2 * index] + 256U * bytes[2 * index + 1];
    case Packing::HighBytesFirst: {
        const std::uint8_t* const pair = &bytes[index / 2 * 3];
        return pair[index % 2 * 2] * 16U + (index % 2 == 0 ? pair[1] & 15U : pair[1] / 16U);
    }
    case Packing::LowBitsFirst:
        break;
    }
    std::uint32_t sample = 0;
    for (std::size_t bit = 0; bit < format.sampleBits; ++bit) {
        const std::size_t place = index * format.sampleBits + bit;
        sample |= (bytes[place / 8] >> place % 8 & 1U) << bit;
    }
    return sample;
}

/// The samples of a pixel as they are sent.
std::vector<std::uint32_t> expectedPixel(const Picture& picture, const PixelFormat& format, std::uint32_t blockId,
                                         std::uint32_t x, std::uint32_t y) {
    const auto at = [&](std::uint32_t column, SampleColor color) {
        return sampleAt(picture, format, blockId, column, y, color);
    };
    const auto yuvAt = [&at](std::uint32_t column) {
        return yuvOf(static_cast<int>(at(column, SampleColor::Red)), static_cast<int>(at(column, SampleColor::Green)),
                     static_cast<int>(at(column, SampleColor::Blue)));
    };
    const std::vector<std::uint32_t> rgb{at(x, SampleColor::Red), at(x, SampleColor::Green), at(x, SampleColor::Blue)};
    switch (format.kind) {
    case PixelKind::Mono:
        return {at(x, SampleColor::Grey)};
    case PixelKind::BayerRG:
        return {rgb[x % 2 + y % 2]};
    case PixelKind::Rgb:
        return rgb;
    case PixelKind::Bgr:
        return {rgb[2], rgb[1], rgb[0]};
    case PixelKind::Yuv422:
        break;
    }
    return {yuvAt(x)[0], yuvAt(x - x % 2)[1 + x % 2]};
}

TEST_F(GigEStream, SendsTheDocumentedPattern) {
    Picture picture;
    picture.sensorWidth = 64;
    picture.offsetX = 8;
    picture.offsetY = 2;
    picture.reverseX = true;
    picture.gain = {3, 0, 6};
    const std::pair<std::uint32_t, std::uint32_t> settings[] = {
        {Address::kWidth, 20},   {Address::kHeight, 16},       {Address::kOffsetX, 8},          {Address::kOffsetY, 2},
        {Address::kReverseX, 1}, {Address::kGain, 0x40400000}, {Address::kGain + 8, 0x40C00000}};
    for (const auto& [address, value] : settings) {
        client.write(address, value);
    }
    for (const PixelFormat& format : kPixelFormats) {
        client.write(Address::kPixelFormat, format.code);
        start();
        for (const std::uint32_t blockId : {65534U, 65535U, 1U}) { // no frame has number 0
            ASSERT_EQ(receiveFrame(), blockId) << format.name;
            const Bytes payload = client.payload(blockId);
            ASSERT_EQ(payload.size(), format.rowSize(20) * 16) << format.name;
            std::size_t index = 0;
            for (std::uint32_t pixel = 0; pixel < 20 * 16; ++pixel) {
                for (const std::uint32_t sample : expectedPixel(picture, format, blockId, pixel % 20, pixel / 20)) {
                    ASSERT_EQ(sampleIn(payload, format, index++), sample) << format.name << " pixel " << pixel;
                }
            }
        }
        const Bytes leader = client.packets().at({1, 0}); // of the last frame
        EXPECT_EQ(Bytes(leader.begin() + 20, leader.end()), gigeWords({format.code, 20, 16, 8, 2, 0}));
        client.write(Address::kAcquisitionStop, 1);
    }
}

TEST_F(GigEStream, SendsAgainWhatWasLost) {
    Faults faults;
    faults.loss = 50;
    camera.setFaults(faults);
    start();
    client.write(Address::kTriggerSoftware, 1);
    constexpr std::uint32_t kPackets = 2048 / (300 - kPacketOverhead) + 3; // with leader and trailer
    while (client.packets().size() < kPackets) {
        faults.loss = 0;
        client.nextPacket();
        camera.setFaults(faults);
        client.send(GigECommand::PacketResend, gigeWords({65534, 0, 0xFFFFFF}));
    }
    EXPECT_EQ(client.payload(65534).size(), 64U * 32);
    EXPECT_GT(camera.counts().packetsDropped, 0U);
    EXPECT_GT(camera.counts().resendsAnswered, 0U);
}

TEST_F(GigEStream, MisbehavesAsItIsTold) {
    const struct {
        const char* fault;
        const char* value;
        std::size_t bytes;
        std::uint32_t width;
        std::uint32_t rows;
    } cases[] = {{"lie", "size", 64 * 40, 64, 32},
                 {"lie", "width", 64 * 32, 68, 32},
                 {"short-frames", "on", 64 * 24, 64, 24},
                 {"lie", "off", 64 * 32, 64, 32}};
    start();
    for (const auto& [fault, value, bytes, width, rows] : cases) {
        Faults faults;
        setFault(faults, fault, value);
        camera.setFaults(faults);
        const std::uint32_t blockId = receiveFrame();
        EXPECT_EQ(client.payload(blockId).size(), bytes) << fault << " " << value;
        EXPECT_EQ(bigEndian(&client.packets().at({blockId, 0})[24], 4), width) << fault << " " << value;
        EXPECT_EQ(bigEndian(&client.packets().rbegin()->second[12], 4), rows) << fault << " " << value;
    }
}

} // namespace
