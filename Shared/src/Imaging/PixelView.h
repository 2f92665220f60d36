// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include <opencv2/core.hpp>

#include "Imaging/FormatTable.h"

namespace Imaging {

/// A view of the pixel bytes of an image, or of some of its rows, for OpenCV. Does not own the bytes.
class PixelView {
public:
    /// @param depth CV_8U or CV_16U
    /// @param planeBytes bytes from one plane to the next
    PixelView(unsigned char* data, int width, int height, int depth, std::size_t planeBytes,
              const FormatDescription& description)
        : m_Data(data), m_Width(width), m_Height(height), m_Depth(depth), m_PlaneBytes(planeBytes),
          m_Description(&description) {}

    int width() const { return m_Width; }
    int height() const { return m_Height; }
    int depth() const { return m_Depth; }
    const FormatDescription& description() const { return *m_Description; }
    std::size_t bytesPerSample() const { return m_Depth == CV_8U ? 1 : 2; }
    std::size_t planeBytes() const { return m_PlaneBytes; }
    unsigned char* data() const { return m_Data; }

    /// Bytes of one row of a plane.
    std::size_t rowBytes() const {
        const unsigned samples = m_Description->layout == Layout::Planar ? 1 : m_Description->samplesPerPixel();
        return static_cast<std::size_t>(m_Width) * samples * bytesPerSample();
    }

    /// Bytes of all rows of one plane.
    std::size_t bytesOfPlane() const { return rowBytes() * static_cast<std::size_t>(m_Height); }
    /// Bytes of all rows of all planes.
    std::size_t bytes() const { return bytesOfPlane() * m_Description->planes; }

    /// All samples of each pixel side by side; for every layout except planar.
    cv::Mat pixels() const {
        const auto samples = static_cast<int>(m_Description->samplesPerPixel()); // 1, 3 or 4
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): never 0
        return {m_Height, m_Width, CV_MAKETYPE(m_Depth, samples), m_Data};
    }

    std::size_t pixelCount() const { return static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height); }

    /// The pixels from @p begin to before @p end as one row, across rows of the image; for every layout except planar.
    cv::Mat pixelRow(std::size_t begin, std::size_t end) const {
        const cv::Mat firstRow = pixels().row(0);
        return {1, static_cast<int>(end - begin), firstRow.type(), m_Data + begin * firstRow.elemSize()};
    }

    /// The plane that holds sample @p k of each pixel.
    cv::Mat plane(unsigned k) const { return {m_Height, m_Width, CV_MAKETYPE(m_Depth, 1), m_Data + k * m_PlaneBytes}; }

    /// The rows from @p begin to before @p end.
    PixelView rows(int begin, int end) const {
        PixelView view = *this;
        view.m_Data += static_cast<std::size_t>(begin) * rowBytes();
        view.m_Height = end - begin;
        return view;
    }

private:
    unsigned char* m_Data;
    int m_Width;
    int m_Height;
    int m_Depth;
    std::size_t m_PlaneBytes;
    const FormatDescription* m_Description;
};

} // namespace Imaging
