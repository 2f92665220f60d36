// SPDX-License-Identifier: Apache-2.0

#include "PropertyValueEnumerations.h"

namespace CameraInterface {

PropertyTypes::PropertyTypes() {
    insert("String", PROPERTY_TYPE::String);
    insert("Float", PROPERTY_TYPE::Float);
    insert("Integer", PROPERTY_TYPE::Integer);
    insert("Boolean", PROPERTY_TYPE::Boolean);
}

PropertyTypes::~PropertyTypes() = default;

ParameterTypes::ParameterTypes() {
    insert("String", PARAMETER_TYPE::String);
    insert("Float", PARAMETER_TYPE::Float);
    insert("Integer", PARAMETER_TYPE::Integer);
    insert("Boolean", PARAMETER_TYPE::Boolean);
}

ParameterTypes::~ParameterTypes() = default;

States::States() {
    insert("Enabled", true);
    insert("Disabled", false);
}

} // namespace CameraInterface
