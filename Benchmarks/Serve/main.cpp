// SPDX-License-Identifier: Apache-2.0

// Compares the CPU time of a picture for viewers with that of the conversion of its frame and of its compression by
// libjpeg-turbo alone, on frames of one camera in software. All work of a picture happens on the feed's thread.

#include <time.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <Quill.h>
#include <SoftwareDevices.h>
#include <opencv2/core.hpp>
#include <turbojpeg.h>

#include "Serve/Pictures/LiveFeed.h"

namespace {

using namespace CameraInterface;
using QuillTool::Serve::LiveFeed;
using QuillTool::Serve::View;

constexpr double kLimit = 1.3;
constexpr double kToleranceOfShortForm = 2;
constexpr int kQuality = 80;
const FrameQueueSettings kNewest{2, WhenFull::DropOldest, "benchmark"};

double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// Converts frames to grey or colour and compresses them, into memory that exists.
class Compressor {
public:
    Compressor() : m_Handle(tjInitCompress()) {}
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor() {
        tjFree(m_Bytes);
        tjDestroy(m_Handle);
    }

    void compress(const Imaging::Image& frame) {
        if (frame.getBitDepth() != 8) {
            throw std::runtime_error("the frames are not of 8 bits");
        }
        if (frame.getFormat() == Imaging::IMAGE_FORMAT::MONO) {
            compress(frame, TJPF_GRAY, TJSAMP_GRAY);
        } else {
            compress(*Imaging::convertImage(frame, Imaging::IMAGE_FORMAT::BGR), TJPF_BGR, TJSAMP_420);
        }
    }

private:
    void compress(const Imaging::Image& image, int format, int sampling) {
        const int width = static_cast<int>(image.getWidth());
        const int height = static_cast<int>(image.getHeight());
        if (tjCompress2(m_Handle, image.getDataAddress(), width, 0, height, format, &m_Bytes, &m_Size, sampling,
                        kQuality, TJFLAG_FASTDCT) != 0) {
            throw std::runtime_error(tjGetErrorStr2(m_Handle));
        }
    }

    tjhandle m_Handle;
    unsigned char* m_Bytes = nullptr;
    unsigned long m_Size = 0;
};

/// The CPU time of a frame, without that of waiting for it.
double compressAlone(Camera& camera, int pictures) {
    FrameQueue queue = camera.openFrameQueue(kNewest);
    Compressor compressor;
    double seconds = 0;
    for (int i = -1; i < pictures; ++i) { // the first one gets memory
        const FrameResult result = queue.pop();
        if (!result) {
            throw std::runtime_error(describe(result.status));
        }
        const double begin = threadSeconds();
        compressor.compress(*result.frame.image);
        seconds += i < 0 ? 0 : threadSeconds() - begin;
    }
    return seconds / pictures;
}

/// The CPU time of the feed's thread for a picture, waits included.
double view(Camera& camera, const View& look, int pictures) {
    LiveFeed feed([&camera] { return camera.openFrameQueue(kNewest); });
    std::mutex mutex;
    std::condition_variable arrival;
    std::optional<double> time; // of the thread, at the last picture
    const auto viewer = feed.join(
        [&] {
            const std::lock_guard lock(mutex);
            time = threadSeconds();
            arrival.notify_one();
        },
        [](const std::string& /*status*/, const std::string& /*text*/) {});
    viewer->setView(look);
    double first = 0;
    double last = 0;
    for (int i = -1; i < pictures; ++i) {
        viewer->demand();
        std::unique_lock lock(mutex);
        arrival.wait(lock, [&] { return time.has_value(); });
        last = *std::exchange(time, std::nullopt);
        first = i < 0 ? last : first;
        lock.unlock();
        if (viewer->take() == nullptr) {
            throw std::runtime_error("no picture");
        }
    }
    return (last - first) / pictures;
}

struct Case {
    const char* what;
    std::size_t device; ///< of the default devices
    unsigned width;
    unsigned height;
    unsigned scale;
    int pictures; ///< per round
};

constexpr Case kCases[] = {
    {"grey, 1280 x 1024", 1, 1280, 1024, 1, 60},
    {"mosaic, 1280 x 1024", 0, 1280, 1024, 1, 30},
    {"mosaic, 2592 x 1944", 0, 2592, 1944, 1, 10},
    {"mosaic, 2592 x 1944, a quarter", 0, 2592, 1944, 4, 30},
};

/// @return whether the goal is met, in the short form with tolerance
bool compare(const Case& one, bool isShort) {
    SoftwareDevices::startEmpty();
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices().at(one.device);
    device.sensorWidth = one.width;
    device.sensorHeight = one.height;
    const std::uint32_t serial = SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(serial, true);
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(std::to_string(serial));
    camera.connect();
    camera.startStream();
    std::vector<double> floors;
    std::vector<double> all;
    std::vector<double> ratios;
    for (int round = 0; round < (isShort ? 3 : 15); ++round) {
        floors.push_back(compressAlone(camera, one.pictures) * 1e3);
        all.push_back(view(camera, {one.scale, kQuality}, one.pictures) * 1e3);
        ratios.push_back(all.back() / floors.back());
    }
    Camera::unitialisedWorkpace();
    const double ratio = median(ratios);
    std::printf("%-36s %10.2f %10.2f ms %6.3f  at most %.2f  %s\n", one.what, median(floors), median(all), ratio,
                kLimit, ratio <= kLimit ? "met" : "MISSED");
    return ratio <= kLimit * (isShort ? kToleranceOfShortForm : 1);
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        const bool isShort = argumentCount > 1 && std::strcmp(arguments[1], "--short") == 0;
        cv::setNumThreads(1); // all work of a conversion on the thread that is measured
        std::printf("%-36s %10s %10s    %6s  %s\n", "CPU TIME OF A PICTURE", "JPEG ALONE", "LIVE FEED", "RATIO",
                    "LIMIT");
        bool areMet = true;
        for (const Case& one : kCases) {
            areMet = compare(one, isShort) && areMet;
        }
        return areMet ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 2;
    }
}
