// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Commands/Bytes.h"
#include "Commands/Command.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

namespace {

using CameraInterface::CameraSettings;
using CameraInterface::SettingDifference;
using CameraInterface::SettingsReport;

constexpr std::size_t kLargestDocument = std::size_t{1} << 20; // the library's own limit

struct EndRequested {};

/// The arguments of every command on settings.
class SettingsCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addFileArgument(parser, m_File, "File of the settings; - for a standard stream");
    }

protected:
    CameraSettings readFile(const Context& context) const {
        refuseCommandsAsInput(context, m_File);
        const std::vector<unsigned char> text = readDocument(m_File, kLargestDocument);
        return attempt(fmt::format("file '{}'", m_File), [&] {
            return CameraInterface::parseSettings({text.begin(), text.end()});
        });
    }

    static void printDifferences(Output& output, const std::vector<const std::vector<SettingDifference>*>& groups) {
        Table table{{"NAME", "FILE", "CAMERA", "REASON"}, {}};
        for (const auto* differences : groups) {
            for (const SettingDifference& one : *differences) {
                table.rows.push_back({one.name, one.wanted, one.present, one.reason});
            }
        }
        if (!table.rows.empty()) {
            output.printTable(table);
        }
    }

    std::string m_Camera;
    std::string m_File;
};

class SaveCommand : public SettingsCommand {
public:
    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const std::string text = camera.attempt("its settings cannot be read", [&] {
            return CameraInterface::toJson(CameraInterface::readSettings(*camera));
        });
        if (m_File == kStandardStream) {
            context.output.print(text);
        } else {
            writeWholeFile(m_File, text);
        }
        return ExitCode::Done;
    }
};

class LoadCommand : public SettingsCommand {
public:
    void describe(CLI::App& parser) override {
        SettingsCommand::describe(parser);
        parser.add_flag("--force", m_Force, "Accept the settings of another model");
    }

    ExitCode run(Context& context) override {
        const CameraSettings settings = readFile(context);
        const SelectedCamera camera = context.session.connect(m_Camera);
        CameraInterface::SettingsOptions options;
        options.acceptOtherModels = m_Force;
        options.progress = [&context](const std::string& /*name*/) {
            if (context.interrupt.requested()) {
                throw EndRequested{};
            }
        };
        const SettingsReport report =
            camera.attempt(fmt::format("the settings of a '{}' cannot be loaded", settings.modelName),
                           [&] { return CameraInterface::writeSettings(*camera, settings, options); });
        for (const std::string& name : report.written) {
            const bool isInForce =
                std::none_of(report.different.begin(), report.different.end(),
                             [&name = name](const SettingDifference& one) { return one.name == name; });
            if (isInForce) {
                context.output.printLine(fmt::format("{} = {}", name, settings.values.at(name)));
            }
        }
        printDifferences(context.output, {&report.different, &report.failed});
        return conclude(camera, report);
    }

private:
    static ExitCode conclude(const SelectedCamera& camera, const SettingsReport& report) {
        if (report.interruption) {
            try {
                std::rethrow_exception(report.interruption);
            } catch (const EndRequested&) {
                return ExitCode::Interrupted;
            } catch (const std::exception& failure) {
                throw camera.explain(fmt::format("its settings are loaded in part, {} written", report.written.size()),
                                     failure);
            }
        }
        if (!report.isComplete()) {
            throw ToolError(report.failed.empty() ? ExitCode::Difference : ExitCode::Failed,
                            camera.about(fmt::format("{} settings failed, {} read back otherwise", report.failed.size(),
                                                     report.different.size())));
        }
        return ExitCode::Done;
    }

    bool m_Force = false;
};

class CompareCommand : public SettingsCommand {
public:
    ExitCode run(Context& context) override {
        const CameraSettings settings = readFile(context);
        const SelectedCamera camera = context.session.connect(m_Camera);
        const std::vector<SettingDifference> differences = camera.attempt(
            "its settings cannot be read", [&] { return CameraInterface::compareSettings(*camera, settings); });
        printDifferences(context.output, {&differences});
        if (!differences.empty()) {
            throw ToolError(ExitCode::Failed, camera.about(fmt::format("{} of {} settings differ", differences.size(),
                                                                       settings.values.size())));
        }
        return ExitCode::Done;
    }
};

} // namespace

CommandDescription settingsCommands() {
    return {"settings",
            "Save, load and compare all settings of a camera",
            "The file is a JSON document with the value of every writable property. One that\n"
            "stands for another, as 'Exposure' does for 'Video Exposure' in video mode, is\n"
            "written last: who changes one of them in the file changes both, or deletes one.\n",
            nullptr,
            {
                {"save", "Save the values of all writable properties",
                 "Examples:\n"
                 "  quill settings save 41500101 day.json\n"
                 "  quill settings save 41500101 - | jq .properties\n",
                 makeCommand<SaveCommand>},
                {"load", "Write the values that differ, and read them back",
                 "Prints what was written, then a table of what did not become as wanted. Refuses\n"
                 "the file of another model without --force. Ends with 1 if a property cannot be\n"
                 "written, otherwise with 6 if one reads back with another value.\n\n"
                 "Examples:\n"
                 "  quill settings load 41500101 day.json\n",
                 makeCommand<LoadCommand>},
                {"compare", "Print what differs between a file and the camera",
                 "Ends with 1 if something differs.\n\n"
                 "Examples:\n"
                 "  quill settings compare 41500101 day.json\n",
                 makeCommand<CompareCommand>},
            }};
}

} // namespace QuillTool
