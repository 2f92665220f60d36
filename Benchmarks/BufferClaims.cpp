// SPDX-License-Identifier: Apache-2.0

#include <memory>

#include <sys/resource.h>

#include <benchmark/benchmark.h>

#include "Claims.h"
#include "Imaging/Conversion.h"
#include "Imaging/PixelConversion.h"
#include "Support/Frames.h"

namespace Benchmarks {

namespace {

using namespace Imaging;
using Format = IMAGE_FORMAT;

constexpr double kAllocatedLimit = 1.10;
/// None, except occasional ones of the system itself.
constexpr double kFaultsLimit = 0.01;
constexpr int kWarmingCalls = 20;
constexpr int kCountedCalls = 200;

struct Work {
    const char* name;
    FrameKind source;
    Format target;
};

constexpr Work kWorks[] = {
    {"BAYER_RGGB to BGR, 1.3 MP, 8 bit, 4 MB", {kMediumSize, 8, Format::BAYER_RGGB}, Format::BGR},
    {"BGR to RGB_PLANAR, 5 MP, 8 bit, 15 MB", {kLargeSize, 8, Format::BGR}, Format::RGB_PLANAR},
    {"BGR to BGRA, 5 MP, 16 bit, 40 MB", {kLargeSize, 16, Format::BGR}, Format::BGRA},
};

PixelView viewOf(Image& image) {
    const FormatDescription& format = describe(image.getFormat());
    const int depth = image.getBytesPerChannel() == 1 ? CV_8U : CV_16U;
    const auto width = static_cast<int>(image.getWidth());
    const auto height = static_cast<int>(image.getHeight());
    const std::size_t planeBytes = image.getImageSize() / format.samplesPerPixel();
    return {image.getDataAddress(), width, height, depth, planeBytes, format};
}

/// An application that holds four results and releases the oldest one when it requests the next.
struct Application {
    explicit Application(const Work& work)
        : sources([&] { return randomFrame(work.source); }), results([&] {
              return randomFrame({work.source.size, work.source.bitDepth, work.target});
          }),
          target(work.target) {}

    void convert() {
        std::unique_ptr<Image>& result = results.next();
        result.reset();
        result = convertImage(sources.next(), target);
    }
    void convertIntoPlace() {
        convertPixels(viewOf(*sources.next()), viewOf(*results.next()));
        benchmark::ClobberMemory();
    }

    Rotation<std::unique_ptr<Image>> sources;
    Rotation<std::unique_ptr<Image>> results;
    Format target;
};

std::pair<Variant, Variant> makeVariants(const Work& work) {
    const auto application = std::make_shared<Application>(work);
    return {{[application] { application->convertIntoPlace(); }}, {[application] { application->convert(); }}};
}

long pageFaults() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt;
}

double faultsPerCall(const Work& work) {
    Application application(work);
    for (int i = 0; i < kWarmingCalls; ++i) {
        application.convert();
    }
    const long before = pageFaults();
    for (int i = 0; i < kCountedCalls; ++i) {
        application.convert();
    }
    return static_cast<double>(pageFaults() - before) / kCountedCalls;
}

} // namespace

std::vector<Claim> bufferClaims(Scope scope) {
    std::vector<Claim> claims;
    for (const Work& work : kWorks) {
        if (scope == Scope::Short && work.source.size.width == kLargeSize.width) {
            continue;
        }
        claims.push_back({"P9", work.name, "into place", kAllocatedLimit, [&work] { return makeVariants(work); }});
        claims.push_back(
            countingClaim("P9", work.name, "page faults", kFaultsLimit, [&work] { return faultsPerCall(work); }));
    }
    return claims;
}

} // namespace Benchmarks
