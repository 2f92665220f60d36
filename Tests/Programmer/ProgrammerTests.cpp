// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Programmer.h"

#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

#include "Exceptions/KestrelExceptions.h"
#include "Support/OrvexPropertyFixture.h"
#include "Support/Throws.h"

namespace {

using CameraInterface::Camera;
using KestrelExceptions::KestrelException_Function;
using SoftwareDevices::Operation;
using TestSupport::expectStandard;
using Utilities::Programmer;
using Bytes = std::vector<unsigned char>;

constexpr unsigned int kAddress = 0x2000;
constexpr unsigned int kRoom = 1U << 20;

Bytes pattern(std::size_t length) {
    Bytes bytes(length);
    for (std::size_t index = 0; index < length; ++index) {
        bytes[index] = static_cast<unsigned char>(index * 31 + index / 251);
    }
    return bytes;
}

void append(Bytes& bytes, std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(word >> shift));
    }
}

/// A boot image with one section of so many words, for address 0x100.
Bytes bootImage(std::uint32_t words) {
    Bytes image{'C', 'Y', 0x1C, 0xB0};
    append(image, words);
    append(image, 0x100);
    const Bytes content = pattern(words * 4);
    image.insert(image.end(), content.begin(), content.end());
    append(image, 0);
    append(image, 0x40001234);
    return image;
}

class ProgrammerTest : public TestSupport::OrvexPropertyFixture {
protected:
    ProgrammerTest() {
        connect(color());
        SoftwareDevices::writeFlash(m_Serial, kAddress - 1, Bytes(kRoom, 0x5A)); // not erased
    }

    Bytes flash(std::size_t length) const {
        return SoftwareDevices::flash(m_Serial, kAddress, static_cast<std::uint32_t>(length));
    }

    /// The calls during an action, each as "<operation> <address> <length>".
    template <typename Action>
    static std::vector<std::string> callsDuring(Action action) {
        SoftwareDevices::startLog();
        action();
        std::vector<std::string> calls;
        for (const SoftwareDevices::CallRecord& call : SoftwareDevices::takeLog()) {
            const std::size_t first = call.numbers.size() - 2; // after request and value of a RAM write
            calls.push_back(call.name + " " + std::to_string(static_cast<unsigned int>(call.numbers[first])) + " " +
                            std::to_string(static_cast<unsigned int>(call.numbers[first + 1])));
        }
        return calls;
    }

    std::vector<double> m_Progress;
    std::function<void(double)> m_Report = [this](double done) { m_Progress.push_back(done); };
};

using Calls = std::vector<std::string>;

TEST_F(ProgrammerTest, ABufferIsErasedAndWrittenChunkByChunk) {
    const Bytes data = pattern(2500);
    EXPECT_EQ(callsDuring([&] { Programmer::writeBufferToFlash(*m_Camera, data, kAddress, 2500, 1024, m_Report); }),
              (Calls{"sdkEraseFlash 8192 2500", "sdkWriteFlash 8192 1024", "sdkWriteFlash 9216 1024",
                     "sdkWriteFlash 10240 452"}));
    EXPECT_EQ(flash(2500), data);
    EXPECT_EQ(m_Progress, (std::vector<double>{0.4096, 0.8192, 1.0}));
}

TEST_F(ProgrammerTest, ABootImagesHeaderIsWrittenLast) {
    const Bytes image = bootImage(500);
    EXPECT_EQ(callsDuring([&] { Programmer::writeFirmwareToFlash(*m_Camera, image, kAddress, kRoom, 1000, m_Report); }),
              (Calls{"sdkEraseFlash 8192 2020", "sdkWriteFlash 8196 1000", "sdkWriteFlash 9196 1000",
                     "sdkWriteFlash 10196 16", "sdkWriteFlash 8192 4"}));
    EXPECT_EQ(flash(image.size()), image);
    EXPECT_EQ(m_Progress.back(), 1.0);
    m_Progress.clear();
    EXPECT_EQ(callsDuring([&] {
                  Programmer::writeFirmwareToFlash(*m_Camera, {'C', 'Y', 0, 0xB0}, kAddress, 4, 1, m_Report);
              }),
              (Calls{"sdkEraseFlash 8192 4", "sdkWriteFlash 8192 4"}));
    EXPECT_TRUE(m_Progress.empty());
}

TEST_F(ProgrammerTest, ComparisonEndsAtTheFirstDifferentChunk) {
    Bytes data = flash(3000);
    EXPECT_TRUE(Programmer::compareFlash(*m_Camera, data, kAddress, 1024, m_Report));
    EXPECT_EQ(m_Progress.size(), 3U);
    EXPECT_EQ(m_Progress.back(), 1.0);
    data[2047] ^= 1;
    EXPECT_EQ(callsDuring([&] { EXPECT_FALSE(Programmer::compareFlash(*m_Camera, data, kAddress, 1024, m_Report)); }),
              (Calls{"sdkReadFlash 8192 1024", "sdkReadFlash 9216 1024"}));
    EXPECT_TRUE(callsDuring([&] { EXPECT_TRUE(Programmer::compareFlash(*m_Camera, {}, 0, 0, {})); }).empty());
}

TEST_F(ProgrammerTest, WhatCannotBeWrittenLeavesTheCameraUntouched) {
    Camera& camera = *m_Camera;
    const Bytes image = bootImage(1);
    const Bytes none;
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"No data provided.", [&] { Programmer::writeBufferToFlash(camera, none, 0, 0, 0, {}); }},
        {"Data provided is too large.", [&] { Programmer::writeBufferToFlash(camera, image, 0, 23, 0, {}); }},
        {"Chunk size cannot be 0.", [&] { Programmer::writeBufferToFlash(camera, image, 0, 99, 0, {}); }},
        {"No data provided.", [&] { Programmer::writeFirmwareToFlash(camera, none, 0, 0, 0, {}); }},
        {"Data provided is too large.", [&] { Programmer::writeFirmwareToFlash(camera, image, 0, 23, 0, {}); }},
        {"Chunk size cannot be 0.", [&] { Programmer::writeFirmwareToFlash(camera, image, 0, 99, 0, {}); }},
        {"Chunk size cannot be 0.", [&] { Programmer::compareFlash(camera, image, 0, 0, {}); }},
        {"No data provided.", [&] { Programmer::writeFirmwareToRam(camera, none, {}); }},
    };
    const Calls calls = callsDuring([&] {
        for (const auto& [text, action] : rows) {
            expectStandard<std::invalid_argument>(action, text);
        }
    });
    EXPECT_TRUE(calls.empty());
}

TEST_F(ProgrammerTest, OnlyTheStartOfARamImageMayFail) {
    const Bytes image = bootImage(3);
    fail(Operation::sdkVendorRequest);
    EXPECT_THROW(Programmer::writeFirmwareToRam(*m_Camera, image, {}), KestrelException_Function);
    SoftwareDevices::unplugDuring(m_Serial, Operation::sdkVendorRequest, 2); // it leaves the bus as it starts
    EXPECT_NO_THROW(Programmer::writeFirmwareToRam(*m_Camera, image, m_Report));
    EXPECT_EQ(m_Progress.front(), (4.0 + 8 + 12) / 32);
    SoftwareDevices::replug(m_Serial);
    EXPECT_EQ(SoftwareDevices::startedProgram(m_Serial), 0x40001234U);
    EXPECT_EQ(SoftwareDevices::ram(m_Serial, 0x100, 12), pattern(12));
}

TEST_F(ProgrammerTest, StatusAndBitOrder) {
    Programmer::writeFlashStatus(*m_Camera, 0, 0x8C);
    EXPECT_EQ(Programmer::readFlashStatus(*m_Camera, 0), 0x8C);
    EXPECT_EQ(Programmer::flipBitOrder({0x01, 0x12, 0xF0, 0xFF}), (Bytes{0x80, 0x48, 0x0F, 0xFF}));
}

} // namespace
