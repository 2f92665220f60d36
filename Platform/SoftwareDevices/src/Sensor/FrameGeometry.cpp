// SPDX-License-Identifier: Apache-2.0

#include "Sensor/FrameGeometry.h"

#include <algorithm>

#include "Refusal.h"

namespace SoftwareDevices {

namespace {

constexpr PixelLayout kPixelLayouts[] = {
    // code, channels, bytes per sample
    {0, 1, 1}, {1, 1, 2}, {2, 3, 1}, {6, 4, 1}, {7, 3, 2},
};

constexpr std::uint16_t kBinning = 1;

template <class List, class Value>
bool contains(const List& list, const Value& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

bool canSample(const SamplingCapability& capability, std::uint16_t factor, std::uint16_t flags) {
    if (factor == 1) {
        return flags <= kBinning;
    }
    return flags == 0          ? contains(capability.subsampling, factor)
           : flags == kBinning ? contains(capability.binning, factor)
                               : false;
}

bool isInside(std::uint32_t offset, std::uint32_t length, std::uint32_t unit, std::uint32_t sensorLength) {
    return length > 0 && offset % unit == 0 && length % unit == 0 && std::uint64_t{offset} + length <= sensorLength;
}

std::uint32_t sampled(std::uint32_t length, std::uint32_t factor, bool wholeCells) {
    const std::uint32_t samples = length / factor;
    return wholeCells ? samples & ~1u : samples;
}

} // namespace

const PixelLayout* findPixelLayout(std::uint32_t code) {
    const auto* found = std::find_if(std::begin(kPixelLayouts), std::end(kPixelLayouts),
                                     [code](const PixelLayout& layout) { return layout.code == code; });
    return found == std::end(kPixelLayouts) ? nullptr : found;
}

ORVEX_FRAME_FORMAT wholeSensor(const DeviceDescription& description) {
    return {0, 0, description.sensorWidth, description.sensorHeight, description.pixelFormats.front(), 1, 0, 1, 0};
}

void checkFormat(const DeviceDescription& description, const ORVEX_FRAME_FORMAT& format) {
    const SamplingCapability capability = description.sampling.value_or(SamplingCapability{});
    const bool sameSampling = format.samplingX == format.samplingY && format.flagsX == format.flagsY;
    require(isInside(format.xOffset, format.width, description.unitWidth, description.sensorWidth) &&
                isInside(format.yOffset, format.height, description.unitHeight, description.sensorHeight) &&
                findPixelLayout(format.pixelFormat) && contains(description.pixelFormats, format.pixelFormat) &&
                canSample(capability, format.samplingX, format.flagsX) &&
                canSample(capability, format.samplingY, format.flagsY) && (sameSampling || !capability.sameFactors),
            kInvalidFormat);
    const FrameGeometry geometry = frameGeometry(description, format);
    require(geometry.width > 0 && geometry.height > 0, kInvalidFormat);
}

FrameGeometry frameGeometry(const DeviceDescription& description, const ORVEX_FRAME_FORMAT& format) {
    const bool wholeCells = description.colorFormat != ColorFormat::MONO;
    return {sampled(format.width, format.samplingX, wholeCells), sampled(format.height, format.samplingY, wholeCells),
            *findPixelLayout(format.pixelFormat)};
}

} // namespace SoftwareDevices
