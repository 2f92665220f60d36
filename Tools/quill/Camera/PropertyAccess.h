// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <Quill.h>

#include "Camera/Session.h"
#include "Terminal/Output.h"

namespace QuillTool {

/// A snapshot of a property.
struct PropertyReading {
    std::string name;
    CameraInterface::PROPERTY_TYPE type = CameraInterface::PROPERTY_TYPE::String;
    std::string value;
    std::string defaultValue;
    std::string minimum; ///< empty for a discrete property
    std::string maximum;
    std::vector<std::string> choices; ///< empty for a continuous property
    bool discrete = false;
    bool readOnly = false;
    bool availableForWriting = false;
    std::string unit;
    std::string increment;
    std::string description;
    std::string category;
    CameraInterface::PropertyVisibility visibility = CameraInterface::PropertyVisibility::Beginner;

    /// Returns the choices or the range as text for people; may be empty.
    std::string allowed() const;
    bool isNumber() const;
    std::string writability() const;
};

/// Reads a complete property. Suggests another name if the camera has none of this one.
/// @param tried  the participle for the error: "cannot be read"
/// @throws ToolError
PropertyReading readProperty(const SelectedCamera& camera, const std::string& name, const std::string& tried = "read");

/// The result of writing a property.
struct WrittenProperty {
    PropertyReading reading;
    std::string difference; ///< reports a value that differs from the requested value; otherwise empty

    /// Warns about a number that the camera rounded.
    /// @throws ToolError  any other difference
    void requireAsAsked(Output& output) const;
};

/// Writes a property and reads it back. Refuses an invalid value before writing anything.
/// @throws ToolError
WrittenProperty writeProperty(const SelectedCamera& camera, const std::string& name, const std::string& value);

/// Does the same and reports only a difference.
/// @throws ToolError
void writeProperty(Output& output, const SelectedCamera& camera, const std::string& name, const std::string& value);

/// Splits NAME=VALUE at its first sign of equality; empty if there is none, or no name.
std::optional<std::pair<std::string, std::string>> splitAssignment(const std::string& text);

/// Writes properties, given as NAME=VALUE, in order.
/// @throws ToolError
void writeProperties(Output& output, const SelectedCamera& camera, const std::vector<std::string>& assignments);

} // namespace QuillTool
