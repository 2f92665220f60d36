// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "Support/Event.h"
#include "Support/OrvexApiChange.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace CameraInterface;
using OrvexAdapter::OrvexApi;
using TestSupport::Event;
using TestSupport::OrvexApiChange;

/// An activity of the application or of a stream that is in progress when it is stopped.
struct Running {
    void operator()() {
        entered.raise();
        release.wait();
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // so that a stop that does not wait returns early
        finished = true;
    }
    /// Whether @p stop returns after this activity has ended, not before.
    bool endsBefore(const std::function<void()>& stop) {
        if (!entered.wait()) {
            return false;
        }
        std::thread releaser([&] { release.raise(); });
        stop();
        const bool ended = finished;
        releaser.join();
        return ended;
    }

    Event entered;
    Event release;
    std::atomic<bool> finished{false};
};

using CallbackBarrier = TestSupport::SoftwareDeviceFixture;

TEST_F(CallbackBarrier, WhatReplacesOrEndsACallbackWaitsForIt) {
    struct Case {
        const char* name;
        bool isDisconnect;
        std::function<void()> stop;
    };
    const Case cases[] = {
        {"registerDisconnectCallback", true, [] { Camera::registerDisconnectCallback({}); }},
        {"unitialisedWorkpace", true, [] { Camera::unitialisedWorkpace(); }},
        {"registerNewConnectCallback", false, [] { Camera::registerNewConnectCallback({}); }},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const auto running = std::make_shared<Running>();
        const std::uint32_t serial = SoftwareDevices::plug(SoftwareDevices::defaultDevices()[1]);
        Camera::initialiseWorkspace();
        if (row.isDisconnect) {
            Camera::registerDisconnectCallback([&](const std::string&, const std::string&) { (*running)(); });
            SoftwareDevices::unplug(serial);
        } else {
            Camera::registerNewConnectCallback([&] { (*running)(); });
            SoftwareDevices::plug(SoftwareDevices::defaultDevices()[0]);
        }
        EXPECT_TRUE(running->endsBefore(row.stop));
        Camera::unitialisedWorkpace();
        SoftwareDevices::unplugAll();
    }
}

/// Owned by a callback; uses the library when that is destroyed.
struct ComesBack {
    ~ComesBack() {
        Camera::registerDisconnectCallback({});
        Camera::registerNewConnectCallback({});
        Camera::getEnumerationFailures();
    }
};

TEST_F(CallbackBarrier, WhatACallbackOwnsMayUseTheLibraryWhenItIsDestroyed) {
    for (void (*const end)() :
         {+[] { Camera::registerDisconnectCallback({}); }, +[] { Camera::unitialisedWorkpace(); }}) {
        Camera::initialiseWorkspace();
        Camera::registerDisconnectCallback(
            [owned = std::make_shared<ComesBack>()](const std::string&, const std::string&) {});
        Camera::registerNewConnectCallback([owned = std::make_shared<ComesBack>()] {});
        end();
    }
    Camera::unitialisedWorkpace();
}

class StreamBarrier : public TestSupport::SoftwareDeviceFixture {
protected:
    static std::uint32_t capture(void* handle, std::uint32_t count, std::uint8_t* buffer) {
        const std::uint32_t captured = OrvexApiChange::original().sdkCaptureVideoFrames(handle, count, buffer);
        if (Running* const running = s_Running.exchange(nullptr)) {
            (*running)();
        }
        return captured;
    }

    inline static std::atomic<Running*> s_Running{nullptr}; ///< in the next capture
    OrvexApiChange m_Change{[](OrvexApi& api) { api.sdkCaptureVideoFrames = capture; }};
};

TEST_F(StreamBarrier, WhatEndsAStreamWaitsForTheCaptureThatIsUnderWay) {
    struct Case {
        const char* name;
        void (*stop)(Camera& camera);
    };
    constexpr Case kCases[] = {{"stopStream", [](Camera& camera) { camera.stopStream(); }},
                               {"disconnect", [](Camera& camera) { camera.disconnect(); }},
                               {"suspend", [](Camera& camera) { camera.suspend(); }},
                               {"unitialisedWorkpace", [](Camera&) { Camera::unitialisedWorkpace(); }}};
    for (const Case& row : kCases) {
        SCOPED_TRACE(row.name);
        Running running;
        Camera& camera = open(SoftwareDevices::defaultDevices()[1]);
        SoftwareDevices::setAsFastAsAsked(SoftwareDevices::defaultDevices()[1].serial, true);
        s_Running = &running;
        camera.startStream();
        EXPECT_TRUE(running.endsBefore([&] { row.stop(camera); }));
        Camera::unitialisedWorkpace();
    }
}

} // namespace
