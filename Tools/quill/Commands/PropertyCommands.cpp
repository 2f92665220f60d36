#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <Quill.h>
#include <fmt/format.h>

#include "Command.h"

namespace QuillTool {

namespace {

using CameraInterface::Property;
using CameraInterface::PROPERTY_TYPE;

/// What a property says about itself at one moment.
struct PropertyReading {
    std::string name;
    PROPERTY_TYPE type = PROPERTY_TYPE::String;
    std::string value;
    std::string defaultValue;
    std::string minimum; ///< empty for a discrete property
    std::string maximum;
    std::vector<std::string> choices; ///< empty for a continuous property
    bool discrete = false;
    bool readOnly = false;
    bool availableForWriting = false;

    std::string allowed() const {
        if (discrete) {
            return fmt::format("{}", fmt::join(choices, " | "));
        }
        return isNumber() && !(minimum.empty() && maximum.empty()) ? fmt::format("{} .. {}", minimum, maximum) : "";
    }
    bool isNumber() const { return type == PROPERTY_TYPE::Integer || type == PROPERTY_TYPE::Float; }
    std::string writability() const { return readOnly ? "read-only" : availableForWriting ? "writable" : "locked"; }
};

/// @param tried  what a failure makes impossible
PropertyReading readProperty(const SelectedCamera& camera, const std::string& name, const std::string& tried = "read") {
    return camera.attempt(fmt::format("property '{}': cannot be {}", name, tried), [&] {
        Property& property = camera->getProperty(name);
        PropertyReading reading;
        reading.name = property.getName();
        reading.type = property.getType();
        reading.discrete = property.isDiscrete();
        reading.readOnly = property.isReadOnly();
        reading.availableForWriting = property.isAvailableForWriting();
        if (reading.discrete) {
            reading.choices = property.getValueList();
        } else {
            reading.minimum = property.getMinimum();
            reading.maximum = property.getMaximum();
        }
        reading.defaultValue = property.getDefault();
        reading.value = property.getValue();
        return reading;
    });
}

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

/// The same document, whoever asks for properties.
Json toJson(const SelectedCamera& camera, const std::vector<PropertyReading>& readings) {
    Json properties = Json::array();
    for (const PropertyReading& reading : readings) {
        properties.push_back(toJson(reading));
    }
    return {{"camera", camera.serialNumber()}, {"properties", properties}};
}

/// A whole text that is a finite number, and one without a fraction where the type wants that.
std::optional<double> parseNumber(const std::string& text, PROPERTY_TYPE type) {
    const char* end = text.data() + text.size();
    const auto parse = [&](auto value) -> std::optional<double> {
        const auto [rest, error] = std::from_chars(text.data(), end, value);
        return error == std::errc{} && rest == end ? std::optional<double>(static_cast<double>(value)) : std::nullopt;
    };
    const std::optional<double> number = type == PROPERTY_TYPE::Integer ? parse(0LL) : parse(0.0);
    return number && std::isfinite(*number) ? number : std::nullopt;
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
                context.output.warn(failure.what()); // the others are still worth reading
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
        parser.add_option("NAME", m_Names, "Name of the property; several are read in turn")->required();
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
        parser.add_option("VALUE", m_Value, "The value: one of the choices, or within the range")->required();
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const PropertyReading before = readProperty(camera, m_Name, tried());
        requireWritable(camera, before);
        const std::string value = allowedValue(camera, before);
        camera.attempt(fmt::format("property '{}': cannot be {}", m_Name, tried()),
                       [&] { camera->getProperty(m_Name).setValue(value); });
        const PropertyReading after = readProperty(camera, m_Name);
        requireStored(context, camera, after);
        if (m_Json) {
            context.output.printJson(toJson(camera, {after}));
        } else {
            context.output.printLine(fmt::format("{} = {}", after.name, after.value));
        }
        return ExitCode::Done;
    }

private:
    std::string tried() const { return fmt::format("set to '{}'", m_Value); }

    [[noreturn]] void refuse(const SelectedCamera& camera, const std::string& reason) const {
        throw ToolError(ExitCode::Failed,
                        camera.about(fmt::format("property '{}': cannot be {}: {}", m_Name, tried(), reason)));
    }

    // Cameras ignore what they cannot take, or take what they should not: the refusal is the tool's.

    void requireWritable(const SelectedCamera& camera, const PropertyReading& property) const {
        if (property.readOnly) {
            refuse(camera, "it is read-only");
        }
        if (!property.availableForWriting) {
            refuse(camera, "it cannot be written now");
        }
    }

    /// The value as the property takes it.
    std::string allowedValue(const SelectedCamera& camera, const PropertyReading& property) const {
        if (property.discrete) {
            const auto& choices = property.choices;
            const auto choice = std::find_if(choices.begin(), choices.end(), [&](const std::string& candidate) {
                return isSameValue(candidate, property);
            });
            if (choice == choices.end()) {
                refuse(camera, "the choices are " + property.allowed());
            }
            return *choice;
        }
        if (property.isNumber()) {
            requireInRange(camera, property);
        }
        return m_Value;
    }

    /// Whether a text of the property means the given value: 14 is 14.000000.
    bool isSameValue(const std::string& text, const PropertyReading& property) const {
        if (text == m_Value) {
            return true;
        }
        const std::optional<double> number = property.isNumber() ? parseNumber(m_Value, property.type) : std::nullopt;
        return number && parseNumber(text, property.type) == number;
    }

    void requireInRange(const SelectedCamera& camera, const PropertyReading& property) const {
        const std::optional<double> value = parseNumber(m_Value, property.type);
        if (!value) {
            refuse(camera, property.type == PROPERTY_TYPE::Integer ? "it takes a decimal integer"
                                                                   : "it takes a decimal number");
        }
        // A limit that is no number limits nothing.
        const std::optional<double> minimum = parseNumber(property.minimum, PROPERTY_TYPE::Float);
        const std::optional<double> maximum = parseNumber(property.maximum, PROPERTY_TYPE::Float);
        if ((minimum && *value < *minimum) || (maximum && *value > *maximum)) {
            refuse(camera, "the range is " + property.allowed());
        }
    }

    void requireStored(Context& context, const SelectedCamera& camera, const PropertyReading& property) const {
        if (isSameValue(property.value, property)) {
            return;
        }
        const std::string sentence =
            camera.about(fmt::format("property '{}': was set to '{}' and reads '{}'", m_Name, m_Value, property.value));
        if (property.type != PROPERTY_TYPE::Float) {
            throw ToolError(ExitCode::Difference, sentence);
        }
        context.output.warn(sentence); // cameras round to the steps that they have
    }

    std::string m_Camera;
    std::string m_Name;
    std::string m_Value;
    bool m_Json = false;
};

} // namespace

std::vector<CommandDescription> propertyCommands() {
    return {
        {"properties", "List a camera's properties",
         "A property that is 'locked' cannot be written at the moment.\n\n"
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
         "A value that is not among the choices or outside of the range is refused before\n"
         "anything is written. A value that starts with '-' and is no number is given\n"
         "after '--'. What reads back differently ends with 6; a Float that the camera\n"
         "rounds is only warned of.\n\n"
         "Examples:\n"
         "  quill set 90001 \"Video Exposure\" 12.5\n"
         "  quill set 90001 Shutter Rolling\n",
         makeCommand<SetCommand>},
    };
}

} // namespace QuillTool
