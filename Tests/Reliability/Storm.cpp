// Threads that do at once whatever an application may do, while devices come and go. Every thread draws what it does
// from the seed; the interleaving is the machine's.
//
//   quill_storm [--seed N] [--operations N] [--seconds N] [--samples FILE]
//
// A round is so many operations of each thread; with --seconds rounds go on for so long. In every other round the list
// is kept by one thread alone, so that the callbacks of each camera must alternate. Between rounds the file gets
// seconds, resident KiB, threads, open descriptors and operations so far.

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <SoftwareDevices.h>

#include "Cameras/Camera.h"
#include "Cameras/SimulatedCamera/CameraListFile.h"
#include "Exceptions/KestrelException.h"
#include "Internal/SharedLibrary.h"
#include "Support/Event.h"
#include "Support/ListMaintenance.h"
#include "Support/ProcessFigures.h"

// What the library itself defines in files that are left out here.
std::string Internal::getLibraryFolder() {
    return QUILL_TEST_LIBRARY_FOLDER;
}
std::string CameraInterface::SimulatedAdapter::getCameraListPath() {
    return QUILL_STORM_CAMERA_LIST;
}

namespace {

using namespace CameraInterface;
using TestSupport::openDescriptors;
using TestSupport::residentBytes;
using TestSupport::threadsOfProcess;
using Random = std::mt19937;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kThreads = 6;
constexpr std::array<std::uint32_t, 4> kDevices{1, 2, 3, 4};
/// The list keeps 64 retired cameras, and each search that is under way can list a device once more that has just left.
constexpr int kDeparturesBetweenBarriers = 64 / (kThreads + 2);
constexpr std::size_t kMemoryAllowance = 24U << 20;

std::uint32_t g_Seed = 1;
std::atomic<std::uint64_t> g_Operations{0};
std::atomic<std::uint64_t> g_Refusals{0};
std::atomic<std::uint64_t> g_Callbacks{0};
std::atomic<bool> g_Failed{false};

void require(bool condition, const std::string& what) {
    if (!condition && !g_Failed.exchange(true)) {
        std::fprintf(stderr, "seed %u: %s\n", g_Seed, what.c_str());
    }
}

std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

/// Runs a call that may be refused. Anything but a std::exception ends the program.
template <typename Action>
void tolerant(Action action) {
    try {
        action();
    } catch (const std::exception&) {
        ++g_Refusals;
    }
}

/// Who holds references to cameras shares it; who would make them dangle has it alone. Nobody starves.
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

/// What the threads of a round share.
struct Storm {
    explicit Storm(bool listHasOneKeeper) : oneKeeper(listHasOneKeeper) {}

    const bool oneKeeper;
    References references;
    std::vector<std::string> serials;
    std::vector<std::mutex> cameras; ///< one thread at a time uses a camera
    std::mutex plugging;             ///< guards the next two
    std::set<std::uint32_t> unplugged;
    int departures = 0;
    std::mutex check; ///< held while the storm's own thread keeps the list
    std::atomic<bool> done{false};
};

/// A registered callback: must not run once its registration has been replaced.
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

/// On the thread that keeps the list: everything that is allowed there, and everything that is not.
void callBack(Storm& storm, const std::string& serial) {
    ++g_Callbacks;
    tolerant([] { Camera::getCamerasList(); });
    tolerant([] { Camera::getEnumerationFailures(); });
    if (!storm.oneKeeper) {
        tolerant([] { Camera::searchForNewCameras(); });
    }
    if (const auto shared = storm.references.tryShare()) {
        for (std::size_t i = 0; i < storm.serials.size(); ++i) {
            const std::unique_lock camera(storm.cameras[i], std::try_to_lock);
            if (camera && (serial.empty() || serial != storm.serials[i])) {
                tolerant([&] { Camera::getCamera(storm.serials[i]).getCameraInfo(); });
                break;
            }
        }
    }
    expectRefused([] { Camera::initialiseWorkspace(); });
    expectRefused([] { Camera::unitialisedWorkpace(); });
    expectRefused([] { Camera::registerDisconnectCallback({}); });
    expectRefused([] { Camera::registerNewConnectCallback({}); });
}

void registerCallbacks(Storm& storm) {
    static std::mutex mutex;
    static std::shared_ptr<Registration> current = std::make_shared<Registration>();
    const std::lock_guard lock(mutex);
    const auto next = std::make_shared<Registration>();
    const auto body = [&storm, next](const std::string& serial) {
        require(!next->replaced, "a callback runs after it was replaced");
        callBack(storm, serial);
        require(!next->replaced, "a callback was replaced while it ran");
    };
    Camera::registerDisconnectCallback([body](const std::string&, const std::string& serial) { body(serial); });
    Camera::registerNewConnectCallback([body] { body({}); });
    const std::lock_guard check(storm.check); // the storm's own checks are none that the library could wait for
    std::exchange(current, next)->replaced = true;
}

/// Callbacks of a list that one thread keeps: a camera that goes was there, one that comes was not.
void registerAlternation() {
    static std::set<std::string> known;
    known.clear();
    for (const auto& entry : Camera::getCamerasList()) {
        known.insert(entry.first);
    }
    Camera::registerDisconnectCallback([](const std::string&, const std::string& serial) {
        ++g_Callbacks;
        require(known.erase(serial) == 1, "camera " + serial + " went without having been there");
        require(Camera::getCamerasList().count(serial) == 0, "camera " + serial + " went and is listed");
    });
    Camera::registerNewConnectCallback([] {
        ++g_Callbacks;
        std::size_t arrived = 0;
        for (const auto& entry : Camera::getCamerasList()) {
            arrived += known.insert(entry.first).second ? 1 : 0;
        }
        require(arrived > 0, "no camera came");
    });
}

/// Pulls a plug, or puts it back.
void plug(Storm& storm, Random& random) {
    const std::uint32_t serial = kDevices[below(random, kDevices.size())];
    const std::lock_guard plugging(storm.plugging);
    if (storm.unplugged.erase(serial) != 0) {
        SoftwareDevices::replug(serial);
        tolerant([&] { SoftwareDevices::setAsFastAsAsked(serial, true); });
        return;
    }
    if (++storm.departures % kDeparturesBetweenBarriers == 0) {
        storm.references.alone();
    }
    tolerant([&] {
        SoftwareDevices::unplug(serial);
        storm.unplugged.insert(serial);
    });
}

using Step = void (*)(Camera& camera, Random& random);

void connectAndDisconnect(Camera& camera, Random& random) {
    camera.connect();
    if (below(random, 2) == 0) {
        camera.disconnect();
    }
}

void suspendAndResume(Camera& camera, Random&) {
    camera.connect();
    camera.suspend();
    camera.connect();
}

void read(Camera& camera, Random& random) {
    camera.connect();
    const auto names = camera.getSupportedProperties();
    for (int i = 0; i < 8 && !names.empty(); ++i) {
        Property& property = camera.getProperty(names[below(random, names.size())]);
        tolerant([&] { property.getValue(); });
        tolerant([&] { property.getMaximum(); });
        tolerant([&] { property.getValueList(); });
    }
    camera.getSupportedFunctions();
    camera.getState();
}

void write(Camera& camera, Random& random) {
    camera.connect();
    camera.registerPropertyChangeCallback([](Property& property) {
        ++g_Callbacks;
        tolerant([&] { property.getValue(); });
    });
    const auto names = camera.getSupportedProperties();
    for (int i = 0; i < 4 && !names.empty(); ++i) {
        Property& property = camera.getProperty(names[below(random, names.size())]);
        tolerant([&] { property.setValue(below(random, 2) == 0 ? property.getDefault() : property.getMaximum()); });
    }
    camera.registerPropertyChangeCallback({});
}

void stream(Camera& camera, Random& random) {
    camera.connect();
    camera.getProperty("Timeout").setValue("200");
    camera.getProperty("Streaming Mode").setValue(below(random, 2) == 0 ? "Video" : "Still");
    if (below(random, 2) == 0) {
        camera.startStream();
    }
    for (std::size_t frame = below(random, 4); frame < 4; ++frame) {
        const auto image = camera.getImage();
        camera.convertImage(image, Imaging::IMAGE_FORMAT::BGR);
    }
    if (below(random, 2) == 0) {
        camera.stopStream(); // otherwise it runs on, into whatever comes next
    }
}

void changeMode(Camera& camera, Random& random) {
    camera.connect();
    tolerant([&] { camera.getProperty("USB3 Vision Mode").setValue(below(random, 2) == 0 ? "Enabled" : "Disabled"); });
    std::vector<std::string> mode{"Firmware"};
    camera.perform("Reboot", mode);
}

void flash(Camera& camera, Random& random) {
    camera.connect();
    std::vector<std::string> place{std::to_string(below(random, 1 << 16)), "64"};
    camera.perform("Read Flash", place);
}

constexpr Step kSteps[] = {connectAndDisconnect, suspendAndResume, read, write, stream, stream, flash, changeMode};

void useCamera(Storm& storm, Random& random) {
    const std::size_t index = below(random, storm.serials.size());
    const Step step = kSteps[below(random, std::size(kSteps))];
    if (step == changeMode) {
        const std::lock_guard plugging(storm.plugging);
        if (++storm.departures % kDeparturesBetweenBarriers == 0) {
            storm.references.alone();
        }
    }
    const auto shared = storm.references.share();
    const std::lock_guard camera(storm.cameras[index]);
    tolerant([&] { step(Camera::getCamera(storm.serials[index]), random); });
}

/// What only a list without a keeper of its own allows.
void useWorkspace(Storm& storm, Random& random) {
    switch (below(random, 8)) {
    case 0:
        registerCallbacks(storm);
        break;
    case 1:
        Camera::initialiseWorkspace();
        break;
    case 2: {
        const auto alone = storm.references.alone();
        Camera::unitialisedWorkpace();
        break;
    }
    default:
        Camera::searchForNewCameras();
        break;
    }
}

void use(Storm& storm, Random& random) {
    switch (below(random, 8)) {
    case 0:
        plug(storm, random);
        break;
    case 1:
        Camera::getCamerasList();
        Camera::getEnumerationFailures();
        break;
    case 2:
        if (!storm.oneKeeper) {
            useWorkspace(storm, random);
        }
        break;
    default:
        useCamera(storm, random);
        break;
    }
    ++g_Operations;
}

void keepList(Storm& storm) {
    while (!storm.done) {
        {
            const std::lock_guard check(storm.check);
            TestSupport::dropVanishedCameras();
            TestSupport::addNewCameras();
        }
        std::this_thread::yield();
    }
}

std::size_t g_ThreadsAtStart = 0;

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

void runRound(std::uint32_t round, std::uint32_t operations) {
    plugDevices();
    Storm storm(round % 2 != 0);
    Camera::searchForNewCameras();
    for (const auto& entry : Camera::getCamerasList()) {
        storm.serials.push_back(entry.first);
    }
    storm.cameras = std::vector<std::mutex>(storm.serials.size());
    if (storm.oneKeeper) {
        registerAlternation();
    }
    std::thread keeper([&] { keepList(storm); });
    std::vector<std::future<void>> threads;
    for (std::uint32_t thread = 0; thread < kThreads; ++thread) {
        threads.push_back(std::async(std::launch::async, [&, thread] {
            std::seed_seq sequence{g_Seed, round, thread};
            Random random(sequence);
            for (std::uint32_t operation = 0; operation < operations && !g_Failed; ++operation) {
                use(storm, random);
            }
        }));
    }
    const auto deadline = Clock::now() + 5 * TestSupport::kLongEnough;
    for (auto& thread : threads) {
        if (thread.wait_until(deadline) != std::future_status::ready) {
            std::fprintf(stderr, "seed %u: round %u hangs\n", g_Seed, round);
            std::abort(); // with all threads where they are
        }
        thread.get();
    }
    storm.done = true;
    keeper.join();
    Camera::unitialisedWorkpace();
    for (const std::uint32_t serial : SoftwareDevices::pluggedDevices()) {
        require(!SoftwareDevices::isOpen(serial), "device " + std::to_string(serial) + " is open at the end");
    }
    SoftwareDevices::startEmpty();
    // A thread that was joined may be listed for a moment more.
    while (threadsOfProcess() > g_ThreadsAtStart && Clock::now() < deadline) {
        std::this_thread::yield();
    }
    require(threadsOfProcess() == g_ThreadsAtStart, "threads are left");
}

} // namespace

int main(int argc, char** argv) {
    std::uint32_t operations = 600;
    long seconds = 0;
    std::ofstream samples;
    for (int i = 1; i + 1 < argc; i += 2) {
        const long value = std::strtol(argv[i + 1], nullptr, 10);
        if (std::strcmp(argv[i], "--seed") == 0) {
            g_Seed = static_cast<std::uint32_t>(value);
        } else if (std::strcmp(argv[i], "--operations") == 0) {
            operations = static_cast<std::uint32_t>(value);
        } else if (std::strcmp(argv[i], "--seconds") == 0) {
            seconds = value;
        } else if (std::strcmp(argv[i], "--samples") == 0) {
            samples.open(argv[i + 1]);
        }
    }
    std::thread([] {}).join(); // a sanitizer adds a thread of its own to the first one
    g_ThreadsAtStart = threadsOfProcess();
    const auto begin = Clock::now();
    std::size_t residentEarly = 0;
    std::size_t descriptorsEarly = 0;
    std::uint32_t round = 0;
    for (; !g_Failed && (round < 4 || Clock::now() < begin + std::chrono::seconds(seconds)); ++round) {
        runRound(round, operations);
        if (round == 1) {
            residentEarly = residentBytes();
            descriptorsEarly = openDescriptors();
        }
        samples << std::chrono::duration<double>(Clock::now() - begin).count() << ' ' << residentBytes() / 1024 << ' '
                << threadsOfProcess() << ' ' << openDescriptors() << ' ' << g_Operations << std::endl;
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // these keep freed memory for a while
    require(residentBytes() < residentEarly + kMemoryAllowance, "memory grows");
#endif
    require(openDescriptors() == descriptorsEarly, "descriptors are left open");
    require(g_Callbacks > 0, "no callback ran");
    std::printf("seed %u: %u rounds, %llu operations, %llu refused calls, %llu callbacks, %llu boundary calls, "
                "%zu KiB early, %zu KiB at the end\n",
                g_Seed, round, static_cast<unsigned long long>(g_Operations),
                static_cast<unsigned long long>(g_Refusals), static_cast<unsigned long long>(g_Callbacks),
                static_cast<unsigned long long>(SoftwareDevices::boundaryCalls()), residentEarly >> 10,
                residentBytes() >> 10);
    return g_Failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
