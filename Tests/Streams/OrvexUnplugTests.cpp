#include <algorithm>
#include <chrono>
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "Exceptions/KestrelException.h"
#include "Support/Event.h"
#include "Support/SoftwareDeviceFixture.h"

namespace {

using namespace CameraInterface;
using namespace SoftwareDevices;
using KestrelExceptions::KestrelException;

/// Every default device, unplugged in the middle of every call that an operation of the library makes.
class OrvexUnplugTest : public TestSupport::SoftwareDeviceFixture, public ::testing::WithParamInterface<int> {
protected:
    using Action = std::function<void(Camera&)>;

    static DeviceDescription device() { return defaultDevices()[static_cast<std::size_t>(GetParam())]; }

    /// The calls that reach the device, by operation.
    static std::map<Operation, std::uint32_t> callsOf(const Action& prepare, const Action& action) {
        Camera& camera = find();
        prepare(camera);
        startLog();
        action(camera);
        std::map<Operation, std::uint32_t> calls;
        for (const CallRecord& call : takeLog()) {
            calls[call.operation] += call.serial == device().serial ? 1 : 0;
        }
        return calls;
    }

    /// @param action whatever it throws must be an exception of the library
    /// @param check what must hold afterwards, given the exception's word, empty if there was none
    static void unplugInEveryCall(const Action& prepare, const Action& action,
                                  const std::function<void(Camera&, const std::string&)>& check) {
        for (const auto& [operation, made] : callsOf(prepare, action)) {
            // A worker captures any number of times; the first ones are those that matter.
            for (std::uint32_t call = 1; call <= (isRepeated(operation) ? std::min(made, 2U) : made); ++call) {
                SCOPED_TRACE(operationName(operation) + (" " + std::to_string(call)));
                Camera& camera = find();
                startLog();
                prepare(camera);
                if (camera.isConnected()) {
                    set(camera, "Timeout", "20"); // milliseconds; a frame that is late fails as one that is lost
                }
                unplugDuring(device().serial, operation, call);
                const auto begin = std::chrono::steady_clock::now();
                std::string word;
                try {
                    action(camera);
                } catch (const KestrelException& exception) {
                    word = exception.who();
                }
                EXPECT_LT(std::chrono::steady_clock::now() - begin, TestSupport::kLongEnough);
                clearFaults();
                const auto present = pluggedDevices();
                if (!present.empty()) {
                    unplug(present.front()); // it gave up before that call
                }
                check(camera, word);
                Camera::unitialisedWorkpace();
                const auto log = takeLog();
                const auto count = [&](Operation counted) {
                    return std::count_if(log.begin(), log.end(), [&](const CallRecord& record) {
                        return record.operation == counted &&
                               (record.succeeded || counted == Operation::sdkCameraClose);
                    });
                };
                EXPECT_EQ(count(Operation::sdkCameraOpen), count(Operation::sdkCameraClose));
            }
        }
    }

private:
    static bool isRepeated(Operation operation) {
        return std::string(operationName(operation)).find("Capture") != std::string::npos ||
               operation == Operation::sdkGetVideoImageFormat || operation == Operation::sdkGetStillImageFormat;
    }
    static Camera& find() {
        Camera::unitialisedWorkpace();
        clearFaults();
        plug(device());
        Camera::searchForNewCameras();
        return Camera::getCamera(std::to_string(device().serial));
    }
};

INSTANTIATE_TEST_SUITE_P(Default, OrvexUnplugTest, ::testing::Values(0, 1, 2));

TEST_P(OrvexUnplugTest, InConnectLeavesACameraThatLacksThingsOrTheConnectionRefused) {
    unplugInEveryCall([](Camera&) {}, [](Camera& camera) { camera.connect(); },
                      [](Camera& camera, const std::string& word) {
                          EXPECT_EQ(word, camera.isConnected() ? "" : "CameraConnection");
                          for (const std::string& name : camera.getSupportedProperties()) {
                              EXPECT_EQ(camera.getProperty(name).getName(), name);
                          }
                          EXPECT_FALSE(camera.isConnected() && camera.isCameraAlive());
                      });
}

TEST_P(OrvexUnplugTest, InGetImageEndsItAndItsStream) {
    for (const char* mode : {"Video", "Still"}) {
        const auto prepare = [&](Camera& camera) {
            camera.connect();
            setAsFastAsAsked(device().serial, true);
            set(camera, "Streaming Mode", mode);
            set(camera, "Width", "64");
            set(camera, "Height", "48");
        };
        unplugInEveryCall(
            prepare, [](Camera& camera) { camera.getImage(); },
            [](Camera& camera, const std::string&) {
                EXPECT_FALSE(camera.isStreaming());
                EXPECT_THROW(camera.getImage(), KestrelException);
            });
    }
}

} // namespace
