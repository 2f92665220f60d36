// SPDX-License-Identifier: Apache-2.0

#include "OrvexPropertyTable.h"

#include <iterator>

#include "OrvexPropertyBuilder.h"
#include "Properties/OrvexBooleanProperties.h"
#include "Properties/OrvexFixedProperties.h"
#include "Properties/OrvexFramerate.h"
#include "Properties/OrvexInformationProperties.h"
#include "Properties/OrvexMemoryProperties.h"
#include "Properties/OrvexNumberedProperties.h"
#include "Properties/OrvexPowerMode.h"
#include "Properties/OrvexRegionProperties.h"
#include "Properties/OrvexStandardProperty.h"
#include "Properties/OrvexSwitchProperties.h"
#include "PropertyNames.h"

namespace OrvexAdapter {

namespace {

using namespace CameraInterface;
using namespace CameraInterface::PropertyNames;

constexpr auto Integer = PROPERTY_TYPE::Integer;
constexpr auto Float = PROPERTY_TYPE::Float;
constexpr auto String = PROPERTY_TYPE::String;
constexpr auto Boolean = PROPERTY_TYPE::Boolean;

constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;

/// For a class that gets its number from the table.
template <typename PropertyClass>
std::unique_ptr<Property> makeNumbered(const std::string& name, const PROPERTY_TYPE& type, OrvexCamera& camera,
                                       const unsigned long& number) {
    const OrvexStandardProperty::Question question(camera, number);
    return question.isSupported() ? std::make_unique<PropertyClass>(name, type, camera, number) : nullptr;
}

/// For a class that has its own number.
template <typename PropertyClass>
std::unique_ptr<Property> makeWithOwnNumber(const std::string& name, const PROPERTY_TYPE& type, OrvexCamera& camera,
                                            const unsigned long& /*number*/) {
    const OrvexStandardProperty::Question question(camera, PropertyClass::kNumber);
    return question.isSupported() ? std::make_unique<PropertyClass>(name, type, camera) : nullptr;
}

/// For a class that needs no number.
template <typename PropertyClass>
std::unique_ptr<Property> make(const std::string& name, const PROPERTY_TYPE& type, OrvexCamera& camera,
                               const unsigned long& /*number*/) {
    return std::make_unique<PropertyClass>(name, type, camera);
}

/// For a class that does not use the camera.
template <typename PropertyClass>
std::unique_ptr<Property> makeInMemory(const std::string& name, const PROPERTY_TYPE& type, OrvexCamera& /*camera*/,
                                       const unsigned long& /*number*/) {
    return std::make_unique<PropertyClass>(name, type);
}

constexpr PropertyDefinition kTable[] = {
    {kAutoExposureMaximum, Float, 107, OrvexStandardProperty::makeIfSupported},
    {kAutoExposureTarget, Integer, 103, OrvexStandardProperty::makeIfSupported},
    {kBrightness, Float, 0, OrvexStandardProperty::makeIfSupported},
    {kContrast, Float, 1, OrvexStandardProperty::makeIfSupported},
    {kCorrectionMatrix, String, 65, makeNumbered<OrvexCorrectionMatrix>},
    {kColorFormat, String, 80, makeNumbered<OrvexColorFormat>},
    {kDemosaicMethod, String, 64, makeNumbered<OrvexDemosaicMethod>},
    {kDigitalGain, Float, 71, OrvexStandardProperty::makeIfSupported},
    {kBlueDigitalGain, Float, 74, OrvexStandardProperty::makeIfSupported},
    {kGreenDigitalGain, Float, 73, OrvexStandardProperty::makeIfSupported},
    {kRedDigitalGain, Float, 72, OrvexStandardProperty::makeIfSupported},
    {kDigitalWhiteBalanceU, Float, 69, OrvexStandardProperty::makeIfSupported},
    {kDigitalWhiteBalanceV, Float, 70, OrvexStandardProperty::makeIfSupported},
    {kVideoExposure, Float, 20, OrvexStandardProperty::makeIfSupported},
    {kBurstExposureInterval, Float, 113, OrvexStandardProperty::makeIfSupported},
    {kFlipping, String, 66, makeNumbered<OrvexFlipping>},
    {kFocus, Float, 22, OrvexStandardProperty::makeIfSupported},
    {kVideoGain, Float, 40, OrvexStandardProperty::makeIfSupported},
    {kBlueVideoGain, Float, 42, OrvexStandardProperty::makeIfSupported},
    {kGreenVideoGainOne, Float, 43, OrvexStandardProperty::makeIfSupported},
    {kGreenVideoGainTwo, Float, 44, OrvexStandardProperty::makeIfSupported},
    {kRedVideoGain, Float, 41, OrvexStandardProperty::makeIfSupported},
    {kGamma, Float, 5, OrvexStandardProperty::makeIfSupported},
    {kIris, Float, 21, OrvexStandardProperty::makeIfSupported},
    {kMaximumHeight, Integer, 82, makeNumbered<OrvexConstantProperty>},
    {kMaximumWidth, Integer, 81, makeNumbered<OrvexConstantProperty>},
    {kStillClockSpeed, String, 106, makeNumbered<OrvexClockSpeed>},
    {kVideoClockSpeed, String, 126, makeNumbered<OrvexClockSpeed>},
    {kBurstCaptureCount, Integer, 120, OrvexStandardProperty::makeIfSupported},
    {kStillExposure, Float, 50, OrvexStandardProperty::makeIfSupported},
    {kStillExposureDelay, Float, 100, OrvexStandardProperty::makeIfSupported},
    {kStillGain, Float, 51, OrvexStandardProperty::makeIfSupported},
    {kBlueStillGain, Float, 55, OrvexStandardProperty::makeIfSupported},
    {kGreenStillGainOne, Float, 53, OrvexStandardProperty::makeIfSupported},
    {kGreenStillGainTwo, Float, 54, OrvexStandardProperty::makeIfSupported},
    {kRedStillGain, Float, 52, OrvexStandardProperty::makeIfSupported},
    {kStillExposureKneeOne, Float, 96, OrvexStandardProperty::makeIfSupported},
    {kStillExposureKneeTwo, Float, 97, OrvexStandardProperty::makeIfSupported},
    {kStillExposureKneeThree, Float, 98, OrvexStandardProperty::makeIfSupported},
    {kStillStrobeDelay, Float, 56, OrvexStandardProperty::makeIfSupported},
    {kStillStrobeDuration, Float, 116, OrvexStandardProperty::makeIfSupported},
    {kStillTapConfiguration, String, 177, makeNumbered<OrvexTapConfiguration>},
    {kStrobePin, Integer, 172, OrvexStandardProperty::makeIfSupported},
    {kVideoTapConfiguration, String, 176, makeNumbered<OrvexTapConfiguration>},
    {kCameraTemperature, Float, 108, OrvexStandardProperty::makeIfSupported},
    {kTriggerPin, Integer, 110, OrvexStandardProperty::makeIfSupported},
    {kUnitHeight, Integer, 84, makeNumbered<OrvexConstantProperty>},
    {kUnitWidth, Integer, 83, makeNumbered<OrvexConstantProperty>},
    {kFramerate, Float, kNoNumber, make<OrvexFramerate>},
    {kEndianness, String, kNoNumber, makeWithOwnNumber<OrvexEndianness>},
    {kAutoExposure, String, kNoNumber, makeWithOwnNumber<OrvexAutoExposure>},
    {kHardwareTapCorrection, String, kNoNumber, makeWithOwnNumber<OrvexTapCorrectionHW>},
    {kSoftwareTapCorrection, String, kNoNumber, makeWithOwnNumber<OrvexTapCorrectionSW>},
    {kBufferLastFrame, Boolean, kNoNumber, make<OrvexBooleanProperty>},
    {kStrobeFromStartExposure, Boolean, kNoNumber, make<OrvexBooleanProperty>},
    {kStrobe, Boolean, kNoNumber, make<OrvexBooleanProperty>},
    {kTimeout, Float, kNoNumber, makeInMemory<OrvexCaptureTimeout>},
    {kHeight, Integer, kNoNumber, make<OrvexHeight>},
    {kWidth, Integer, kNoNumber, make<OrvexWidth>},
    {kXOffset, Integer, kNoNumber, make<OrvexXOffset>},
    {kYOffset, Integer, kNoNumber, make<OrvexYOffset>},
    {kSamplingDescription, String, kNoNumber, make<OrvexSamplingDescription>},
    {kPixelFormat, String, kNoNumber, make<OrvexPixelFormat>},
    {kShutter, String, kNoNumber, makeInMemory<OrvexShutter>},
    {kSerialNumber, String, kNoNumber, OrvexPropertyBuilder::makeSerialNumber},
    {kCameraId, Integer, kNoNumber, OrvexPropertyBuilder::makeCameraId},
    {kModelName, String, kNoNumber, OrvexPropertyBuilder::makeModelName},
    {kVendorName, String, kNoNumber, OrvexPropertyBuilder::makeVendorName},
    {kHardwareRevision, Integer, kNoNumber, OrvexPropertyBuilder::makeHardwareRevision},
    {kFpgaVersion, String, kNoNumber, make<OrvexFpgaVersion>},
    {kUsb3VisionMode, Boolean, kNoNumber, make<OrvexUsb3VisionMode>},
    {kDriverVersion, String, kNoNumber, OrvexPropertyBuilder::makeDriverVersion},
    {kApiVersion, String, kNoNumber, OrvexPropertyBuilder::makeApiVersion},
    {kFirmwareVersion, String, kNoNumber, make<OrvexFirmwareVersion>},
    {kHardwareInterface, String, kNoNumber, make<OrvexHardwareInterface>},
    {kFpga2Version, String, kNoNumber, make<OrvexFpga2Version>},
    {kAfeTimingVersion, String, kNoNumber, OrvexAfeTimingVersion::makeIfPresent},
    {kStreamingMode, String, kNoNumber, make<OrvexStreamingMode>},
    {kExposure, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kGain, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kBlueGain, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kGreenGainOne, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kGreenGainTwo, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kRedGain, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kClockSpeed, String, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kTapConfiguration, String, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kSpeed, Float, kNoNumber, OrvexPropertyBuilder::makeConditional},
    {kAbsoluteFocus, Float, 85, OrvexStandardProperty::makeIfSupported},
    {kAutoIrisMaximum, Float, 123, OrvexStandardProperty::makeIfSupported},
    {kBlackLevel, Float, 86, OrvexStandardProperty::makeIfSupported},
    {kHardwareTrigger, Boolean, kNoNumber, make<OrvexHardwareTrigger>},
    {kAutoGainMinimum, Float, 186, OrvexStandardProperty::makeIfSupported},
    {kPowerMode, Boolean, kNoNumber, make<OrvexPowerMode>},
    {kFan, Boolean, 118, makeNumbered<OrvexFan>},
    {kFocalLength, Float, 174, OrvexStandardProperty::makeIfSupported},
    {kHue, Float, 2, OrvexStandardProperty::makeIfSupported},
    {kIrisLatency, Float, 175, OrvexStandardProperty::makeIfSupported},
    {kMemory, Integer, 115, OrvexStandardProperty::makeIfSupported},
    {kSaturation, Float, 3, OrvexStandardProperty::makeIfSupported},
    {kSharpness, Float, 4, OrvexStandardProperty::makeIfSupported},
    {kSynchronizationMode, String, 119, OrvexStandardProperty::makeIfSupported},
    {kSensorTemperature, Float, 167, OrvexStandardProperty::makeIfSupported},
    {kThresholdHigh, Integer, 166, OrvexStandardProperty::makeIfSupported},
    {kThresholdLow, Integer, 165, OrvexStandardProperty::makeIfSupported},
    {kTriggerMode, String, 173, makeNumbered<OrvexTriggerMode>},
    {kCustomDigitalGain, Float, 111, OrvexStandardProperty::makeIfSupported},
};
static_assert(std::size(kTable) == 106);

} // namespace

const PropertyTable& getPropertyTable() {
    return kTable;
}

} // namespace OrvexAdapter
