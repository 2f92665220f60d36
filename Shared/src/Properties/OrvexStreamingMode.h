#pragma once

#include <string>

#include "Properties/MemoryProperty.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The mode that the next run starts in: "Video" or "Still". A write while the camera is streaming is ignored.
class OrvexStreamingMode : public CameraInterface::MemoryProperty<bool> {
public:
    OrvexStreamingMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using MemoryProperty<bool>::operator=;

    bool isAvailableForWriting() override;

private:
    OrvexCamera* m_Camera; // owns this property
};

} // namespace OrvexAdapter
