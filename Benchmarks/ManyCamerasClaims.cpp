// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <SoftwareDevices.h>
#include <benchmark/benchmark.h>

#include "Cameras/Camera.h"
#include "Claims.h"
#include "Exceptions/KestrelExceptions.h"
#include "PropertyNames.h"
#include "Support/DescriptionFiles.h"

namespace Benchmarks {

namespace {

using namespace CameraInterface;
using namespace std::chrono_literals;

/// Of a frame's CPU time with one camera.
constexpr double kManyCamerasLimit = 1.2;
/// For a program with a window, while both cores are busy with frames.
constexpr double kReadMicroseconds = 100;
constexpr double kListMilliseconds = 500;
/// Others use the caches in between.
constexpr double kListWorkLimit = 2.5;
/// The check comes every 500 milliseconds.
constexpr double kUnplugMilliseconds = 1500;

constexpr std::size_t kStreams = 64;
constexpr std::uint32_t kFirstSerial = 77000001;
constexpr int kSimulatedCameras = 10000;
constexpr double kPieces = 2000; ///< about the frames of a run with one camera
constexpr auto kWindow = 200ms;  ///< in which CPU time and frames are counted

double clockSeconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Cameras in software that send small frames as fast as they are asked for, one more than stream, and simulated ones.
class ManyCameras {
public:
    explicit ManyCameras(int simulated) {
        endList();
        SoftwareDevices::startEmpty();
        SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
        for (std::size_t i = 0; i <= kStreams; ++i) {
            device.serial = kFirstSerial + static_cast<std::uint32_t>(i);
            SoftwareDevices::plug(device);
            SoftwareDevices::setAsFastAsAsked(device.serial, true);
        }
        useDevices(true);
        useCameraList(simulated);
        Camera::initialiseWorkspace();
        for (std::size_t i = 0; i <= kStreams; ++i) {
            camera(i).connect();
            camera(i).getProperty(PropertyNames::kWidth).setValue("64");
            camera(i).getProperty(PropertyNames::kHeight).setValue("48");
        }
    }
    ManyCameras(const ManyCameras&) = delete;
    ManyCameras& operator=(const ManyCameras&) = delete;
    ~ManyCameras() {
        endList();
        useDevices(false);
        SoftwareDevices::startEmpty();
    }

    static Camera& camera(std::size_t index) {
        return Camera::getCamera(std::to_string(kFirstSerial + static_cast<std::uint32_t>(index)));
    }
};

/// A stream and the thread that takes all its frames.
class Consumer {
public:
    explicit Consumer(Camera& camera)
        : m_Camera(camera), m_Queue(camera.openFrameQueue({8, WhenFull::HoldBack, "consumer"})) {
        m_Camera.startStream();
        m_Thread = std::thread([this] {
            std::uint64_t expected = 1;
            for (const Frame& frame : m_Queue) {
                m_InOrder = m_InOrder && frame.information.number == expected;
                m_Frames = expected++;
            }
        });
    }
    Consumer(const Consumer&) = delete;
    Consumer& operator=(const Consumer&) = delete;
    ~Consumer() {
        m_Camera.stopStream();
        m_Thread.join();
    }

    std::uint64_t frames() const {
        if (!m_InOrder) {
            throw std::logic_error("Frames were lost or came out of order.");
        }
        return m_Frames;
    }

private:
    Camera& m_Camera;
    FrameQueue m_Queue;
    std::atomic<std::uint64_t> m_Frames{0};
    std::atomic<bool> m_InOrder{true};
    std::thread m_Thread;
};

/// Streams of the first cameras, all of which run.
class Streams {
public:
    explicit Streams(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_Consumers.push_back(std::make_unique<Consumer>(ManyCameras::camera(i)));
        }
        const auto runs = [](const auto& consumer) { return consumer->frames() > 10; };
        while (!std::all_of(m_Consumers.begin(), m_Consumers.end(), runs)) {
            std::this_thread::sleep_for(1ms);
        }
    }

    std::uint64_t frames() const {
        std::uint64_t sum = 0;
        for (const auto& consumer : m_Consumers) {
            sum += consumer->frames();
        }
        return sum;
    }

private:
    std::vector<std::unique_ptr<Consumer>> m_Consumers;
};

/// The CPU time of the process for a frame.
double secondsOfFrame(std::size_t streams) {
    const Streams running(streams);
    const double begin = clockSeconds(CLOCK_PROCESS_CPUTIME_ID);
    const std::uint64_t before = running.frames();
    std::this_thread::sleep_for(kWindow);
    const double seconds = clockSeconds(CLOCK_PROCESS_CPUTIME_ID) - begin;
    return seconds / static_cast<double>(running.frames() - before);
}

std::pair<Variant, Variant> framesOfManyCameras() {
    const auto cameras = std::make_shared<ManyCameras>(0);
    const auto framesOf = [cameras](std::size_t streams) {
        return selfTimed(kPieces, [cameras, streams] { return secondsOfFrame(streams); });
    };
    return {framesOf(1), framesOf(kStreams)};
}

/// The 99th percentile of an action's seconds, with pauses in between.
double percentile99(clockid_t clock, int times, const std::function<void()>& action) {
    std::vector<double> seconds;
    for (int i = 0; i < times; ++i) {
        std::this_thread::sleep_for(500us);
        const double begin = clockSeconds(clock);
        action();
        seconds.push_back(clockSeconds(clock) - begin);
    }
    std::sort(seconds.begin(), seconds.end());
    return seconds[seconds.size() * 99 / 100];
}

double microsecondsOfRead() {
    const ManyCameras cameras(kSimulatedCameras);
    const Streams running(kStreams);
    Property& property = ManyCameras::camera(kStreams).getProperty(PropertyNames::kWidth);
    return 1e6 * percentile99(CLOCK_MONOTONIC, 2000, [&] { benchmark::DoNotOptimize(property.getValue().data()); });
}

double secondsOfList(clockid_t clock, std::size_t streams) {
    const Streams running(streams);
    return percentile99(clock, 200, [] {
        if (Camera::getCamerasList().size() != kSimulatedCameras + kStreams + 1) {
            throw std::logic_error("Not all cameras are listed.");
        }
    });
}

double millisecondsOfList() {
    const ManyCameras cameras(kSimulatedCameras);
    return 1e3 * secondsOfList(CLOCK_MONOTONIC, kStreams);
}

double workOfList() {
    const ManyCameras cameras(kSimulatedCameras);
    return secondsOfList(CLOCK_THREAD_CPUTIME_ID, kStreams) / secondsOfList(CLOCK_THREAD_CPUTIME_ID, 1);
}

/// From unplugging an idle camera until it is no longer listed, the longest of several.
double millisecondsOfUnplugging() {
    const ManyCameras cameras(kSimulatedCameras);
    const Streams running(kStreams);
    const auto isListed = [] {
        try {
            ManyCameras::camera(kStreams);
            return true;
        } catch (const KestrelExceptions::KestrelException_Camera&) {
            return false;
        }
    };
    double longest = 0;
    for (int i = 0; i < 7; ++i) {
        SoftwareDevices::unplug(kFirstSerial + kStreams);
        const double begin = clockSeconds(CLOCK_MONOTONIC);
        while (isListed()) {
            std::this_thread::sleep_for(2ms);
        }
        longest = std::max(longest, clockSeconds(CLOCK_MONOTONIC) - begin);
        SoftwareDevices::replug(kFirstSerial + kStreams);
        Camera::searchForNewCameras();
    }
    return 1e3 * longest;
}

} // namespace

std::vector<Claim> manyCamerasClaims(Scope scope) {
    std::vector<Claim> claims{{"P30", "small frame, CPU time, 64 cameras stream", "one camera", kManyCamerasLimit,
                               framesOfManyCameras, Timing::WallOnAllCores}};
    if (scope == Scope::Short) {
        return claims; // the others are not ratios of equal work, and need all cores
    }
    claims.push_back(countingClaim("P31", "64 stream: property of another read, 99 %", "microseconds",
                                   kReadMicroseconds, microsecondsOfRead));
    claims.push_back(countingClaim("P31", "64 stream: 10,000 cameras listed, 99 %", "milliseconds", kListMilliseconds,
                                   millisecondsOfList));
    claims.push_back(
        countingClaim("P31", "64 stream: the same, CPU time", "x one streams", kListWorkLimit, workOfList));
    claims.push_back(countingClaim("P31", "64 stream: unplugged camera is noticed", "milliseconds", kUnplugMilliseconds,
                                   millisecondsOfUnplugging));
    return claims;
}

} // namespace Benchmarks
