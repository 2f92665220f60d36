#include "Imaging/RowBands.h"

#include <atomic>

namespace Imaging {

namespace {

/// Raised and read around what OpenCV hands over between threads: it does so by ways that ThreadSanitizer does not see.
std::atomic<unsigned> s_HandOvers{0};

class Bands : public cv::ParallelLoopBody {
public:
    explicit Bands(const std::function<void(const cv::Range&)>& work) : m_Work(work) {}

    /// On any thread.
    void operator()(const cv::Range& band) const override {
        s_HandOvers.load(std::memory_order_acquire);
        m_Work(band);
        s_HandOvers.fetch_add(1, std::memory_order_release);
    }

private:
    const std::function<void(const cv::Range&)>& m_Work;
};

} // namespace

void forRowBands(const cv::Range& rows, std::size_t resultBytes, const std::function<void(const cv::Range&)>& work) {
    if (resultBytes < kLargeResultBytes) {
        work(rows);
        return;
    }
    const Bands bands(work);
    s_HandOvers.fetch_add(1, std::memory_order_release);
    cv::parallel_for_(rows, bands, cv::getNumThreads());
    s_HandOvers.load(std::memory_order_acquire);
}

} // namespace Imaging
