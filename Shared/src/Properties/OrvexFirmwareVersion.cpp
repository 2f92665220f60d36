// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexInformationProperties.h"

#include "Base/TextPieces.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

std::string OrvexFirmwareVersion::getValue() {
    ORVEX_VERSION version{};
    if (orvexApi().sdkQueryVersion(m_Camera->getHandle(), &version) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    return Base::dottedBytes(version.firmware, 2);
}

} // namespace OrvexAdapter
