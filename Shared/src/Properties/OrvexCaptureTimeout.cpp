// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexMemoryProperties.h"

namespace OrvexAdapter {

OrvexCaptureTimeout::OrvexCaptureTimeout(const std::string& name, const CameraInterface::PROPERTY_TYPE& type)
    : MemoryProperty<double>(name, type, -1.0, 60000.0, -1.0, false, false, {}) {}

bool OrvexCaptureTimeout::isAvailableForWriting() {
    return !isReadOnly();
}

} // namespace OrvexAdapter
