// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexInformationProperties.h"

#include <cstdint>

#include "Base/TextConversion.h"
#include "Base/TextPieces.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Internal/QuillInternal.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

bool hasAfeTiming(OrvexCamera& camera) {
    std::uint32_t model = 0;
    return orvexApi().sdkGetCameraId(camera.getHandle(), &model) != 0 && (model == 1584 || model == 1585);
}

} // namespace

OrvexAfeTimingVersion::OrvexAfeTimingVersion(Unasked /*unasked*/, const std::string& name,
                                             const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera)
    : OrvexInformationProperty(name, type, camera) {}

OrvexAfeTimingVersion::OrvexAfeTimingVersion(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                             OrvexCamera& camera)
    : OrvexAfeTimingVersion(Unasked{}, name, type, camera) {
    if (!hasAfeTiming(camera)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::unique_ptr<CameraInterface::Property>
OrvexAfeTimingVersion::makeIfPresent(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                     OrvexCamera& camera, const unsigned long& /*number*/) {
    return std::unique_ptr<CameraInterface::Property>(
        hasAfeTiming(camera) ? new OrvexAfeTimingVersion(Unasked{}, name, type, camera) : nullptr);
}

std::string OrvexAfeTimingVersion::getValue() {
    std::string stored = "0.0";
    if (!QuillInternal::Orvex::OrvexGetAfeTimingVersion(m_Camera->getHandle(), stored) && !m_Camera->isCameraAlive()) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    std::string version;
    for (const std::string& piece : Base::split(stored, '.')) {
        version += (version.empty() ? "" : ".") + Base::toText(Base::parseUnsigned(piece, 16));
    }
    return version;
}

} // namespace OrvexAdapter
