// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexSwitchProperties.h"

namespace OrvexAdapter {

OrvexTapCorrectionHW::OrvexTapCorrectionHW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                           OrvexCamera& camera)
    : OrvexSwitchProperty(name, type, camera, kNumber, kHardwareTapCorrectionFlag) {}

void OrvexTapCorrectionHW::setValue(const std::string& value) {
    writeFlags(flagsFor(value, QUILL_HERE));
}

} // namespace OrvexAdapter
