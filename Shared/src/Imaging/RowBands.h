#pragma once

#include <cstddef>
#include <functional>

#include <opencv2/core.hpp>

namespace Imaging {

/// Results from this size on are worth all cores.
constexpr std::size_t kLargeResultBytes = std::size_t{8} * 1024 * 1024;

/// Calls @p work with @p rows; where the result is large, with bands of them on OpenCV's threads.
void forRowBands(const cv::Range& rows, std::size_t resultBytes, const std::function<void(const cv::Range&)>& work);

} // namespace Imaging
