// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "Boundary/BoundaryCall.h"

// Properties and frame format.

namespace SoftwareDevices::Boundary {

uint32_t sdkGetProperty(void* handle, uint32_t number, float* value, int32_t* flags) noexcept {
    return onCamera(Operation::sdkGetProperty, handle, {static_cast<double>(number)}, [&](Session& session) {
        requirePointer(value);
        requirePointer(flags);
        const PropertyRow row = session.device->property(number);
        *value = row.value;
        *flags = row.flags;
    });
}

uint32_t sdkSetProperty(void* handle, uint32_t number, float value, int32_t flags) noexcept {
    return onCamera(Operation::sdkSetProperty, handle,
                    {static_cast<double>(number), static_cast<double>(value), static_cast<double>(flags)},
                    [&](Session& session) { session.device->writeProperty(number, value, flags); });
}

uint32_t sdkPropertyRange(void* handle, uint32_t number, float* minimum, float* maximum, float* defaultValue,
                          int32_t* flags) noexcept {
    return onCamera(Operation::sdkPropertyRange, handle, {static_cast<double>(number)}, [&](Session& session) {
        requirePointer(minimum);
        requirePointer(maximum);
        requirePointer(defaultValue);
        requirePointer(flags);
        const PropertyRow row = session.device->property(number);
        *minimum = row.minimum;
        *maximum = row.maximum;
        *defaultValue = row.defaultValue;
        *flags = row.rangeFlags;
    });
}

uint32_t sdkSetHardwareTrigger(void* handle, uint32_t enable) noexcept {
    return onCamera(Operation::sdkSetHardwareTrigger, handle, {static_cast<double>(enable)}, [&](Session& session) {
        require(enable <= 1, kInvalidArgument);
        session.device->setHardwareTrigger(enable != 0);
    });
}

uint32_t sdkGetPowerMode(void* handle, uint32_t* mode) noexcept {
    return onCamera(Operation::sdkGetPowerMode, handle, {}, [&](Session& session) {
        requirePointer(mode);
        *mode = session.device->powerMode();
    });
}

uint32_t sdkSetPowerMode(void* handle, uint32_t mode) noexcept {
    return onCamera(Operation::sdkSetPowerMode, handle, {static_cast<double>(mode)},
                    [&](Session& session) { session.device->setPowerMode(mode); });
}

uint32_t sdkGetFormat(void* handle, ORVEX_FRAME_FORMAT* format, float* frameRate) noexcept {
    return onCamera(Operation::sdkGetFormat, handle, {}, [&](Session& session) {
        requirePointer(format);
        requirePointer(frameRate);
        *format = session.device->format();
        *frameRate = session.device->frameRate();
    });
}

uint32_t sdkSetFormat(void* handle, const ORVEX_FRAME_FORMAT* format, float frameRate) noexcept {
    return onCamera(Operation::sdkSetFormat, handle, {static_cast<double>(frameRate)}, [&](Session& session) {
        requirePointer(format);
        session.device->setFormat(*format, frameRate);
    });
}

uint32_t sdkEnumAvailableFrameRates(void* handle, uint32_t count, float* rates) noexcept {
    return onHandle(Operation::sdkEnumAvailableFrameRates, handle, uint32_t{0}, {static_cast<double>(count)},
                    [&](Session& session) {
                        session.device->requirePresent();
                        require(count == 0 || rates != nullptr, kInvalidArgument);
                        const std::vector<float> available = session.device->frameRates();
                        std::copy_n(available.begin(), std::min<std::size_t>(count, available.size()), rates);
                        return static_cast<uint32_t>(available.size());
                    });
}

uint32_t sdkGetSamplingDescription(void* handle, ORVEX_SAMPLING_DESCRIPTION* description) noexcept {
    return onCamera(Operation::sdkGetSamplingDescription, handle, {}, [&](Session& session) {
        constexpr std::uint8_t kSameFactors = 0x80;
        requirePointer(description);
        const SamplingCapability sampling = session.device->sampling();
        *description = {};
        description->flags = sampling.sameFactors ? kSameFactors : 0;
        description->subsamplingCount = static_cast<std::uint8_t>(sampling.subsampling.size());
        description->binningCount = static_cast<std::uint8_t>(sampling.binning.size());
        std::copy(sampling.subsampling.begin(), sampling.subsampling.end(), description->subsamplingFactors);
        std::copy(sampling.binning.begin(), sampling.binning.end(), description->binningFactors);
    });
}

} // namespace SoftwareDevices::Boundary
