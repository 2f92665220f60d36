#include <chrono>
#include <string>

#include <Quill.h>
#include <fmt/format.h>

#include "Command.h"
#include "StreamRun.h"

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
        parser.add_option("--seconds", m_Seconds, "End after this time; without it, when interrupted")
            ->check(CLI::Range(1U, 1'000'000'000U));
        m_Run.describe(parser);
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        m_Run.prepare(context.output, camera);
        RunningStream running(camera);
        if (!m_Json) {
            context.output.printLine("DELIVERED/s  RECEIVED/s  CAPTURE ms  TRANSFER ms  NOT TAKEN");
        }
        StreamStatistics* const statistics =
            camera.attempt("its statistics cannot be read", [&] { return &camera->getStreamStatistics(); });
        const Clock::time_point begin = Clock::now();
        for (unsigned second = 1; (m_Seconds == 0 || second <= m_Seconds) && !context.interrupt.requested(); ++second) {
            takeFrames(context, camera, begin + std::chrono::seconds(second));
            tell(context.output, *statistics);
        }
        running.stop();
        return context.interrupt.requested() ? ExitCode::Interrupted : ExitCode::Done;
    }

private:
    static void takeFrames(const Context& context, const SelectedCamera& camera, Clock::time_point end) {
        while (Clock::now() < end && !context.interrupt.requested()) {
            camera.attempt("no image can be taken", [&] { camera->getImage(); });
        }
    }

    void tell(Output& output, StreamStatistics& statistics) {
        const double delivered = statistics.getFramesPerSecond(STREAM_TYPE::Delivered);
        const double received = statistics.getFramesPerSecond(STREAM_TYPE::Received);
        const double captureMs = statistics.getCaptureTime() * kMillisecondsPerSecond;
        const double transferMs = statistics.getImageDataTransferTime() * kMillisecondsPerSecond;
        const unsigned long long all = statistics.getFrameCount(STREAM_TYPE::Received);
        const unsigned long long taken = statistics.getFrameCount(STREAM_TYPE::Delivered);
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
    return {"stream", "Stream from a camera and tell its frame rates once a second",
            "One line, or one JSON object, a second: frames handed out and frames that the\n"
            "camera delivered, each per second; how long the last capture and the last\n"
            "hand-over took; and how many of all frames nobody took in time. Ends with 130\n"
            "when interrupted.\n\n"
            "Examples:\n"
            "  quill stream 41500101\n"
            "  quill stream 41500101 --seconds 10 --set \"Video Exposure=5\" --json\n",
            makeCommand<StreamCommand>};
}

} // namespace QuillTool
