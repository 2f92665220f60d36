// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Commands/Command.h"
#include "Terminal/Text.h"

namespace QuillTool {

namespace {

// Status codes of the registry.
constexpr int kNotFound = 2;           // ERROR_FILE_NOT_FOUND: a key or value is missing
constexpr int kUnsupportedType = 1630; // ERROR_UNSUPPORTED_TYPE

/// Explains a status of the registry's query for the version.
struct StatusWords {
    win32::LSTATUS status;
    std::string_view reason;
};

constexpr std::array kStatuses{
    StatusWords{kNotFound, "its record names no version"},
    StatusWords{kUnsupportedType, "its record holds a version that is not a text"},
};

std::string reasonOf(win32::LSTATUS status) {
    const auto* words = std::find_if(kStatuses.begin(), kStatuses.end(),
                                     [status](const StatusWords& candidate) { return candidate.status == status; });
    return words == kStatuses.end() ? fmt::format("status {}", status) : std::string(words->reason);
}

std::string readVersion() {
    std::string reason;
    try {
        return getZephVersion();
    } catch (const win32::RegistryError& failure) {
        if (!isZephInstalled()) {
            throw failure.m_ErrorCode == kNotFound
                ? ToolError(ExitCode::NotFound, "driver kit: is not installed")
                : ToolError(ExitCode::Failed, fmt::format("driver kit: its record cannot be read, so whether it is "
                                                          "installed is unknown (status {})",
                                                          failure.m_ErrorCode));
        }
        reason = reasonOf(failure.m_ErrorCode);
    } catch (const std::range_error&) {
        reason = "it is not UTF-8";
    }
    throw ToolError(ExitCode::Failed, fmt::format("driver kit: its version cannot be read: {}", reason));
}

class KitCommand : public Command {
public:
    void describe(CLI::App& parser) override { addJsonFlag(parser, m_Json); }

    ExitCode run(Context& context) override {
        const std::string version = readVersion();
        if (m_Json) {
            context.output.printJson(Json{{"version", version}});
        } else {
            context.output.printLine(oneLine(version));
        }
        return ExitCode::Done;
    }

private:
    bool m_Json = false;
};

} // namespace

CommandDescription kitCommand() {
    return {"kit", "Print the version of the installed driver kit",
            "Ends with 3 if no driver kit is installed, and with 1 if its record cannot be\n"
            "read.\n\n"
            "Examples:\n"
            "  quill kit\n"
            "  quill kit --json | jq -r .version\n",
            makeCommand<KitCommand>};
}

} // namespace QuillTool
