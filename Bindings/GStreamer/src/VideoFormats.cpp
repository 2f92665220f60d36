// SPDX-License-Identifier: Apache-2.0

#include "VideoFormats.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <tuple>

namespace QuillGStreamer {

using Imaging::IMAGE_FORMAT;

namespace {

constexpr const char* kRaw = "video/x-raw";
constexpr const char* kBayer = "video/x-bayer";

// In the order in which conversions are offered: grey, which loses the colour, last. GStreamer has neither mosaics nor
// colour without alpha in 16 bits.
constexpr std::array kVideoFormats{
    VideoFormat{IMAGE_FORMAT::BAYER_RGGB, 1, true, kBayer, "rggb", 1},
    VideoFormat{IMAGE_FORMAT::BAYER_GRBG, 1, true, kBayer, "grbg", 1},
    VideoFormat{IMAGE_FORMAT::BAYER_GBRG, 1, true, kBayer, "gbrg", 1},
    VideoFormat{IMAGE_FORMAT::BAYER_BGGR, 1, true, kBayer, "bggr", 1},
    VideoFormat{IMAGE_FORMAT::RGB, 1, true, kRaw, "RGB", 3},
    VideoFormat{IMAGE_FORMAT::BGR, 1, true, kRaw, "BGR", 3},
    VideoFormat{IMAGE_FORMAT::RGBA, 1, true, kRaw, "RGBA", 4},
    VideoFormat{IMAGE_FORMAT::BGRA, 1, true, kRaw, "BGRA", 4},
    VideoFormat{IMAGE_FORMAT::RGBA, 2, true, kRaw, "RGBA64_LE", 4},
    VideoFormat{IMAGE_FORMAT::RGBA, 2, false, kRaw, "RGBA64_BE", 4},
    VideoFormat{IMAGE_FORMAT::BGRA, 2, true, kRaw, "BGRA64_LE", 4},
    VideoFormat{IMAGE_FORMAT::BGRA, 2, false, kRaw, "BGRA64_BE", 4},
    VideoFormat{IMAGE_FORMAT::MONO, 1, true, kRaw, "GRAY8", 1},
    VideoFormat{IMAGE_FORMAT::MONO, 2, true, kRaw, "GRAY16_LE", 1},
    VideoFormat{IMAGE_FORMAT::MONO, 2, false, kRaw, "GRAY16_BE", 1},
};

/// Colour that the camera computed, by the bits of a pixel that the image gives as its depth.
struct ComputedColor {
    unsigned bitsPerPixel;
    IMAGE_FORMAT format;
    unsigned bytesPerSample;
};

constexpr std::array kComputedColors{ComputedColor{24, IMAGE_FORMAT::BGR, 1}, ComputedColor{32, IMAGE_FORMAT::BGRA, 1},
                                     ComputedColor{48, IMAGE_FORMAT::BGR, 2}};

bool isReachable(const ImageLayout& layout, const VideoFormat& format) {
    return format.bytesPerSample == layout.bytesPerSample &&
           (format.bytesPerSample == 1 || format.littleEndian == layout.littleEndian) &&
           Imaging::conversionExists(layout.format, format.format);
}

} // namespace

ImageLayout::ImageLayout(const Imaging::Image& image)
    : format(image.getFormat()), bytesPerSample(image.getBytesPerChannel()), littleEndian(image.isLittleEndian()),
      width(image.getWidth()), height(image.getHeight()) {
    for (const ComputedColor& color : kComputedColors) {
        if (color.bitsPerPixel == image.getBitDepth()) {
            format = color.format;
            bytesPerSample = color.bytesPerSample;
            isRelabelled = true;
        }
    }
}

bool ImageLayout::operator==(const ImageLayout& other) const {
    const auto fields = [](const ImageLayout& layout) {
        return std::tie(layout.format, layout.bytesPerSample, layout.littleEndian, layout.isRelabelled, layout.width,
                        layout.height);
    };
    return fields(*this) == fields(other);
}

GstClockTime FrameRate::period() const {
    return isKnown() ? gst_util_uint64_scale_int(GST_SECOND, denominator, numerator) : GST_CLOCK_TIME_NONE;
}

GType getFormatType() {
    static const GType type = [] {
        static std::array<GEnumValue, 10> values{
            GEnumValue{kAutomaticFormat, "the camera's, or what downstream wants", "auto"}};
        auto* next = values.begin() + 1; // the rest stays zero, the end of the list
        for (const VideoFormat& format : kVideoFormats) {
            if (format.bytesPerSample == 1) {
                const bool isMosaic = format.mediaType == kBayer;
                *next++ = {static_cast<int>(format.format),
                           isMosaic ? "the camera's own mosaic" : "the camera's own, or converted",
                           g_intern_string(Imaging::getFormatName(format.format).c_str())};
            }
        }
        return g_enum_register_static("QuillSrcFormat", values.data());
    }();
    return type;
}

GstCaps* makeTemplateCaps() {
    GstCaps* const caps = gst_caps_new_empty();
    for (const char* mediaType : {kRaw, kBayer}) {
        GValue names = G_VALUE_INIT;
        g_value_init(&names, GST_TYPE_LIST);
        for (const VideoFormat& format : kVideoFormats) {
            if (format.mediaType == mediaType) {
                GValue name = G_VALUE_INIT;
                g_value_init(&name, G_TYPE_STRING);
                g_value_set_static_string(&name, format.name);
                gst_value_list_append_and_take_value(&names, &name);
            }
        }
        GstStructure* const structure = gst_structure_new_empty(mediaType);
        gst_structure_take_value(structure, "format", &names);
        gst_caps_append_structure(caps, structure);
    }
    gst_caps_set_simple(caps, "width", GST_TYPE_INT_RANGE, 1, G_MAXINT, "height", GST_TYPE_INT_RANGE, 1, G_MAXINT,
                        "framerate", GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1, nullptr);
    return caps;
}

GstCaps* makeCaps(const ImageLayout& layout, FrameRate rate, int format) {
    GstCaps* const caps = gst_caps_new_empty();
    for (const bool isOwn : {true, false}) {
        for (const VideoFormat& candidate : kVideoFormats) {
            const bool isWanted = format == kAutomaticFormat || format == static_cast<int>(candidate.format);
            if (isWanted && (isOwn ? isSameFormat(layout, candidate) : isReachable(layout, candidate))) {
                gst_caps_append_structure(
                    caps, gst_structure_new(candidate.mediaType, "format", G_TYPE_STRING, candidate.name, nullptr));
            }
        }
    }
    gst_caps_set_simple(caps, "width", G_TYPE_INT, static_cast<int>(layout.width), "height", G_TYPE_INT,
                        static_cast<int>(layout.height), nullptr);
    if (rate.isKnown()) {
        gst_caps_set_simple(caps, "framerate", GST_TYPE_FRACTION, rate.numerator, rate.denominator, nullptr);
    } else {
        gst_caps_set_simple(caps, "framerate", GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1, nullptr);
    }
    return caps;
}

const VideoFormat* findVideoFormat(const GstCaps* caps) {
    const GstStructure* const structure = gst_caps_get_structure(caps, 0);
    const char* const name = gst_structure_get_string(structure, "format");
    const auto* const found = std::find_if(kVideoFormats.begin(), kVideoFormats.end(), [&](const VideoFormat& format) {
        return gst_structure_has_name(structure, format.mediaType) && g_strcmp0(name, format.name) == 0;
    });
    return found == kVideoFormats.end() ? nullptr : found;
}

bool isSameFormat(const ImageLayout& layout, const VideoFormat& format) {
    return format.format == layout.format && format.bytesPerSample == layout.bytesPerSample &&
           (format.bytesPerSample == 1 || format.littleEndian == layout.littleEndian);
}

std::shared_ptr<const Imaging::Image> convert(const Imaging::Image& image, const ImageLayout& layout,
                                              const VideoFormat& format) {
    if (!layout.isRelabelled) {
        return Imaging::convertImage(image, format.format);
    }
    const auto relabelled = Imaging::createImage(layout.width, layout.height, image.getData(),
                                                 layout.bytesPerSample * 8, layout.littleEndian, layout.format);
    return Imaging::convertImage(*relabelled, format.format);
}

} // namespace QuillGStreamer
