#pragma once

#include <string>

#include "Properties/MemoryProperty.h"
#include "Properties/OrvexEnumerations.h"

namespace OrvexAdapter {

/// The shutter of still captures: "Global" or "Rolling".
class OrvexShutter : public CameraInterface::MemoryProperty<int> {
public:
    OrvexShutter(const std::string& name, const CameraInterface::PROPERTY_TYPE& type);

    using MemoryProperty<int>::operator=;
};

} // namespace OrvexAdapter
