// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>

#include <opencv2/core.hpp>

namespace Imaging {

/// Total bytes of source and result from which all cores are used: 1600 x 1200 pixels of 8 bits, demosaiced. Below,
/// waking threads takes as long as they save.
constexpr std::size_t kLargeBytes = std::size_t{6} * 1024 * 1024;

/// Calls @p work with @p rows; from kLargeBytes @p bytes of source and result on, with bands of rows on as many threads
/// as OpenCV may use.
void forRowBands(const cv::Range& rows, std::size_t bytes, const std::function<void(const cv::Range&)>& work);

} // namespace Imaging
