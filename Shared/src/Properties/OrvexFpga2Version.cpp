// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexInformationProperties.h"

#include "Base/TextPieces.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Internal/QuillInternal.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

OrvexFpga2Version::OrvexFpga2Version(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                     OrvexCamera& camera)
    : OrvexInformationProperty(name, type, camera) {
    ORVEX_VERSION version{};
    if (orvexApi().sdkQueryVersion(camera.getHandle(), &version) == 0 ||
        !QuillInternal::Orvex::isFpga2Available(version)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::string OrvexFpga2Version::getValue() {
    unsigned short version = 0;
    if (!QuillInternal::Orvex::OrvexGetFpga2Version(m_Camera->getHandle(), version)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    return Base::dottedBytes(version, 2);
}

} // namespace OrvexAdapter
