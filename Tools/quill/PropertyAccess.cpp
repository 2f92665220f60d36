#include "PropertyAccess.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include <fmt/format.h>

namespace QuillTool {

using CameraInterface::Property;
using CameraInterface::PROPERTY_TYPE;

namespace {

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

/// Writes one value into one property.
class PropertyWriter {
public:
    PropertyWriter(Output& output, const SelectedCamera& camera, const std::string& name, const std::string& value)
        : m_Output(output), m_Camera(camera), m_Name(name), m_Value(value) {}

    PropertyReading write() const {
        const PropertyReading before = readProperty(m_Camera, m_Name, tried());
        requireWritable(before);
        const std::string value = allowedValue(before);
        m_Camera.attempt(fmt::format("property '{}': cannot be {}", m_Name, tried()),
                         [&] { m_Camera->getProperty(m_Name).setValue(value); });
        PropertyReading after = readProperty(m_Camera, m_Name);
        requireStored(after);
        return after;
    }

private:
    std::string tried() const { return fmt::format("set to '{}'", m_Value); }

    [[noreturn]] void refuse(const std::string& reason) const {
        throw ToolError(ExitCode::Failed,
                        m_Camera.about(fmt::format("property '{}': cannot be {}: {}", m_Name, tried(), reason)));
    }

    // Cameras ignore what they cannot take, or take what they should not: the refusal is the tool's.

    void requireWritable(const PropertyReading& property) const {
        if (property.readOnly) {
            refuse("it is read-only");
        }
        if (!property.availableForWriting) {
            refuse("it cannot be written now");
        }
    }

    /// The value as the property takes it.
    std::string allowedValue(const PropertyReading& property) const {
        if (property.discrete) {
            const auto& choices = property.choices;
            const auto choice = std::find_if(choices.begin(), choices.end(), [&](const std::string& candidate) {
                return isSameValue(candidate, property);
            });
            if (choice == choices.end()) {
                refuse("the choices are " + property.allowed());
            }
            return *choice;
        }
        if (property.isNumber()) {
            requireInRange(property);
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

    void requireInRange(const PropertyReading& property) const {
        const std::optional<double> value = parseNumber(m_Value, property.type);
        if (!value) {
            refuse(property.type == PROPERTY_TYPE::Integer ? "it takes a decimal integer"
                                                           : "it takes a decimal number");
        }
        // A limit that is no number limits nothing.
        const std::optional<double> minimum = parseNumber(property.minimum, PROPERTY_TYPE::Float);
        const std::optional<double> maximum = parseNumber(property.maximum, PROPERTY_TYPE::Float);
        if ((minimum && *value < *minimum) || (maximum && *value > *maximum)) {
            refuse("the range is " + property.allowed());
        }
    }

    void requireStored(const PropertyReading& property) const {
        if (isSameValue(property.value, property)) {
            return;
        }
        const std::string sentence = m_Camera.about(
            fmt::format("property '{}': was set to '{}' and reads '{}'", m_Name, m_Value, property.value));
        if (property.type != PROPERTY_TYPE::Float) {
            throw ToolError(ExitCode::Difference, sentence);
        }
        m_Output.warn(sentence); // cameras round to the steps that they have
    }

    Output& m_Output;
    const SelectedCamera& m_Camera;
    const std::string& m_Name;
    const std::string& m_Value;
};

} // namespace

std::string PropertyReading::allowed() const {
    if (discrete) {
        return fmt::format("{}", fmt::join(choices, " | "));
    }
    return isNumber() && !(minimum.empty() && maximum.empty()) ? fmt::format("{} .. {}", minimum, maximum) : "";
}

bool PropertyReading::isNumber() const {
    return type == PROPERTY_TYPE::Integer || type == PROPERTY_TYPE::Float;
}

std::string PropertyReading::writability() const {
    return readOnly ? "read-only" : availableForWriting ? "writable" : "locked";
}

PropertyReading readProperty(const SelectedCamera& camera, const std::string& name, const std::string& tried) {
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

PropertyReading writeProperty(Output& output, const SelectedCamera& camera, const std::string& name,
                              const std::string& value) {
    return PropertyWriter(output, camera, name, value).write();
}

void writeProperties(Output& output, const SelectedCamera& camera, const std::vector<std::string>& assignments) {
    for (const std::string& assignment : assignments) {
        const std::size_t sign = assignment.find('=');
        if (sign == std::string::npos || sign == 0) {
            throw ToolError(ExitCode::Usage, fmt::format("--set {}: is not NAME=VALUE", assignment));
        }
        writeProperty(output, camera, assignment.substr(0, sign), assignment.substr(sign + 1));
    }
}

} // namespace QuillTool
