// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <Quill.h>
#include <fmt/format.h>

#include "Camera/PropertyAccess.h"
#include "Commands/Command.h"

namespace QuillTool {

namespace {

using CameraInterface::PROPERTY_TYPE;

std::string typeName(PROPERTY_TYPE type) {
    static const CameraInterface::PropertyTypes names;
    return names.toString(type);
}

Json toJson(const PropertyReading& reading) {
    return {{"name", reading.name},         {"type", typeName(reading.type)},
            {"value", reading.value},       {"default", reading.defaultValue},
            {"minimum", reading.minimum},   {"maximum", reading.maximum},
            {"discrete", reading.discrete}, {"choices", reading.choices},
            {"readOnly", reading.readOnly}, {"availableForWriting", reading.availableForWriting}};
}

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
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const std::vector<std::string> names =
            camera.attempt("its properties cannot be listed", [&] { return camera->getSupportedProperties(); });
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
            Table table{{"NAME", "TYPE", "VALUE", "WRITABILITY", "RANGE OR CHOICES"}, {}};
            for (const PropertyReading& reading : readings) {
                table.rows.push_back(
                    {reading.name, typeName(reading.type), reading.value, reading.writability(), reading.allowed()});
            }
            context.output.printTable(table);
        }
        if (readings.size() < names.size()) {
            throw ToolError(ExitCode::Failed, camera.about(fmt::format("{} of {} properties cannot be read",
                                                                       names.size() - readings.size(), names.size())));
        }
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
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
        parser.add_option("NAME", m_Name, "Name of the property")->required();
        parser.add_option("VALUE", m_Value, "One of the choices, or a value within the range")->required();
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const WrittenProperty written = writeProperty(camera, m_Name, m_Value);
        if (m_Json) {
            context.output.printJson(toJson(camera, {written.reading}));
        } else {
            context.output.printLine(fmt::format("{} = {}", written.reading.name, written.reading.value));
        }
        written.requireAsAsked(context.output);
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    std::string m_Name;
    std::string m_Value;
    bool m_Json = false;
};

} // namespace

std::vector<CommandDescription> propertyCommands() {
    return {
        {"properties", "List a camera's properties",
         "A 'locked' property cannot be written at the moment.\n\n"
         "Examples:\n"
         "  quill properties 90001\n"
         "  quill properties 90001 | grep writable\n"
         "  quill properties 90001 --json | jq -r '.properties[] | .name + \"=\" + .value'\n",
         makeCommand<PropertiesCommand>},
        {"get", "Read properties",
         "Prints the bare value of one property, or a table of several.\n\n"
         "Examples:\n"
         "  quill get 90001 Gamma\n"
         "  quill get 90001 Gamma \"Video Exposure\" \"Video Gain\"\n",
         makeCommand<GetCommand>},
        {"set", "Write a property and read it back",
         "Refuses, before writing, a value that is not among the choices, is out of range\n"
         "or lies between two steps of the image's size. Numbers are decimal, or\n"
         "hexadecimal as 0x.... A value that begins with '-' and is not a number, or is\n"
         "'++', follows '--'. Prints the resulting value; ends with 6 if it differs from\n"
         "the requested value. A Float that the camera rounds causes only a warning.\n\n"
         "Examples:\n"
         "  quill set 90001 \"Video Exposure\" 12.5\n"
         "  quill set 90001 Shutter Rolling\n",
         makeCommand<SetCommand>},
    };
}

} // namespace QuillTool
