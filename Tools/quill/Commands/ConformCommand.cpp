// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands/Command.h"
#include "Conformance/Examination.h"
#include "Terminal/Text.h"

namespace QuillTool {

namespace {

using namespace Conformance;

/// Arranges the findings by call and state.
Table tableOf(const std::vector<Finding>& findings) {
    std::vector<const StateDescription*> columns;
    for (const StateDescription& state : allStates()) {
        if (std::any_of(findings.begin(), findings.end(),
                        [&](const Finding& finding) { return finding.state == state.state; })) {
            columns.push_back(&state);
        }
    }
    Table table{{"CALL"}, {}};
    for (const StateDescription* column : columns) {
        table.header.push_back(inCapitals(column->name));
    }
    for (const PublicCall& call : allPublicCalls()) {
        std::vector<std::string> row{call.name};
        for (const StateDescription* column : columns) {
            const auto finding = std::find_if(findings.begin(), findings.end(), [&](const Finding& candidate) {
                return candidate.call == &call && candidate.state == column->state;
            });
            row.emplace_back(finding == findings.end() ? "" : finding->conforms ? "ok" : "FAIL");
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

const char* nameOf(State state) {
    return allStates()[static_cast<std::size_t>(state)].name;
}

std::string sentenceOf(const Finding& finding) {
    const std::string place = fmt::format("FAIL  {}, {}: ", finding.call->name, nameOf(finding.state));
    return place + (finding.expected.empty()
                        ? finding.answer
                        : fmt::format("expected '{}', got '{}'", finding.expected, finding.answer));
}

Json documentOf(const Subject& subject, const std::vector<Finding>& findings, std::size_t failures) {
    Json answers = Json::array();
    for (const Finding& finding : findings) {
        answers.push_back({{"call", finding.call->name},
                           {"state", nameOf(finding.state)},
                           {"expected", finding.expected},
                           {"answer", finding.answer},
                           {"milliseconds", finding.time.count()},
                           {"conforms", finding.conforms}});
    }
    Json counters = Json::object();
    for (const CameraInterface::StreamCounter& counter : subject.counters()) {
        counters[counter.name] = counter.value;
    }
    return {{"version", QUILL_TOOL_VERSION},
            {"serialNumber", subject.serialNumber()},
            {"modelName", subject.modelName()},
            {"firmwareVersion", subject.firmwareVersion()},
            {"kind", nameOf(subject.kind())},
            {"conforms", failures == 0},
            {"failures", failures},
            {"counters", counters},
            {"answers", answers}};
}

/// What became of the frames of all states, such as "Captured 12, Delivered 3, Unused 9".
std::string framesOf(const Subject& subject) {
    std::string text;
    for (const CameraInterface::StreamCounter& counter : subject.counters()) {
        if (counter.value > 0 || counter.name == "Captured") {
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", counter.name, counter.value);
        }
    }
    return text;
}

class ConformCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addJsonFlag(parser, m_Json);
        parser.add_flag("--destructive", m_Destructive, "Also write flash, with its present content");
    }

    ExitCode run(Context& context) override {
        const std::string serialNumber = context.session.select(m_Camera);
        const auto proceed = [&] {
            if (context.interrupt.requested()) {
                throw ToolError(ExitCode::Interrupted,
                                fmt::format("camera {}: interrupted during the examination", serialNumber));
            }
        };
        attempt(fmt::format("camera {}: cannot be examined", serialNumber), [&] {
            Subject subject(serialNumber, {}, m_Destructive ? FlashWrites::Allowed : FlashWrites::Forbidden);
            print(context.output, subject, examine(subject, proceed));
        });
        if (m_Failures != 0) {
            throw ToolError(ExitCode::Failed, fmt::format("camera {}: {} of its answers are not as documented",
                                                          serialNumber, m_Failures));
        }
        return ExitCode::Done;
    }

private:
    void print(Output& output, const Subject& subject, const std::vector<Finding>& findings) {
        const auto conforms = [](const Finding& finding) { return finding.conforms; };
        m_Failures =
            findings.size() - static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), conforms));
        if (m_Json) {
            output.printJson(documentOf(subject, findings, m_Failures));
            return;
        }
        output.printTable(tableOf(findings));
        for (const Finding& finding : findings) {
            if (!finding.conforms) {
                output.printLine(sentenceOf(finding));
            }
        }
        if (const std::string frames = framesOf(subject); !frames.empty()) {
            output.printLine("frames: " + frames);
        }
        output.printLine(fmt::format(
            "quill {}; {} {}, {}, firmware {}: {} answers, {} not as documented", QUILL_TOOL_VERSION,
            subject.modelName(), subject.serialNumber(), nameOf(subject.kind()),
            subject.firmwareVersion().empty() ? "unknown" : subject.firmwareVersion(), findings.size(), m_Failures));
    }

    std::string m_Camera;
    bool m_Json = false;
    bool m_Destructive = false;
    std::size_t m_Failures = 0;
};

} // namespace

CommandDescription conformCommand() {
    return {"conform", "Check that every call answers as documented, in every state",
            "Makes every public call on the camera: new, connected, streaming, suspended,\n"
            "disconnected and after the end of the library's workspace. Prints each answer\n"
            "that differs from the documentation, and ends with 1 if there is any. A call\n"
            "that takes more than 10 s fails. Disconnects all cameras, but changes nothing\n"
            "else: it neither writes flash nor restarts a camera. With --destructive, it\n"
            "rewrites the current mode of a USB3 Vision camera.\n\n"
            "Examples:\n"
            "  quill conform 90001\n"
            "  quill conform 41500101 --json | jq '.answers[] | select(.conforms | not)'\n",
            makeCommand<ConformCommand>};
}

} // namespace QuillTool
