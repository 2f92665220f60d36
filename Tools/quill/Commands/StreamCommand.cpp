// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/FrameSource.h"
#include "Camera/FrameWriter.h"
#include "Camera/StreamRun.h"
#include "Commands/Command.h"
#include "Terminal/NumberArgument.h"

namespace QuillTool {

namespace {

using CameraInterface::FrameQueueStatus;
using CameraInterface::FrameResult;
using CameraInterface::STREAM_TYPE;
using CameraInterface::StreamCounter;
using CameraInterface::StreamStatistics;
using CameraInterface::WhenFull;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double kMillisecondsPerSecond = 1000.0;
/// A camera without a frame for so many of its frame periods, and at least a second, has stalled.
constexpr double kStallPeriods = 3;
constexpr Seconds kShortestStall{1};
/// A line covers at least this time, however late the previous one was; only the first may cover less.
constexpr Seconds kShortestLine{0.5};
/// Longer exposures and higher rates are no settings of a camera.
constexpr double kLargestSetting = 1e9;
/// What the reader of a pipe may be behind.
constexpr std::size_t kFramesForTheReader = 16;

class StreamCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addNumber(parser, "--seconds", m_Seconds, "End after this time (default: when interrupted)", 1, 1'000'000'000);
        addNumber(parser, "--frames", m_Frames, "End after this number of frames", 1, 1'000'000'000);
        m_Run.describe(parser);
        addJsonFlag(parser, m_Json);
        auto* const raw =
            parser.add_flag("--raw", m_Raw, "Write the bytes of every frame; the lines go to standard error");
        parser.add_option("-o,--output", m_Output, "With --raw: '-', standard output")
            ->needs(raw)
            ->check(CLI::IsMember({"-"}));
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        m_Run.prepare(context.output, camera);
        FrameSource source(context.interrupt, camera, {kFramesForTheReader, WhenFull::DropOldest, "tool"});
        std::optional<CameraInterface::FrameQueue> pipe;
        if (m_Raw) {
            pipe = camera->openFrameQueue({kFramesForTheReader, WhenFull::DropOldest, "pipe"});
        }
        RunningStream running(camera);
        std::optional<FrameWriter> writer;
        if (pipe) {
            writer.emplace(context.interrupt, std::move(*pipe), m_Frames, [&source] { source.close(); });
        }
        if (!m_Json) {
            print(context.output, "DELIVERED/s  RECEIVED/s  CAPTURE ms  TRANSFER ms  LOST/s  LOST");
        }
        Progress progress(camera, periodOf(camera));
        watch(context.output, source, progress);
        running.stop();
        if (writer) {
            writer->finish();
            Counts counts = progress.now();
            counts.losses["Dropped by pipe"] = writer->dropped();
            context.output.notify(fmt::format("{} frames written; lost: {}", writer->written(), counts.lost()));
        }
        return context.interrupt.requested() ? ExitCode::Interrupted : ExitCode::Done;
    }

private:
    /// Numbers of frames at a point in time.
    struct Counts {
        unsigned long long delivered = 0;
        unsigned long long received = 0;
        std::map<std::string, std::uint64_t> losses; ///< by reason
        Clock::time_point time;

        std::uint64_t allLosses() const {
            std::uint64_t sum = 0;
            for (const auto& loss : losses) {
                sum += loss.second;
            }
            return sum;
        }
        /// The losses for people, such as "3 Incomplete, 1 Missed", or "none".
        std::string lost() const {
            std::string text;
            for (const auto& [reason, frames] : losses) {
                if (frames > 0) {
                    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", frames, reason);
                }
            }
            return text.empty() ? "none" : text;
        }
    };

    /// What has happened since the stream started; earlier runs of the session do not count.
    class Progress {
    public:
        Progress(const SelectedCamera& camera, Seconds period)
            : m_Camera(camera), m_Period(period), m_AtStart(read()), m_LastFrame(m_Begin) {}

        void frameArrived() {
            ++m_Delivered;
            m_LastFrame = Clock::now();
        }
        Clock::time_point begin() const { return m_Begin; }
        std::uint64_t delivered() const { return m_Delivered; }
        StreamStatistics& statistics() const { return m_Camera->getStreamStatistics(); }

        Counts now() const {
            Counts counts = read();
            counts.delivered = m_Delivered;
            counts.received -= m_AtStart.received;
            for (auto& loss : counts.losses) {
                const auto before = m_AtStart.losses.find(loss.first);
                loss.second -= before == m_AtStart.losses.end() ? 0 : before->second;
            }
            return counts;
        }

        Seconds withoutFrame() const { return Clock::now() - m_LastFrame; }
        Seconds period() const { return m_Period; }
        Clock::time_point stallTime() const {
            const Seconds patience = std::max(kShortestStall, kStallPeriods * m_Period);
            return m_LastFrame + std::chrono::duration_cast<Clock::duration>(patience);
        }
        bool hasStalled() const { return Clock::now() >= stallTime(); }

    private:
        Counts read() const {
            Counts counts;
            counts.time = Clock::now();
            counts.received = statistics().getFrameCount(STREAM_TYPE::Received);
            for (const StreamCounter& counter : m_Camera->getStreamCounters()) {
                if (counter.isLoss) {
                    counts.losses[counter.name] = counter.value;
                }
            }
            return counts;
        }

        SelectedCamera m_Camera;
        const Seconds m_Period;
        const Clock::time_point m_Begin = Clock::now();
        const Counts m_AtStart;
        std::uint64_t m_Delivered = 0;
        Clock::time_point m_LastFrame;
    };

    /// The time between frames that the camera's settings say; 0 if they do not.
    static Seconds periodOf(const SelectedCamera& camera) {
        const auto number = [&camera](const char* property) -> double {
            try {
                const double value = std::stod(camera->getProperty(property).getValue());
                return value > 0 && value < kLargestSetting ? value : 0;
            } catch (const std::exception&) {
                return 0;
            }
        };
        const auto milliseconds = [&number](const char* property) {
            return Seconds(number(property) / kMillisecondsPerSecond);
        };
        namespace Names = CameraInterface::PropertyNames;
        if (camera->isPropertySupported(Names::kStreamingMode) &&
            camera->getProperty(Names::kStreamingMode).getValue() == "Still") {
            return milliseconds(Names::kStillExposureDelay) + milliseconds(Names::kStillExposure);
        }
        const double rate = number(Names::kFramerate);
        return std::max(milliseconds(Names::kVideoExposure), Seconds(rate > 0 ? 1 / rate : 0));
    }

    /// Takes frames, and prints a line each second and at the end, until time or frames are over.
    void watch(Output& output, FrameSource& source, Progress& progress) {
        const auto end = m_Seconds == 0 ? Clock::time_point::max() : progress.begin() + std::chrono::seconds(m_Seconds);
        Counts last = progress.now();
        Clock::time_point due = progress.begin() + std::chrono::seconds(1);
        while (Clock::now() < end) {
            // An overdue line follows the next frame of a slow camera, or says that the camera has stalled.
            const auto wake = Clock::now() < due ? due : progress.stallTime();
            const FrameResult result = source.next(std::max(std::min(wake, end) - Clock::now(), Clock::duration(0)));
            if (result.status == FrameQueueStatus::Closed) {
                break;
            }
            if (result) {
                progress.frameArrived();
                introduce(output, result.frame, progress);
                if (!m_Raw && progress.delivered() == m_Frames) {
                    break;
                }
            }
            if (Clock::now() < due || (progress.delivered() == last.delivered && !progress.hasStalled())) {
                continue;
            }
            const Counts now = progress.now();
            printRates(output, progress, std::exchange(last, now), now);
            due = progress.begin() + std::chrono::round<std::chrono::seconds>(now.time - progress.begin()) +
                  std::chrono::seconds(1);
        }
        const Counts now = progress.now();
        if (last.time < progress.begin() + kShortestLine || now.time - last.time >= kShortestLine) {
            printRates(output, progress, last, now);
        }
    }

    /// Says once how other programs read the frames.
    void introduce(Output& output, const CameraInterface::Frame& frame, const Progress& progress) const {
        if (!m_Raw || progress.delivered() != 1) {
            return;
        }
        const Imaging::Image& image = *frame.image;
        const std::string format = rawVideoFormat(image);
        output.notify(
            fmt::format("frames of {} bytes; to read them: ffmpeg -f rawvideo -pixel_format {} -video_size {}x{}"
                        " -framerate {:.4g} -i -",
                        image.getImageSize(), format.empty() ? "?" : format, image.getWidth(), image.getHeight(),
                        progress.period().count() > 0 ? 1 / progress.period().count() : 25));
    }

    void printRates(Output& output, const Progress& progress, const Counts& last, const Counts& now) const {
        const double seconds = Seconds(now.time - last.time).count();
        const double delivered = static_cast<double>(now.delivered - last.delivered) / seconds;
        const double received = static_cast<double>(now.received - last.received) / seconds;
        const double lost = static_cast<double>(now.allLosses() - last.allLosses()) / seconds;
        const double captureMs = progress.statistics().getCaptureTime() * kMillisecondsPerSecond;
        const double transferMs = progress.statistics().getImageDataTransferTime() * kMillisecondsPerSecond;
        if (m_Json) {
            Json line{{"delivered", now.delivered},
                      {"deliveredPerSecond", delivered},
                      {"receivedPerSecond", received},
                      {"captureMs", captureMs},
                      {"transferMs", transferMs},
                      {"notTaken", now.received > now.delivered ? now.received - now.delivered : 0},
                      {"lostPerSecond", lost},
                      {"lost", Json::object()},
                      {"secondsWithoutFrame", progress.hasStalled() ? progress.withoutFrame().count() : 0}};
            for (const auto& [reason, frames] : now.losses) {
                line["lost"][reason] = frames;
            }
            print(output, line.dump());
        } else {
            print(output, fmt::format("{:>11.1f}  {:>10.1f}  {:>10.2f}  {:>11.3f}  {:>6.1f}  {}", delivered, received,
                                      captureMs, transferMs, lost, now.lost()));
        }
        if (progress.hasStalled()) {
            const double waited = progress.withoutFrame().count();
            output.warn(progress.period().count() > 0 ? fmt::format("no frame for {:.1f} s, {:.0f} frame periods",
                                                                    waited, waited / progress.period().count())
                                                      : fmt::format("no frame for {:.1f} s", waited));
        }
    }

    /// Lines are results, unless the frames are.
    void print(Output& output, const std::string& line) const {
        if (m_Raw) {
            output.notify(line);
        } else {
            output.printLine(line);
            output.flush();
        }
    }

    std::string m_Camera;
    std::string m_Output;
    unsigned m_Seconds = 0;
    unsigned m_Frames = 0;
    bool m_Json = false;
    bool m_Raw = false;
    StreamRun m_Run;
};

} // namespace

CommandDescription streamCommand() {
    return {"stream", "Stream from a camera and print its frame rates once a second",
            "Prints a line, or a JSON object, each second, or after the next frame if that\n"
            "takes longer: frames delivered to the tool and frames received from the camera\n"
            "per second since the previous line, times of the last capture and the last\n"
            "transfer, frames lost per second, and all frames lost since the start with\n"
            "the reasons. A camera that delivers no frame for three frame periods, and at\n"
            "least a second, is reported while that lasts. Ends with 130 when interrupted.\n\n"
            "With --raw, standard output gets the bytes of each frame, one after another,\n"
            "and the first line says how to read them. A slow reader does not keep the\n"
            "camera waiting: frames that it does not take in time are dropped and counted.\n\n"
            "Examples:\n"
            "  quill stream 41500101\n"
            "  quill stream 41500101 --seconds 10 --set \"Video Exposure=5\" --json\n"
            "  quill stream 41500102 --raw -o - | ffplay -f rawvideo -pixel_format gray\\\n"
            "      -video_size 1280x1024 -framerate 25 -i -\n"
            "  quill stream 41500102 --frames 1000 --raw -o - > frames.raw\n",
            makeCommand<StreamCommand>};
}

} // namespace QuillTool
