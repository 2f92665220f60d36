// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "CameraList/CameraListExamination.h"
#include "Commands/Bytes.h"
#include "Commands/Command.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

namespace {

constexpr std::size_t kLargestCameraList = std::size_t{64} << 20;

class CheckCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addFileArgument(parser, m_File, "The list of simulated cameras; - is standard input");
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        refuseCommandsAsInput(context, m_File);
        const std::vector<unsigned char> bytes = readDocument(m_File, kLargestCameraList);
        const CameraListReport report = examineCameraList({bytes.begin(), bytes.end()});
        if (m_Json) {
            print(context.output, report);
        }
        for (const CameraListFinding& finding : report.findings) {
            if (!m_Json) {
                context.output.printLine(fmt::format("{}:{}: {}{}{}", m_File, finding.line, finding.place,
                                                     finding.place.empty() ? "" : ": ", finding.text));
            }
        }
        const std::string content =
            fmt::format("{} cameras, {} properties, {} functions", report.cameras, report.properties, report.functions);
        if (!report.findings.empty()) {
            throw ToolError(ExitCode::Failed,
                            fmt::format("file '{}': {} findings in {}", m_File, report.findings.size(), content));
        }
        if (!m_Json) {
            context.output.printLine(fmt::format("{}: {}", m_File, content));
        }
        return ExitCode::Done;
    }

private:
    static void print(Output& output, const CameraListReport& report) {
        Json findings = Json::array();
        for (const CameraListFinding& finding : report.findings) {
            findings.push_back({{"line", finding.line}, {"place", finding.place}, {"text", finding.text}});
        }
        output.printJson(Json{{"cameras", report.cameras},
                              {"properties", report.properties},
                              {"functions", report.functions},
                              {"findings", findings}});
    }

    std::string m_File;
    bool m_Json = false;
};

} // namespace

CommandDescription checkCommand() {
    return {"check", "Examine a list of simulated cameras",
            "The library leaves out what it cannot read in a list of simulated cameras. This\n"
            "names each such place by its line: syntax, missing and unknown keys, values of\n"
            "the wrong kind, defaults outside of their range, names that are there twice.\n"
            "Ends with 1 if there is one.\n\n"
            "Examples:\n"
            "  quill check cameras.json\n"
            "  quill check cameras.json --json | jq -r '.findings[].text'\n",
            makeCommand<CheckCommand>};
}

} // namespace QuillTool
