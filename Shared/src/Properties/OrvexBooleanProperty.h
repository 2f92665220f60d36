#pragma once

#include <string>

#include "Properties/BooleanProperty.h"

namespace OrvexAdapter {

class OrvexCamera;

/// An on/off setting of the next run that the camera is not told of before.
class OrvexBooleanProperty : public CameraInterface::BooleanProperty {
public:
    OrvexBooleanProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using BooleanProperty::operator=;

protected:
    OrvexCamera* m_Camera; // owns this property
};

} // namespace OrvexAdapter
