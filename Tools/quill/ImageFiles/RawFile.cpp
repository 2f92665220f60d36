// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/RawFile.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "ImageFiles/FileSamples.h"
#include "ImageFiles/InputFile.h"

namespace QuillTool {

std::unique_ptr<Imaging::Image> readRaw(std::vector<unsigned char> bytes, const RawDescription& description) {
    const auto& [format, width, height, bitDepth, littleEndian] = description;
    if (std::find(kBitDepths.begin(), kBitDepths.end(), bitDepth) == kBitDepths.end()) {
        throw std::runtime_error(
            fmt::format("a frame has {} bits per sample, not {}", fmt::join(kBitDepths, ", "), bitDepth));
    }
    const unsigned bytesPerPixel = Imaging::createImage(1, 1, {}, bitDepth, littleEndian, format)->getBytesPerPixel();
    const std::size_t expected = checkedImageBytes(width, height, bytesPerPixel);
    if (bytes.size() != expected) {
        throw std::runtime_error(fmt::format("a {} frame of {} x {} pixels and {} bits has {} bytes, the file has {}",
                                             Imaging::getFormatName(format), width, height, bitDepth, expected,
                                             bytes.size()));
    }
    return Imaging::createImage(width, height, std::move(bytes), bitDepth, littleEndian, format);
}

void writeRaw(const Imaging::Image& image, AtomicFile& file) {
    file.write(image.getDataAddress(), image.getImageSize());
}

} // namespace QuillTool
