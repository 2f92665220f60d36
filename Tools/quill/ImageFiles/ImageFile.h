// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <Quill.h>

namespace QuillTool {

/// Describes a raw frame.
struct RawDescription {
    Imaging::IMAGE_FORMAT format;
    unsigned width;
    unsigned height;
    unsigned bitDepth = 8;
    bool littleEndian = true;
};

/// The failure to read or write an image file. Its text names the file, the action and the reason.
class ImageFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads an image file: PNG (.png), PNM (.pgm, .ppm, .pnm, .pam) or, with a description, a raw frame in any other file.
/// Extensions match in upper and lower case.
///
/// Returns MONO, RGB or RGBA of 8 or 16 bits, or of 10 or 12 bits as given by the significant bits of a PNG or the
/// largest value of a PNM. PNM samples keep their values; those with a largest value below 255 are scaled to 8 bits.
/// PNG palettes, grey with alpha and transparent colours become RGB or RGBA.
/// @throws ImageFileError  unreadable, truncated, malformed, of the wrong size, or a raw frame without a description
std::unique_ptr<Imaging::Image> readImageFile(const std::string& path, const std::optional<RawDescription>& raw);

/// Writes an image atomically in the format of the extension: .png, .pgm (grey), .ppm (colour), .pnm (either), .pam
/// (grey, colour, alpha), .raw (bare pixels).
///
/// Converts a layout that the file format lacks if only the order of samples changes; writes a mosaic unchanged, as
/// grey. Samples of 10 or 12 bits keep their values in a PNM. A PNG scales them to 16 bits for viewers and records the
/// significant bits, from which readImageFile() restores the values. Except in .raw, samples are limited to the largest
/// value of the image's depth.
/// @throws ImageFileError  unknown extension, a layout that the format cannot hold, or a failure of the file system
void writeImageFile(const std::unique_ptr<Imaging::Image>& image, const std::string& path);

/// Checks that writeImageFile() supports the extension.
/// @throws ImageFileError
void requireWritableExtension(const std::string& path);

} // namespace QuillTool
