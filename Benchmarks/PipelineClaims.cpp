// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include <turbojpeg.h>

#include "Claims.h"
#include "Imaging/Conversion.h"
#include "Imaging/Image.h"
#include "PropertyNames.h"
#include "Support/SdkCamera.h"
#include "Support/TemporaryFolder.h"

namespace Benchmarks {

namespace {

using CameraInterface::Frame;
using CameraInterface::FrameQueue;
using CameraInterface::FrameResult;
using CameraInterface::WhenFull;

/// 0.9 of the frames per second of the slowest stage.
constexpr double kPipelineLimit = 1.11;
/// That take frames from the queue, one for each core. The camera's worker is another.
constexpr std::size_t kThreads = 2;
constexpr std::size_t kQueueCapacity = 8;
constexpr int kFirstFrames = 8; ///< fill the pipeline, not timed
constexpr int kTimedFrames = 16;
constexpr int kAllFrames = kFirstFrames + kTimedFrames;
constexpr int kQuality = 90;

/// Encodes pictures and writes them into files.
class PictureWriter {
public:
    explicit PictureWriter(const std::filesystem::path& folder)
        : m_Folder(folder), m_Encoder(tjInitCompress(), &tjDestroy), m_Bytes(nullptr, &tjFree) {}

    void write(const Imaging::Image& color, int number) {
        unsigned char* bytes = m_Bytes.release();
        const int status =
            tjCompress2(m_Encoder.get(), color.getDataAddress(), static_cast<int>(color.getWidth()), 0,
                        static_cast<int>(color.getHeight()), TJPF_BGR, &bytes, &m_Size, TJSAMP_420, kQuality, 0);
        m_Bytes.reset(bytes);
        std::ofstream file(m_Folder / (std::to_string(number) + ".jpg"), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(m_Size));
        if (status != 0 || !file.flush()) {
            throw std::runtime_error("A picture could not be written.");
        }
    }

private:
    std::filesystem::path m_Folder;
    std::unique_ptr<void, decltype(&tjDestroy)> m_Encoder;
    std::unique_ptr<unsigned char, decltype(&tjFree)> m_Bytes;
    unsigned long m_Size = 0;
};

/// What a thread does with a frame, whose number is its second argument if there is no queue.
using WorkOnFrame = std::function<void(int, PictureWriter&)>;

/// Does the work for each frame once; returns the seconds from the end of the first frames to the end of all, per
/// frame.
double secondsPerFrame(std::size_t threads, const std::filesystem::path& folder, const WorkOnFrame& work) {
    using Clock = std::chrono::steady_clock;
    std::atomic<int> claimed{0};
    std::atomic<std::size_t> done{0};
    std::array<Clock::time_point, kAllFrames> ends;
    const auto run = [&] {
        PictureWriter writer(folder);
        for (int frame = claimed++; frame < kAllFrames; frame = claimed++) {
            work(frame, writer);
            ends[done++] = Clock::now();
        }
    };
    std::vector<std::future<void>> running(threads);
    for (auto& thread : running) {
        thread = std::async(std::launch::async, run);
    }
    for (auto& thread : running) {
        thread.get();
    }
    return std::chrono::duration<double>(ends.back() - ends[kFirstFrames - 1]).count() / kTimedFrames;
}

std::unique_ptr<Imaging::Image> toColor(const Frame& frame) {
    return Imaging::convertImage(*frame.image, Imaging::IMAGE_FORMAT::BGR);
}

/// A camera of 5 megapixels in colour whose frames come as fast as they are asked for, and a folder for pictures.
class Pipeline {
public:
    Pipeline() {
        m_Camera->getProperty(CameraInterface::PropertyNames::kPixelFormat).setValue("8");
        SoftwareDevices::setAsFastAsAsked(SoftwareDevices::defaultDevices().front().serial, true);
        streamed(1, [this](FrameQueue& queue, int frame, PictureWriter&) { m_Frames[index(frame)] = pop(queue); });
        for (std::size_t i = 0; i < kFrames; ++i) {
            m_Pictures[i] = toColor(m_Frames[i]);
        }
    }

    /// The seconds of a frame from the camera's buffer to its file.
    double whole() {
        return streamed(kThreads, [](FrameQueue& queue, int /*frame*/, PictureWriter& writer) {
            const Frame frame = pop(queue);
            if (frame.information.number > kAllFrames) {
                throw std::logic_error("Frames were lost."); // each of the run's frames is numbered
            }
            writer.write(*toColor(frame), static_cast<int>(frame.information.number));
        });
    }
    /// The seconds of a frame in each stage by itself: camera, conversion, encoding with the file.
    std::array<double, 3> stages() {
        return {streamed(1, [](FrameQueue& queue, int, PictureWriter&) { pop(queue); }),
                alone([this](int frame, PictureWriter&) { toColor(m_Frames[index(frame)]); }),
                alone([this](int frame, PictureWriter& writer) { writer.write(*m_Pictures[index(frame)], frame); })};
    }

private:
    static constexpr std::size_t kFrames = 4;

    static std::size_t index(int frame) { return static_cast<std::size_t>(frame) % kFrames; }

    static Frame pop(FrameQueue& queue) {
        FrameResult result = queue.pop();
        if (!result) {
            throw std::runtime_error(describe(result.status));
        }
        return std::move(result.frame);
    }

    double alone(const WorkOnFrame& work) { return secondsPerFrame(1, m_Folder.path(), work); }

    template <typename QueueWork>
    double streamed(std::size_t threads, QueueWork work) {
        FrameQueue queue = m_Camera->openFrameQueue({kQueueCapacity, WhenFull::HoldBack, "pictures"});
        m_Camera->startStream();
        const double seconds = secondsPerFrame(threads, m_Folder.path(),
                                               [&](int frame, PictureWriter& writer) { work(queue, frame, writer); });
        m_Camera->stopStream();
        return seconds;
    }

    TestSupport::TemporaryFolder m_Folder;
    SdkCamera m_Camera;
    std::array<Frame, kFrames> m_Frames;
    std::array<std::unique_ptr<Imaging::Image>, kFrames> m_Pictures;
};

double slowest(const std::array<double, 3>& stages) {
    return *std::max_element(stages.begin(), stages.end());
}

/// What a frame takes if no core is ever idle.
double sharedByCores(const std::array<double, 3>& stages) {
    return std::accumulate(stages.begin(), stages.end(), 0.0) / kThreads;
}

std::pair<Variant, Variant> pipeline(double (*floorOfStages)(const std::array<double, 3>&)) {
    const auto shared = std::make_shared<Pipeline>();
    return {selfTimed(kTimedFrames, [=] { return floorOfStages(shared->stages()); }),
            selfTimed(kTimedFrames, [shared] { return shared->whole(); })};
}

} // namespace

std::vector<Claim> pipelineClaims(Scope scope) {
    std::vector<Claim> claims{{"P29", "5 MP from the camera to a JPEG file", "slowest stage", kPipelineLimit,
                               [] { return pipeline(slowest); }, Timing::WallOnAllCores}};
    if (scope == Scope::Full) { // other programs leave no two cores
        claims.push_back({"P29", "5 MP from the camera to a JPEG file", "two busy cores", kPipelineLimit,
                          [] { return pipeline(sharedByCores); }, Timing::WallOnAllCores});
    }
    return claims;
}

} // namespace Benchmarks
