#pragma once

#include <string>

#include "Properties/OrvexBooleanProperty.h"

namespace OrvexAdapter {

/// Whether a signal starts each exposure. The state is what was written last, and goes on in
/// the next connection.
class OrvexHardwareTrigger : public OrvexBooleanProperty {
public:
    /// Switches the trigger off.
    /// @throws KestrelException_Property "PropertyUnsupported"  the camera cannot
    OrvexHardwareTrigger(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexBooleanProperty::operator=;

    /// @throws KestrelException_Property "PropertyWriteFailure"  the state is unchanged
    void setValue(const std::string& value) override;

    /// Switches the trigger on again where it was on; a new connection begins with it off. Where that fails it reads
    /// "Disabled", and the change callback runs.
    void restore();

private:
    bool switchTrigger(bool on);
};

} // namespace OrvexAdapter
