// SPDX-License-Identifier: Apache-2.0

#include "Camera/ComputedColor.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string>

#include "Terminal/Numbers.h"

namespace QuillTool {

using Imaging::IMAGE_FORMAT;

namespace {

struct ComputedColor {
    unsigned bitsPerPixel;
    PixelLayout layout;
};

/// Maps the bits of an SDK pixel format to the layout that the SDK delivers. Alpha is opaque.
constexpr std::array kComputedColors{ComputedColor{24, {IMAGE_FORMAT::BGR, 8}},
                                     ComputedColor{32, {IMAGE_FORMAT::BGRA, 8}},
                                     ComputedColor{48, {IMAGE_FORMAT::BGR, 16}}};

} // namespace

std::optional<PixelLayout> findComputedColor(unsigned bitsPerPixel) {
    const auto* found =
        std::find_if(kComputedColors.begin(), kComputedColors.end(),
                     [&](const ComputedColor& candidate) { return candidate.bitsPerPixel == bitsPerPixel; });
    return found == kComputedColors.end() ? std::nullopt : std::optional(found->layout);
}

std::unique_ptr<Imaging::Image> withComputedColor(std::unique_ptr<Imaging::Image> image) {
    const std::optional<PixelLayout> layout = findComputedColor(image->getBitDepth());
    return layout ? Imaging::createImage(image->getWidth(), image->getHeight(), image->getData(), layout->bitDepth,
                                         image->isLittleEndian(), layout->format)
                  : std::move(image);
}

std::optional<PixelLayout> findDeliveredLayout(CameraInterface::Camera& camera) {
    namespace PropertyNames = CameraInterface::PropertyNames;
    try {
        const auto bits = parseWholeNumber(camera.getProperty(PropertyNames::kPixelFormat).getValue());
        if (const auto computed = findComputedColor(static_cast<unsigned>(bits.value_or(0)))) {
            return computed;
        }
        const std::string sensor = camera.getProperty(PropertyNames::kColorFormat).getValue();
        const auto format = Imaging::findFormat(sensor == "MONO" ? sensor : "BAYER_" + sensor);
        return bits && format ? std::optional(PixelLayout{*format, static_cast<unsigned>(*bits)}) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace QuillTool
