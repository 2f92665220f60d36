#pragma once

#include <string>

#include "OrvexApi/OrvexRecords.h"
#include "Properties/MemoryProperty.h"
#include "Properties/OrvexEnumerations.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The bits per pixel of the next run. The allowed ones are found by trying each on the camera, whose format is as
/// before when the property is made.
class OrvexPixelFormat : public CameraInterface::MemoryProperty<unsigned long> {
public:
    /// @throws KestrelException_Property "PropertyReadFailure"  the camera does not tell its present format
    /// @throws KestrelException_Property "PropertyWriteFailure"  the camera does not take its former format back
    OrvexPixelFormat(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using MemoryProperty<unsigned long>::operator=;

private:
    OrvexCamera* m_Camera; // owns this property
    // What the camera had when the property was made.
    ORVEX_FRAME_FORMAT m_Format{};
    float m_FrameRate = 0;
    unsigned long m_CurrentPixelFormat = 0;
    PixelFormats m_Candidates;
};

} // namespace OrvexAdapter
