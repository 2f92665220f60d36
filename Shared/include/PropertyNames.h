// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The names under which cameras list their properties. Camera::getSupportedProperties() lists those that a
/// camera has.
///
/// The effect of Property::setValue(), by kind. A camera that does not answer, or refuses, causes a
/// KestrelException_Property: "PropertyReadFailure", "PropertyRangeReadFailure", "PropertyErrorUnknown" (when asked
/// whether the property can be written) or "PropertyWriteFailure".
///
/// Properties of the SDK's cameras:
/// - Numbers of the camera (all that are not listed below): limited to the range. A text that is not a number throws
///   std::invalid_argument or std::out_of_range. A difference of less than 1.2e-7 writes nothing. A write is ignored
///   while the property cannot be written.
/// - Names of the camera (correction matrix, demosaic method, flipping, clock speeds, tap configurations,
///   trigger mode): any other text throws KestrelException "PropertyValueConversion". A write is ignored while the
///   property cannot be written; a tap configuration cannot be written while the camera is streaming.
/// - Switches of the camera (auto exposure, tap corrections, fan): a text other than "Enabled" or "Disabled" throws
///   KestrelException_InvalidArgument "ArgumentUnhandled". While it cannot be written, the fan ignores a write; the
///   others throw "PropertyWriteFailure".
/// - Region (width, height, offsets): limited to the range, but not to a multiple of "Unit Width" or "Unit Height". A
///   text that is not an unsigned 32-bit number throws std::invalid_argument or std::out_of_range; "-1" is the largest
///   number.
/// - Frame rate: selects the first rate whose text contains the given text; if none does, throws std::invalid_argument.
///   A running stream is stopped and restarted, which throws what Camera::stopStream() and Camera::startStream() throw.
/// - Sampling description, pixel format, shutter and streaming mode, kept in memory: any text that is not in the list
///   throws KestrelException "PropertyValueConversion". The streaming mode ignores a write while the camera is
///   streaming.
/// - Timeout, kept in memory: not limited; a text that is not a number stores 0.
/// - Buffer last frame, strobe, strobe from start exposure: a text other than "Enabled" or "Disabled" throws
///   KestrelException "PropertyValueConversion". The next three properties throw it likewise.
/// - Hardware trigger: kept for the next connection. If it cannot be switched on again then, it reads "Disabled", and
///   the property-change callback runs.
/// - Power mode ("USB", "Y-Cable"): throws KestrelException_Property "PropertyUnknown" if the camera refuses.
/// - USB3 Vision mode, also of cameras in that mode: ignores a write while it cannot be written.
/// - Exposure to speed, which have a video and a still variant: as the variant that they stand for.
/// - Maximum and unit sizes: throw "PropertyReadOnly" if the camera reports them as writable; otherwise ignore a write.
/// - Descriptions of the camera (versions, serial number, colour format, endianness and so on): ignore every write.
///
/// Properties of simulated cameras store every text as it is; read-only ones ignore it.
namespace CameraInterface::PropertyNames {

inline constexpr const char* kAutoExposureMaximum = "Auto Exposure Maximum";
inline constexpr const char* kAutoExposureTarget = "Auto Exposure Target";
inline constexpr const char* kBrightness = "Brightness";
inline constexpr const char* kContrast = "Contrast";
inline constexpr const char* kCorrectionMatrix = "Correction Matrix";
inline constexpr const char* kColorFormat = "Color Format";
inline constexpr const char* kDemosaicMethod = "Demosaic Method";
inline constexpr const char* kDigitalGain = "Digital Gain";
inline constexpr const char* kBlueDigitalGain = "Blue Digital Gain";
inline constexpr const char* kGreenDigitalGain = "Green Digital Gain";
inline constexpr const char* kRedDigitalGain = "Red Digital Gain";
inline constexpr const char* kDigitalWhiteBalanceU = "Digital White Balance U";
inline constexpr const char* kDigitalWhiteBalanceV = "Digital White Balance V";
inline constexpr const char* kVideoExposure = "Video Exposure";
inline constexpr const char* kBurstExposureInterval = "Burst Exposure Interval";
inline constexpr const char* kFlipping = "Flipping";
inline constexpr const char* kFocus = "Focus";
inline constexpr const char* kVideoGain = "Video Gain";
inline constexpr const char* kBlueVideoGain = "Blue Video Gain";
inline constexpr const char* kGreenVideoGainOne = "Green Video Gain One";
inline constexpr const char* kGreenVideoGainTwo = "Green Video Gain Two";
inline constexpr const char* kRedVideoGain = "Red Video Gain";
inline constexpr const char* kGamma = "Gamma";
inline constexpr const char* kIris = "Iris";
inline constexpr const char* kMaximumHeight = "Maximum Height";
inline constexpr const char* kMaximumWidth = "Maximum Width";
inline constexpr const char* kStillClockSpeed = "Still Clock Speed";
inline constexpr const char* kVideoClockSpeed = "Video Clock Speed";
inline constexpr const char* kBurstCaptureCount = "Burst Capture Count";
inline constexpr const char* kStillExposure = "Still Exposure";
inline constexpr const char* kStillExposureDelay = "Still Exposure Delay";
inline constexpr const char* kStillGain = "Still Gain";
inline constexpr const char* kBlueStillGain = "Blue Still Gain";
inline constexpr const char* kGreenStillGainOne = "Green Still Gain One";
inline constexpr const char* kGreenStillGainTwo = "Green Still Gain Two";
inline constexpr const char* kRedStillGain = "Red Still Gain";
inline constexpr const char* kStillExposureKneeOne = "Still Exposure Knee One";
inline constexpr const char* kStillExposureKneeTwo = "Still Exposure Knee Two";
inline constexpr const char* kStillExposureKneeThree = "Still Exposure Knee Three";
inline constexpr const char* kStillStrobeDelay = "Still Strobe Delay";
inline constexpr const char* kStillStrobeDuration = "Still Strobe Duration";
inline constexpr const char* kStillTapConfiguration = "Still Tap Configuration";
inline constexpr const char* kStrobePin = "Strobe Pin";
inline constexpr const char* kVideoTapConfiguration = "Video Tap Configuration";
inline constexpr const char* kCameraTemperature = "Camera Temperature";
inline constexpr const char* kTriggerPin = "Trigger Pin";
inline constexpr const char* kUnitHeight = "Unit Height";
inline constexpr const char* kUnitWidth = "Unit Width";
inline constexpr const char* kFramerate = "Framerate";
inline constexpr const char* kEndianness = "Endianness";
inline constexpr const char* kAutoExposure = "Auto Exposure";
inline constexpr const char* kHardwareTapCorrection = "Hardware Tap Correction";
inline constexpr const char* kSoftwareTapCorrection = "Software Tap Correction";
inline constexpr const char* kBufferLastFrame = "Buffer Last Frame";
inline constexpr const char* kStrobeFromStartExposure = "Strobe From Start Exposure";
inline constexpr const char* kStrobe = "Strobe";
inline constexpr const char* kTimeout = "Timeout";
inline constexpr const char* kHeight = "Height";
inline constexpr const char* kWidth = "Width";
inline constexpr const char* kXOffset = "X Offset";
inline constexpr const char* kYOffset = "Y Offset";
inline constexpr const char* kSamplingDescription = "Sampling Description";
inline constexpr const char* kPixelFormat = "Pixel Format";
inline constexpr const char* kShutter = "Shutter";
inline constexpr const char* kSerialNumber = "Serial Number";
inline constexpr const char* kCameraId = "Camera ID";
inline constexpr const char* kModelName = "Model Name";
inline constexpr const char* kVendorName = "Vendor Name";
inline constexpr const char* kHardwareRevision = "Hardware Revision";
inline constexpr const char* kFpgaVersion = "FPGA Version";
inline constexpr const char* kUsb3VisionMode = "USB3 Vision Mode";
inline constexpr const char* kDriverVersion = "Driver Version";
inline constexpr const char* kApiVersion = "API Version";
inline constexpr const char* kFirmwareVersion = "Firmware Version";
inline constexpr const char* kHardwareInterface = "Hardware Interface";
inline constexpr const char* kFpga2Version = "FPGA2 Version";
inline constexpr const char* kAfeTimingVersion = "AFE Timing Version";
inline constexpr const char* kStreamingMode = "Streaming Mode";
inline constexpr const char* kExposure = "Exposure";
inline constexpr const char* kGain = "Gain";
inline constexpr const char* kBlueGain = "Blue Gain";
inline constexpr const char* kGreenGainOne = "Green Gain One";
inline constexpr const char* kGreenGainTwo = "Green Gain Two";
inline constexpr const char* kRedGain = "Red Gain";
inline constexpr const char* kClockSpeed = "Clock Speed";
inline constexpr const char* kTapConfiguration = "Tap Configuration";
inline constexpr const char* kSpeed = "Speed";
inline constexpr const char* kAbsoluteFocus = "Absolute Focus";
inline constexpr const char* kAutoIrisMaximum = "Auto Iris Maximum";
inline constexpr const char* kBlackLevel = "Black Level";
inline constexpr const char* kHardwareTrigger = "Hardware Trigger";
inline constexpr const char* kAutoGainMinimum = "Auto Gain Minimum";
inline constexpr const char* kPowerMode = "Power Mode";
inline constexpr const char* kFan = "Fan";
inline constexpr const char* kFocalLength = "Focal Length";
inline constexpr const char* kHue = "Hue";
inline constexpr const char* kIrisLatency = "Iris Latency";
inline constexpr const char* kMemory = "Memory";
inline constexpr const char* kSaturation = "Saturation";
inline constexpr const char* kSharpness = "Sharpness";
inline constexpr const char* kSynchronizationMode = "Synchronization Mode";
inline constexpr const char* kSensorTemperature = "Sensor Temperature";
inline constexpr const char* kThresholdHigh = "Threshold High";
inline constexpr const char* kThresholdLow = "Threshold Low";
inline constexpr const char* kTriggerMode = "Trigger Mode";
inline constexpr const char* kCustomDigitalGain = "Custom Digital Gain";

} // namespace CameraInterface::PropertyNames
