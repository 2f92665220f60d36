// SPDX-License-Identifier: Apache-2.0

#include "Camera/PropertyAccess.h"

#include <algorithm>
#include <limits>
#include <optional>

#include <fmt/format.h>

#include "Camera/Region.h"
#include "Terminal/NearestName.h"
#include "Terminal/Numbers.h"

namespace QuillTool {

using CameraInterface::Property;
using CameraInterface::PROPERTY_TYPE;

namespace {

NumberKind numberKindOf(PROPERTY_TYPE type) {
    return type == PROPERTY_TYPE::Integer ? NumberKind::Whole : NumberKind::Real;
}

/// Writes one value into one property.
class PropertyWriter {
public:
    PropertyWriter(const SelectedCamera& camera, const std::string& name, const std::string& value)
        : m_Camera(camera), m_Name(name), m_Value(value) {}

    WrittenProperty write() const {
        const PropertyReading before = readProperty(m_Camera, m_Name, tried());
        requireWritable(before);
        const std::string value = allowedValue(before);
        m_Camera.attempt(fmt::format("property '{}': cannot be {}", m_Name, tried()),
                         [&] { m_Camera->getProperty(m_Name).setValue(value); });
        const PropertyReading after = readProperty(m_Camera, m_Name);
        return {after, isSameValue(after.value, after) ? "" : difference(before, after)};
    }

private:
    std::string tried() const { return fmt::format("set to '{}'", m_Value); }

    [[noreturn]] void refuse(const std::string& reason, ExitCode code = ExitCode::Failed) const {
        throw ToolError(code, m_Camera.about(fmt::format("property '{}': cannot be {}: {}", m_Name, tried(), reason)));
    }

    // Cameras ignore invalid values or accept them, so the tool refuses them itself.

    void requireWritable(const PropertyReading& property) const {
        if (property.readOnly) {
            refuse(fmt::format("it is read-only and stays '{}'", property.value));
        }
        if (!property.availableForWriting) {
            refuse(fmt::format("it cannot be written now and stays '{}'", property.value));
        }
    }

    /// Returns the value in the form that the property accepts.
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
        return property.isNumber() ? allowedNumber(property) : m_Value;
    }

    /// Returns whether a text of the property equals the given value: 14 equals 14.000000.
    bool isSameValue(const std::string& text, const PropertyReading& property) const {
        if (text == m_Value) {
            return true;
        }
        const std::optional<double> number =
            property.isNumber() ? parseNumber(m_Value, numberKindOf(property.type)) : std::nullopt;
        return number && parseNumber(text, numberKindOf(property.type)) == number;
    }

    std::string allowedNumber(const PropertyReading& property) const {
        const std::optional<std::string> text = decimalText(m_Value, numberKindOf(property.type));
        if (!text) {
            refuse(fmt::format("it takes a {}number, decimal or hexadecimal as 0x...",
                               property.type == PROPERTY_TYPE::Integer ? "whole " : ""),
                   ExitCode::Usage);
        }
        const std::optional<double> value = parseNumber(*text, numberKindOf(property.type));
        // A limit that is not a number does not limit.
        const std::optional<double> minimum = parseNumber(property.minimum, NumberKind::Real);
        const std::optional<double> maximum = parseNumber(property.maximum, NumberKind::Real);
        if ((minimum && *value < *minimum) || (maximum && *value > *maximum)) {
            refuse("the range is " + property.allowed());
        }
        requireMultiple(property, *text);
        return *text;
    }

    void requireMultiple(const PropertyReading& property, const std::string& text) const {
        const std::optional<std::uint64_t> unit = unitIn(property.increment);
        const std::optional<std::uint64_t> value = parseWholeNumber(text);
        if (!unit || !value) {
            return;
        }
        const std::string trouble =
            unitTrouble(*unit, *value, parseWholeNumber(property.minimum).value_or(0),
                        parseWholeNumber(property.maximum).value_or(std::numeric_limits<std::uint64_t>::max()));
        if (!trouble.empty()) {
            refuse(trouble);
        }
    }

    std::string difference(const PropertyReading& before, const PropertyReading& after) const {
        return m_Camera.about(fmt::format("property '{}': was set to '{}' and {} '{}'", m_Name, m_Value,
                                          after.value == before.value ? "stays" : "is now", after.value));
    }

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

PropertyReading readProperty(const SelectedCamera& camera, const std::string& name, const std::string& tried) try {
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
        reading.unit = property.getUnit();
        reading.increment = property.getIncrement();
        reading.description = property.getDescription();
        reading.category = property.getCategory();
        reading.visibility = property.getVisibility();
        return reading;
    });
} catch (const ToolError& failure) {
    const std::string nearest =
        failure.code() == ExitCode::NotFound ? nearestName(name, camera->getSupportedProperties()) : "";
    throw nearest.empty() ? failure
                          : ToolError(failure.code(), fmt::format("{} Did you mean '{}'?", failure.what(), nearest));
}

void WrittenProperty::requireAsAsked(Output& output) const {
    if (difference.empty()) {
        return;
    }
    if (reading.type != PROPERTY_TYPE::Float) {
        throw ToolError(ExitCode::Difference, difference);
    }
    output.warn(difference); // cameras round to their steps
}

WrittenProperty writeProperty(const SelectedCamera& camera, const std::string& name, const std::string& value) {
    return PropertyWriter(camera, name, value).write();
}

void writeProperty(Output& output, const SelectedCamera& camera, const std::string& name, const std::string& value) {
    writeProperty(camera, name, value).requireAsAsked(output);
}

std::optional<std::pair<std::string, std::string>> splitAssignment(const std::string& text) {
    const std::size_t sign = text.find('=');
    return sign == std::string::npos || sign == 0
               ? std::nullopt
               : std::optional(std::pair(text.substr(0, sign), text.substr(sign + 1)));
}

void writeProperties(Output& output, const SelectedCamera& camera, const std::vector<std::string>& assignments) {
    for (const std::string& assignment : assignments) {
        const auto parts = splitAssignment(assignment);
        if (!parts) {
            throw ToolError(ExitCode::Usage, fmt::format("--set {}: is not NAME=VALUE", assignment));
        }
        writeProperty(output, camera, parts->first, parts->second);
    }
}

} // namespace QuillTool
