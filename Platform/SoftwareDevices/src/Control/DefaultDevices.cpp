// SPDX-License-Identifier: Apache-2.0

#include "SoftwareDevices.h"

namespace SoftwareDevices {

namespace {

/// The devices below that have a property.
enum Model : unsigned { kColor = 1, kMono = 2, kTiming = 4, kEvery = kColor | kMono | kTiming };

/// A row of the devices' settings. Times are in milliseconds, temperatures in degrees Celsius, gains are factors.
struct Setting {
    std::uint32_t number;
    unsigned models;
    float minimum;
    float maximum;
    float defaultValue;
    std::int32_t rangeFlags = 0;
};

constexpr Setting kSettings[] = {
    // number, models, minimum, maximum, default, flags of the range
    {0, kColor | kMono, -100, 100, 0},                        // brightness
    {1, kColor | kMono, 0, 3, 1},                             // contrast
    {2, kColor | kTiming, -180, 180, 0},                      // hue, degrees
    {3, kColor | kTiming, 0, 2, 1},                           // saturation
    {4, kColor, 0, 10, 0},                                    // sharpness
    {5, kColor | kMono, 0.25f, 4, 1},                         // gamma
    {20, kEvery, 0.02f, 2000, 10},                            // video exposure
    {21, kMono, 0, 100, 100},                                 // iris
    {22, kMono, 0, 1000, 500},                                // focus
    {40, kColor | kTiming, 1, 16, 1},                         // video gain, and by filter: red, blue, green one and two
    {41, kColor | kTiming, 0.5f, 4, 1},                       //
    {42, kColor | kTiming, 0.5f, 4, 1},                       //
    {43, kColor | kTiming, 0.5f, 4, 1},                       //
    {44, kColor | kTiming, 0.5f, 4, 1},                       //
    {50, kEvery, 0.02f, 10000, 10},                           // still exposure
    {51, kEvery, 1, 16, 1},                                   // still gain, and by filter: red, green one and two, blue
    {52, kColor | kTiming, 0.5f, 4, 1},                       //
    {53, kColor | kTiming, 0.5f, 4, 1},                       //
    {54, kColor | kTiming, 0.5f, 4, 1},                       //
    {55, kColor | kTiming, 0.5f, 4, 1},                       //
    {56, kEvery, 0, 1000, 0},                                 // still strobe delay
    {64, kColor | kTiming, 0, 8, 2},                          // demosaic method
    {65, kColor | kTiming, 0, 15, 0},                         // correction matrix
    {66, kColor | kTiming, 0, 3, 0},                          // flipping
    {69, kColor | kTiming, -1, 1, 0},                         // digital white balance U and V
    {70, kColor | kTiming, -1, 1, 0},                         //
    {71, kColor | kTiming, 0.5f, 8, 1},                       // digital gain, and by filter: red, green, blue
    {72, kColor, 0.5f, 8, 1},                                 //
    {73, kColor, 0.5f, 8, 1},                                 //
    {74, kColor, 0.5f, 8, 1},                                 //
    {85, kMono, 0, 4095, 2048},                               // absolute focus
    {86, kColor | kMono, 0, 255, 0},                          // black level, sample values
    {96, kMono, 0, 100, 0},                                   // still exposure knees
    {97, kMono, 0, 100, 0},                                   //
    {98, kMono, 0, 100, 0},                                   //
    {100, kEvery, 0, 1000, 0},                                // still exposure delay
    {103, kColor | kTiming, 0, 255, 110},                     // auto exposure target
    {106, kColor | kTiming, 0, 3, 1},                         // still clock speed
    {107, kColor | kTiming, 1, 2000, 200},                    // auto exposure maximum
    {108, kColor | kTiming, -40, 125, 38.5f, kRangeReadOnly}, // camera temperature
    {109, kTiming, 0, 1, 0},                                  // tap correction
    {110, kColor | kMono, 0, 3, 0},                           // trigger pin
    {111, kColor, 0, 4, 1},                                   // custom digital gain
    {113, kTiming, 0, 1000, 0},                               // burst exposure interval
    {115, kTiming, 0, 256, 256, kRangeReadOnly},              // memory, megabytes
    {116, kColor | kTiming, 0, 1000, 1},                      // still strobe duration
    {118, kTiming, 0, 1, 0},                                  // fan
    {119, kMono | kTiming, 0, 2, 0},                          // synchronization mode
    {120, kTiming, 1, 16, 1},                                 // burst capture count
    {123, kMono, 0, 100, 100},                                // auto iris maximum
    {126, kColor, 0, 3, 0},                                   // video clock speed
    {126, kTiming, 0, 2, 0},                                  //
    {165, kMono, 0, 1023, 64},                                // threshold low and high, sample values
    {166, kMono, 0, 1023, 960},                               //
    {167, kTiming, -40, 125, 41.25f, kRangeReadOnly},         // sensor temperature
    {172, kColor, 0, 3, 1},                                   // strobe pin
    {173, kColor, 0, 1, 0},                                   // trigger mode
    {173, kTiming, 0, 7, 0},                                  //
    {174, kMono, 4, 48, 12},                                  // focal length, millimetres
    {175, kMono, 0, 500, 50},                                 // iris latency
    {176, kMono, 0, 1, 0},                                    // video tap configuration
    {176, kTiming, 0, 4, 4},                                  //
    {177, kMono, 0, 1, 0},                                    // still tap configuration
    {177, kTiming, 0, 4, 4},                                  //
    {186, kColor, 1, 16, 1},                                  // auto gain minimum
};

std::vector<PropertyRow> settingsOf(Model model) {
    std::vector<PropertyRow> rows;
    for (const Setting& setting : kSettings) {
        if (setting.models & model) {
            rows.push_back({setting.number, setting.defaultValue, setting.minimum, setting.maximum,
                            setting.defaultValue, 0, setting.rangeFlags, true});
        }
    }
    return rows;
}

DeviceDescription deviceOf(std::uint32_t serial, std::uint32_t cameraId, const char* modelName) {
    DeviceDescription device;
    device.serial = serial;
    device.cameraId = cameraId;
    device.modelName = modelName;
    device.api = 0x02040107;
    device.driver = 0x02040003;
    device.noiseSeed = serial;
    return device;
}

DeviceDescription colorDevice() {
    DeviceDescription device = deviceOf(41500101, 1555, "Model 613");
    device.firmware = 0x0105;
    device.fpga = 0x0217;
    device.fpga2Version = 0x0114;
    device.hardwareRevision = 3;
    device.hardwareInterface = 3;
    device.powerMode = 0;
    device.sensorWidth = 2592;
    device.sensorHeight = 1944;
    device.unitWidth = 8;
    device.unitHeight = 2;
    device.colorFormat = ColorFormat::RGGB;
    device.bitDepth = 12;
    device.pixelFormats = {0, 1, 2, 6, 7};
    device.frameRates = {3.75f, 7.5f, 15};
    device.sampling = SamplingCapability{true, {2, 3, 4}, {2, 4}};
    device.properties = settingsOf(kColor);
    for (std::uint32_t i = 0; i < 6000; ++i) {
        device.usb3VisionFile.push_back(static_cast<std::uint8_t>(i * 37 + i / 251));
    }
    return device;
}

DeviceDescription monochromeDevice() {
    DeviceDescription device = deviceOf(41500102, 0x18A, "Model 08A");
    device.firmware = 0x0042; // older than cameras with a second FPGA
    device.fpga = 0x0112;
    device.hardwareRevision = 1;
    device.hardwareInterface = 0; // it cannot report its interface
    device.sensorWidth = 1280;
    device.sensorHeight = 1024;
    device.unitWidth = 4;
    device.unitHeight = 1;
    device.bitDepth = 10;
    device.bigEndian = true;
    device.frameRates = {7.5f, 15, 30, 60};
    device.sampling = SamplingCapability{true, {}, {2, 4}};
    device.properties = settingsOf(kMono);
    return device;
}

DeviceDescription timingDevice() {
    DeviceDescription device = deviceOf(41500103, 1584, "Model 630");
    device.firmware = 0x0203;
    device.fpga = 0x0301;
    device.fpga2Version = 0x0209;
    device.hardwareRevision = 2;
    device.hardwareInterface = 3;
    device.powerMode = 1;
    device.sensorWidth = 2048;
    device.sensorHeight = 1536;
    device.unitWidth = 8;
    device.unitHeight = 4;
    device.colorFormat = ColorFormat::GRBG;
    device.bitDepth = 12;
    device.hasRollingShutter = true;
    device.frameRates = {5, 10, 20};
    device.sampling = SamplingCapability{false, {2, 4}, {2, 3}};
    device.properties = settingsOf(kTiming);
    device.afeTiming = "timing_1A.0F.bin";
    return device;
}

} // namespace

std::vector<DeviceDescription> defaultDevices() {
    return {colorDevice(), monochromeDevice(), timingDevice()};
}

DeviceDescription bareDevice() {
    DeviceDescription device = deviceOf(41500104, 0x81, "Model 081");
    device.firmware = 0x0001;
    device.hardwareInterface = 0;
    device.hasHardwareTrigger = false;
    return device;
}

DeviceDescription gigeDevice() {
    DeviceDescription device = monochromeDevice();
    device.serial = 41500105;
    device.noiseSeed = device.serial;
    device.cameraId = 0x40080;
    device.modelName = "Model 40080";
    device.interfaceNumber = 4;
    device.hardwareInterface = 4;
    device.bigEndian = false;
    device.network = NetworkSettings{{0x00, 0x0A, 0x1B, 0x03, 0x04, 0xF5},
                                     {0xC0A80114, 0xFFFFFF00, 0xC0A80101},
                                     {0x00, 0x1B, 0x21, 0x3C, 0x9D, 0xF8},
                                     {0xC0A80102, 0xFFFFFF00, 0xC0A80101}};
    return device;
}

} // namespace SoftwareDevices
