// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "Exceptions/SourceLocation.h"
#include "OrvexApi/OrvexRecords.h"
#include "Properties/MemoryProperty.h"

namespace OrvexAdapter {

class OrvexCamera;

/// One number, in pixels, of the region of the next run. It is kept in memory; the stream writes it to the camera when
/// it starts.
class OrvexRegionProperty : public CameraInterface::MemoryProperty<unsigned long> {
public:
    using MemoryProperty<unsigned long>::operator=;

    /// Stores the number, limited to the range. It need not be a multiple of the unit.
    /// @throws std::invalid_argument, std::out_of_range  the text is not an unsigned number
    void setValue(const std::string& value) override;

protected:
    /// The properties that define one of the four numbers.
    struct Definition {
        const char* minimumProperty; ///< null for a minimum of 0
        const char* maximumProperty;
        std::uint32_t ORVEX_FRAME_FORMAT::*present;
    };

    /// @throws KestrelException_Property "PropertyReadFailure"  the camera does not report its present region
    OrvexRegionProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                        const Definition& definition, const KestrelExceptions::SourceLocation& here);

    OrvexCamera* m_Camera; // owns this property
};

/// The width of the region.
class OrvexWidth : public OrvexRegionProperty {
public:
    OrvexWidth(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

/// The height of the region.
class OrvexHeight : public OrvexRegionProperty {
public:
    OrvexHeight(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

/// The first column of the region.
class OrvexXOffset : public OrvexRegionProperty {
public:
    OrvexXOffset(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

/// The first row of the region.
class OrvexYOffset : public OrvexRegionProperty {
public:
    OrvexYOffset(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using OrvexRegionProperty::operator=;
};

} // namespace OrvexAdapter
