// SPDX-License-Identifier: Apache-2.0

#include "Reliability/Storm/Round.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <SoftwareDevices.h>

#include "Cameras/Camera.h"
#include "Exceptions/KestrelException.h"
#include "Reliability/Storm/CameraSteps.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/ProcessFigures.h"

namespace Storm {

using CameraInterface::Camera;
using TestSupport::threadsOfProcess;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t kThreads = 6;
constexpr std::array<std::uint32_t, 4> kDevices{1, 2, 3, 4};
/// The list keeps 64 retired cameras, and each search in progress can list a device again that has just left.
constexpr int kDeparturesBetweenBarriers = 64 / (kThreads + 2);

/// A lock: threads that hold references to cameras share it; a thread that would invalidate them holds it exclusively.
/// No thread starves.
class References {
public:
    std::shared_lock<std::shared_mutex> share() {
        const std::lock_guard turn(m_Turn);
        return std::shared_lock(m_Mutex);
    }
    std::shared_lock<std::shared_mutex> tryShare() { return std::shared_lock(m_Mutex, std::try_to_lock); }
    std::unique_lock<std::shared_mutex> alone() {
        const std::lock_guard turn(m_Turn);
        return std::unique_lock(m_Mutex);
    }

private:
    std::mutex m_Turn;
    std::shared_mutex m_Mutex;
};

/// The shared state of the threads of a round.
struct Round {
    explicit Round(bool listHasOneKeeper) : oneKeeper(listHasOneKeeper) {}

    const bool oneKeeper;
    References references;
    std::vector<std::string> serials;
    std::vector<std::mutex> cameras; ///< one thread at a time uses a camera
    std::mutex plugging;             ///< guards the next two members
    std::set<std::uint32_t> unplugged;
    int departures = 0;
    std::mutex check; ///< held while the storm's own thread maintains the list
    std::atomic<bool> done{false};
};

/// A registered callback, which must not run after it has been replaced.
struct Registration {
    std::atomic<bool> replaced{false};
};

void expectRefused(const std::function<void()>& call) {
    try {
        call();
        require(false, "a call that waits for its own thread was not refused");
    } catch (const KestrelExceptions::KestrelException& refusal) {
        require(std::string(refusal.who()) == "WouldWaitForItself", refusal.what());
    }
}

/// Makes all allowed and forbidden calls on the thread that maintains the list.
void callBack(Round& round, const std::string& serial) {
    ++tally().callbacks;
    tolerant([] { Camera::getCamerasList(); });
    tolerant([] { Camera::getEnumerationFailures(); });
    if (!round.oneKeeper) {
        tolerant([] { Camera::searchForNewCameras(); });
    }
    if (const auto shared = round.references.tryShare()) {
        for (std::size_t i = 0; i < round.serials.size(); ++i) {
            const std::unique_lock camera(round.cameras[i], std::try_to_lock);
            if (camera && (serial.empty() || serial != round.serials[i])) {
                tolerant([&] { Camera::getCamera(round.serials[i]).getCameraInfo(); });
                break;
            }
        }
    }
    expectRefused([] { Camera::initialiseWorkspace(); });
    expectRefused([] { Camera::unitialisedWorkpace(); });
    expectRefused([] { Camera::registerDisconnectCallback({}); });
    expectRefused([] { Camera::registerNewConnectCallback({}); });
}

void registerCallbacks(Round& round) {
    static std::mutex mutex;
    static std::shared_ptr<Registration> current = std::make_shared<Registration>();
    const std::lock_guard lock(mutex);
    const auto next = std::make_shared<Registration>();
    const auto body = [&round, next](const std::string& serial) {
        require(!next->replaced, "a callback runs after it was replaced");
        callBack(round, serial);
        require(!next->replaced, "a callback was replaced while it ran");
    };
    Camera::registerDisconnectCallback([body](const std::string&, const std::string& serial) { body(serial); });
    Camera::registerNewConnectCallback([body] { body({}); });
    const std::lock_guard check(round.check); // the library cannot wait for the storm's own checks
    std::exchange(current, next)->replaced = true;
}

/// Registers callbacks for a list that one thread maintains: a camera that departs was present, one that arrives was
/// not.
void registerAlternation() {
    static std::set<std::string> known;
    known.clear();
    for (const auto& entry : Camera::getCamerasList()) {
        known.insert(entry.first);
    }
    Camera::registerDisconnectCallback([](const std::string&, const std::string& serial) {
        ++tally().callbacks;
        require(known.erase(serial) == 1, "camera " + serial + " departed without having been present");
        require(Camera::getCamerasList().count(serial) == 0, "camera " + serial + " departed and is still listed");
    });
    Camera::registerNewConnectCallback([] {
        ++tally().callbacks;
        std::size_t arrived = 0;
        for (const auto& entry : Camera::getCamerasList()) {
            arrived += known.insert(entry.first).second ? 1 : 0;
        }
        require(arrived > 0, "no camera arrived");
    });
}

/// Unplugs a device, or plugs it in again.
void plug(Round& round, Random& random) {
    const std::uint32_t serial = kDevices[below(random, kDevices.size())];
    const std::lock_guard plugging(round.plugging);
    if (round.unplugged.erase(serial) != 0) {
        SoftwareDevices::replug(serial);
        tolerant([&] { SoftwareDevices::setAsFastAsAsked(serial, true); });
        return;
    }
    if (++round.departures % kDeparturesBetweenBarriers == 0) {
        round.references.alone();
    }
    tolerant([&] {
        SoftwareDevices::unplug(serial);
        round.unplugged.insert(serial);
    });
}

void useCamera(Round& round, Random& random) {
    const std::size_t index = below(random, round.serials.size());
    const CameraStep& step = kCameraSteps[below(random, kCameraSteps.size())];
    if (step.restarts) {
        const std::lock_guard plugging(round.plugging);
        if (++round.departures % kDeparturesBetweenBarriers == 0) {
            round.references.alone();
        }
    }
    const auto shared = round.references.share();
    const std::lock_guard camera(round.cameras[index]);
    tolerant([&] { step.take(Camera::getCamera(round.serials[index]), random); });
}

/// Starts and ends the workspace, allowed only if no thread of the storm maintains the list.
void useWorkspace(Round& round, Random& random) {
    switch (below(random, 8)) {
    case 0:
        registerCallbacks(round);
        break;
    case 1:
        Camera::initialiseWorkspace();
        break;
    case 2: {
        const auto alone = round.references.alone();
        Camera::unitialisedWorkpace();
        break;
    }
    default:
        Camera::searchForNewCameras();
        break;
    }
}

void use(Round& round, Random& random) {
    switch (below(random, 8)) {
    case 0:
        plug(round, random);
        break;
    case 1:
        Camera::getCamerasList();
        Camera::getEnumerationFailures();
        break;
    case 2:
        if (!round.oneKeeper) {
            useWorkspace(round, random);
        }
        break;
    default:
        useCamera(round, random);
        break;
    }
    ++tally().operations;
}

void keepList(Round& round) {
    while (!round.done) {
        {
            const std::lock_guard check(round.check);
            TestSupport::dropVanishedCameras();
            TestSupport::addNewCameras();
        }
        std::this_thread::yield();
    }
}

void plugDevices() {
    SoftwareDevices::startEmpty();
    for (const std::uint32_t serial : kDevices) {
        // Colour cameras that can be USB3 Vision cameras, and monochrome ones.
        SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[serial % 2];
        device.serial = serial;
        device.sensorWidth = 64;
        device.sensorHeight = 48;
        device.rebootTime = std::chrono::milliseconds(1);
        SoftwareDevices::plug(device);
        SoftwareDevices::setAsFastAsAsked(serial, true);
    }
}

} // namespace

void runRound(std::uint32_t number, std::uint32_t operations, std::size_t threadsAtStart) {
    plugDevices();
    Round round(number % 2 != 0);
    Camera::searchForNewCameras();
    for (const auto& entry : Camera::getCamerasList()) {
        round.serials.push_back(entry.first);
    }
    round.cameras = std::vector<std::mutex>(round.serials.size());
    if (round.oneKeeper) {
        registerAlternation();
    }
    std::thread keeper([&] { keepList(round); });
    std::vector<std::future<void>> threads;
    for (std::uint32_t thread = 0; thread < kThreads; ++thread) {
        threads.push_back(std::async(std::launch::async, [&, thread] {
            std::seed_seq sequence{tally().seed, number, thread};
            Random random(sequence);
            for (std::uint32_t operation = 0; operation < operations && !tally().failed; ++operation) {
                use(round, random);
            }
        }));
    }
    const auto deadline = Clock::now() + 5 * TestSupport::kLongEnough;
    for (auto& thread : threads) {
        if (thread.wait_until(deadline) != std::future_status::ready) {
            std::fprintf(stderr, "seed %u: round %u hangs\n", tally().seed, number);
            std::abort(); // keeps the state of all threads in the core
        }
        thread.get();
    }
    round.done = true;
    keeper.join();
    Camera::unitialisedWorkpace();
    for (const std::uint32_t serial : SoftwareDevices::pluggedDevices()) {
        require(!SoftwareDevices::isOpen(serial), "device " + std::to_string(serial) + " is open at the end");
    }
    SoftwareDevices::startEmpty();
    // A joined thread may still be listed for a moment.
    while (threadsOfProcess() > threadsAtStart && Clock::now() < deadline) {
        std::this_thread::yield();
    }
    require(threadsOfProcess() <= threadsAtStart, "threads are left running");
}

} // namespace Storm
