// SPDX-License-Identifier: Apache-2.0

#include "Boundary/BoundaryCall.h"
#include "Sensor/BayerConversion.h"

// Conversion of Bayer frames, plain and extended.

namespace SoftwareDevices::Boundary {

namespace {

/// The destination of a conversion.
struct Target {
    std::uint32_t channels;
    std::uint32_t bytesPerSample;
};

constexpr Target kMono8{1, 1};
constexpr Target kMono16{1, 2};
constexpr Target kBgr24{3, 1};
constexpr Target kBgra32{4, 1};
constexpr Target kBgr48{3, 2};

template <class Parameters>
uint32_t convert(Operation operation, void* handle, const Target& target, uint8_t* destination, const uint8_t* source,
                 uint32_t width, uint32_t height, uint32_t pixelFormat, const Parameters* parameters) {
    return onCamera(operation, handle,
                    {static_cast<double>(width), static_cast<double>(height), static_cast<double>(pixelFormat)},
                    [&](Session& session) {
                        requirePointer(destination);
                        requirePointer(source);
                        requirePointer(parameters);
                        const DeviceDescription& description = session.device->description();
                        require(session.device->hardware().hasSensor() && description.colorFormat != ColorFormat::MONO,
                                kUnsupported);
                        require(width > 0 && height > 0 && pixelFormat + 1 == target.bytesPerSample, kInvalidFormat);
                        develop(rawFrame(description, source, width, height, target.bytesPerSample), destination,
                                target.channels, developmentOf(*parameters));
                    });
}

uint32_t convertExtended(Operation operation, void* handle, const Target& target, uint8_t* destination,
                         const uint8_t* source, const ORVEX_IMAGE_FORMAT* format,
                         const ORVEX_CONVERSION_PARAMS* parameters) {
    const ORVEX_IMAGE_FORMAT given =
        format ? *format : ORVEX_IMAGE_FORMAT{}; // without a format, there is nothing to convert
    return convert(operation, handle, target, destination, source, given.width, given.height, given.pixelFormat,
                   parameters);
}

} // namespace

#define SOFTWARE_DEVICES_CONVERSION(role, target)                                                                      \
    uint32_t role(void* handle, uint8_t* destination, const uint8_t* source, uint32_t width, uint32_t height,          \
                  uint32_t pixelFormat, const ORVEX_CONVERSION* parameters) noexcept {                                 \
        return convert(Operation::role, handle, target, destination, source, width, height, pixelFormat, parameters);  \
    }                                                                                                                  \
    uint32_t role##Ex(void* handle, uint8_t* destination, const uint8_t* source, const ORVEX_IMAGE_FORMAT* format,     \
                      const ORVEX_CONVERSION_PARAMS* parameters) noexcept {                                            \
        return convertExtended(Operation::role##Ex, handle, target, destination, source, format, parameters);          \
    }

SOFTWARE_DEVICES_CONVERSION(sdkConvertToMono8, kMono8)
SOFTWARE_DEVICES_CONVERSION(sdkConvertToMono16, kMono16)
SOFTWARE_DEVICES_CONVERSION(sdkConvertToBgr24, kBgr24)
SOFTWARE_DEVICES_CONVERSION(sdkConvertToBgra32, kBgra32)
SOFTWARE_DEVICES_CONVERSION(sdkConvertToBgr48, kBgr48)

#undef SOFTWARE_DEVICES_CONVERSION

} // namespace SoftwareDevices::Boundary
