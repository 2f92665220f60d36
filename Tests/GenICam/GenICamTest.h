// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Quill.h>

#include "GenICam/Network.h"
#include "Support/Event.h"

namespace TestSupport {

/// Aravis' own camera in software, an independent peer.
inline std::vector<std::string> peer(const std::string& address, const std::string& serialNumber) {
    return {"arv-fake-gv-camera-0.8", "-i", address, "-s", serialNumber};
}

/// A camera in software that misbehaves on request.
inline std::vector<std::string> software(const std::string& address, const std::vector<std::string>& options,
                                         const std::string& serialNumber = "One") {
    std::vector<std::string> words{QUILL_TEST_GIGE_CAMERA, "--address", address, "--serial", serialNumber};
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

inline std::uint64_t counter(const std::vector<CameraInterface::StreamCounter>& counters, const std::string& name) {
    const auto place = std::find_if(counters.begin(), counters.end(), [&](const auto& c) { return c.name == name; });
    return place == counters.end() ? 0 : place->value;
}

/// Every frame that the camera captured was delivered, or was lost for a reason. What one queue dropped, another got.
inline void expectEveryFrameCounted(const std::vector<CameraInterface::StreamCounter>& counters) {
    std::uint64_t sum = counter(counters, "Delivered") + counter(counters, "Unused");
    for (const auto& c : counters) {
        sum += c.isLoss && c.name != "Dropped by test" ? c.value : 0;
    }
    EXPECT_EQ(counter(counters, "Captured"), sum);
}

/// Ends the cameras, and looks for none any more.
class GenICamTest : public ::testing::Test {
protected:
    ~GenICamTest() override {
        CameraInterface::Camera::unitialisedWorkpace();
        CameraInterface::GenICam::configure({});
    }

    static void lookOn(const std::vector<std::string>& cards, const std::vector<std::string>& addresses = {},
                       std::uint32_t heartbeatMs = 0) {
        CameraInterface::GenICam::Settings settings;
        settings.cards = cards;
        settings.addresses = addresses;
        settings.usb = false;
        settings.heartbeatMs = heartbeatMs;
        CameraInterface::GenICam::configure(settings);
    }

    /// Waits until the camera is listed.
    static CameraInterface::Camera& listed(const std::string& serialNumber) {
        EXPECT_TRUE(eventually([&] {
            CameraInterface::Camera::searchForNewCameras();
            return CameraInterface::Camera::getCamerasList().count(serialNumber) != 0;
        }));
        return CameraInterface::Camera::getCamera(serialNumber);
    }

    /// Waits until the camera is listed and connected. A peer's answer may be late on a busy machine.
    static CameraInterface::Camera& connected(const std::string& serialNumber) {
        EXPECT_TRUE(eventually([&] {
            try {
                listed(serialNumber).connect();
                return true;
            } catch (const KestrelExceptions::KestrelException_Camera&) {
                return false;
            }
        }));
        return CameraInterface::Camera::getCamera(serialNumber);
    }
};

} // namespace TestSupport
