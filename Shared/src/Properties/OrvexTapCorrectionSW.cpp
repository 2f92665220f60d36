#include "Properties/OrvexTapCorrectionSW.h"

namespace OrvexAdapter {

namespace {

constexpr unsigned long kTapCorrection = 109;
constexpr std::uint32_t kOn = 0x08000000;

} // namespace

OrvexTapCorrectionSW::OrvexTapCorrectionSW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                           OrvexCamera& camera)
    : OrvexSwitchProperty(name, type, camera, kTapCorrection, kOn) {}

void OrvexTapCorrectionSW::setValue(const std::string& value) {
    writeFlags(flagsFor(value, QUILL_HERE));
}

} // namespace OrvexAdapter
