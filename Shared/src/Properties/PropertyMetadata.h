// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>
#include <vector>

namespace CameraInterface {

/// What is known about a property by its name alone. A text that nobody knows is empty.
struct PropertyMetadata {
    std::string_view name;
    const char* category;
    const char* unit;
    const char* description;       ///< one sentence
    const char* incrementProperty; ///< name of the property of the same camera that holds the increment
};

/// Returns the row of one of the names of PropertyNames.h; empty texts for any other name.
const PropertyMetadata& getPropertyMetadata(std::string_view name);

/// Returns the rows with an increment property.
const std::vector<PropertyMetadata>& getPropertiesWithIncrement();

} // namespace CameraInterface
