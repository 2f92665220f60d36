// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Internal/QuillInternal.h"
#include "Properties/BooleanProperty.h"
#include "Utilities/CSHA1.h"

namespace Usb3VisionAdapter {

class Usb3VisionCamera;

/// Whether the camera starts as a USB3 Vision device. The state is kept in the camera's flash; changes are not
/// reported. Reading stores nothing in the object, so that the watchdogs may read concurrently with the application.
class Usb3VisionUsb3VisionMode : public CameraInterface::BooleanProperty {
public:
    Usb3VisionUsb3VisionMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                             Usb3VisionCamera& camera);

    using BooleanProperty::operator=;

    /// @throws KestrelException_Property "PropertyReadFailure"
    std::string getValue() override;
    /// The mode can always be turned off, but turned on only over a valid file in the flash.
    /// @throws KestrelException_Property "PropertyReadFailure"
    bool isAvailableForWriting() override;
    /// Ignored while the property is not available for writing.
    /// @throws KestrelException_Property "PropertyReadFailure" or "PropertyWriteFailure"
    void setValue(const std::string& value) override;

private:
    QuillInternal::Usb3VisionInfo readInfo();
    bool hasValidFile();

    Usb3VisionCamera* m_Camera; // owns this property
    CSHA1 m_Hasher;
};

} // namespace Usb3VisionAdapter
