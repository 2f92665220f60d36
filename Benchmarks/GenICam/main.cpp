// SPDX-License-Identifier: Apache-2.0

#include <arv.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <Quill.h>

#include "GenICam/Network.h"

/// Compares the library with bare Aravis on one camera in software, in a network of its own.
namespace {

using namespace CameraInterface;
using Clock = std::chrono::steady_clock;

constexpr const char* kAddress = "127.0.0.2";
constexpr const char* kSerialNumber = "Quill-One";
/// A second camera, so that both sides are measured in turn while each controls its own.
constexpr const char* kBareAddress = "127.0.0.3";

double cpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double wallSeconds(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// The bare Aravis device, which checks what is written: without that it sends any number to the camera.
class BareCamera {
public:
    explicit BareCamera(const char* address = kAddress) {
        GInetAddress* const card = g_inet_address_new_from_string("127.0.0.1");
        GInetAddress* const camera = g_inet_address_new_from_string(address);
        m_Device = arv_gv_device_new(card, camera, nullptr);
        g_object_unref(card);
        g_object_unref(camera);
        if (m_Device == nullptr || arv_device_get_genicam(m_Device) == nullptr) {
            throw std::runtime_error("Aravis cannot open the camera");
        }
        arv_device_set_range_check_policy(m_Device, ARV_RANGE_CHECK_POLICY_ENABLE);
        arv_device_set_access_check_policy(m_Device, ARV_ACCESS_CHECK_POLICY_ENABLE);
    }
    BareCamera(const BareCamera&) = delete;
    BareCamera& operator=(const BareCamera&) = delete;
    ~BareCamera() { g_object_unref(m_Device); }

    ArvDevice* get() const { return m_Device; }

private:
    ArvDevice* m_Device;
};

/// A run of a stream: whole frames, wall time and the process's CPU time.
struct Run {
    double frames = 0;
    double wall = 0;
    double cpu = 0;
};

Run measureRun(const std::function<bool()>& takeFrame, double seconds) {
    while (!takeFrame()) { // the first frame is not like the others
    }
    Run run;
    const auto begin = Clock::now();
    const double cpu = cpuSeconds();
    while (wallSeconds(begin) < seconds) {
        run.frames += takeFrame() ? 1 : 0;
    }
    run.wall = wallSeconds(begin);
    run.cpu = cpuSeconds() - cpu;
    return run;
}

Run streamBare(double seconds) {
    const BareCamera camera;
    arv_gv_device_set_stream_options(ARV_GV_DEVICE(camera.get()), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    ArvStream* const stream = arv_device_create_stream(camera.get(), nullptr, nullptr, nullptr);
    g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size", 8 << 20, nullptr);
    const auto payload =
        static_cast<std::size_t>(arv_device_get_integer_feature_value(camera.get(), "PayloadSize", nullptr));
    for (int i = 0; i < 28; ++i) {
        arv_stream_push_buffer(stream, arv_buffer_new_allocate(payload));
    }
    arv_device_execute_command(camera.get(), "AcquisitionStart", nullptr);
    const Run run = measureRun(
        [stream] {
            ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(stream, 1000000);
            const bool isWhole = buffer != nullptr && arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
            if (buffer != nullptr) {
                arv_stream_push_buffer(stream, buffer);
            }
            return isWhole;
        },
        seconds);
    arv_device_execute_command(camera.get(), "AcquisitionStop", nullptr);
    g_object_unref(stream);
    return run;
}

Run streamOurs(Camera& camera, double seconds) {
    camera.connect();
    FrameQueue queue = camera.openFrameQueue({28, WhenFull::DropNewest, "benchmark"});
    camera.startStream();
    const Run run = measureRun([&queue] { return static_cast<bool>(queue.pop(std::chrono::seconds(1))); }, seconds);
    camera.stopStream();
    camera.disconnect();
    return run;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// How far a ratio may be from its limit before the program fails: for machines with other load.
double tolerance = 1;

bool report(const char* what, const char* unit, double floor, double ours, double ratio, double limit, bool isAtMost) {
    const bool isMet = isAtMost ? ratio <= limit : ratio >= limit;
    std::printf("%-34s %10.3f %10.3f %-5s %6.2f  %s %.2f  %s\n", what, floor, ours, unit, ratio,
                isAtMost ? "at most" : "at least", limit, isMet ? "met" : "MISSED");
    return isAtMost ? ratio <= limit * tolerance : ratio >= limit / tolerance;
}

/// Times two actions in turn.
/// @return medians of floor and ours in microseconds, and of their ratio
struct Pair {
    double floor, ours, ratio;
};

Pair compare(int rounds, int repetitions, const std::function<void()>& floor, const std::function<void()>& ours) {
    std::vector<double> floors;
    std::vector<double> all;
    std::vector<double> ratios;
    const auto timed = [repetitions](const std::function<void()>& action) {
        const auto begin = Clock::now();
        for (int i = 0; i < repetitions; ++i) {
            action();
        }
        return wallSeconds(begin) / repetitions * 1e6;
    };
    for (int round = 0; round < rounds; ++round) {
        floors.push_back(timed(floor));
        all.push_back(timed(ours));
        ratios.push_back(all.back() / floors.back());
    }
    return {median(floors), median(all), median(ratios)};
}

bool compareStreams(Camera& camera, const char* what, int rounds, double seconds, bool byCpu) {
    std::vector<double> floors;
    std::vector<double> all;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const Run bare = streamBare(seconds);
        const Run ours = streamOurs(camera, seconds);
        floors.push_back(byCpu ? bare.cpu / bare.frames * 1e3 : bare.frames / bare.wall);
        all.push_back(byCpu ? ours.cpu / ours.frames * 1e3 : ours.frames / ours.wall);
        ratios.push_back(all.back() / floors.back());
    }
    return report(what, byCpu ? "ms" : "fps", median(floors), median(all), median(ratios), byCpu ? 1.05 : 0.95, byCpu);
}

int run(bool isShort) {
    tolerance = isShort ? 2 : 1;
    const int rounds = isShort ? 3 : 9;
    const double seconds = isShort ? 1 : 3;
    GenICam::Settings settings;
    settings.addresses = {kAddress};
    settings.usb = false;
    GenICam::configure(settings);
    std::printf("%-34s %10s %10s %-5s %6s  %s\n", "WHAT", "ARAVIS", "OURS", "", "RATIO", "LIMIT");
    bool areMet = true;
    for (const char* rate : {"50", "0"}) {
        const TestSupport::CameraProcess process(
            {QUILL_TEST_GIGE_CAMERA, "--address", kAddress, "--serial", "One", "--fps", rate});
        while (Camera::getCamerasList().count(kSerialNumber) == 0) {
            Camera::searchForNewCameras();
        }
        Camera& camera = Camera::getCamera(kSerialNumber);
        if (std::strcmp(rate, "0") == 0) {
            areMet &= compareStreams(camera, "frames as fast as it goes", rounds, seconds, false);
        } else {
            areMet &= compareStreams(camera, "CPU time of a frame, 2.4 MP, 50 fps", rounds, seconds, true);
            const Pair opening = compare(
                rounds * 3, 1, [] { const BareCamera bare; },
                [&camera] {
                    camera.connect();
                    camera.disconnect();
                });
            areMet &= report("open and close", "us", opening.floor, opening.ours, opening.ratio, 1.10, true);
            const TestSupport::CameraProcess second({QUILL_TEST_GIGE_CAMERA, "--address", kBareAddress});
            std::this_thread::sleep_for(std::chrono::milliseconds(500)); // until it listens
            const BareCamera bare(kBareAddress);
            camera.connect();
            Property& width = camera.getProperty("Width");
            const Pair read = compare(
                rounds, 500, [&bare] { arv_device_get_integer_feature_value(bare.get(), "Width", nullptr); },
                [&width] { width.getValue(); });
            const Pair write = compare(
                rounds, 200, [&bare] { arv_device_set_integer_feature_value(bare.get(), "Width", 640, nullptr); },
                [&width] { width.setValue("640"); });
            camera.disconnect();
            areMet &= report("read a number", "us", read.floor, read.ours, read.ratio, 1.30, true);
            areMet &= report("write a number", "us", write.floor, write.ours, write.ratio, 1.30, true);
        }
        Camera::unitialisedWorkpace();
    }
    return areMet ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (!TestSupport::enterOwnNetwork()) {
        std::puts("Skipped: this system permits no network of one's own (unshare -n).");
        return 0;
    }
    try {
        return run(argc > 1 && std::strcmp(argv[1], "--short") == 0);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
