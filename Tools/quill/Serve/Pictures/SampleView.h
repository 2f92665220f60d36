// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <Quill.h>

namespace QuillTool::Serve {

/// The samples of an image where they lie, for every layout, depth and byte order, and for a colour that the camera
/// computed itself. Valid while the image lives.
struct SampleView {
    /// @throws std::runtime_error  samples of more than 16 bits
    explicit SampleView(const Imaging::Image& image);

    const unsigned char* data;
    unsigned width;
    unsigned height;
    Imaging::IMAGE_FORMAT format;
    unsigned bitDepth;   ///< of a sample
    bool isWide = false; ///< two bytes per sample
    bool isSwapped;      ///< their order is not that of this computer
    bool isMosaic = false;
    /// 1, or 3 of a colour image: its alpha is left out. 3 of a mosaic as well, of which each pixel has one.
    unsigned channels = 1;
    std::size_t columnStep = 1; ///< samples from one column to the next
    /// The first sample of each channel; of a mosaic all 0.
    std::array<std::size_t, 3> channelStart{};
    /// Of a mosaic: the channels of the upper left 2 x 2 pixels, row by row.
    std::array<unsigned char, 4> mosaic{};

    unsigned largest() const { return (1U << bitDepth) - 1; }
    std::size_t index(unsigned row, unsigned column) const { return (std::size_t{row} * width + column) * columnStep; }
    /// The channel of a mosaic's pixel.
    unsigned mosaicChannel(unsigned row, unsigned column) const { return mosaic[(row & 1U) * 2 + (column & 1U)]; }
    std::size_t bytesPerSample() const { return isWide ? 2 : 1; }
    /// "Mono", or "Red", "Green" and "Blue".
    std::vector<std::string> channelNames() const;
};

struct ReadByte {
    const unsigned char* data;
    unsigned operator()(std::size_t index) const { return data[index]; }
};

struct ReadWord {
    const unsigned char* data;
    unsigned operator()(std::size_t index) const {
        std::uint16_t word = 0;
        std::memcpy(&word, data + 2 * index, sizeof word);
        return word;
    }
};

struct ReadSwappedWord {
    const unsigned char* data;
    unsigned operator()(std::size_t index) const {
        const unsigned word = ReadWord{data}(index);
        return (word & 0xFFU) << 8 | word >> 8;
    }
};

/// Calls @p action with a function that returns a sample by its index.
template <typename Action>
auto withReader(const SampleView& view, Action&& action) {
    if (!view.isWide) {
        return action(ReadByte{view.data});
    }
    return view.isSwapped ? action(ReadSwappedWord{view.data}) : action(ReadWord{view.data});
}

} // namespace QuillTool::Serve
