// SPDX-License-Identifier: Apache-2.0
#pragma once

/**
 * The control side of the devices in software: describe a camera and plug it in, look inside it, show it a scene, make
 * it misbehave, read the log of the calls that reached it. The library drives the same devices through two flat
 * libraries: the camera SDK (liborvexapi) and, while a device is a USB3 Vision camera, the USB3 Vision access library
 * (libtarnulibrary). A device is a USB3 Vision camera from plugging or reboot to the next one when the information
 * block in its flash says so and vouches for the file stored with it.
 *
 * Every function is thread-safe. A function that takes a serial number throws std::invalid_argument when no such device
 * is plugged in. Three default devices are there from the first use on, unless startEmpty() was called before.
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
#    define SOFTWARE_DEVICES_API
#else
#    define SOFTWARE_DEVICES_API __attribute__((visibility("default")))
#endif

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

/// The devices' error codes, as sdkGetLastErrorForCamera answers them. 20 to 22 and 83 mean an unsupported property to
/// the library.
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
    kBusy = 46, ///< not while video streams, or while another has JTAG access
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
    std::int32_t flags = 0;      ///< travel with the value
    std::int32_t rangeFlags = 0; ///< travel with the range
    bool writable = true;        ///< false: a write fails with kPropertyNotWritable
};

/// What a sensor can sample; sdkGetSamplingDescription answers it.
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

/// A camera, to be changed at will and plugged in. Without a sensor (width 0) it has no format, no rates and no stream.
struct DeviceDescription {
    std::uint32_t serial = 0;
    std::uint32_t cameraId = 0;
    std::string modelName; ///< as a USB3 Vision camera
    std::uint32_t firmware = 0;
    std::uint32_t fpga = 0;
    std::uint32_t api = 0;
    std::uint32_t driver = 0;
    std::uint32_t hardwareRevision = 0;
    std::uint32_t interfaceNumber = 2;         ///< where it is enumerated: 1 to 3 USB, 4 GigE
    std::uint32_t hardwareInterface = 2;       ///< what it says of itself; 0: it cannot say
    std::optional<std::uint32_t> powerMode;    ///< 0 USB, 1 Y-cable
    std::optional<std::uint16_t> fpga2Version; ///< of the second FPGA, where there is one
    std::optional<NetworkSettings> network;    ///< of a GigE device
    std::chrono::milliseconds rebootTime{300}; ///< away from the bus

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
    float noise = 1; ///< 0: none, 1: that of an ordinary sensor

    std::vector<PropertyRow> properties; ///< besides 80 to 84, which follow from the sensor

    std::string afeTiming;                    ///< name of the AFE timing file in flash; empty: none stored
    std::vector<std::uint8_t> usb3VisionFile; ///< stored with a matching information block; empty: none stored

    std::uint32_t jtagIdCode = 0x149511C3; ///< odd, as every IDCODE
    std::uint32_t jtagDataBits = 32;       ///< length of the JTAG data register, 1 to 65536
};

// ---- Plugging ----

/// No devices, no faults, no log: where a test begins. Open handles become stale.
SOFTWARE_DEVICES_API void startEmpty();

/// The three default devices: 5-megapixel colour, 1.3-megapixel monochrome, and one with AFE timing and unequal
/// sampling factors.
SOFTWARE_DEVICES_API std::vector<DeviceDescription> defaultDevices();

/// A camera whose FPGA has not been loaded: versions, flash and JTAG, and no to every other question.
SOFTWARE_DEVICES_API DeviceDescription bareDevice();

/// A monochrome camera on the network.
SOFTWARE_DEVICES_API DeviceDescription gigeDevice();

SOFTWARE_DEVICES_API void plugDefaultDevices();

/// Plugs a device in as the last of its interface. A device of this serial number that is there already is unplugged
/// first.
/// @return its serial number
/// @throws std::invalid_argument  the description contradicts itself
SOFTWARE_DEVICES_API std::uint32_t plug(const DeviceDescription& description);

/// Pulls the plug: whoever is blocked in the device wakes, its handles are stale from now on.
SOFTWARE_DEVICES_API void unplug(std::uint32_t serial);

/// Brings an unplugged device back: settings as after power-on, flash and scene as they were.
SOFTWARE_DEVICES_API void replug(std::uint32_t serial);

SOFTWARE_DEVICES_API void unplugAll();

/// In order of plugging, on all interfaces.
SOFTWARE_DEVICES_API std::vector<std::uint32_t> pluggedDevices();

// ---- Looking inside ----

SOFTWARE_DEVICES_API bool hasProperty(std::uint32_t serial, std::uint32_t number);

/// @throws std::invalid_argument  the device has no such property
SOFTWARE_DEVICES_API PropertyRow property(std::uint32_t serial, std::uint32_t number);

/// Changes or adds a property, range and all, behind the back of whoever uses the camera.
SOFTWARE_DEVICES_API void setProperty(std::uint32_t serial, const PropertyRow& row);

SOFTWARE_DEVICES_API void setWritable(std::uint32_t serial, std::uint32_t number, bool writable);

/// What sdkGetFormat would answer. Region and offsets count sensor pixels; a frame is the region divided by the
/// sampling factors, on a colour sensor rounded down to whole cells of two by two.
SOFTWARE_DEVICES_API ORVEX_FRAME_FORMAT frameFormat(std::uint32_t serial);
SOFTWARE_DEVICES_API float frameRate(std::uint32_t serial);

SOFTWARE_DEVICES_API std::uint32_t powerMode(std::uint32_t serial);
SOFTWARE_DEVICES_API bool hardwareTrigger(std::uint32_t serial);
SOFTWARE_DEVICES_API NetworkSettings network(std::uint32_t serial);

/// It is a USB3 Vision camera at present, and no SDK enumeration shows it.
SOFTWARE_DEVICES_API bool isUsb3Vision(std::uint32_t serial);

/// At least one handle is open.
SOFTWARE_DEVICES_API bool isOpen(std::uint32_t serial);

/// Video streams or still mode is enabled on at least one handle.
SOFTWARE_DEVICES_API bool isStreaming(std::uint32_t serial);

constexpr std::uint32_t kFlashSize = 16u << 20;

SOFTWARE_DEVICES_API std::vector<std::uint8_t> flash(std::uint32_t serial, std::uint32_t address, std::uint32_t length);

/// Stores the bytes as they are, erased or not.
SOFTWARE_DEVICES_API void writeFlash(std::uint32_t serial, std::uint32_t address,
                                     const std::vector<std::uint8_t>& bytes);

SOFTWARE_DEVICES_API std::uint8_t flashStatus(std::uint32_t serial);

/// What was loaded into RAM, and outlasts the reboot that starts it; 0 where nothing was.
SOFTWARE_DEVICES_API std::vector<std::uint8_t> ram(std::uint32_t serial, std::uint32_t address, std::uint32_t length);

/// Where the last program was started in RAM, if one was.
SOFTWARE_DEVICES_API std::optional<std::uint32_t> startedProgram(std::uint32_t serial);

// ---- JTAG ----

/// The states of a TAP after IEEE 1149.1.
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

// Instructions; every other one selects BYPASS.
constexpr std::uint32_t kJtagInstructionBits = 8;
constexpr std::uint8_t kJtagIdCode = 0x01; ///< after a reset
constexpr std::uint8_t kJtagData = 0x02;   ///< a register that captures what it was last updated with
constexpr std::uint8_t kJtagBypass = 0xFF;

/// Equal rising edges of TCK in a row.
struct JtagClocks {
    TapState state; ///< in which they found the TAP
    bool tms;
    bool tdi;
    bool tdo; ///< true where the TAP drives nothing
    std::uint64_t clocks;
};

/// JTAG access is open. It ends with the handle that opened it.
SOFTWARE_DEVICES_API bool isJtagOpen(std::uint32_t serial);

SOFTWARE_DEVICES_API TapState tapState(std::uint32_t serial);

/// Content of the data register, least significant byte first.
SOFTWARE_DEVICES_API std::vector<std::uint8_t> jtagData(std::uint32_t serial);

/// Starts recording anew what is clocked, until takeJtagLog or until the device leaves the bus.
SOFTWARE_DEVICES_API void startJtagLog(std::uint32_t serial);
SOFTWARE_DEVICES_API std::vector<JtagClocks> takeJtagLog(std::uint32_t serial);

// ---- Scene and capture ----

/// What the camera looks at: rows from the top, 3 bytes (red, green, blue) per point, proportional to light. It fills
/// the sensor exactly.
struct Scene {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb;
};

/// A landscape.
SOFTWARE_DEVICES_API Scene defaultScene();

SOFTWARE_DEVICES_API void presentScene(std::uint32_t serial, const Scene& scene);

/// True: frames come as soon as they are asked for, without regard to frame rate and exposure time.
SOFTWARE_DEVICES_API void setAsFastAsAsked(std::uint32_t serial, bool asFastAsAsked);

/// A pulse on the trigger input. It is kept until a still capture takes it.
/// @return false: still mode with hardware trigger is not enabled, the pulse is lost
SOFTWARE_DEVICES_API bool triggerStill(std::uint32_t serial);

// ---- Faults ----

/// In place of a serial number: calls that name no camera (enumeration), or a camera that is not there.
constexpr std::uint32_t kNoDevice = 0;

/// The next calls of one operation fail.
SOFTWARE_DEVICES_API void failNext(std::uint32_t serial, Operation operation, std::uint32_t count,
                                   std::uint32_t errorCode);

/// The call-th boundary call from now fails, whatever it is; 1 is the next.
SOFTWARE_DEVICES_API void failCall(std::uint64_t call, std::uint32_t errorCode);

/// Every call of the operation takes so much longer; zero ends it. Unplugging ends a delay that has begun.
SOFTWARE_DEVICES_API void delay(std::uint32_t serial, Operation operation, std::chrono::milliseconds time);

/// The next frames are lost on their way.
SOFTWARE_DEVICES_API void dropFrames(std::uint32_t serial, std::uint32_t count);

/// Of the next captured frames only so many bytes arrive; the image format says so in its image size.
SOFTWARE_DEVICES_API void truncateFrames(std::uint32_t serial, std::uint32_t count, std::uint32_t bytes);

/// The device is unplugged in the middle of the call-th such call from now (1: the next), which fails.
SOFTWARE_DEVICES_API void unplugDuring(std::uint32_t serial, Operation operation, std::uint32_t call);

/// The device is unplugged in the call-th boundary call from now, whatever it is; a call of that device fails.
SOFTWARE_DEVICES_API void unplugCall(std::uint32_t serial, std::uint64_t call);

SOFTWARE_DEVICES_API void clearFaults();

// ---- Log ----

struct CallRecord {
    Operation operation;
    std::string name;            ///< role name
    std::uint32_t serial;        ///< kNoDevice where the call named no camera
    std::vector<double> numbers; ///< the call's numeric arguments, in order
    bool succeeded;
};

/// Starts recording anew.
SOFTWARE_DEVICES_API void startLog();

/// Ends the recording.
/// @return the calls in the order in which they ended
SOFTWARE_DEVICES_API std::vector<CallRecord> takeLog();

/// Calls that reached the devices since the module was loaded.
SOFTWARE_DEVICES_API std::uint64_t boundaryCalls();
SOFTWARE_DEVICES_API std::uint64_t calls(Operation operation);

SOFTWARE_DEVICES_API const char* operationName(Operation operation);

} // namespace SoftwareDevices
