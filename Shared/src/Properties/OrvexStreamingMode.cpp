// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexMemoryProperties.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"

namespace OrvexAdapter {

OrvexStreamingMode::OrvexStreamingMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                       OrvexCamera& camera)
    : MemoryProperty<bool>(name, type, false, true, true, false, true, {{"Video", true}, {"Still", false}}),
      m_Camera(&camera) {}

bool OrvexStreamingMode::isAvailableForWriting() {
    return !m_Camera->isStreaming();
}

} // namespace OrvexAdapter
