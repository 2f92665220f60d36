// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <Quill.h>

namespace QuillTool {

/// What the bytes of a raw frame do not say about it.
struct RawDescription {
    Imaging::IMAGE_FORMAT format;
    unsigned width;
    unsigned height;
    unsigned bitDepth = 8;
    bool littleEndian = true;
};

/// A file that cannot be read or written as an image. The text names the file, what was tried and why it failed.
class ImageFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads an image file: PNG (.png), PNM (.pgm, .ppm, .pnm, .pam) or, with a description, the bare bytes of a frame in
/// any other file. Extensions match in upper and lower case.
///
/// PNG and PNM give MONO, RGB or RGBA of 8 or 16 bits, or of 10 or 12 where the file says so: a PNG by its significant
/// bits, a PNM by its largest value. PNM samples keep their values, but for largest values below 255, which are scaled
/// to 8 bits. PNG palettes, grey with alpha and transparent colours become RGB or RGBA.
/// @throws ImageFileError  unreadable, truncated, malformed, of the wrong size, or a raw frame without a description
std::unique_ptr<Imaging::Image> readImageFile(const std::string& path, const std::optional<RawDescription>& raw);

/// Writes an image, in the format that the extension names: .png, .pgm (grey), .ppm (colour), .pnm (either), .pam
/// (grey, colour, alpha), .raw (the bare bytes). The file appears whole or not at all.
///
/// Layouts that a file format does not know are converted where that changes nothing but the order of samples; a mosaic
/// is written as it lies, as grey. Samples of 10 or 12 bits keep their values in a PNM; a PNG has them scaled to 16
/// bits, so that a viewer shows them, and names the significant bits, by which readImageFile() restores the values.
/// Samples beyond the image's depth become its largest value, but in .raw.
/// @throws ImageFileError  unknown extension, a layout that the format cannot hold, or a failure of the file system
void writeImageFile(const std::unique_ptr<Imaging::Image>& image, const std::string& path);

/// Checks, before any work is done, that writeImageFile() knows the extension.
/// @throws ImageFileError
void requireWritableExtension(const std::string& path);

} // namespace QuillTool
