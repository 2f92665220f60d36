// SPDX-License-Identifier: Apache-2.0

// Whatever a camera does in the middle of an application's calls, they end with a result or an exception of the
// library, and the camera works again once it is in order.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "GenICam/GenICamTest.h"
#include "Support/ProcessFigures.h"

namespace {

using namespace CameraInterface;
using KestrelExceptions::KestrelException;
using TestSupport::CameraProcess;
using TestSupport::eventually;
using TestSupport::GenICamTest;
using TestSupport::kLongEnough;
using TestSupport::software;
using Random = std::mt19937;

/// How often a test repeats itself; more in a long run.
std::size_t repetitions(const char* variable, std::size_t usual) {
    const char* const wanted = std::getenv(variable);
    return wanted == nullptr ? usual : std::strtoul(wanted, nullptr, 10);
}

/// Runs calls of which each may be refused, but only by exceptions that are documented.
template <typename Action>
bool tolerant(Action action) {
    try {
        action();
        return true;
    } catch (const KestrelException&) {
    } catch (const std::invalid_argument&) { // a text that is no number
    } catch (const std::out_of_range&) {     // a number that is none of this type
    }
    return false;
}

/// How long a scenario goes on with a camera that is out of order: each call may take a tenth of a second.
class Patience {
public:
    explicit Patience(const std::atomic<bool>& isDisturbed) : m_IsDisturbed(isDisturbed) {}
    /// Counts a refused call. @return whether to stop
    bool isOver() { return m_IsDisturbed && ++m_Refusals >= 3; }

private:
    const std::atomic<bool>& m_IsDisturbed;
    int m_Refusals = 0;
};

template <typename Action>
void forEachOf(const std::vector<std::string>& names, Patience& patience, Action action) {
    for (const std::string& name : names) {
        if (!tolerant([&] { action(name); }) && patience.isOver()) {
            return;
        }
    }
}

void readProperties(Camera& camera, Patience& patience) {
    forEachOf(camera.getSupportedProperties(), patience, [&camera](const std::string& name) {
        Property& property = camera.getProperty(name);
        property.getValue();
        property.getMinimum();
        property.getMaximum();
        property.getIncrement();
        property.getDefault();
        property.getValueList();
    });
}

void writeProperties(Camera& camera, Patience& patience) {
    camera.registerPropertyChangeCallback([](Property& property) { tolerant([&] { property.getValue(); }); });
    forEachOf(camera.getSupportedProperties(), patience, [&camera](const std::string& name) {
        Property& property = camera.getProperty(name);
        if (!property.isReadOnly() && property.isAvailableForWriting()) {
            property.setValue(property.getValue());
        }
    });
    camera.registerPropertyChangeCallback({});
}

void performFunctions(Camera& camera, Patience& patience) {
    forEachOf(camera.getSupportedFunctions(), patience, [&camera](const std::string& name) {
        std::vector<std::string> none;
        camera.perform(name, none);
    });
}

void takeFrames(Camera& camera, Patience& /*patience*/) {
    camera.getProperty("Timeout").setValue("200");
    FrameQueue queue = camera.openFrameQueue({2, WhenFull::HoldBack, {}});
    camera.startStream();
    std::uint64_t last = 0;
    for (int i = 0; i < 5; ++i) {
        if (const FrameResult result = queue.pop(std::chrono::milliseconds(100))) {
            EXPECT_GT(result.frame.information.number, last);
            last = result.frame.information.number;
        }
    }
    queue.close();
    camera.getImage();
    camera.stopStream();
}

/// A frame callback ends the queue that it gets frames beside, and its own life.
void releaseInCallbacks(Camera& camera, Patience& /*patience*/) {
    camera.getProperty("Timeout").setValue("200");
    auto queue = std::make_shared<FrameQueue>(camera.openFrameQueue({}));
    camera.setFrameCallback([&camera, queue](const Frame&) mutable {
        queue.reset();
        EXPECT_FALSE(tolerant([&] { camera.setFrameCallback({}); })) << "waits for itself";
        tolerant([&] { camera.stopStream(); });
    });
    queue.reset();
    camera.startStream();
    tolerant([&] { camera.getImage(); });
    camera.setFrameCallback({});
}

void examineNetwork(Camera& camera, Patience& /*patience*/) {
    const std::string serialNumber = camera.getSerialNumber();
    tolerant([&] { GenICam::describeNetwork(serialNumber); });
    tolerant([&] { GenICam::examineLink(serialNumber); });
    tolerant([&] { GenICam::setPacketDelayNs(serialNumber, 0); });
}

using Scenario = void (*)(Camera& camera, Patience& patience);

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> table{
        [](Camera& camera, Patience&) {
            camera.disconnect();
            camera.connect();
        },
        [](Camera& camera, Patience&) {
            camera.suspend();
            camera.connect();
        },
        [](Camera& camera, Patience&) { camera.getCameraInfo(); },
        readProperties,
        writeProperties,
        performFunctions,
        takeFrames,
        releaseInCallbacks,
        examineNetwork,
    };
    return table;
}

/// What happens to a camera; "kill" ends its process.
constexpr std::array kDisturbances{"kill", "silent on", "deny on", "gvcp-wrong 50"};

void disturb(CameraProcess& process, const std::string& disturbance) {
    if (disturbance == "kill") {
        process.pull();
    } else {
        process.tell(disturbance);
    }
}

/// One that answered wrongly may have been set to anything: it starts anew, too.
void putInOrder(CameraProcess& process, const std::string& disturbance) {
    if (disturbance == "silent on" || disturbance == "deny on") {
        process.tell("silent off");
        process.tell("deny off");
        return;
    }
    process.pull();
    process.putBack();
}

/// Waits until the camera delivers an image, once it is in order.
void expectToWork(const std::string& serialNumber) {
    std::string failure;
    bool works = false;
    const auto tryIt = [&] {
        try {
            Camera::searchForNewCameras();
            Camera& camera = Camera::getCamera(serialNumber);
            camera.connect();
            works = camera.getImage() != nullptr;
        } catch (const KestrelException& refusal) { // not yet listed, or its lost user's time is not yet over
            failure = refusal.what();
            tolerant([&] { Camera::getCamera(serialNumber).disconnect(); });
        }
    };
    EXPECT_TRUE(eventually([&] { return works || (tryIt(), works); })) << failure;
}

/// A camera at 127.0.0.NUMBER, listed as "Quill-NUMBER", with small frames.
std::vector<std::string> smallCamera(const std::string& number) {
    return software("127.0.0." + number, {"--size", "64x32", "--fps", "200"}, number);
}

constexpr std::array kNumbers{"2", "3", "4", "5", "6", "7"};

/// Looks for cameras of all numbers; they forget a lost user fast.
void lookForAll() {
    GenICam::Settings settings;
    for (const std::string number : kNumbers) {
        settings.addresses.push_back("127.0.0." + number);
    }
    settings.usb = false;
    settings.heartbeatMs = 500;
    GenICam::configure(settings);
}

/// Runs a scenario again and again while the camera gets out of order at some moment, and once afterwards.
void runDisturbed(CameraProcess& process, const std::string& serialNumber, const Scenario& scenario,
                  const std::string& disturbance, std::chrono::microseconds moment) {
    Camera& camera = Camera::getCamera(serialNumber);
    std::atomic<bool> isDisturbed{false};
    std::thread application([&] {
        for (bool isLast = false; !isLast;) {
            isLast = isDisturbed;
            Patience patience(isDisturbed);
            tolerant([&] { scenario(camera, patience); });
        }
    });
    std::this_thread::sleep_for(moment);
    disturb(process, disturbance);
    isDisturbed = true;
    application.join();
}

TEST_F(GenICamTest, EveryCallEndsWhateverTheCameraDoes) {
    lookForAll();
    Camera::initialiseWorkspace();
    std::atomic<std::size_t> next{0};
    const std::size_t cells = scenarios().size() * repetitions("QUILL_TEST_SWEEPS", 2); // 4: all pairs
    std::vector<std::thread> threads;
    for (const std::string number : kNumbers) {
        threads.emplace_back([&, number] {
            CameraProcess process(smallCamera(number)); // whose process ends with the thread that started it
            expectToWork("Quill-" + number);
            for (std::size_t cell = next++; cell < cells && !HasFailure(); cell = next++) {
                const std::size_t scenario = cell % scenarios().size();
                const std::string disturbance = kDisturbances[cell % kDisturbances.size()];
                SCOPED_TRACE(disturbance + " during scenario " + std::to_string(scenario));
                Random random(static_cast<Random::result_type>(cell));
                runDisturbed(process, "Quill-" + number, scenarios()[scenario], disturbance,
                             std::chrono::microseconds(random() % 20000));
                putInOrder(process, disturbance);
                expectToWork("Quill-" + number);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// What the threads of a storm share.
struct Storm {
    /// Held by those who use references to cameras; alone by who ends the workspace. Nobody starves.
    std::shared_mutex references;
    std::mutex turn;
    std::array<std::mutex, 3> cameras; ///< one thread at a time uses a camera
    std::atomic<int> running{0};
};

void useCameras(Storm& storm, Random random, std::size_t operations) {
    for (std::size_t i = 0; i < operations; ++i) {
        std::unique_lock turn(storm.turn);
        if (random() % 50 == 0) {
            const std::unique_lock alone(storm.references);
            Camera::unitialisedWorkpace();
            Camera::initialiseWorkspace();
            continue;
        }
        const std::shared_lock shared(storm.references);
        turn.unlock();
        const std::size_t camera = random() % storm.cameras.size();
        const std::lock_guard one(storm.cameras[camera]);
        tolerant([&] {
            Camera::searchForNewCameras();
            Camera& used = Camera::getCamera("Quill-" + std::to_string(camera + 2));
            used.connect();
            const std::atomic<bool> isAlways{true};
            Patience patience(isAlways);
            scenarios()[random() % scenarios().size()](used, patience);
        });
    }
    --storm.running;
}

TEST_F(GenICamTest, NothingIsLeftOfAStorm) {
    constexpr std::size_t kThreads = 4;
    lookForAll();
    std::vector<std::unique_ptr<CameraProcess>> processes;
    for (const char* number : {"2", "3", "4"}) {
        processes.push_back(std::make_unique<CameraProcess>(smallCamera(number)));
        expectToWork(std::string("Quill-") + number);
    }
    Camera::unitialisedWorkpace();
    const std::size_t threadsBefore = TestSupport::threadsOfProcess();
    const std::size_t descriptorsBefore = TestSupport::openDescriptors();

    Storm storm;
    std::atomic<int> callbacks{0};
    const auto callBack = [&callbacks] {
        ++callbacks;
        for (const auto& listed : Camera::getCamerasList()) {
            tolerant([&] { Camera::getCamera(listed.first).getState(); });
        }
        EXPECT_FALSE(tolerant([] { Camera::unitialisedWorkpace(); })) << "waits for itself";
    };
    Camera::registerDisconnectCallback([&](const std::string&, const std::string&) { callBack(); });
    Camera::registerNewConnectCallback(callBack);
    Camera::initialiseWorkspace();
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i) {
        ++storm.running;
        threads.emplace_back(useCameras, std::ref(storm), Random(i), 15 * repetitions("QUILL_TEST_SWEEPS", 2));
    }
    for (Random random; storm.running > 0;) {
        CameraProcess& process = *processes[random() % processes.size()];
        const std::string disturbance = kDisturbances[random() % kDisturbances.size()];
        disturb(process, disturbance);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
        putInOrder(process, disturbance);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const char* number : {"2", "3", "4"}) {
        expectToWork(std::string("Quill-") + number);
    }
    Camera::registerDisconnectCallback({});
    Camera::registerNewConnectCallback({});
    Camera::unitialisedWorkpace();
    EXPECT_TRUE(eventually([&] { // lost devices are closed in the background, by one more thread
        return TestSupport::openDescriptors() <= descriptorsBefore &&
               TestSupport::threadsOfProcess() <= threadsBefore + 1;
    }));
}

/// Opens a camera, takes frames, loses it in the middle, and gets it back.
void replug(CameraProcess& process) {
    expectToWork("Quill-2");
    Camera& camera = Camera::getCamera("Quill-2");
    FrameQueue queue = camera.openFrameQueue({});
    camera.startStream();
    EXPECT_TRUE(queue.pop(kLongEnough));
    process.pull();
    EXPECT_FALSE(tolerant([&] { camera.getProperty("Width").getValue(); }));
    Camera::unitialisedWorkpace();
    process.putBack();
}

TEST_F(GenICamTest, ReplugsLeaveNothingBehind) {
    const std::size_t replugs = repetitions("QUILL_TEST_REPLUGS", 10);
    CameraProcess process(smallCamera("2"));
    lookForAll();
    std::size_t descriptors = 0;
    const auto runAndSettle = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            replug(process);
        }
        // Lost devices are closed in the background.
        descriptors = descriptors == 0 ? TestSupport::openDescriptors() : descriptors;
        EXPECT_TRUE(eventually([&] { return TestSupport::openDescriptors() <= descriptors; }));
        return mallinfo2().uordblks;
    };
    expectToWork("Quill-2");
    Camera::unitialisedWorkpace();
    runAndSettle(0);
    const auto early = static_cast<double>(runAndSettle(replugs / 5));
    const auto grown = static_cast<double>(runAndSettle(replugs - replugs / 5)) - early;
    RecordProperty("BytesGrown", std::to_string(grown));
#ifndef QUILL_SANITIZED // these keep freed memory for a while
    EXPECT_LT(grown, 1 << 20) << "a lost device has half of that";
#endif
}

#ifndef QUILL_SANITIZED // which allow no threads in a forked child, or report what its parent's threads hold as leaked
TEST_F(GenICamTest, AForkedChildHasCamerasOfItsOwn) {
    const CameraProcess process(smallCamera("2"));
    const CameraProcess another(smallCamera("3"));
    lookForAll();
    expectToWork("Quill-2");
    Camera& camera = Camera::getCamera("Quill-2");
    FrameQueue queue = camera.openFrameQueue({});
    camera.startStream();
    const pid_t child = fork();
    if (child == 0) {
        const bool isEmpty = Camera::getCamerasList().empty();
        lookForAll(); // settings are not inherited
        expectToWork("Quill-3");
        std::exit(isEmpty && !HasFailure() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    while (queue.tryPop()) { // frames from before
    }
    EXPECT_TRUE(queue.pop(kLongEnough)) << "the stream does not know of the child";
}
#endif

} // namespace
