// SPDX-License-Identifier: Apache-2.0
#pragma once

/**
 * @file
 * The control interface of the devices in software: describes and plugs cameras, inspects them, presents scenes,
 * injects faults and logs the calls that reach the devices. The library drives the same devices through two flat
 * libraries: the camera SDK (liborvexapi) and, while a device is a USB3 Vision camera, the USB3 Vision access library
 * (libtarnulibrary). A device decides at plugging and at every reboot: it becomes a USB3 Vision camera if the
 * information block in its flash selects that mode and matches the file stored with it.
 *
 * Every function is thread-safe. A function that takes a serial number throws std::invalid_argument if no such device
 * is plugged in. The three default devices exist from the first use on, unless startEmpty() was called before.
 */

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "OrvexApi/OrvexOperations.h"
#include "TarnuLibrary/TarnuOperations.h"

#if defined(_WIN32)
#    define SOFTWARE_DEVICES_EXPORT __declspec(dllexport)
#else
#    define SOFTWARE_DEVICES_EXPORT __attribute__((visibility("default")))
#endif
#if defined(_WIN32) && !defined(SOFTWARE_DEVICES_BUILDING)
#    define SOFTWARE_DEVICES_API __declspec(dllimport)
#else
#    define SOFTWARE_DEVICES_API SOFTWARE_DEVICES_EXPORT
#endif

/// Control of the devices in software.
namespace SoftwareDevices {

#define SOFTWARE_DEVICES_ENUMERATOR(role, ...) role,
#define SOFTWARE_DEVICES_ONE(...) +1 // NOLINT(bugprone-macro-parentheses): summands

/// The operations of the camera SDK, by role name, and those of the USB3 Vision access library.
enum class Operation : std::uint32_t {
    ORVEX_OPERATIONS(SOFTWARE_DEVICES_ENUMERATOR) TARNU_OPERATIONS(SOFTWARE_DEVICES_ENUMERATOR)
};

constexpr std::size_t kOperationCount = ORVEX_OPERATIONS(SOFTWARE_DEVICES_ONE) TARNU_OPERATIONS(SOFTWARE_DEVICES_ONE);

#undef SOFTWARE_DEVICES_ENUMERATOR
#undef SOFTWARE_DEVICES_ONE

/// The devices' error codes, as sdkGetLastErrorForCamera returns them. The library takes 20 to 22 and 83 for an
/// unsupported property.
enum ErrorCode : std::uint32_t {
    kNoError = 0,
    kInvalidStillFormat = 9,
    kCaptureEnded = 14, ///< cancelled, stopped or never started
    kPropertyUnsupported = 20,
    kPropertyNotWritable = 22, ///< exists, but cannot be written at the moment
    kCameraGone = 40,
    kTimedOut = 41,
    kInvalidArgument = 42,
    kOutOfRange = 43,
    kReadOnly = 44,
    kInvalidFormat = 45,
    kBusy = 46, ///< video streams, or another handle has JTAG access
    kUnsupported = 47,
    kInternalError = 48
};

/// Pixel arrangement of the sensor; the values are those of SDK property 80.
enum class ColorFormat { MONO = 0, RGGB = 8, GRBG = 9, GBRG = 10, BGGR = 11 };

constexpr std::int32_t kRangeReadOnly = 0x00010000; ///< in PropertyRow::rangeFlags

/// One numbered SDK property as the device holds it.
struct PropertyRow {
    std::uint32_t number = 0;
    float value = 0;
    float minimum = 0;
    float maximum = 0;
    float defaultValue = 0;
    std::int32_t flags = 0;      ///< passed with the value
    std::int32_t rangeFlags = 0; ///< passed with the range
    bool writable = true;        ///< false: a write fails with kPropertyNotWritable
};

/// The sampling factors of a sensor; sdkGetSamplingDescription returns them.
struct SamplingCapability {
    bool sameFactors = true; ///< horizontal and vertical factors are always equal
    std::vector<std::uint8_t> subsampling;
    std::vector<std::uint8_t> binning;
};

/// Addresses are IP address, subnet mask and gateway, first octet in the most significant byte.
struct NetworkSettings {
    std::array<std::uint8_t, 6> cameraMac{};
    std::array<std::uint32_t, 3> cameraAddresses{};
    std::array<std::uint8_t, 6> hostMac{};
    std::array<std::uint32_t, 3> hostAddresses{};
};

/// The description of a camera to plug in; every member may be changed. Without a sensor (width 0) it has no format, no
/// rates and no stream.
struct DeviceDescription {
    std::uint32_t serial = 0;
    std::uint32_t cameraId = 0;
    std::string modelName; ///< as a USB3 Vision camera
    std::uint32_t firmware = 0;
    std::uint32_t fpga = 0;
    std::uint32_t api = 0;
    std::uint32_t driver = 0;
    std::uint32_t hardwareRevision = 0;
    std::uint32_t interfaceNumber = 2;         ///< the interface that enumerates it: 1 to 3 USB, 4 GigE
    std::uint32_t hardwareInterface = 2;       ///< the interface that it reports; 0: it cannot report one
    std::optional<std::uint32_t> powerMode;    ///< 0 USB, 1 Y-cable
    std::optional<std::uint16_t> fpga2Version; ///< of the second FPGA, if there is one
    std::optional<NetworkSettings> network;    ///< of a GigE device
    std::chrono::milliseconds rebootTime{300}; ///< absence from the bus

    std::uint32_t sensorWidth = 0;
    std::uint32_t sensorHeight = 0;
    std::uint32_t unitWidth = 1; ///< widths and x offsets are multiples of it; even on a colour sensor
    std::uint32_t unitHeight = 1;
    ColorFormat colorFormat = ColorFormat::MONO;
    std::uint32_t bitDepth = 8; ///< 8 to 16; a 16-bit sample lies in 0 .. 2^bitDepth - 1
    bool bigEndian = false;
    bool hasHardwareTrigger = true;
    bool hasRollingShutter = false;
    std::vector<std::uint32_t> pixelFormats{0,
                                            1}; ///< accepted codes: 0, 1, and 2, 6, 7 for colour computed in the camera
    std::vector<float> frameRates; ///< ascending, at the fastest clock; the first clock speed is the fastest
    std::optional<SamplingCapability> sampling;
    float saturationExposure = 10; ///< milliseconds at gain 1 after which the brightest scene value fills a pixel
    std::uint32_t noiseSeed = 1;
    float noise = 1; ///< 0: none, 1: as an ordinary sensor

    std::vector<PropertyRow> properties; ///< without 80 to 84, which follow from the sensor

    std::string afeTiming;                    ///< name of the AFE timing file in flash; empty: none stored
    std::vector<std::uint8_t> usb3VisionFile; ///< stored with a matching information block; empty: none stored

    std::uint32_t jtagIdCode = 0x149511C3; ///< odd, like every IDCODE
    std::uint32_t jtagDataBits = 32;       ///< length of the JTAG data register, 1 to 65536
};

// ---- Plugging ----

/// Removes all devices, faults and the log. Open handles become stale.
SOFTWARE_DEVICES_API void startEmpty();

/// Returns the three default devices: 5-megapixel colour, 1.3-megapixel monochrome, and one with AFE timing and unequal
/// sampling factors.
SOFTWARE_DEVICES_API std::vector<DeviceDescription> defaultDevices();

/// Returns a camera whose FPGA is not loaded: it has versions, flash and JTAG, and refuses everything else.
SOFTWARE_DEVICES_API DeviceDescription bareDevice();

/// Returns a monochrome GigE camera.
SOFTWARE_DEVICES_API DeviceDescription gigeDevice();

SOFTWARE_DEVICES_API void plugDefaultDevices();

/// Plugs a device in as the last of its interface. Unplugs a device with the same serial number first.
/// @return its serial number
/// @throws std::invalid_argument  the description contradicts itself
SOFTWARE_DEVICES_API std::uint32_t plug(const DeviceDescription& description);

/// Unplugs a device: calls that are blocked in it return, and its handles become stale.
SOFTWARE_DEVICES_API void unplug(std::uint32_t serial);

/// Plugs an unplugged device in again: settings as after power-on, flash and scene unchanged.
SOFTWARE_DEVICES_API void replug(std::uint32_t serial);

SOFTWARE_DEVICES_API void unplugAll();

/// Returns the serial numbers on all interfaces, in order of plugging.
SOFTWARE_DEVICES_API std::vector<std::uint32_t> pluggedDevices();

// ---- Inspection ----

SOFTWARE_DEVICES_API bool hasProperty(std::uint32_t serial, std::uint32_t number);

/// @throws std::invalid_argument  the device has no such property
SOFTWARE_DEVICES_API PropertyRow property(std::uint32_t serial, std::uint32_t number);

/// Changes or adds a property with its range, unnoticed by the users of the camera.
SOFTWARE_DEVICES_API void setProperty(std::uint32_t serial, const PropertyRow& row);

SOFTWARE_DEVICES_API void setWritable(std::uint32_t serial, std::uint32_t number, bool writable);

/// Returns the format that sdkGetFormat would return. Region and offsets count sensor pixels; a frame is the region
/// divided by the sampling factors, rounded down to whole two-by-two cells on a colour sensor.
SOFTWARE_DEVICES_API ORVEX_FRAME_FORMAT frameFormat(std::uint32_t serial);
SOFTWARE_DEVICES_API float frameRate(std::uint32_t serial);

SOFTWARE_DEVICES_API std::uint32_t powerMode(std::uint32_t serial);
SOFTWARE_DEVICES_API bool hardwareTrigger(std::uint32_t serial);
SOFTWARE_DEVICES_API NetworkSettings network(std::uint32_t serial);

/// Whether the device is a USB3 Vision camera at present, and absent from every SDK enumeration.
SOFTWARE_DEVICES_API bool isUsb3Vision(std::uint32_t serial);

/// Whether at least one handle is open.
SOFTWARE_DEVICES_API bool isOpen(std::uint32_t serial);

/// Whether video streams, or still mode is enabled, on at least one handle.
SOFTWARE_DEVICES_API bool isStreaming(std::uint32_t serial);

constexpr std::uint32_t kFlashSize = 16u << 20;

SOFTWARE_DEVICES_API std::vector<std::uint8_t> flash(std::uint32_t serial, std::uint32_t address, std::uint32_t length);

/// Stores the bytes as they are, whether or not the flash is erased there.
SOFTWARE_DEVICES_API void writeFlash(std::uint32_t serial, std::uint32_t address,
                                     const std::vector<std::uint8_t>& bytes);

SOFTWARE_DEVICES_API std::uint8_t flashStatus(std::uint32_t serial);

/// Returns the RAM, which outlasts the reboot that starts a program in it; bytes never loaded are 0.
SOFTWARE_DEVICES_API std::vector<std::uint8_t> ram(std::uint32_t serial, std::uint32_t address, std::uint32_t length);

/// Returns the RAM address at which the last program was started, if any.
SOFTWARE_DEVICES_API std::optional<std::uint32_t> startedProgram(std::uint32_t serial);

// ---- JTAG ----

/// The states of a TAP (IEEE 1149.1).
enum class TapState : std::uint8_t {
    TestLogicReset,
    RunTestIdle,
    SelectDr,
    CaptureDr,
    ShiftDr,
    Exit1Dr,
    PauseDr,
    Exit2Dr,
    UpdateDr,
    SelectIr,
    CaptureIr,
    ShiftIr,
    Exit1Ir,
    PauseIr,
    Exit2Ir,
    UpdateIr
};

// Instructions; all others select BYPASS.
constexpr std::uint32_t kJtagInstructionBits = 8;
constexpr std::uint8_t kJtagIdCode = 0x01; ///< selected by a reset
constexpr std::uint8_t kJtagData = 0x02;   ///< selects a register that captures the value of its last update
constexpr std::uint8_t kJtagBypass = 0xFF;

/// Consecutive rising edges of TCK with equal signals.
struct JtagClocks {
    TapState state; ///< of the TAP before these edges
    bool tms;
    bool tdi;
    bool tdo; ///< true if the TAP does not drive it
    std::uint64_t clocks;
};

/// Whether JTAG access is open. It ends with the handle that opened it.
SOFTWARE_DEVICES_API bool isJtagOpen(std::uint32_t serial);

SOFTWARE_DEVICES_API TapState tapState(std::uint32_t serial);

/// Returns the content of the data register, least significant byte first.
SOFTWARE_DEVICES_API std::vector<std::uint8_t> jtagData(std::uint32_t serial);

/// Starts a new recording of TCK edges, which ends with takeJtagLog() or when the device leaves the bus.
SOFTWARE_DEVICES_API void startJtagLog(std::uint32_t serial);
SOFTWARE_DEVICES_API std::vector<JtagClocks> takeJtagLog(std::uint32_t serial);

// ---- Scene and capture ----

/// The picture in front of the sensor: rows from the top, 3 bytes (red, green, blue) per point, proportional to light.
/// It fills the sensor exactly.
struct Scene {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb;
};

/// Returns a landscape.
SOFTWARE_DEVICES_API Scene defaultScene();

SOFTWARE_DEVICES_API void presentScene(std::uint32_t serial, const Scene& scene);

/// If true, frames are delivered as soon as they are requested, regardless of frame rate and exposure time.
SOFTWARE_DEVICES_API void setAsFastAsAsked(std::uint32_t serial, bool asFastAsAsked);

/// Sends a pulse to the trigger input. It is kept until a still capture consumes it.
/// @return false if still mode with hardware trigger is not enabled; the pulse is lost
SOFTWARE_DEVICES_API bool triggerStill(std::uint32_t serial);

// ---- Faults ----

/// In place of a serial number: calls that name no camera (enumeration), or a camera that does not exist.
constexpr std::uint32_t kNoDevice = 0;

/// Makes the next @p count calls of one operation fail.
SOFTWARE_DEVICES_API void failNext(std::uint32_t serial, Operation operation, std::uint32_t count,
                                   std::uint32_t errorCode);

/// Makes the call-th boundary call from now fail, of any operation; 1 is the next.
SOFTWARE_DEVICES_API void failCall(std::uint64_t call, std::uint32_t errorCode);

/// Delays every call of the operation by @p time; zero ends the fault. Unplugging ends a delay that has begun.
SOFTWARE_DEVICES_API void delay(std::uint32_t serial, Operation operation, std::chrono::milliseconds time);

/// Loses the next @p count frames on their way.
SOFTWARE_DEVICES_API void dropFrames(std::uint32_t serial, std::uint32_t count);

/// Delivers only the first @p bytes bytes of the next @p count captured frames; the image size in the image format
/// agrees.
SOFTWARE_DEVICES_API void truncateFrames(std::uint32_t serial, std::uint32_t count, std::uint32_t bytes);

/// Unplugs the device during the call-th call of the operation from now (1: the next), which fails.
SOFTWARE_DEVICES_API void unplugDuring(std::uint32_t serial, Operation operation, std::uint32_t call);

/// Unplugs the device during the call-th boundary call from now, of any operation; a call of that device fails.
SOFTWARE_DEVICES_API void unplugCall(std::uint32_t serial, std::uint64_t call);

SOFTWARE_DEVICES_API void clearFaults();

// ---- Log ----

/// A call that reached the devices.
struct CallRecord {
    Operation operation;
    std::string name;            ///< role name
    std::uint32_t serial;        ///< kNoDevice if the call named no camera
    std::vector<double> numbers; ///< the call's numeric arguments, in order
    bool succeeded;
};

/// Starts a new recording.
SOFTWARE_DEVICES_API void startLog();

/// Ends the recording and returns it.
/// @return the calls in the order in which they ended
SOFTWARE_DEVICES_API std::vector<CallRecord> takeLog();

/// Returns the number of calls that reached the devices since the module was loaded.
SOFTWARE_DEVICES_API std::uint64_t boundaryCalls();
SOFTWARE_DEVICES_API std::uint64_t calls(Operation operation);

SOFTWARE_DEVICES_API const char* operationName(Operation operation);

} // namespace SoftwareDevices
