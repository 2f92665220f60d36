// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Commands/Bytes.h"
#include "Commands/Command.h"
#include "Flash/LongJob.h"

namespace QuillTool {

namespace {

using Bytes = std::vector<unsigned char>;
using Utilities::XsvfError;
using Utilities::XsvfReport;

constexpr std::size_t kLargestFile = std::size_t{256}
                                     << 20; // bytes; programming files of large devices take tens of MB

struct ErrorWords {
    XsvfError error;
    std::string_view reason;
};

constexpr std::array kErrors{
    ErrorWords{XsvfError::TdoMismatch, "the device returned unexpected bits"},
    ErrorWords{XsvfError::RetriesExhausted, "the device kept returning unexpected bits"},
    ErrorWords{XsvfError::IllegalCommand, "an illegal command"},
    ErrorWords{XsvfError::IllegalState, "a TAP state that does not exist or cannot be reached"},
    ErrorWords{XsvfError::DataOverflow, "a shift of more than 7000 bytes"},
};

std::string_view reasonOf(const XsvfReport& report) {
    if (report.dataEnded) {
        return "it ends without the command that completes it";
    }
    const auto* words = std::find_if(kErrors.begin(), kErrors.end(),
                                     [&](const ErrorWords& candidate) { return candidate.error == report.error; });
    return words == kErrors.end() ? "unknown error" : words->reason;
}

std::string hexOf(const Bytes& bytes) {
    return toHex(std::string(bytes.begin(), bytes.end()));
}

/// Cuts long values: the beginning is enough for people.
std::string shownHex(const Bytes& bytes) {
    constexpr std::size_t kLongest = 32;
    const std::string digits = hexOf(bytes);
    return digits.size() > kLongest ? digits.substr(0, kLongest) + "..." : digits;
}

bool isMismatch(XsvfError error) {
    return error == XsvfError::TdoMismatch || error == XsvfError::RetriesExhausted;
}

std::string placeOf(std::uint32_t command, std::size_t offset) {
    return fmt::format("at command {}, file offset 0x{:X}", command, offset);
}

std::string explainError(const XsvfReport& report) {
    const std::string sentence =
        fmt::format("{}, {}", reasonOf(report), placeOf(report.commandCount, report.commandOffset));
    return isMismatch(report.error)
               ? fmt::format("{}: expected {}, captured {}, mask {}", sentence, shownHex(report.expectedTdo),
                             shownHex(report.capturedTdo), report.tdoMask.empty() ? "all" : shownHex(report.tdoMask))
               : sentence;
}

std::string explain(const XsvfReport& report) {
    std::vector<std::string> parts;
    if (!report.opened) {
        parts.emplace_back("it refuses access to its JTAG port");
    } else {
        if (report.error != XsvfError::None) {
            parts.push_back(explainError(report));
        }
        if (report.failedTransfers != 0) {
            parts.push_back(fmt::format("transfers failed: {}, the first one {}", report.failedTransfers,
                                        placeOf(report.failedCommand, report.failedOffset)));
        }
    }
    if (report.cameraGone) {
        parts.emplace_back("the camera is gone");
    }
    return fmt::format("{}", fmt::join(parts, "; "));
}

Json toJson(const XsvfReport& report) {
    Json details{{"error", static_cast<int>(report.error)},
                 {"commandCount", report.commandCount},
                 {"commandOffset", report.commandOffset}};
    if (isMismatch(report.error)) {
        details["expected"] = hexOf(report.expectedTdo);
        details["captured"] = hexOf(report.capturedTdo);
        details["mask"] = hexOf(report.tdoMask);
    }
    if (report.failedTransfers != 0) {
        details["failedTransfers"] = report.failedTransfers;
        details["failedCommand"] = report.failedCommand;
        details["failedOffset"] = report.failedOffset;
        details["cameraGone"] = report.cameraGone;
    }
    return details;
}

class JtagCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addFileArgument(parser, m_File, "The XSVF file");
        m_Progress.describe(parser);
        parser.add_flag("--dry-run", m_DryRun, "Check the file and leave the camera untouched");
    }

    ExitCode run(Context& context) override {
        const Bytes data = readFileForCamera(m_File, kLargestFile);
        const XsvfReport check = Utilities::checkXsvf(data);
        if (!check.succeeded()) {
            throw ToolError(ExitCode::Failed, fmt::format("file '{}': cannot be played: {}", m_File, explain(check)));
        }
        const SelectedCamera camera = context.session.connect(m_Camera);
        if (!Utilities::canPlayXsvf(*camera)) {
            throw ToolError(ExitCode::NotFound,
                            camera.about(tried() + ": only that of an SDK camera can be reached; the function "
                                                   "'Jtag' of another camera plays nothing"));
        }
        if (m_DryRun) {
            printPlan(context.output, camera, check);
        } else {
            play(context, camera, data);
        }
        return ExitCode::Done;
    }

private:
    std::string tried() const { return fmt::format("'{}' cannot be played into its JTAG port", m_File); }

    void printPlan(Output& output, const SelectedCamera& camera, const XsvfReport& check) const {
        if (m_Progress.json) {
            Json plan{{"result", "dry run"}, {"camera", camera.serialNumber()}};
            plan.update(toJson(check));
            output.printJsonLine(plan);
        } else {
            output.printLine(camera.about(
                fmt::format("{} commands of '{}' would be played into its JTAG port", check.commandCount, m_File)));
        }
    }

    void play(Context& context, const SelectedCamera& camera, const Bytes& data) const {
        LongJob job(context, camera, m_Progress);
        XsvfReport report;
        double reached = 0;
        const auto work = [&] {
            Utilities::playXsvf(*camera, data, report, [&](double done) {
                reached = done;
                job.advance("play", done, done < 1);
            });
        };
        job.run(work, [&] {
            return JobPlace{tried(), fmt::format("playing '{}' at {:.0f} %", m_File, reached * 100),
                            report.opened ? "JTAG access is closed, and the device behind it is partly programmed"
                                          : "nothing was played",
                            Json{{"camera", camera.serialNumber()}, {"stage", "play"}, {"done", reached}}};
        });
        Json details{{"camera", camera.serialNumber()}};
        details.update(toJson(report));
        if (!report.succeeded()) {
            job.report().fail("failed", details);
            throw ToolError(report.cameraGone ? ExitCode::CameraGone : ExitCode::Failed,
                            camera.about(fmt::format("{}: {}", tried(), explain(report))));
        }
        job.report().finish("played", fmt::format("played '{}', {} commands", m_File, report.commandCount), details);
    }

    std::string m_Camera;
    std::string m_File;
    ProgressOptions m_Progress;
    bool m_DryRun = false;
};

} // namespace

CommandDescription jtagCommand() {
    return {"jtag", "Play an XSVF file into a camera's JTAG port",
            "Checks the whole file before it touches the camera. Reports a failure with the\n"
            "number of the command and its place in the file; for unexpected bits, also with\n"
            "the expected bits, the captured bits and the mask of the bits that count.\n"
            "Counts failed transfers. Ends with 5 when the camera goes away.\n\n"
            "Examples:\n"
            "  quill jtag 41500101 logic.xsvf --dry-run\n"
            "  quill jtag 41500101 logic.xsvf\n",
            makeCommand<JtagCommand>};
}

} // namespace QuillTool
