// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Properties/BooleanProperty.h"

namespace OrvexAdapter {

class OrvexCamera;

/// An on/off setting of the next run. It reaches the camera only when the run starts.
class OrvexBooleanProperty : public CameraInterface::BooleanProperty {
public:
    OrvexBooleanProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using BooleanProperty::operator=;

protected:
    OrvexCamera* m_Camera; // owns this property
};

/// Whether a signal starts each exposure. The state is the last one written, and is kept for the next connection.
class OrvexHardwareTrigger : public OrvexBooleanProperty {
public:
    /// Switches the trigger off.
    /// @throws KestrelException_Property "PropertyUnsupported"  the camera cannot
    OrvexHardwareTrigger(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexBooleanProperty::operator=;

    /// @throws KestrelException_Property "PropertyWriteFailure"  the state is unchanged
    void setValue(const std::string& value) override;

    /// Switches the trigger on again if it was on; a new connection begins with it off. If that fails, it reads
    /// "Disabled", and the change callback runs.
    void restore();

private:
    bool switchTrigger(bool on);
};

/// Whether the camera starts as a USB3 Vision device. The state is kept in the camera's flash; changes are not
/// reported.
class OrvexUsb3VisionMode : public CameraInterface::BooleanProperty {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  the model or the firmware does not have the mode
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
