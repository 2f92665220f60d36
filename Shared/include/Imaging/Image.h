// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "../Export.h"
#include "ImageFormat.h"
#include "Pixel.h"

/// Images, their formats and conversions.
namespace Imaging {

struct FormatDescription;

/// An image that owns its pixel bytes and describes their layout.
///
/// Samples are single bytes up to a depth of 8 bits, and 16-bit words in the byte order of the image up to 16 bits.
/// Rows follow each other without padding, as do the planes of a planar image. Size, format and depth never change.
/// Concurrent reads of one image are safe; a write must not run concurrently with any other use. A moved-from image has
/// no pixels.
class QUILL_API Image {
public:
    virtual ~Image();

    virtual unsigned getWidth() const;
    virtual unsigned getHeight() const;
    /// Significant bits per sample: 8, 10, 12 or 16. An image whose colour the camera computed itself (its property
    /// "Pixel Format" is "24", "32" or "48") has the sensor's format, and this is the number of bits per pixel. Its
    /// bytes are BGR of depth 8 (24), BGRA of depth 8 with an opaque alpha (32) or BGR of depth 16 (48); createImage()
    /// makes an image of them.
    virtual unsigned getBitDepth() const;
    /// Bytes per sample: the bit depth rounded up to whole bytes.
    virtual unsigned getBytesPerChannel() const;
    virtual unsigned getNumberOfChannels() const;
    virtual unsigned getNumberOfPlanes() const;
    virtual bool isLittleEndian() const;
    /// Bytes of the whole image; the largest number of the type if the product of the dimensions does not fit.
    virtual unsigned long long getImageSize() const;
    virtual IMAGE_FORMAT getFormat() const;
    /// Bytes of all samples of one pixel.
    virtual unsigned getBytesPerPixel() const = 0;
    /// Bytes from one row to the next within a plane.
    virtual unsigned getStride() const = 0;
    /// Bytes from one plane to the next.
    virtual unsigned getPlaneStride() const = 0;
    /// Returns the channel values of a pixel. Samples wider than two bytes read as 0.
    /// @throws std::invalid_argument "Pixel location is out of image bounds."
    /// @throws std::runtime_error "Invalid image format."  the format does not belong to this class
    virtual Pixel getPixel(unsigned row, unsigned column) const = 0;
    /// Stores the channels that the layout holds. Each value is truncated to an integer and reduced to the low bits of
    /// a sample, not clamped. Throws what getPixel() throws.
    virtual void setPixel(unsigned row, unsigned column, Pixel pixel) = 0;

    /// Returns a copy of the bytes.
    std::vector<unsigned char> getData() const;
    /// Returns the address of the first of getImageSize() bytes, valid while the image lives.
    unsigned char* getDataAddress();
    const unsigned char* getDataAddress() const;

    /// Returns the image as bytes, scaled so that its brightest sample becomes 255. An image of depth 8 returns its own
    /// bytes; any other image, one byte per pixel for grey and three for colour in the order blue, green, red (for a
    /// mosaic: pixel channels 2, 1, 0).
    std::vector<unsigned char> get8bitImageData() const;
    /// Returns the samples in machine byte order, unscaled, one or three per pixel as above; empty for an image of
    /// depth 8.
    std::vector<unsigned short> get16bitImageData() const;

protected:
    /// Takes ownership of the data. Concrete constructors call validateDataSize() next.
    /// @throws std::invalid_argument "Image width cannot be 0.", "Image height cannot be 0."
    Image(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian,
          IMAGE_FORMAT format, unsigned channels, unsigned planes);
    Image(const Image& other) = default;
    Image& operator=(const Image& other) = default;
    Image(Image&& other) noexcept;
    Image& operator=(Image&& other) noexcept;

    /// Gives the bytes away. The image has no pixels then.
    std::vector<unsigned char> releaseData() noexcept;
    /// Truncates the data to the image's size, or pads it with zeros.
    void validateDataSize();
    void validatePixelIndices(unsigned& row, unsigned& column) const;
    bool byteSwapRequired() const;
    static unsigned short swapBytes(unsigned short value);
    static bool isMachineLittleEndian();

    /// Byte offset of a pixel in an image, or a plane, whose pixels follow each other.
    std::size_t getPixelOffset(unsigned row, unsigned column, unsigned bytesPerPixel) const;
    /// One sample at a byte offset; 0 if samples have more than two bytes.
    double readSample(std::size_t offset) const;
    void writeSample(std::size_t offset, double value);
    /// The samples of a colour pixel, @p step bytes apart, in the channels that the format assigns.
    Pixel readColorPixel(const FormatDescription& description, std::size_t offset, std::size_t step) const;
    void writeColorPixel(const FormatDescription& description, std::size_t offset, std::size_t step,
                         const Pixel& pixel);

private:
    unsigned m_Width;
    unsigned m_Height;
    std::vector<unsigned char> m_Data;
    IMAGE_FORMAT m_Format;
    unsigned m_BitDepth;
    unsigned m_NumberOfChannels;
    unsigned m_NumberOfPlanes;
    bool m_LittleEndian;
};

/// Creates an image of the class that fits the format. Truncates the data to the image's size, or pads it with zeros.
/// @param data pixel bytes, rows one after another; moved in
/// @param bitDepth significant bits per sample
/// @param littleEndian byte order of two-byte samples
/// @throws std::invalid_argument width or height is 0
/// @throws std::runtime_error "Invalid image format."
QUILL_API std::unique_ptr<Image> createImage(unsigned width, unsigned height, std::vector<unsigned char> data,
                                             unsigned bitDepth, bool littleEndian, IMAGE_FORMAT format);

/// Returns an independent copy.
/// @throws std::invalid_argument "Image cannot be null."
QUILL_API std::unique_ptr<Image> cloneImage(const std::unique_ptr<Image>& image);
QUILL_API std::unique_ptr<Image> cloneImage(const Image& image);

} // namespace Imaging
