// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexSwitchProperties.h"

namespace OrvexAdapter {

OrvexTapCorrectionSW::OrvexTapCorrectionSW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                           OrvexCamera& camera)
    : OrvexSwitchProperty(name, type, camera, kNumber, kSoftwareTapCorrectionFlag) {}

void OrvexTapCorrectionSW::setValue(const std::string& value) {
    writeFlags(flagsFor(value, QUILL_HERE));
}

} // namespace OrvexAdapter
