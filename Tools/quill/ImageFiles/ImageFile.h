// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <Quill.h>

namespace QuillTool {

class AtomicFile;
class TiffWriter;

/// Describes a raw frame.
struct RawDescription {
    Imaging::IMAGE_FORMAT format;
    unsigned width;
    unsigned height;
    unsigned bitDepth = 8;
    bool littleEndian = true;
};

/// What an image file records about the camera; empty texts are left out.
struct ImageOrigin {
    std::string model{};
    std::string serialNumber{};
};

/// Where an image is written to.
struct ImageTarget {
    ImageTarget(std::string filePath, std::string fileType = "") // NOLINT(google-explicit-constructor): a path is one
        : path(std::move(filePath)), type(std::move(fileType)) {}

    std::string path; ///< "-" is standard output
    std::string type; ///< an extension without its dot, such as "png"; empty: that of the path
    ImageOrigin origin;
};

/// The failure to read or write an image file. Its text names the file, the action and the reason.
class ImageFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The path of standard input and output.
constexpr std::string_view kStandardStream = "-";

/// Reads an image file: PNG (.png), PNM (.pgm, .ppm, .pnm, .pam), TIFF (.tif, .tiff, .dng) or, with a description, a
/// raw frame in any other file. Extensions match in upper and lower case. Standard input ("-") has the type that its
/// first bytes tell, or is a raw frame if a description is given.
///
/// Returns MONO, RGB or RGBA of 8 or 16 bits, or of 10 or 12 bits as given by the significant bits of a PNG or the
/// largest value of a PNM. PNM samples keep their values; those with a largest value below 255 are scaled to 8 bits.
/// TIFF files: see readTiff(). PNG palettes, grey with alpha and transparent colours become RGB or RGBA.
/// @throws ImageFileError  unreadable, truncated, malformed, of the wrong size, or a raw frame without a description
std::unique_ptr<Imaging::Image> readImageFile(const std::string& path, const std::optional<RawDescription>& raw);

/// Writes an image atomically in the format of the type: .png, .pgm (grey), .ppm (colour), .pnm (either), .pam (grey,
/// colour, alpha), .raw (bare pixels), .tif or .tiff (grey, colour, alpha), .dng (a mosaic). Writes to standard output
/// at once, and what the type needs to go back in, after it is complete.
///
/// Converts a layout that the file format lacks if only the order of samples changes; writes a mosaic unchanged, as
/// grey except in .dng. Samples of 10 or 12 bits keep their values in a PNM and a TIFF. A PNG scales them to 16 bits
/// for viewers and records the significant bits, from which readImageFile() restores the values. Except in .raw,
/// samples are limited to the largest value of the image's depth.
/// @throws ImageFileError  unknown type, a layout that the format cannot hold, or a failure of the file system
void writeImageFile(const std::unique_ptr<Imaging::Image>& image, const ImageTarget& target);

/// Returns the bytes that writeImageFile() would write.
/// @param type  such as "png"
/// @throws ImageFileError
std::string encodeImageFile(const std::unique_ptr<Imaging::Image>& image, const std::string& type,
                            const ImageOrigin& origin);

/// Checks that writeImageFile() supports the type.
/// @throws ImageFileError
void requireWritableType(const ImageTarget& target);

/// Tells whether one file of the target's type holds a series: see ImageSeries.
bool holdsSeries(const ImageTarget& target);

/// Lists the types, such as "png, pgm".
std::string writableTypes();

/// Writes a series of images into one TIFF file, atomically like writeImageFile(). Images may differ in size and
/// layout.
class ImageSeries {
public:
    /// @param images  expected; more than fit into the 4 GiB of a TIFF make a BigTIFF
    /// @throws ImageFileError
    ImageSeries(ImageTarget target, unsigned images);
    ImageSeries(const ImageSeries&) = delete;
    ImageSeries& operator=(const ImageSeries&) = delete;
    ~ImageSeries();

    /// @throws ImageFileError
    void add(const std::unique_ptr<Imaging::Image>& image);
    /// Ends the writing.
    /// @throws ImageFileError
    void commit();

private:
    ImageTarget m_Target;
    unsigned m_Images;
    std::unique_ptr<AtomicFile> m_File;
    std::unique_ptr<TiffWriter> m_Writer;
};

} // namespace QuillTool
