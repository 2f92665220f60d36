#pragma once

#include <string>

#include "Properties/BooleanProperty.h"

namespace OrvexAdapter {

class OrvexCamera;

/// Whether the camera starts as a USB3 Vision device. The state lives in the camera's flash; nobody is told of a
/// change.
class OrvexUsb3VisionMode : public CameraInterface::BooleanProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  not a model, or not a firmware, that has the mode
    OrvexUsb3VisionMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using BooleanProperty::operator=;

    /// @throws KestrelException_Property "PropertyReadFailure"
    std::string getValue() override;
    /// The mode can always be turned off, but turned on only over a valid file in the flash.
    bool isAvailableForWriting() override;
    /// Ignored while the property is not available for writing.
    /// @throws KestrelException_Property "PropertyWriteFailure"
    void setValue(const std::string& value) override;

private:
    OrvexCamera* m_Camera; // owns this property
};

} // namespace OrvexAdapter
