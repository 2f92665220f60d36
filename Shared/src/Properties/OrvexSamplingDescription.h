#pragma once

#include <string>

#include "OrvexApi/OrvexRecords.h"
#include "Properties/MemoryProperty.h"

namespace OrvexAdapter {

class OrvexCamera;

/// How the next run combines pixels: "None (1x1)", or binning or subsampling by a horizontal and a vertical factor.
class OrvexSamplingDescription : public CameraInterface::MemoryProperty<std::string> {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexSamplingDescription(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using MemoryProperty<std::string>::operator=;

private:
    OrvexCamera* m_Camera; // owns this property
    ORVEX_SAMPLING_DESCRIPTION m_Description{};
};

} // namespace OrvexAdapter
