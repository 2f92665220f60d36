// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexFrameFormat.h"

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

FrameFormat readFrameFormat(OrvexCamera& camera, const CameraInterface::Property& property,
                            const SourceLocation& here) {
    FrameFormat frames;
    if (orvexApi().sdkGetFormat(camera.getHandle(), &frames.format, &frames.rate) == 0) {
        raise<KestrelException_Property>(here, Errors::kPropertyReadFailure, property.getName());
    }
    return frames;
}

bool writeFrameFormat(OrvexCamera& camera, const FrameFormat& frames) {
    return orvexApi().sdkSetFormat(camera.getHandle(), &frames.format, frames.rate) != 0;
}

} // namespace OrvexAdapter
