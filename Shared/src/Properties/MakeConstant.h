// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>

#include "Properties/MemoryProperty.h"

namespace CameraInterface {

/// Makes a property that cannot be written and whose value never changes.
template <typename T>
std::unique_ptr<Property> makeConstant(const std::string& name, const PROPERTY_TYPE& type, const T& value) {
    return std::make_unique<MemoryProperty<T>>(name, type, value, value, value, true, false,
                                               std::map<std::string, T>());
}

} // namespace CameraInterface
