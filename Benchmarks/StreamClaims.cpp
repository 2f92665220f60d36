// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>

#include <benchmark/benchmark.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Claims.h"
#include "Exceptions/KestrelExceptions.h"
#include "PropertyNames.h"
#include "Streams/FrameHandover.h"
#include "Streams/OrvexStream.h"
#include "Support/Cores.h"
#include "Support/SdkCamera.h"

namespace Benchmarks {

namespace {

using namespace OrvexAdapter;
using CameraInterface::FrameHandover;
using CameraInterface::PropertyNames::kHeight;
using CameraInterface::PropertyNames::kPixelFormat;
using CameraInterface::PropertyNames::kTimeout;
using CameraInterface::PropertyNames::kWidth;
using Clock = std::chrono::steady_clock;

constexpr double kWakeUpLimit = 1.15;
/// A single copy of the frame would take 1.
constexpr double kFrameLimit = 0.25;

/// Numbering, counting and sharing a frame.
constexpr double kQueueLimit = 1.1;
constexpr double kThreeQueuesLimit = 1.3;

constexpr int kWakeUps = 51; ///< per run, which takes their median
/// Long enough for the waiter to be asleep when the frame comes.
constexpr std::chrono::microseconds kPause{30};

/// Frames that become available some time after they were requested.
class FrameSource {
public:
    void begin() { m_Ended = false; }
    void end() { m_Ended = true; }

    void ask() { m_Asked = true; }
    /// Called on the producing thread, which must not sleep.
    /// @return false at the end
    bool produce() {
        moveToOtherCore();
        while (!m_Asked.exchange(false)) {
            if (m_Ended) {
                return false;
            }
        }
        const auto begin = Clock::now();
        while (Clock::now() - begin < kPause) {
        }
        m_Available = Clock::now();
        return true;
    }
    double secondsSinceAvailable() const { return std::chrono::duration<double>(Clock::now() - m_Available).count(); }

private:
    std::atomic<bool> m_Ended{false};
    std::atomic<bool> m_Asked{false};
    Clock::time_point m_Available; // handed over with the frame
};

/// The one source, because the SDK's operations have no context.
FrameSource& frameSource() {
    static FrameSource source;
    return source;
}

/// Forwards the frames of the source during its lifetime.
class Producer {
public:
    template <typename Deliver>
    explicit Producer(Deliver deliver) {
        frameSource().begin();
        m_Thread = std::thread([deliver] {
            while (frameSource().produce()) {
                deliver();
            }
        });
    }
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;
    ~Producer() {
        frameSource().end();
        m_Thread.join();
    }

private:
    std::thread m_Thread;
};

/// Makes a run in which the waiter, on this thread, sleeps and wakes as often as a median needs.
/// @param begin starts the producer of the frames and returns its owner
template <typename Begin, typename Wait>
Variant wakeUps(Begin begin, Wait wait) {
    const auto seconds = std::make_shared<std::vector<double>>();
    Variant variant;
    variant.run = [=] {
        const auto running = begin();
        seconds->clear();
        for (int i = 0; i < kWakeUps; ++i) {
            frameSource().ask();
            wait();
            seconds->push_back(frameSource().secondsSinceAvailable());
        }
    };
    variant.pieces = kWakeUps;
    variant.partSeconds = [seconds] { return median(*seconds) * kWakeUps; };
    return variant;
}

template <typename Deliver, typename Wait>
Variant producedWakeUps(Deliver deliver, Wait wait) {
    return wakeUps([deliver] { return std::make_unique<Producer>(deliver); }, wait);
}

Variant bareFutex() {
    const auto word = std::make_shared<std::atomic<int>>(0);
    const auto call = [word](int operation, int value) {
        syscall(SYS_futex, word.get(), operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr, 0);
    };
    return producedWakeUps(
        [=] {
            *word = 1;
            call(FUTEX_WAKE, 1);
        },
        [=] {
            while (word->exchange(0) == 0) {
                call(FUTEX_WAIT, 0);
            }
        });
}

Variant bareConditionVariable() {
    struct Signal {
        std::mutex mutex; // guards the following variables
        std::condition_variable condition;
        bool ready = false;
    };
    const auto signal = std::make_shared<Signal>();
    return producedWakeUps(
        [signal] {
            {
                const std::lock_guard lock(signal->mutex);
                signal->ready = true;
            }
            signal->condition.notify_one();
        },
        [signal] {
            std::unique_lock lock(signal->mutex);
            signal->condition.wait(lock, [&] { return signal->ready; });
            signal->ready = false;
        });
}

Variant frameHandover() {
    const auto handover = std::make_shared<FrameHandover>();
    return producedWakeUps(
        [handover] {
            while (!handover->isRequested()) {
            }
            handover->deliver(std::vector<unsigned char>(1));
        },
        [handover] {
            FrameHandover::Request request(*handover);
            request.wait(std::chrono::seconds(5));
            benchmark::DoNotOptimize(request.takeImageData().data());
        });
}

/// The format that the replaced capture reports, as a device would.
ORVEX_IMAGE_FORMAT& presentFormat() {
    static ORVEX_IMAGE_FORMAT format{};
    return format;
}

/// A camera whose capture waits for the source, or returns at once and leaves the buffer as it is; and its stream.
class CapturingCamera {
public:
    explicit CapturingCamera(bool fromSource)
        : m_Camera([fromSource](OrvexApi& api) {
              api.sdkCaptureVideoFrames = fromSource ? captureFromSource : captureAtOnce;
              api.sdkGetVideoImageFormat = [](void* /*handle*/, ORVEX_IMAGE_FORMAT* format) -> std::uint32_t {
                  *format = presentFormat();
                  return 1;
              };
              api.sdkCancelVideoCapture = [](void* /*handle*/) -> std::uint32_t {
                  frameSource().end();
                  return 1;
              };
          }) {}
    CapturingCamera(const CapturingCamera&) = delete;
    CapturingCamera& operator=(const CapturingCamera&) = delete;

    void setRegion(std::uint32_t width, std::uint32_t height, bool twoBytes) {
        m_Camera->getProperty(kWidth).setValue(std::to_string(width));
        m_Camera->getProperty(kHeight).setValue(std::to_string(height));
        m_Camera->getProperty(kPixelFormat).setValue(twoBytes ? "16" : "8");
        presentFormat() = {};
        presentFormat().size = sizeof(ORVEX_IMAGE_FORMAT);
        presentFormat().width = width;
        presentFormat().height = height;
        presentFormat().pixelFormat = twoBytes ? 1 : 0;
        presentFormat().imageSize = static_cast<std::uint32_t>(frameBytes());
    }
    std::size_t frameBytes() const {
        return std::size_t{presentFormat().width} * presentFormat().height * (presentFormat().pixelFormat + 1);
    }
    SdkCamera& camera() { return m_Camera; }
    OrvexStream& stream() { return m_Stream; }

private:
    static std::uint32_t captureFromSource(void* /*handle*/, std::uint32_t /*count*/, std::uint8_t* /*buffer*/) {
        return frameSource().produce() ? 1 : 0;
    }
    static std::uint32_t captureAtOnce(void* /*handle*/, std::uint32_t /*count*/, std::uint8_t* /*buffer*/) {
        moveToOtherCore();
        return 1;
    }

    SdkCamera m_Camera;
    OrvexStream m_Stream{*m_Camera}; // destroyed before the camera
};

/// A camera with small frames that come when they are asked for.
std::shared_ptr<CapturingCamera> askedCamera() {
    const auto device = std::make_shared<CapturingCamera>(true);
    device->setRegion(64, 48, false);
    device->camera()->getProperty(kTimeout).setValue("100");
    return device;
}

/// Repeats a wait that ends without a frame when, between request and wait, this thread lost its core for longer than
/// the frame took.
Variant streamedFrame(const std::shared_ptr<CapturingCamera>& device) {
    const auto stop = [](OrvexStream* stream) { stream->stopStream(); };
    return wakeUps(
        [device, stop] {
            frameSource().begin();
            device->stream().startStream();
            return std::unique_ptr<OrvexStream, decltype(stop)>(&device->stream(), stop);
        },
        [device] {
            while (true) {
                try {
                    benchmark::DoNotOptimize(device->stream().getImageData().data());
                    return;
                } catch (const KestrelExceptions::KestrelException_Stream&) {
                    frameSource().ask();
                }
            }
        });
}

/// Runs the camera's own stream with queues, each of which gets every frame.
Variant queuedFrame(const std::shared_ptr<CapturingCamera>& device, std::size_t queues) {
    /// Stops the stream before the queues go.
    struct Run {
        CameraInterface::Camera& camera;
        std::vector<CameraInterface::FrameQueue>& queues;

        ~Run() {
            camera.stopStream();
            queues.clear();
        }
    };
    const auto open = std::make_shared<std::vector<CameraInterface::FrameQueue>>();
    return wakeUps(
        [=] {
            frameSource().begin();
            for (std::size_t i = 0; i < queues; ++i) {
                open->push_back(device->camera()->openFrameQueue());
            }
            device->camera()->startStream();
            return std::unique_ptr<Run>(new Run{*device->camera(), *open});
        },
        [open] {
            for (CameraInterface::FrameQueue& queue : *open) {
                benchmark::DoNotOptimize(queue.pop().frame.image.get());
            }
        });
}

std::pair<Variant, Variant> queuedFrames(std::size_t queues) {
    const auto device = askedCamera();
    return {streamedFrame(device), queuedFrame(device, queues)};
}

/// Takes the median of several in a run, so that losing the core of a pinned thread meanwhile does not count.
template <typename Action>
Variant timedSingly(Action action) {
    constexpr int kTimes = 11;
    const auto seconds = std::make_shared<std::vector<double>>();
    Variant variant;
    variant.run = [seconds, action]() mutable {
        seconds->clear();
        for (int i = 0; i < kTimes; ++i) {
            const auto begin = Clock::now();
            action();
            seconds->push_back(std::chrono::duration<double>(Clock::now() - begin).count());
        }
    };
    variant.pieces = kTimes;
    variant.partSeconds = [seconds] { return median(*seconds) * kTimes; };
    return variant;
}

/// Takes images one after another from a camera that captures without delay.
std::pair<Variant, Variant> streaming(bool twoBytes) {
    constexpr std::size_t kBuffers = 4;
    const auto device = std::make_shared<CapturingCamera>(false);
    device->setRegion(2592, 1944, twoBytes);
    const std::size_t bytes = device->frameBytes();
    const auto buffers = std::make_shared<std::array<std::vector<unsigned char>, 2 * kBuffers>>();
    buffers->fill(std::vector<unsigned char>(bytes, 1));
    Variant floor = timedSingly([=, next = std::size_t{0}]() mutable {
        const std::size_t i = next++ % kBuffers;
        std::memcpy((*buffers)[kBuffers + i].data(), (*buffers)[i].data(), bytes);
        benchmark::DoNotOptimize((*buffers)[kBuffers + i].data());
        benchmark::ClobberMemory();
    });
    floor.prepare = [device] {
        if (device->camera()->isStreaming()) {
            device->camera()->stopStream();
        }
    };
    Variant ours = timedSingly([device] { benchmark::DoNotOptimize(device->camera()->getImage()->getDataAddress()); });
    ours.prepare = [device] { device->camera()->startStream(); };
    return {floor, ours};
}

} // namespace

std::vector<Claim> streamClaims(Scope) {
    return {
        {"P12", "frame put to frame taken", "futex", kWakeUpLimit,
         [] { return std::pair(bareFutex(), frameHandover()); }, Timing::Wall},
        {"P12", "frame put to frame taken", "condition variable", kWakeUpLimit,
         [] { return std::pair(bareConditionVariable(), frameHandover()); }, Timing::Wall},
        {"P12", "frame captured to getImageData() returned", "futex", kWakeUpLimit,
         [] { return std::pair(bareFutex(), streamedFrame(askedCamera())); }, Timing::Wall},
        {"P13", "getImage() of a stream, 5 MP, 8 bit", "memcpy", kFrameLimit, [] { return streaming(false); },
         Timing::Wall},
        {"P13", "getImage() of a stream, 5 MP, 16 bit", "memcpy", kFrameLimit, [] { return streaming(true); },
         Timing::Wall},
        {"P26", "frame captured to FrameQueue::pop() returned", "getImageData()", kQueueLimit,
         [] { return queuedFrames(1); }, Timing::Wall},
        {"P26", "frame captured, popped from three queues", "getImageData()", kThreeQueuesLimit,
         [] { return queuedFrames(3); }, Timing::Wall},
    };
}

} // namespace Benchmarks
