#include "Properties/OrvexTapCorrectionHW.h"

namespace OrvexAdapter {

namespace {

constexpr unsigned long kTapCorrection = 109;
constexpr std::uint32_t kOn = 0x20000000;

} // namespace

OrvexTapCorrectionHW::OrvexTapCorrectionHW(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                           OrvexCamera& camera)
    : OrvexSwitchProperty(name, type, camera, kTapCorrection, kOn) {}

void OrvexTapCorrectionHW::setValue(const std::string& value) {
    writeFlags(flagsFor(value, QUILL_HERE));
}

} // namespace OrvexAdapter
