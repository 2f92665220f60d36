// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include <gst/video/video.h>

#include <Quill.h>

namespace QuillGStreamer {

/// The true layout of an image's bytes. For an image whose colour the camera computed, it differs from what the image
/// says (see Imaging::Image::getBitDepth()).
struct ImageLayout {
    Imaging::IMAGE_FORMAT format = Imaging::IMAGE_FORMAT::MONO;
    unsigned bytesPerSample = 0;
    bool littleEndian = true;
    bool isRelabelled = false; ///< the image's own format and depth are others
    unsigned width = 0;
    unsigned height = 0;

    explicit ImageLayout(const Imaging::Image& image);
    bool operator==(const ImageLayout& other) const;
};

/// A pixel layout that both the library and GStreamer know.
struct VideoFormat {
    Imaging::IMAGE_FORMAT format;
    unsigned bytesPerSample;
    bool littleEndian;     ///< of samples of two bytes
    const char* mediaType; ///< of caps
    const char* name;      ///< in caps
    unsigned samples;      ///< of a pixel
};

/// A frame rate in caps.
struct FrameRate {
    int numerator = 0;
    int denominator = 0; ///< 0: the camera does not say

    bool isKnown() const { return numerator > 0 && denominator > 0; }
    GstClockTime period() const;
};

/// The type of the element's property "format": IMAGE_FORMAT, with the library's names, or kAutomaticFormat.
GType getFormatType();
constexpr int kAutomaticFormat = -1;

/// Returns caps of all formats, in any size and at any rate.
GstCaps* makeTemplateCaps();
/// Returns caps of all formats in which images of a layout can be had: first the images' own, then those that the
/// library converts to.
/// @param format one of IMAGE_FORMAT, or kAutomaticFormat for all
GstCaps* makeCaps(const ImageLayout& layout, FrameRate rate, int format);
/// Returns the format that fixed caps name; null for others.
const VideoFormat* findVideoFormat(const GstCaps* caps);

/// Whether an image of the layout has the format already.
bool isSameFormat(const ImageLayout& layout, const VideoFormat& format);
/// Returns a new image in another format.
std::shared_ptr<const Imaging::Image> convert(const Imaging::Image& image, const ImageLayout& layout,
                                              const VideoFormat& format);

} // namespace QuillGStreamer
