// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraJson.h"
#include "Camera/PropertyAccess.h"
#include "Commands/Command.h"

namespace QuillTool {

namespace {

using CameraInterface::PropertyVisibility;

/// The JSON document of all commands on properties.
Json toJson(const SelectedCamera& camera, const std::vector<PropertyReading>& readings) {
    Json properties = Json::array();
    for (const PropertyReading& reading : readings) {
        properties.push_back(toJson(reading));
    }
    return {{"camera", camera.serialNumber()}, {"properties", properties}};
}

class PropertiesCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        parser.add_flag("--all", m_All, "Also those that the camera hides from all but its makers and experts");
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        std::vector<std::string> names =
            camera.attempt("its properties cannot be listed", [&] { return camera->getSupportedProperties(); });
        const auto isHidden = [&](const std::string& name) {
            return !m_All && camera->getProperty(name).getVisibility() >= PropertyVisibility::Guru;
        };
        names.erase(std::remove_if(names.begin(), names.end(), isHidden), names.end());
        std::vector<PropertyReading> readings;
        for (const std::string& name : names) {
            try {
                readings.push_back(readProperty(camera, name));
            } catch (const ToolError& failure) {
                if (failure.code() == ExitCode::CameraGone) {
                    throw;
                }
                context.output.warn(failure.what()); // reads the others nevertheless
            }
        }
        if (m_Json) {
            context.output.printJson(toJson(camera, readings));
        } else {
            context.output.printTable(byCategory(readings));
        }
        if (readings.size() < names.size()) {
            throw ToolError(ExitCode::Failed, camera.about(fmt::format("{} of {} properties cannot be read",
                                                                       names.size() - readings.size(), names.size())));
        }
        return ExitCode::Done;
    }

private:
    static Table byCategory(const std::vector<PropertyReading>& readings) {
        std::map<std::pair<bool, std::string>, std::vector<const PropertyReading*>> categories; // the nameless one last
        for (const PropertyReading& reading : readings) {
            categories[{reading.category.empty(), reading.category}].push_back(&reading);
        }
        Table table{{"NAME", "TYPE", "VALUE", "UNIT", "STEP", "WRITABILITY", "RANGE OR CHOICES"}, {}};
        for (const auto& [category, members] : categories) {
            table.rows.push_back({fmt::format("[{}]", category.first ? "Other" : category.second)});
            for (const PropertyReading* reading : members) {
                table.rows.push_back({reading->name, propertyTypeName(reading->type), reading->value, reading->unit,
                                      reading->increment, reading->writability(), reading->allowed()});
            }
        }
        return table;
    }

    std::string m_Camera;
    bool m_All = false;
    bool m_Json = false;
};

class DescribeCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        parser.add_option("NAME", m_Name, "Name of the property")->required();
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const PropertyReading reading = readProperty(camera, m_Name);
        if (m_Json) {
            context.output.printJson(toJson(camera, {reading}));
            return ExitCode::Done;
        }
        Table table{{"WHAT", "VALUE"},
                    {{"Name", reading.name},
                     {"Description", reading.description},
                     {"Category", reading.category},
                     {"Type", propertyTypeName(reading.type)},
                     {"Value", reading.value},
                     {"Default", reading.defaultValue},
                     {"Unit", reading.unit},
                     {"Writability", reading.writability()}}};
        if (reading.discrete) {
            table.rows.push_back({"Choices", reading.allowed()});
        } else {
            table.rows.push_back({"Minimum", reading.minimum});
            table.rows.push_back({"Maximum", reading.maximum});
            table.rows.push_back({"Step", reading.increment});
        }
        table.rows.push_back({"Visibility", visibilityName(reading.visibility)});
        context.output.printTable(table);
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    std::string m_Name;
    bool m_Json = false;
};

class GetCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addTexts(parser, "NAME", m_Names, "Name of the property; repeatable")->required();
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        std::vector<PropertyReading> readings;
        for (const std::string& name : m_Names) {
            readings.push_back(readProperty(camera, name));
        }
        if (m_Json) {
            context.output.printJson(toJson(camera, readings));
        } else if (readings.size() == 1) {
            context.output.printLine(readings.front().value);
        } else {
            Table table{{"NAME", "VALUE"}, {}};
            for (const PropertyReading& reading : readings) {
                table.rows.push_back({reading.name, reading.value});
            }
            context.output.printTable(table);
        }
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    std::vector<std::string> m_Names;
    bool m_Json = false;
};

class SetCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addTexts(parser, "NAME=VALUE", m_Words, "Property and value, repeatable; or NAME and VALUE as two words")
            ->required();
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const auto assignments = parseWords();
        const SelectedCamera camera = context.session.connect(m_Camera);
        std::vector<WrittenProperty> written;
        try {
            for (const auto& [name, value] : assignments) {
                written.push_back(writeProperty(camera, name, value));
                if (!m_Json) {
                    const PropertyReading& reading = written.back().reading;
                    context.output.printLine(fmt::format("{} = {}", reading.name, reading.value));
                }
            }
        } catch (const ToolError&) {
            printDocument(context.output, camera, written); // what was written before stays written
            throw;
        }
        printDocument(context.output, camera, written);
        for (const WrittenProperty& one : written) {
            one.requireAsAsked(context.output);
        }
        return ExitCode::Done;
    }

private:
    using Assignments = std::vector<std::pair<std::string, std::string>>;

    Assignments parseWords() const {
        Assignments assignments;
        for (const std::string& word : m_Words) {
            if (auto parts = splitAssignment(word)) {
                assignments.push_back(std::move(*parts));
            }
        }
        if (assignments.size() == m_Words.size()) {
            return assignments;
        }
        if (m_Words.size() == 2) {
            return {{m_Words[0], m_Words[1]}};
        }
        throw ToolError(ExitCode::Usage, "set: takes NAME=VALUE, repeatable, or NAME and VALUE as two words");
    }

    void printDocument(Output& output, const SelectedCamera& camera,
                       const std::vector<WrittenProperty>& written) const {
        if (!m_Json || written.empty()) {
            return;
        }
        std::vector<PropertyReading> readings;
        readings.reserve(written.size());
        for (const WrittenProperty& one : written) {
            readings.push_back(one.reading);
        }
        output.printJson(toJson(camera, readings));
    }

    std::string m_Camera;
    std::vector<std::string> m_Words;
    bool m_Json = false;
};

} // namespace

std::vector<CommandDescription> propertyCommands() {
    return {
        {"properties", "List a camera's properties, by category",
         "A 'locked' property cannot be written at the moment. A value must be a multiple\n"
         "of the step.\n\n"
         "Examples:\n"
         "  quill properties 90001\n"
         "  quill properties 90001 | grep writable\n"
         "  quill properties 90001 --json | jq -r '.properties[] | .name + \"=\" + .value'\n",
         makeCommand<PropertiesCommand>},
        {"describe", "Print all that is known about a property",
         "Examples:\n"
         "  quill describe 41500101 Width\n"
         "  quill describe 41500101 Exposure --json | jq -r '.properties[0].unit'\n",
         makeCommand<DescribeCommand>},
        {"get", "Read properties",
         "Prints the bare value of one property, or a table of several.\n\n"
         "Examples:\n"
         "  quill get 90001 Gamma\n"
         "  quill get 90001 Gamma \"Video Exposure\" \"Video Gain\"\n",
         makeCommand<GetCommand>},
        {"set", "Write properties and read them back",
         "Writes in the given order, and stops at the first refusal. Refuses, before\n"
         "writing, a value that is not among the choices, is out of range or lies between\n"
         "two steps. Numbers are decimal, or hexadecimal as 0x.... A value that begins\n"
         "with '-' and is not a number, or is '++', follows '--'. Prints the resulting\n"
         "values; ends with 6 if one differs from the requested value. A Float that the\n"
         "camera rounds causes only a warning.\n\n"
         "Examples:\n"
         "  quill set 90001 \"Video Exposure\" 12.5\n"
         "  quill set 90001 Shutter=Rolling \"Video Exposure=12.5\" Width=640\n",
         makeCommand<SetCommand>},
    };
}

} // namespace QuillTool
