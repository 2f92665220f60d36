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
    return std::make_unique<PropertyClass>(name, type, camera, number);
}

/// For a class that has its own number, or needs none.
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
    {kAutoExposureMaximum, Float, 107, makeNumbered<OrvexStandardProperty>},
    {kAutoExposureTarget, Integer, 103, makeNumbered<OrvexStandardProperty>},
    {kBrightness, Float, 0, makeNumbered<OrvexStandardProperty>},
    {kContrast, Float, 1, makeNumbered<OrvexStandardProperty>},
    {kCorrectionMatrix, String, 65, makeNumbered<OrvexCorrectionMatrix>},
    {kColorFormat, String, 80, makeNumbered<OrvexColorFormat>},
    {kDemosaicMethod, String, 64, makeNumbered<OrvexDemosaicMethod>},
    {kDigitalGain, Float, 71, makeNumbered<OrvexStandardProperty>},
    {kBlueDigitalGain, Float, 74, makeNumbered<OrvexStandardProperty>},
    {kGreenDigitalGain, Float, 73, makeNumbered<OrvexStandardProperty>},
    {kRedDigitalGain, Float, 72, makeNumbered<OrvexStandardProperty>},
    {kDigitalWhiteBalanceU, Float, 69, makeNumbered<OrvexStandardProperty>},
    {kDigitalWhiteBalanceV, Float, 70, makeNumbered<OrvexStandardProperty>},
    {kVideoExposure, Float, 20, makeNumbered<OrvexStandardProperty>},
    {kBurstExposureInterval, Float, 113, makeNumbered<OrvexStandardProperty>},
    {kFlipping, String, 66, makeNumbered<OrvexFlipping>},
    {kFocus, Float, 22, makeNumbered<OrvexStandardProperty>},
    {kVideoGain, Float, 40, makeNumbered<OrvexStandardProperty>},
    {kBlueVideoGain, Float, 42, makeNumbered<OrvexStandardProperty>},
    {kGreenVideoGainOne, Float, 43, makeNumbered<OrvexStandardProperty>},
    {kGreenVideoGainTwo, Float, 44, makeNumbered<OrvexStandardProperty>},
    {kRedVideoGain, Float, 41, makeNumbered<OrvexStandardProperty>},
    {kGamma, Float, 5, makeNumbered<OrvexStandardProperty>},
    {kIris, Float, 21, makeNumbered<OrvexStandardProperty>},
    {kMaximumHeight, Integer, 82, makeNumbered<OrvexConstantProperty>},
    {kMaximumWidth, Integer, 81, makeNumbered<OrvexConstantProperty>},
    {kStillClockSpeed, String, 106, makeNumbered<OrvexClockSpeed>},
    {kVideoClockSpeed, String, 126, makeNumbered<OrvexClockSpeed>},
    {kBurstCaptureCount, Integer, 120, makeNumbered<OrvexStandardProperty>},
    {kStillExposure, Float, 50, makeNumbered<OrvexStandardProperty>},
    {kStillExposureDelay, Float, 100, makeNumbered<OrvexStandardProperty>},
    {kStillGain, Float, 51, makeNumbered<OrvexStandardProperty>},
    {kBlueStillGain, Float, 55, makeNumbered<OrvexStandardProperty>},
    {kGreenStillGainOne, Float, 53, makeNumbered<OrvexStandardProperty>},
    {kGreenStillGainTwo, Float, 54, makeNumbered<OrvexStandardProperty>},
    {kRedStillGain, Float, 52, makeNumbered<OrvexStandardProperty>},
    {kStillExposureKneeOne, Float, 96, makeNumbered<OrvexStandardProperty>},
    {kStillExposureKneeTwo, Float, 97, makeNumbered<OrvexStandardProperty>},
    {kStillExposureKneeThree, Float, 98, makeNumbered<OrvexStandardProperty>},
    {kStillStrobeDelay, Float, 56, makeNumbered<OrvexStandardProperty>},
    {kStillStrobeDuration, Float, 116, makeNumbered<OrvexStandardProperty>},
    {kStillTapConfiguration, String, 177, makeNumbered<OrvexTapConfiguration>},
    {kStrobePin, Integer, 172, makeNumbered<OrvexStandardProperty>},
    {kVideoTapConfiguration, String, 176, makeNumbered<OrvexTapConfiguration>},
    {kCameraTemperature, Float, 108, makeNumbered<OrvexStandardProperty>},
    {kTriggerPin, Integer, 110, makeNumbered<OrvexStandardProperty>},
    {kUnitHeight, Integer, 84, makeNumbered<OrvexConstantProperty>},
    {kUnitWidth, Integer, 83, makeNumbered<OrvexConstantProperty>},
    {kFramerate, Float, kNoNumber, make<OrvexFramerate>},
    {kEndianness, String, kNoNumber, make<OrvexEndianness>},
    {kAutoExposure, String, kNoNumber, make<OrvexAutoExposure>},
    {kHardwareTapCorrection, String, kNoNumber, make<OrvexTapCorrectionHW>},
    {kSoftwareTapCorrection, String, kNoNumber, make<OrvexTapCorrectionSW>},
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
    {kAfeTimingVersion, String, kNoNumber, make<OrvexAfeTimingVersion>},
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
    {kAbsoluteFocus, Float, 85, makeNumbered<OrvexStandardProperty>},
    {kAutoIrisMaximum, Float, 123, makeNumbered<OrvexStandardProperty>},
    {kBlackLevel, Float, 86, makeNumbered<OrvexStandardProperty>},
    {kHardwareTrigger, Boolean, kNoNumber, make<OrvexHardwareTrigger>},
    {kAutoGainMinimum, Float, 186, makeNumbered<OrvexStandardProperty>},
    {kPowerMode, Boolean, kNoNumber, make<OrvexPowerMode>},
    {kFan, Boolean, 118, makeNumbered<OrvexFan>},
    {kFocalLength, Float, 174, makeNumbered<OrvexStandardProperty>},
    {kHue, Float, 2, makeNumbered<OrvexStandardProperty>},
    {kIrisLatency, Float, 175, makeNumbered<OrvexStandardProperty>},
    {kMemory, Integer, 115, makeNumbered<OrvexStandardProperty>},
    {kSaturation, Float, 3, makeNumbered<OrvexStandardProperty>},
    {kSharpness, Float, 4, makeNumbered<OrvexStandardProperty>},
    {kSynchronizationMode, String, 119, makeNumbered<OrvexStandardProperty>},
    {kSensorTemperature, Float, 167, makeNumbered<OrvexStandardProperty>},
    {kThresholdHigh, Integer, 166, makeNumbered<OrvexStandardProperty>},
    {kThresholdLow, Integer, 165, makeNumbered<OrvexStandardProperty>},
    {kTriggerMode, String, 173, makeNumbered<OrvexTriggerMode>},
    {kCustomDigitalGain, Float, 111, makeNumbered<OrvexStandardProperty>},
};
static_assert(std::size(kTable) == 106);

} // namespace

const PropertyTable& getPropertyTable() {
    return kTable;
}

} // namespace OrvexAdapter
