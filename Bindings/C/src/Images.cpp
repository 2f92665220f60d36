// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <vector>

#include <Quill.h>

#include "Blocks.h"
#include "Calls.h"
#include "Objects.h"
#include "Workspace.h"

using namespace CInterface;
using Imaging::Image;
using Imaging::IMAGE_FORMAT;

static_assert(QUILL_BAYER_BGGR == static_cast<int>(IMAGE_FORMAT::BAYER_BGGR) &&
              QUILL_BGRA == static_cast<int>(IMAGE_FORMAT::BGRA) &&
              QUILL_BGRA_PLANAR == static_cast<int>(IMAGE_FORMAT::BGRA_PLANAR));

namespace CInterface {

void giveLayout(const Image& image, quill_image_layout& layout) {
    quill_image_layout result{};
    result.data = image.getDataAddress();
    result.image_size = image.getImageSize();
    result.width = image.getWidth();
    result.height = image.getHeight();
    result.bit_depth = image.getBitDepth();
    result.bytes_per_channel = image.getBytesPerChannel();
    result.number_of_channels = image.getNumberOfChannels();
    result.number_of_planes = image.getNumberOfPlanes();
    result.bytes_per_pixel = image.getBytesPerPixel();
    result.stride = image.getStride();
    result.plane_stride = image.getPlaneStride();
    result.format = static_cast<quill_image_format>(image.getFormat());
    result.little_endian = image.isLittleEndian();
    toCaller(layout, result);
}

} // namespace CInterface

namespace {

template <typename Sample>
void giveSamples(const std::vector<Sample>& samples, Sample** data, size_t* count) {
    Block block;
    auto* const copy = static_cast<Sample*>(block.uninitialised(samples.size() * sizeof(Sample)));
    std::copy(samples.begin(), samples.end(), copy);
    block.give(copy, data);
    *count = samples.size();
}

} // namespace

quill_status quill_create_image(uint32_t width, uint32_t height, const void* data, size_t length, uint32_t bit_depth,
                                bool little_endian, quill_image_format format, quill_image* image, quill_error* error) {
    return call(error, [&] {
        requireAll(image);
        giveImage(Imaging::createImage(width, height, dataOf(data, length), bit_depth, little_endian,
                                       static_cast<IMAGE_FORMAT>(format)),
                  image);
    });
}

quill_status quill_image_get_layout(quill_image image, quill_image_layout* layout, quill_error* error) {
    return call(error, [&] {
        requireAll(layout);
        giveLayout(Use<ImageObject>(image.id)->image(), *layout);
    });
}

quill_status quill_image_get_pixel(quill_image image, uint32_t row, uint32_t column, double* channel,
                                   quill_error* error) {
    return call(error, [&] {
        requireAll(channel);
        const Imaging::Pixel pixel = Use<ImageObject>(image.id)->image().getPixel(row, column);
        std::copy(std::begin(pixel.channel), std::end(pixel.channel), channel);
    });
}

quill_status quill_image_get_8bit_image_data(quill_image image, unsigned char** data, size_t* length,
                                             quill_error* error) {
    return call(error, [&] {
        requireAll(data, length);
        giveSamples(Use<ImageObject>(image.id)->image().get8bitImageData(), data, length);
    });
}

quill_status quill_image_get_16bit_image_data(quill_image image, uint16_t** data, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(data, count);
        giveSamples(Use<ImageObject>(image.id)->image().get16bitImageData(), data, count);
    });
}

quill_status quill_image_release(quill_image image, quill_error* error) {
    return call(error, [&] { closeHandle<ImageObject>(image.id); });
}

quill_status quill_convert_image(quill_image image, quill_image_format format, quill_image* converted,
                                 quill_error* error) {
    return call(error, [&] {
        requireAll(converted);
        const Use<ImageObject> use(image.id);
        giveImage(Imaging::convertImage(use->image(), static_cast<IMAGE_FORMAT>(format)), converted);
    });
}

quill_status quill_camera_convert_image(quill_camera camera, quill_image image, quill_image_format format,
                                        quill_image* converted, quill_error* error) {
    return call(error, [&] {
        requireAll(converted);
        const CameraUse cameraUse(camera);
        // The camera takes an image of the caller's own, which a shared one is not.
        const auto copy = Imaging::cloneImage(Use<ImageObject>(image.id)->image());
        giveImage(cameraUse->convertImage(copy, static_cast<IMAGE_FORMAT>(format)), converted);
    });
}

quill_status quill_conversion_exists(quill_image_format from, quill_image_format to, bool* exists, quill_error* error) {
    return call(error, [&] {
        requireAll(exists);
        *exists = Imaging::conversionExists(static_cast<IMAGE_FORMAT>(from), static_cast<IMAGE_FORMAT>(to));
    });
}

quill_status quill_get_available_conversions(quill_conversion*** conversions, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(conversions, count);
        giveList(
            Imaging::getAvailableConversions(),
            [](Block& block, const auto& item) {
                quill_conversion conversion{};
                conversion.size = sizeof(conversion);
                conversion.key = item.first;
                conversion.name = block.text(item.second);
                return conversion;
            },
            conversions, count);
    });
}

quill_status quill_get_format_name(quill_image_format format, char** name, quill_error* error) {
    return call(error, [&] {
        requireAll(name);
        *name = copyText(Imaging::getFormatName(static_cast<IMAGE_FORMAT>(format)));
    });
}

quill_status quill_find_format(const char* name, bool* found, quill_image_format* format, quill_error* error) {
    return call(error, [&] {
        requireAll(name, found, format);
        const auto result = Imaging::findFormat(name);
        *found = result.has_value();
        if (result) {
            *format = static_cast<quill_image_format>(*result);
        }
    });
}
