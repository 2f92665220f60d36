// SPDX-License-Identifier: Apache-2.0

#include "Functions/Function.h"

namespace CameraInterface {

Function::Function(const std::string& name) : m_Name(name) {}

Function::~Function() = default;

std::string Function::getName() const {
    return m_Name;
}

bool Function::isFunctionSupported() const {
    return true;
}

} // namespace CameraInterface
