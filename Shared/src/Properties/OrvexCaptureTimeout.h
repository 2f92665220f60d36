#pragma once

#include <string>

#include "Properties/MemoryProperty.h"

namespace OrvexAdapter {

/// How long a run waits for a frame, in milliseconds; -1 leaves it to the stream.
class OrvexCaptureTimeout : public CameraInterface::MemoryProperty<double> {
public:
    OrvexCaptureTimeout(const std::string& name, const CameraInterface::PROPERTY_TYPE& type);

    using MemoryProperty<double>::operator=;

    bool isAvailableForWriting() override;
};

} // namespace OrvexAdapter
