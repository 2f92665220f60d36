// SPDX-License-Identifier: Apache-2.0

#include "Imaging/RowBands.h"

#include <algorithm>
#include <cstdint>

#include "Imaging/Workers.h"

namespace Imaging {

namespace {

/// More than one, so that the other threads can take over the share of a delayed one.
constexpr int kBandsPerThread = 4;

} // namespace

void forRowBands(const cv::Range& rows, std::size_t bytes, const std::function<void(const cv::Range&)>& work) {
    Workers& workers = Workers::instance();
    const bool alone = bytes < kLargeBytes || workers.isClosed();
    const int threads = alone ? 1 : std::min(cv::getNumThreads(), rows.size());
    if (threads < 2) {
        work(rows);
        return;
    }
    const int bands = std::min(rows.size(), threads * kBandsPerThread);
    const auto firstRow = [&](int band) {
        return rows.start + static_cast<int>(std::int64_t{rows.size()} * band / bands);
    };
    workers.share(bands, threads, [&](int band) { work({firstRow(band), firstRow(band + 1)}); });
}

} // namespace Imaging
