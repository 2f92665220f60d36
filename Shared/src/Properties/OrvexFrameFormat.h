// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Exceptions/SourceLocation.h"
#include "OrvexApi/OrvexRecords.h"
#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The format of a camera's frames, and their rate in frames per second.
struct FrameFormat {
    ORVEX_FRAME_FORMAT format{};
    float rate = 0;
};

/// Reads the present format and rate on behalf of a property.
/// @throws KestrelException_Property "PropertyReadFailure", thrown at @p here
FrameFormat readFrameFormat(OrvexCamera& camera, const CameraInterface::Property& property,
                            const KestrelExceptions::SourceLocation& here);

/// Applies a format and rate; returns false if the camera refuses it.
bool writeFrameFormat(OrvexCamera& camera, const FrameFormat& frames);

} // namespace OrvexAdapter
