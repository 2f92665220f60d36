// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/Analysis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Serve/Pictures/SampleView.h"

namespace QuillTool::Serve {

namespace {

/// Larger pictures are sampled, so that the measures cost little beside the compression of a picture.
constexpr std::size_t kMeasuredWhole = 100'000; // pixels
constexpr unsigned kExposureStep = 4;           // across and down
constexpr unsigned kFocusStep = 7;              // odd, so that rows of both parities of a mosaic take part
constexpr std::size_t kBins = 256;
constexpr unsigned kGreenChannel = 1;

using Counts = std::array<std::uint32_t, kBins>;

struct Exposure {
    std::array<Counts, 3> histogram{};
    std::uint64_t saturated = 0;
    std::uint64_t samples = 0;
};

/// Samples of one channel in one row: every @p step th of those from @p first to before @p last.
struct Series {
    std::size_t first;
    std::size_t last;
    std::size_t step;
};

/// Counts the samples of every @p step th cell of every @p step th row of cells: a cell is a pixel, of a mosaic 2 x 2.
template <typename Reader>
Exposure measureExposure(const SampleView& view, Reader read, unsigned step) {
    Exposure exposure;
    const unsigned shift = view.bitDepth - 8;
    const unsigned largest = view.largest();
    const auto count = [&](const Series& series, Counts& counts) {
        for (std::size_t place = series.first; place < series.last; place += series.step) {
            const unsigned sample = std::min(read(place), largest);
            ++counts[sample >> shift];
            exposure.saturated += sample == largest ? 1 : 0;
            ++exposure.samples;
        }
    };
    const unsigned cell = view.isMosaic ? 2 : 1;
    for (unsigned top = 0; top < view.height; top += cell * step) {
        for (unsigned row = top; row < std::min(top + cell, view.height); ++row) {
            const std::size_t first = view.index(row, 0);
            const std::size_t last = view.index(row + 1, 0);
            const std::size_t between = view.columnStep * cell * step;
            for (unsigned k = 0; k < (view.isMosaic ? cell : view.channels); ++k) {
                if (view.isMosaic) {
                    count({first + k, last, between}, exposure.histogram[view.mosaicChannel(row, k)]);
                } else {
                    count({first + view.channelStart[k], last + view.channelStart[k], between}, exposure.histogram[k]);
                }
            }
        }
    }
    return exposure;
}

/// Measures every @p step th row. The neighbours of a mosaic's green pixel are the diagonal ones, which are green too.
template <typename Reader>
double measureFocus(const SampleView& view, Reader read, unsigned step) {
    const std::size_t start = view.channels == 3 && !view.isMosaic ? view.channelStart[kGreenChannel] : 0;
    const auto across = static_cast<std::ptrdiff_t>(view.columnStep);
    const auto down = static_cast<std::ptrdiff_t>(view.index(1, 0));
    const std::array<std::ptrdiff_t, 4> neighbours =
        view.isMosaic ? std::array{-down - across, -down + across, down - across, down + across}
                      : std::array{-down, -across, across, down};
    std::uint64_t count = 0;
    double brightness = 0;
    double sum = 0;
    double squares = 0;
    for (unsigned row = 1; row + 1 < view.height; row += step) {
        const unsigned first = view.isMosaic && view.mosaicChannel(row, 1) != kGreenChannel ? 2 : 1;
        std::int64_t rowBrightness = 0;
        std::int64_t rowSum = 0;
        std::int64_t rowSquares = 0;
        for (unsigned column = first; column + 1 < view.width; column += view.isMosaic ? 2 : 1) {
            const std::size_t place = start + view.index(row, column);
            const auto center = static_cast<std::int64_t>(read(place));
            std::int64_t laplacian = 4 * center;
            for (const std::ptrdiff_t neighbour : neighbours) {
                laplacian -= static_cast<std::int64_t>(read(place + static_cast<std::size_t>(neighbour)));
            }
            rowBrightness += center;
            rowSum += laplacian;
            rowSquares += laplacian * laplacian;
            ++count;
        }
        brightness += static_cast<double>(rowBrightness);
        sum += static_cast<double>(rowSum);
        squares += static_cast<double>(rowSquares);
    }
    if (brightness <= 0) {
        return 0;
    }
    const auto pixels = static_cast<double>(count);
    const double mean = sum / pixels;
    return (squares / pixels - mean * mean) / (brightness / pixels * (brightness / pixels));
}

} // namespace

Json analyse(const Imaging::Image& image) {
    const SampleView view(image);
    const bool isWhole = std::size_t{view.width} * view.height <= kMeasuredWhole;
    return withReader(view, [&](auto read) {
        const Exposure exposure = measureExposure(view, read, isWhole ? 1 : kExposureStep);
        Json histogram = Json::array();
        for (unsigned channel = 0; channel < view.channels; ++channel) {
            histogram.push_back(exposure.histogram[channel]);
        }
        return Json{{"histogram", std::move(histogram)},
                    {"channels", view.channelNames()},
                    {"saturated", static_cast<double>(exposure.saturated) / static_cast<double>(exposure.samples)},
                    {"focus", measureFocus(view, read, isWhole ? 1 : kFocusStep)}};
    });
}

} // namespace QuillTool::Serve
