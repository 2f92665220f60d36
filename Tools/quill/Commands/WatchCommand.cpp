// SPDX-License-Identifier: Apache-2.0

#include <map>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraChanges.h"
#include "Commands/Command.h"
#include "Terminal/StandardStreams.h"

namespace QuillTool {

namespace {

using CameraInterface::Camera;

class WatchCommand : public Command {
public:
    void describe(CLI::App& parser) override { addJsonFlag(parser, m_Json); }

    ExitCode run(Context& context) override {
        CameraChanges changes; // before the first listing, so that no change is missed
        m_Known = context.session.listCameras();
        for (const auto& [serialNumber, modelName] : m_Known) {
            print(context.output, "present", serialNumber, modelName);
        }
        do {
            for (const Departure& departure : changes.takeDepartures()) {
                if (m_Known.erase(departure.serialNumber) != 0) {
                    print(context.output, "departed", departure.serialNumber, departure.modelName);
                }
            }
            printArrivals(context.output);
            context.output.flush();
        } while (waitForChange(context.interrupt, changes));
        return ExitCode::Interrupted;
    }

private:
    void print(Output& output, const char* event, const std::string& serialNumber, const std::string& modelName) const {
        if (m_Json) {
            output.printJsonLine(Json{{"event", event}, {"serialNumber", serialNumber}, {"modelName", modelName}});
        } else {
            output.printLine(fmt::format("{:<8}  {}  {}", event, serialNumber, modelName));
        }
    }

    void printArrivals(Output& output) {
        for (const auto& [serialNumber, modelName] : Camera::getCamerasList()) {
            if (m_Known.emplace(serialNumber, modelName).second) {
                print(output, "arrived", serialNumber, modelName);
            }
        }
    }

    /// @return false after an interrupt
    static bool waitForChange(const Interrupt& interrupt, const CameraChanges& changes) {
        return waitWhileOutputIsRead({&interrupt.waker(), &changes.waker()}) == 1;
    }

    bool m_Json = false;
    std::map<std::string, std::string> m_Known; // model name by serial number
};

} // namespace

CommandDescription watchCommand() {
    return {"watch", "Print cameras that arrive and depart until interrupted",
            "Begins with the cameras that are present. Prints a line, or a JSON object, for\n"
            "each camera. Ends with 130 when interrupted.\n\n"
            "Examples:\n"
            "  quill watch\n"
            "  quill watch --json | jq -r 'select(.event == \"departed\") | .serialNumber'\n",
            makeCommand<WatchCommand>};
}

} // namespace QuillTool
