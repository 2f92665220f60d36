// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <string>
#include <utility>

#include <Quill.h>
#include <fmt/format.h>

#include "Camera/ImageSource.h"
#include "Camera/StreamRun.h"
#include "Commands/Command.h"
#include "Terminal/Numbers.h"

namespace QuillTool {

namespace {

using CameraInterface::STREAM_TYPE;
using CameraInterface::StreamStatistics;
using Clock = std::chrono::steady_clock;

constexpr double kMillisecondsPerSecond = 1000.0;

class StreamCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addNumber(parser, "--seconds", m_Seconds, "End after this time (default: when interrupted)", 1, 1'000'000'000);
        m_Run.describe(parser);
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        m_Run.prepare(context.output, camera);
        RunningStream running(camera);
        if (!m_Json) {
            context.output.printLine("DELIVERED/s  RECEIVED/s  CAPTURE ms  TRANSFER ms  NOT TAKEN");
            context.output.flush();
        }
        StreamStatistics* const statistics =
            camera.attempt("its statistics cannot be read", [&] { return &camera->getStreamStatistics(); });
        ImageSource source(context.interrupt, camera);
        const Clock::time_point begin = Clock::now();
        const Counts first = countsOf(*statistics, begin);
        Counts last = first;
        for (unsigned long long second = 1; m_Seconds == 0 || second <= m_Seconds;) {
            if (!takeFrames(source, begin + std::chrono::seconds(second))) {
                break;
            }
            const Counts now = countsOf(*statistics, Clock::now());
            printRates(context.output, *statistics, first, std::exchange(last, now), now);
            // The next line covers at least half a second, however late this line is.
            second =
                static_cast<unsigned long long>(std::chrono::round<std::chrono::seconds>(now.time - begin).count()) + 1;
        }
        running.stop();
        return context.interrupt.requested() ? ExitCode::Interrupted : ExitCode::Done;
    }

private:
    /// Numbers of frames at a point in time.
    struct Counts {
        unsigned long long delivered;
        unsigned long long received;
        Clock::time_point time;
    };

    static Counts countsOf(StreamStatistics& statistics, Clock::time_point time) {
        return {statistics.getFrameCount(STREAM_TYPE::Delivered), statistics.getFrameCount(STREAM_TYPE::Received),
                time};
    }

    /// @return false after an interrupt
    static bool takeFrames(ImageSource& source, Clock::time_point end) {
        while (Clock::now() < end) {
            if (!source.next()) {
                return false;
            }
        }
        return true;
    }

    /// @param first  counts at the beginning of the run; earlier runs of the session count too
    void printRates(Output& output, StreamStatistics& statistics, const Counts& first, const Counts& last,
                    const Counts& now) const {
        const double seconds = std::chrono::duration<double>(now.time - last.time).count();
        const double delivered = static_cast<double>(now.delivered - last.delivered) / seconds;
        const double received = static_cast<double>(now.received - last.received) / seconds;
        const double captureMs = statistics.getCaptureTime() * kMillisecondsPerSecond;
        const double transferMs = statistics.getImageDataTransferTime() * kMillisecondsPerSecond;
        const unsigned long long all = now.received - first.received;
        const unsigned long long taken = now.delivered - first.delivered;
        const unsigned long long notTaken = all > taken ? all - taken : 0;
        if (m_Json) {
            output.printJsonLine(Json{{"deliveredPerSecond", delivered},
                                      {"receivedPerSecond", received},
                                      {"captureMs", captureMs},
                                      {"transferMs", transferMs},
                                      {"notTaken", notTaken}});
        } else {
            output.printLine(fmt::format("{:>11.1f}  {:>10.1f}  {:>10.2f}  {:>11.3f}  {:>9}", delivered, received,
                                         captureMs, transferMs, notTaken));
        }
        output.flush();
    }

    std::string m_Camera;
    unsigned m_Seconds = 0;
    bool m_Json = false;
    StreamRun m_Run;
};

} // namespace

CommandDescription streamCommand() {
    return {"stream", "Stream from a camera and print its frame rates once a second",
            "Prints a line, or a JSON object, each second, or after the next frame if that\n"
            "takes longer: frames delivered to the tool and frames received from the camera\n"
            "per second since the previous line, times of the last capture and the last\n"
            "transfer, and the number of frames of the run that were not taken in time. Ends\n"
            "with 130 when interrupted.\n\n"
            "Examples:\n"
            "  quill stream 41500101\n"
            "  quill stream 41500101 --seconds 10 --set \"Video Exposure=5\" --json\n",
            makeCommand<StreamCommand>};
}

} // namespace QuillTool
