// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "GigEPattern.h"
#include "GigEWire.h"

namespace GenICamDevices {

/// Draws frames of GigEPattern.h. All rows at the same step of the ramp are alike, so that each is computed once and
/// then copied.
class FrameRenderer {
public:
    /// Draws the first @p rows rows of a frame.
    /// @param into  format.rowSize(width) bytes per row
    void render(const Picture& picture, const PixelFormat& format, std::uint32_t width, std::uint32_t blockId,
                std::uint32_t rows, std::uint8_t* into);

private:
    void prepare(const Picture& picture, const PixelFormat& format, std::uint32_t width);
    Bytes drawRow(std::uint32_t step, std::uint32_t y) const;

    Picture m_Picture;
    const PixelFormat* m_Format = nullptr;
    std::uint32_t m_Width = 0;
    std::array<std::array<std::uint16_t, kRampLength>, kSampleColorCount> m_Samples{}; ///< by colour and step
    std::vector<Bytes> m_Rows; ///< by step and, for mosaics, whether y is odd; empty: not drawn yet
};

} // namespace GenICamDevices
