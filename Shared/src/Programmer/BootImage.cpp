// SPDX-License-Identifier: Apache-2.0

#include "Utilities/BootImage.h"

#include <stdexcept>

#include "Programmer/BootImageHeader.h"

namespace Utilities {

namespace {

constexpr std::size_t kBytesPerWord = 4;
constexpr std::size_t kSectionHeaderBytes = 2 * kBytesPerWord; // length in words, address

std::uint32_t readWord(const std::vector<unsigned char>& data, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t byte = kBytesPerWord; byte-- > 0;) {
        word = word << 8 | data[offset + byte];
    }
    return word;
}

} // namespace

bool hasBootImageHeader(const std::vector<unsigned char>& data) {
    return data.size() >= kBootImageHeaderBytes && data[0] == 'C' && data[1] == 'Y' && data[3] == 0xB0;
}

void requireData(const std::vector<unsigned char>& data) {
    if (data.empty()) {
        throw std::invalid_argument("No data provided.");
    }
}

void requireBootImage(bool isBootImage) {
    if (!isBootImage) {
        throw std::invalid_argument("Invalid image file.");
    }
}

BootImage readBootImage(const std::vector<unsigned char>& data) {
    requireData(data);
    requireBootImage(hasBootImageHeader(data));
    BootImage image;
    std::size_t position = kBootImageHeaderBytes;
    while (true) {
        requireBootImage(data.size() - position >= kSectionHeaderBytes);
        const std::uint32_t words = readWord(data, position);
        const std::uint32_t address = readWord(data, position + kBytesPerWord);
        position += kSectionHeaderBytes;
        if (words == 0) {
            image.entryAddress = address;
            image.size = position;
            return image;
        }
        const std::uint64_t length = std::uint64_t{words} * kBytesPerWord;
        requireBootImage(length <= data.size() - position);
        image.sections.push_back({address, position, static_cast<std::size_t>(length)});
        position += static_cast<std::size_t>(length);
    }
}

} // namespace Utilities
