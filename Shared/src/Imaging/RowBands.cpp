#include "Imaging/RowBands.h"

#include <atomic>

namespace Imaging {

namespace {

/// Raised and read around what OpenCV hands over between threads: it does so by ways that ThreadSanitizer does not see.
std::atomic<unsigned> s_HandOvers{0};

} // namespace

void forRowBands(const cv::Range& rows, std::size_t resultBytes, const std::function<void(const cv::Range&)>& work) {
    if (resultBytes < kLargeResultBytes) {
        work(rows);
        return;
    }
    s_HandOvers.fetch_add(1, std::memory_order_release);
    cv::parallel_for_(
        rows,
        [&](const cv::Range& band) {
            s_HandOvers.load(std::memory_order_acquire);
            work(band);
            s_HandOvers.fetch_add(1, std::memory_order_release);
        },
        cv::getNumThreads());
    s_HandOvers.load(std::memory_order_acquire);
}

} // namespace Imaging
