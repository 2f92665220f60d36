// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Conversion.h"

#include <limits>
#include <stdexcept>
#include <utility>

#include "Imaging/BufferPool.h"
#include "Imaging/ByteOrder.h"
#include "Imaging/PixelConversion.h"

namespace Imaging {

namespace {

/// A key holds the low byte of each format.
constexpr unsigned kKeyMask = 0xFF;

unsigned short conversionKey(IMAGE_FORMAT from, IMAGE_FORMAT to) {
    return static_cast<unsigned short>((static_cast<unsigned>(from) & kKeyMask) * 256 +
                                       (static_cast<unsigned>(to) & kKeyMask));
}

/// The OpenCV depth of an image's samples.
int sampleDepth(const Image& image) {
    const unsigned bytes = image.getBytesPerChannel();
    if (bytes > 2) {
        throw std::runtime_error("Cannot handle greater than 2 bytes per channel.");
    }
    if (bytes == 0) {
        CV_Error(cv::Error::StsUnsupportedFormat, "An image without bits per sample has no element type.");
    }
    return bytes == 1 ? CV_8U : CV_16U;
}

bool canConvert(IMAGE_FORMAT from, IMAGE_FORMAT to) {
    const FormatDescription* source = findDescription(from);
    const FormatDescription* target = findDescription(to);
    return source != nullptr && target != nullptr && source != target && target->layout != Layout::Mosaic;
}

int matrixDimension(unsigned pixels) {
    if (pixels > static_cast<unsigned>(std::numeric_limits<int>::max())) {
        CV_Error(cv::Error::StsOutOfRange, "The image has more rows or columns than a matrix can have.");
    }
    return static_cast<int>(pixels);
}

} // namespace

std::map<unsigned short, std::string> getAvailableConversions() {
    std::map<unsigned short, std::string> conversions;
    for (std::size_t from = 0; from < kFormats.size(); ++from) {
        for (std::size_t to = 0; to < kFormats.size(); ++to) {
            const auto source = static_cast<IMAGE_FORMAT>(from);
            const auto target = static_cast<IMAGE_FORMAT>(to);
            if (canConvert(source, target)) {
                conversions.emplace(conversionKey(source, target),
                                    std::string(kFormats[from].name) + "_TO_" + kFormats[to].name);
            }
        }
    }
    return conversions;
}

bool conversionExists(IMAGE_FORMAT from, IMAGE_FORMAT to) {
    const auto keyed = [](IMAGE_FORMAT format) {
        return static_cast<IMAGE_FORMAT>(static_cast<unsigned>(format) & kKeyMask);
    };
    return canConvert(keyed(from), keyed(to));
}

std::unique_ptr<Image> convertImage(const std::unique_ptr<Image>& image, IMAGE_FORMAT format) {
    return image ? convertImage(*image, format) : cloneImage(image);
}

std::unique_ptr<Image> convertImage(const Image& image, IMAGE_FORMAT format) {
    if (image.getFormat() == format) {
        return cloneImage(image);
    }
    const int depth = sampleDepth(image);
    if (!canConvert(image.getFormat(), format)) {
        throw std::runtime_error("Conversion between selected formats is not possible.");
    }
    const FormatDescription& from = describe(image.getFormat());
    const FormatDescription& to = describe(format);
    const int width = matrixDimension(image.getWidth());
    const int height = matrixDimension(image.getHeight());
    const std::size_t planeBytes =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * image.getBytesPerChannel();
    const std::size_t sourceBytes = planeBytes * from.samplesPerPixel();
    const std::size_t targetBytes = planeBytes * to.samplesPerPixel();
    if (planeBytes == 0 || image.getImageSize() < sourceBytes) {
        throw std::invalid_argument("Image has fewer samples than its format needs.");
    }

    // Samples used in computations are swapped to machine order before and back afterwards.
    const bool swap =
        depth == CV_16U && image.isLittleEndian() != machineIsLittleEndian() && computesWithSamples(from, to);
    ScratchBuffer swapped(swap ? sourceBytes : 0);
    if (swap) {
        swapSampleBytes(image.getDataAddress(), swapped.data(), sourceBytes / 2);
    }
    std::vector<unsigned char> result = BufferPool::instance().take(targetBytes);
    auto* const bytes = const_cast<unsigned char*>(image.getDataAddress()); // only read
    const PixelView source(swap ? swapped.data() : bytes, width, height, depth, planeBytes, from);
    convertPixels(source, PixelView(result.data(), width, height, depth, planeBytes, to));
    if (swap) {
        swapSampleBytes(result.data(), result.data(), targetBytes / 2);
    }
    return createImage(image.getWidth(), image.getHeight(), std::move(result), image.getBitDepth(),
                       image.isLittleEndian(), format);
}

} // namespace Imaging
