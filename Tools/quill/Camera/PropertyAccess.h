// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <Quill.h>

#include "Camera/Session.h"
#include "Terminal/Output.h"

namespace QuillTool {

/// What a property says about itself at one moment.
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

    /// The choices, or the range, as a person reads them; may be empty.
    std::string allowed() const;
    bool isNumber() const;
    std::string writability() const;
};

/// Reads a property, all of it.
/// @param tried  what a failure makes impossible
/// @throws ToolError
PropertyReading readProperty(const SelectedCamera& camera, const std::string& name, const std::string& tried = "read");

/// A property after it was written.
struct WrittenProperty {
    PropertyReading reading;
    std::string difference; ///< says that the value is another than was asked for; empty where it is not

    /// Warns of a number that the camera rounded.
    /// @throws ToolError  of any other difference
    void requireAsAsked(Output& output) const;
};

/// Writes a property and reads it back. What the property cannot take is refused before anything is written.
/// @throws ToolError
WrittenProperty writeProperty(const SelectedCamera& camera, const std::string& name, const std::string& value);

/// The same for somebody to whom only a difference matters.
/// @throws ToolError
void writeProperty(Output& output, const SelectedCamera& camera, const std::string& name, const std::string& value);

/// Writes properties given as NAME=VALUE, in their order.
/// @throws ToolError
void writeProperties(Output& output, const SelectedCamera& camera, const std::vector<std::string>& assignments);

} // namespace QuillTool
