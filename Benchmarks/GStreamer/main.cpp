// SPDX-License-Identifier: Apache-2.0

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gst/gst.h>

#include <Quill.h>
#include <SoftwareDevices.h>

/// Compares the CPU time of a frame through "quillsrc ! fakesink" with that of a frame from a queue, on one device in
/// software that delivers frames as fast as they are asked for.
namespace {

using namespace CameraInterface;

double cpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double takeFromQueue(const std::string& serialNumber, int frames) {
    Camera& camera = Camera::getCamera(serialNumber);
    camera.connect();
    FrameQueue queue = camera.openFrameQueue({8, WhenFull::DropOldest, "benchmark"});
    const double begin = cpuSeconds();
    camera.startStream();
    for (int i = 0; i < frames; ++i) {
        if (!queue.pop()) {
            throw std::runtime_error("the stream has ended");
        }
    }
    camera.stopStream();
    const double end = cpuSeconds();
    camera.disconnect();
    return (end - begin) / frames;
}

double takeFromPipeline(const std::string& serialNumber, int frames) {
    const std::string line =
        "quillsrc serial=" + serialNumber + " num-buffers=" + std::to_string(frames) + " ! fakesink sync=false";
    GstElement* const pipeline = gst_parse_launch(line.c_str(), nullptr);
    gst_element_set_state(pipeline, GST_STATE_READY);
    const double begin = cpuSeconds();
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus* const bus = gst_element_get_bus(pipeline);
    const auto ends = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
    GstMessage* const message = gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, ends);
    const bool isWhole = GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS;
    gst_message_unref(message);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    const double end = cpuSeconds();
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    if (!isWhole) {
        throw std::runtime_error("the pipeline has failed");
    }
    return (end - begin) / frames;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

bool compare(unsigned width, unsigned height, int rounds, int frames) {
    SoftwareDevices::startEmpty();
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices().at(1);
    device.sensorWidth = width;
    device.sensorHeight = height;
    const std::uint32_t serial = SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(serial, true);
    Camera::initialiseWorkspace();
    std::vector<double> floors;
    std::vector<double> all;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        floors.push_back(takeFromQueue(std::to_string(serial), frames) * 1e6);
        all.push_back(takeFromPipeline(std::to_string(serial), frames) * 1e6);
        ratios.push_back(all.back() / floors.back());
    }
    Camera::unitialisedWorkpace();
    constexpr double kLimit = 1.2;
    const bool isMet = median(ratios) <= kLimit;
    std::printf("CPU time of a frame of %4u x %4u %10.1f %10.1f us %6.3f  at most %.2f  %s\n", width, height,
                median(floors), median(all), median(ratios), kLimit, isMet ? "met" : "MISSED");
    return isMet;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const bool isShort = argc > 1 && std::strcmp(argv[1], "--short") == 0;
        gst_init(nullptr, nullptr);
        if (gst_plugin_load_file(QUILL_BENCHMARK_PLUGIN, nullptr) == nullptr) {
            throw std::runtime_error("the plug-in cannot be loaded");
        }
        std::printf("%-36s %10s %10s    %6s  %s\n", "WHAT", "QUEUE", "QUILLSRC", "RATIO", "LIMIT");
        const int rounds = isShort ? 5 : 15;
        const bool areMet = compare(1280, 1024, rounds, 300);
        return compare(320, 240, rounds, 3000) && areMet ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
