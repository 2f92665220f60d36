// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Image.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "Imaging/BufferPool.h"
#include "Imaging/ByteOrder.h"
#include "Imaging/FormatTable.h"
#include "Imaging/ImageClasses.h"

namespace Imaging {

namespace {

unsigned long long saturatingProduct(unsigned long long a, unsigned long long b) {
    const unsigned long long largest = std::numeric_limits<unsigned long long>::max();
    return b != 0 && a > largest / b ? largest : a * b;
}

/// Truncates toward zero to a signed 32-bit integer; values out of range give the processor's result, -2^31, whose low
/// bits are 0.
std::uint32_t truncated(double value) {
    const bool representable = value > -2147483649.0 && value < 2147483648.0;
    return representable ? static_cast<std::uint32_t>(static_cast<std::int32_t>(value)) : 0x80000000U;
}

} // namespace

Image::Image(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth, bool littleEndian,
             IMAGE_FORMAT format, unsigned channels, unsigned planes)
    : m_Width(width), m_Height(height), m_Data(std::move(data)), m_Format(format), m_BitDepth(bitDepth),
      m_NumberOfChannels(channels), m_NumberOfPlanes(planes), m_LittleEndian(littleEndian) {
    if (width == 0) {
        throw std::invalid_argument("Image width cannot be 0.");
    }
    if (height == 0) {
        throw std::invalid_argument("Image height cannot be 0.");
    }
}

Image::Image(Image&& other) noexcept
    : m_Width(std::exchange(other.m_Width, 0)), m_Height(std::exchange(other.m_Height, 0)),
      m_Data(std::move(other.m_Data)), m_Format(other.m_Format), m_BitDepth(other.m_BitDepth),
      m_NumberOfChannels(other.m_NumberOfChannels), m_NumberOfPlanes(other.m_NumberOfPlanes),
      m_LittleEndian(other.m_LittleEndian) {}

Image& Image::operator=(Image&& other) noexcept {
    if (this != &other) {
        m_Width = std::exchange(other.m_Width, 0);
        m_Height = std::exchange(other.m_Height, 0);
        m_Data = std::move(other.m_Data);
        m_Format = other.m_Format;
        m_BitDepth = other.m_BitDepth;
        m_NumberOfChannels = other.m_NumberOfChannels;
        m_NumberOfPlanes = other.m_NumberOfPlanes;
        m_LittleEndian = other.m_LittleEndian;
    }
    return *this;
}

Image::~Image() {
    BufferPool::instance().giveBack(std::move(m_Data));
}

unsigned Image::getWidth() const {
    return m_Width;
}

unsigned Image::getHeight() const {
    return m_Height;
}

unsigned Image::getBitDepth() const {
    return m_BitDepth;
}

unsigned Image::getBytesPerChannel() const {
    return m_BitDepth / 8 + (m_BitDepth % 8 != 0 ? 1 : 0);
}

unsigned Image::getNumberOfChannels() const {
    return m_NumberOfChannels;
}

unsigned Image::getNumberOfPlanes() const {
    return m_NumberOfPlanes;
}

bool Image::isLittleEndian() const {
    return m_LittleEndian;
}

unsigned long long Image::getImageSize() const {
    return saturatingProduct(static_cast<unsigned long long>(getWidth()) * getHeight(), getBytesPerPixel());
}

IMAGE_FORMAT Image::getFormat() const {
    return m_Format;
}

std::vector<unsigned char> Image::getData() const {
    return m_Data;
}

unsigned char* Image::getDataAddress() {
    return m_Data.data();
}

const unsigned char* Image::getDataAddress() const {
    return m_Data.data();
}

void Image::validateDataSize() {
    m_Data.resize(getImageSize());
}

void Image::validatePixelIndices(unsigned& row, unsigned& column) const {
    if (row >= getHeight() || column >= getWidth()) {
        throw std::invalid_argument("Pixel location is out of image bounds.");
    }
}

bool Image::byteSwapRequired() const {
    return m_LittleEndian != isMachineLittleEndian();
}

unsigned short Image::swapBytes(unsigned short value) {
    return static_cast<unsigned short>((value >> 8) | (value << 8));
}

bool Image::isMachineLittleEndian() {
    return machineIsLittleEndian();
}

std::size_t Image::getPixelOffset(unsigned row, unsigned column, unsigned bytesPerPixel) const {
    return (std::size_t{row} * getWidth() + column) * bytesPerPixel;
}

double Image::readSample(std::size_t offset) const {
    const unsigned bytes = getBytesPerChannel();
    if (offset + bytes > m_Data.size()) {
        return 0.0;
    }
    switch (bytes) {
    case 1:
        return m_Data[offset];
    case 2: {
        unsigned short word = 0;
        std::memcpy(&word, &m_Data[offset], sizeof word);
        return byteSwapRequired() ? swapBytes(word) : word;
    }
    default:
        return 0.0;
    }
}

void Image::writeSample(std::size_t offset, double value) {
    const unsigned bytes = getBytesPerChannel();
    if (offset + bytes > m_Data.size()) {
        return;
    }
    switch (bytes) {
    case 1:
        m_Data[offset] = static_cast<unsigned char>(truncated(value));
        break;
    case 2: {
        const auto word = static_cast<unsigned short>(truncated(value));
        const unsigned short stored = byteSwapRequired() ? swapBytes(word) : word;
        std::memcpy(&m_Data[offset], &stored, sizeof stored);
        break;
    }
    default:
        break;
    }
}

Pixel Image::readColorPixel(const FormatDescription& description, std::size_t offset, std::size_t step) const {
    Pixel pixel;
    for (unsigned k = 0; k < std::min(description.channels, getNumberOfChannels()); ++k) {
        pixel.channel[description.channelOfSample[k]] = readSample(offset + k * step);
    }
    return pixel;
}

void Image::writeColorPixel(const FormatDescription& description, std::size_t offset, std::size_t step,
                            const Pixel& pixel) {
    for (unsigned k = 0; k < std::min(description.channels, getNumberOfChannels()); ++k) {
        writeSample(offset + k * step, pixel.channel[description.channelOfSample[k]]);
    }
}

std::vector<unsigned char> Image::releaseData() noexcept {
    m_Width = m_Height = 0;
    return std::move(m_Data);
}

std::unique_ptr<Image> createImage(unsigned width, unsigned height, std::vector<unsigned char> data, unsigned bitDepth,
                                   bool littleEndian, IMAGE_FORMAT format) {
    return withImageClass(format, [&](auto* imageClass, auto... layout) -> std::unique_ptr<Image> {
        return std::make_unique<std::remove_pointer_t<decltype(imageClass)>>(width, height, std::move(data), bitDepth,
                                                                             littleEndian, layout...);
    });
}

std::unique_ptr<Image> cloneImage(const std::unique_ptr<Image>& image) {
    if (!image) {
        throw std::invalid_argument("Image cannot be null.");
    }
    return cloneImage(*image);
}

std::unique_ptr<Image> cloneImage(const Image& image) {
    return createImage(image.getWidth(), image.getHeight(), image.getData(), image.getBitDepth(),
                       image.isLittleEndian(), image.getFormat());
}

} // namespace Imaging
