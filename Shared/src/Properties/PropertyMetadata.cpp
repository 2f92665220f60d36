// SPDX-License-Identifier: Apache-2.0

#include "Properties/PropertyMetadata.h"

#include <algorithm>
#include <iterator>

#include "PropertyNames.h"

namespace CameraInterface {

namespace {

using namespace PropertyNames;

// Categories of the Standard Features Naming Convention, written as words.
constexpr const char* kDeviceControl = "Device Control";
constexpr const char* kImageFormatControl = "Image Format Control";
constexpr const char* kAcquisitionControl = "Acquisition Control";
constexpr const char* kAnalogControl = "Analog Control";
constexpr const char* kDigitalIoControl = "Digital I/O Control";
constexpr const char* kColorControl = "Color Transformation Control";
constexpr const char* kOpticControl = "Optic Control";
constexpr const char* kTransportLayerControl = "Transport Layer Control";
constexpr const char* kUncategorised = "";

/// Gains are factors, without a unit. DN are sample values (digital numbers).
constexpr PropertyMetadata kMetadata[] = {
    // clang-format off
    {kAutoExposureMaximum, kAcquisitionControl, "ms", "Limits the exposure that automatic control selects.", ""},
    {kAutoExposureTarget, kAcquisitionControl, "", "Sets the brightness that automatic exposure control aims at.", ""},
    {kBrightness, kAnalogControl, "", "Sets the brightness of the image.", ""},
    {kContrast, kAnalogControl, "", "Sets the contrast of the image.", ""},
    {kCorrectionMatrix, kColorControl, "", "Selects the colour correction for a kind of light.", ""},
    {kColorFormat, kImageFormatControl, "", "Reports the colour filter layout of the sensor.", ""},
    {kDemosaicMethod, kColorControl, "", "Selects how full colour is computed from the sensor's mosaic.", ""},
    {kDigitalGain, kAnalogControl, "", "Multiplies all samples digitally.", ""},
    {kBlueDigitalGain, kAnalogControl, "", "Multiplies the blue samples digitally.", ""},
    {kGreenDigitalGain, kAnalogControl, "", "Multiplies the green samples digitally.", ""},
    {kRedDigitalGain, kAnalogControl, "", "Multiplies the red samples digitally.", ""},
    {kDigitalWhiteBalanceU, kAnalogControl, "", "Sets the U component of the digital white balance.", ""},
    {kDigitalWhiteBalanceV, kAnalogControl, "", "Sets the V component of the digital white balance.", ""},
    {kVideoExposure, kAcquisitionControl, "ms", "Sets how long each frame is exposed in video mode.", ""},
    {kBurstExposureInterval, kAcquisitionControl, "ms", "Sets the time between the exposures of a burst.", ""},
    {kFlipping, kImageFormatControl, "", "Mirrors the image along an axis or both.", ""},
    {kFocus, kOpticControl, "", "Sets the focus of the lens.", ""},
    {kVideoGain, kAnalogControl, "", "Multiplies the signal of all pixels in video mode.", ""},
    {kBlueVideoGain, kAnalogControl, "", "Multiplies the signal of the blue pixels in video mode.", ""},
    {kGreenVideoGainOne, kAnalogControl, "", "Multiplies the signal of the first green pixels in video mode.", ""},
    {kGreenVideoGainTwo, kAnalogControl, "", "Multiplies the signal of the second green pixels in video mode.", ""},
    {kRedVideoGain, kAnalogControl, "", "Multiplies the signal of the red pixels in video mode.", ""},
    {kGamma, kAnalogControl, "", "Sets the gamma of the brightness curve.", ""},
    {kIris, kOpticControl, "", "Sets the aperture of the lens.", ""},
    {kMaximumHeight, kImageFormatControl, "px", "Reports the height of the sensor.", ""},
    {kMaximumWidth, kImageFormatControl, "px", "Reports the width of the sensor.", ""},
    {kStillClockSpeed, kDeviceControl, "", "Selects the pixel clock of still captures.", ""},
    {kVideoClockSpeed, kDeviceControl, "", "Selects the pixel clock of video mode, on which the frame rates depend.", ""},
    {kBurstCaptureCount, kAcquisitionControl, "", "Sets the number of exposures of a burst.", ""},
    {kStillExposure, kAcquisitionControl, "ms", "Sets how long a still capture is exposed.", ""},
    {kStillExposureDelay, kAcquisitionControl, "ms", "Sets the time before the exposure of a still capture begins.", ""},
    {kStillGain, kAnalogControl, "", "Multiplies the signal of all pixels in still captures.", ""},
    {kBlueStillGain, kAnalogControl, "", "Multiplies the signal of the blue pixels in still captures.", ""},
    {kGreenStillGainOne, kAnalogControl, "", "Multiplies the signal of the first green pixels in still captures.", ""},
    {kGreenStillGainTwo, kAnalogControl, "", "Multiplies the signal of the second green pixels in still captures.", ""},
    {kRedStillGain, kAnalogControl, "", "Multiplies the signal of the red pixels in still captures.", ""},
    {kStillExposureKneeOne, kAcquisitionControl, "", "", ""},
    {kStillExposureKneeTwo, kAcquisitionControl, "", "", ""},
    {kStillExposureKneeThree, kAcquisitionControl, "", "", ""},
    {kStillStrobeDelay, kDigitalIoControl, "ms", "Sets the time before the strobe of a still capture.", ""},
    {kStillStrobeDuration, kDigitalIoControl, "ms", "Sets the length of the strobe of a still capture.", ""},
    {kStillTapConfiguration, kTransportLayerControl, "", "Selects the number of sensor outputs that are read in still captures.", ""},
    {kStrobePin, kDigitalIoControl, "", "Selects the pin of the strobe output.", ""},
    {kVideoTapConfiguration, kTransportLayerControl, "", "Selects the number of sensor outputs that are read in video mode.", ""},
    {kCameraTemperature, kDeviceControl, "\u00B0C", "Reports the temperature in the camera.", ""},
    {kTriggerPin, kDigitalIoControl, "", "Selects the pin of the trigger input.", ""},
    {kUnitHeight, kImageFormatControl, "px", "Reports the number of which heights and vertical offsets are multiples.", ""},
    {kUnitWidth, kImageFormatControl, "px", "Reports the number of which widths and horizontal offsets are multiples.", ""},
    {kFramerate, kAcquisitionControl, "fps", "Selects the frame rate of video mode.", ""},
    {kEndianness, kImageFormatControl, "", "Reports the byte order of samples of 16 bits.", ""},
    {kAutoExposure, kAcquisitionControl, "", "Lets the camera select the video exposure.", ""},
    {kHardwareTapCorrection, kAnalogControl, "", "Switches the correction, in hardware, of differences between sensor outputs.", ""},
    {kSoftwareTapCorrection, kAnalogControl, "", "Switches the correction, in software, of differences between sensor outputs.", ""},
    {kBufferLastFrame, kAcquisitionControl, "", "", ""},
    {kStrobeFromStartExposure, kDigitalIoControl, "", "Starts the strobe with the exposure.", ""},
    {kStrobe, kDigitalIoControl, "", "Switches the strobe of still captures.", ""},
    {kTimeout, kAcquisitionControl, "ms", "Limits the wait for a frame; a negative value leaves the limit to the stream.", ""},
    {kHeight, kImageFormatControl, "px", "Sets the height of the region, in pixels of the sensor.", kUnitHeight},
    {kWidth, kImageFormatControl, "px", "Sets the width of the region, in pixels of the sensor.", kUnitWidth},
    {kXOffset, kImageFormatControl, "px", "Sets the first column of the region.", kUnitWidth},
    {kYOffset, kImageFormatControl, "px", "Sets the first row of the region.", kUnitHeight},
    {kSamplingDescription, kImageFormatControl, "", "Selects how pixels are combined or skipped, by a horizontal and a vertical factor.", ""},
    {kPixelFormat, kImageFormatControl, "bit", "Selects the number of bits of a pixel.", ""},
    {kShutter, kAcquisitionControl, "", "Selects the shutter of still captures.", ""},
    {kSerialNumber, kDeviceControl, "", "Reports the serial number.", ""},
    {kCameraId, kDeviceControl, "", "Reports the number of the model.", ""},
    {kModelName, kDeviceControl, "", "Reports the name of the model.", ""},
    {kVendorName, kDeviceControl, "", "Reports the maker.", ""},
    {kHardwareRevision, kDeviceControl, "", "Reports the revision of the hardware.", ""},
    {kFpgaVersion, kDeviceControl, "", "Reports the version of the FPGA's configuration.", ""},
    {kUsb3VisionMode, kTransportLayerControl, "", "Makes the camera start as a USB3 Vision device from its next restart on.", ""},
    {kDriverVersion, kDeviceControl, "", "Reports the version of the driver.", ""},
    {kApiVersion, kDeviceControl, "", "Reports the version of the camera SDK.", ""},
    {kFirmwareVersion, kDeviceControl, "", "Reports the version of the firmware.", ""},
    {kHardwareInterface, kDeviceControl, "", "Reports the interface by which the camera is attached.", ""},
    {kFpga2Version, kDeviceControl, "", "Reports the version of the second FPGA's configuration.", ""},
    {kAfeTimingVersion, kDeviceControl, "", "Reports the version of the timing file of the analog front end.", ""},
    {kStreamingMode, kAcquisitionControl, "", "Selects continuous video or single still captures for the next start of the stream.", ""},
    {kExposure, kAcquisitionControl, "ms", "Sets the exposure of the present streaming mode.", ""},
    {kGain, kAnalogControl, "", "Multiplies the signal of all pixels in the present streaming mode.", ""},
    {kBlueGain, kAnalogControl, "", "Multiplies the signal of the blue pixels in the present streaming mode.", ""},
    {kGreenGainOne, kAnalogControl, "", "Multiplies the signal of the first green pixels in the present streaming mode.", ""},
    {kGreenGainTwo, kAnalogControl, "", "Multiplies the signal of the second green pixels in the present streaming mode.", ""},
    {kRedGain, kAnalogControl, "", "Multiplies the signal of the red pixels in the present streaming mode.", ""},
    {kClockSpeed, kDeviceControl, "", "Selects the pixel clock of the present streaming mode.", ""},
    {kTapConfiguration, kTransportLayerControl, "", "Selects the number of sensor outputs that are read in the present streaming mode.", ""},
    {kSpeed, kAcquisitionControl, "", "Selects the frame rate in video mode, and the pixel clock of still captures in still mode.", ""},
    {kAbsoluteFocus, kOpticControl, "", "Sets the focus of the lens as an absolute position.", ""},
    {kAutoIrisMaximum, kOpticControl, "", "Limits the iris value that automatic control selects.", ""},
    {kBlackLevel, kAnalogControl, "DN", "Sets the sample value of black.", ""},
    {kHardwareTrigger, kAcquisitionControl, "", "Lets still captures wait for a pulse at the trigger input.", ""},
    {kAutoGainMinimum, kAnalogControl, "", "Limits the gain that automatic control selects.", ""},
    {kPowerMode, kDeviceControl, "", "Selects the power supply: the USB cable, or a Y-cable.", ""},
    {kFan, kDeviceControl, "", "Switches the fan.", ""},
    {kFocalLength, kOpticControl, "mm", "Sets the focal length of the lens.", ""},
    {kHue, kColorControl, "\u00B0", "Rotates the colours.", ""},
    {kIrisLatency, kOpticControl, "ms", "", ""},
    {kMemory, kDeviceControl, "MB", "Reports the size of the camera's memory.", ""},
    {kSaturation, kColorControl, "", "Sets the strength of the colours.", ""},
    {kSharpness, kAnalogControl, "", "Sets the sharpness of the image.", ""},
    {kSynchronizationMode, kAcquisitionControl, "", "", ""},
    {kSensorTemperature, kDeviceControl, "\u00B0C", "Reports the temperature of the sensor.", ""},
    {kThresholdHigh, kUncategorised, "DN", "", ""},
    {kThresholdLow, kUncategorised, "DN", "", ""},
    {kTriggerMode, kAcquisitionControl, "", "Selects how a trigger controls the exposure.", ""},
    {kCustomDigitalGain, kAnalogControl, "", "", ""},
    // clang-format on
};

constexpr bool areDistinct() {
    for (std::size_t i = 0; i < std::size(kMetadata); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (kMetadata[i].name == kMetadata[j].name) {
                return false;
            }
        }
    }
    return true;
}
static_assert(std::size(kMetadata) == 106 && areDistinct(), "one row for each of PropertyNames.h");

constexpr PropertyMetadata kNoMetadata{"", "", "", "", ""};

} // namespace

const PropertyMetadata& getPropertyMetadata(std::string_view name) {
    const auto* const row = std::find_if(std::begin(kMetadata), std::end(kMetadata),
                                         [name](const PropertyMetadata& r) { return name == r.name; });
    return row == std::end(kMetadata) ? kNoMetadata : *row;
}

const std::vector<PropertyMetadata>& getPropertiesWithIncrement() {
    static const auto& rows = *new std::vector<PropertyMetadata>([] { // never destroyed: cameras may connect at exit
        std::vector<PropertyMetadata> found;
        std::copy_if(std::begin(kMetadata), std::end(kMetadata), std::back_inserter(found),
                     [](const PropertyMetadata& row) { return *row.incrementProperty != 0; });
        return found;
    }());
    return rows;
}

} // namespace CameraInterface
