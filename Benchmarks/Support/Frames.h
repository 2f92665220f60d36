// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <opencv2/core.hpp>

#include "Imaging/Image.h"

namespace Benchmarks {

struct FrameSize {
    const char* name;
    int width;
    int height;
};

constexpr FrameSize kMediumSize{"1.3 MP", 1280, 1024};
constexpr FrameSize kLargeSize{"5 MP", 2448, 2048};

/// The properties of a frame of random samples.
struct FrameKind {
    FrameSize size;
    unsigned bitDepth;
    Imaging::IMAGE_FORMAT format;

    /// Samples of one pixel, in any layout.
    int samples() const;
    /// OpenCV's depth of a sample.
    int depth() const { return bitDepth == 8 ? CV_8U : CV_16U; }
    std::size_t bytes() const;
};

/// Several objects in turn, so that none is in the cache because of its last use.
template <typename T>
class Rotation {
public:
    template <typename Make>
    explicit Rotation(Make make) {
        for (int i = 0; i < kObjects; ++i) {
            m_Objects.push_back(make());
        }
    }

    T& next() { return m_Objects[m_Next++ % kObjects]; }

private:
    static constexpr int kObjects = 4;

    std::vector<T> m_Objects;
    std::size_t m_Next = 0;
};

/// Returns a little-endian image of random samples below 2^depth.
std::unique_ptr<Imaging::Image> randomFrame(const FrameKind& kind);

/// An image's bytes as a matrix of OpenCV, not copied: planes below each other, all other samples side by side.
cv::Mat matrixOf(Imaging::Image& image);

} // namespace Benchmarks
