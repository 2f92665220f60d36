// SPDX-License-Identifier: Apache-2.0

#include "Imaging/PixelConversion.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <optional>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "Imaging/BayerKernel.h"
#include "Imaging/BufferPool.h"
#include "Imaging/RowBands.h"
#include "Imaging/SampleLoops.h"
#include "Imaging/Workers.h"

namespace Imaging {

namespace {

constexpr unsigned kAlphaChannel = 3;

/// OpenCV gives black for a mosaic with a shorter side, also in an alpha channel that it adds itself.
constexpr int kSmallestDemosaiced = 3;

/// The size of a band of rows, so that the output of one step is still in the cache for the next.
constexpr std::size_t kBandBytes = 64 * 1024;

/// The position of a channel among the samples of a pixel; nothing if the format lacks it.
std::optional<unsigned> sampleOfChannel(const FormatDescription& description, unsigned channel) {
    for (unsigned k = 0; k < description.channels; ++k) {
        if (description.channelOfSample[k] == channel) {
            return k;
        }
    }
    return std::nullopt;
}

bool sameOrder(const FormatDescription& a, const FormatDescription& b) {
    return a.channelOfSample[0] == b.channelOfSample[0];
}

template <typename Work>
void forEachBand(const PixelView& source, const PixelView& target, std::size_t bytesPerRow, Work work) {
    const auto rows = static_cast<int>(std::clamp<std::size_t>(kBandBytes / std::max<std::size_t>(bytesPerRow, 1), 1,
                                                               static_cast<std::size_t>(source.height())));
    for (int begin = 0; begin < source.height(); begin += rows) {
        const int end = begin + std::min(rows, source.height() - begin);
        work(source.rows(begin, end), target.rows(begin, end));
    }
}

// --- One call of OpenCV ---

/// Codes of one Bayer pattern. OpenCV names a pattern by the second and third site of its second row.
struct BayerCodes {
    int toGrey;
    int toBgr;
    int toRgb;
    int toBgra;
    int toRgba;
};

/// By format number, from BAYER_RGGB on.
constexpr std::array<BayerCodes, 4> kBayerCodes{{
    {cv::COLOR_BayerBG2GRAY, cv::COLOR_BayerBG2BGR, cv::COLOR_BayerBG2RGB, cv::COLOR_BayerBG2BGRA,
     cv::COLOR_BayerBG2RGBA},
    {cv::COLOR_BayerGB2GRAY, cv::COLOR_BayerGB2BGR, cv::COLOR_BayerGB2RGB, cv::COLOR_BayerGB2BGRA,
     cv::COLOR_BayerGB2RGBA},
    {cv::COLOR_BayerGR2GRAY, cv::COLOR_BayerGR2BGR, cv::COLOR_BayerGR2RGB, cv::COLOR_BayerGR2BGRA,
     cv::COLOR_BayerGR2RGBA},
    {cv::COLOR_BayerRG2GRAY, cv::COLOR_BayerRG2BGR, cv::COLOR_BayerRG2RGB, cv::COLOR_BayerRG2BGRA,
     cv::COLOR_BayerRG2RGBA},
}};

const BayerCodes& bayerCodes(const FormatDescription& description) {
    const auto row = &description - kFormats.data();
    return kBayerCodes[static_cast<std::size_t>(row) - static_cast<std::size_t>(IMAGE_FORMAT::BAYER_RGGB)];
}

int greyCode(const FormatDescription& source) {
    const bool rgb = source.channelOfSample[0] == 0;
    if (source.channels == 4) {
        return rgb ? cv::COLOR_RGBA2GRAY : cv::COLOR_BGRA2GRAY;
    }
    return rgb ? cv::COLOR_RGB2GRAY : cv::COLOR_BGR2GRAY;
}

/// The code between two interleaved orders: by channels of the source, channels of the target (3 or 4) and whether red
/// and blue change places.
int reorderCode(const FormatDescription& source, const FormatDescription& target) {
    constexpr int kNone = -1;
    constexpr int kCodes[2][2][2] = {
        {{kNone, cv::COLOR_BGR2RGB}, {cv::COLOR_BGR2BGRA, cv::COLOR_BGR2RGBA}},
        {{cv::COLOR_BGRA2BGR, cv::COLOR_RGBA2BGR}, {kNone, cv::COLOR_BGRA2RGBA}},
    };
    return kCodes[source.channels - 3][target.channels - 3][sameOrder(source, target) ? 0 : 1];
}

/// Lets OpenCV write directly into the target, which has the size and type of the result.
void convertColor(const cv::Mat& source, cv::Mat target, int code) {
    const unsigned char* place = target.data;
    cv::cvtColor(source, target, code);
    CV_Assert(target.data == place);
}

/// Converts pixel by pixel. OpenCV gets all pixels as a single row, for which it starts no parallel loop.
void convertPixelwise(const PixelView& source, const PixelView& target, int code) {
    constexpr std::size_t kPixelsAtOnce = std::size_t{1} << 24; // OpenCV counts the samples of a row with an int
    const std::size_t pixels = source.pixelCount();
    for (std::size_t begin = 0; begin < pixels; begin += kPixelsAtOnce) {
        const std::size_t end = std::min(pixels, begin + kPixelsAtOnce);
        convertColor(source.pixelRow(begin, end), target.pixelRow(begin, end), code);
    }
}

/// Whether the present thread may run a parallel loop of OpenCV. OpenCV allocates 0.8 KiB for every thread that has run
/// one and keeps it after the thread has ended, so the number of such application threads is limited.
bool mayRunParallelLoops() {
    constexpr int kMostThreads = 256;
    static std::atomic<int> threads{0};
    thread_local bool t_IsAmongThem = false;
    if (!t_IsAmongThem && threads.load() < kMostThreads) {
        t_IsAmongThem = threads.fetch_add(1) < kMostThreads;
    }
    return t_IsAmongThem;
}

/// Demosaics in a parallel loop of OpenCV.
void demosaicByOpenCv(const PixelView& source, const PixelView& target, int code) {
    const auto convert = [&] { convertColor(source.pixels(), target.pixels(), code); };
    Workers& workers = Workers::instance();
    if (workers.isClosed()) { // OpenCV may be closed as well: a nested loop runs on this thread
        cv::parallel_for_({0, 1}, [&](const cv::Range&) { convert(); });
    } else if (mayRunParallelLoops()) {
        convert();
    } else {
        workers.runElsewhere(convert);
    }
}

// --- Planes ---

void fillAlphaPlane(const PixelView& target) {
    if (const auto alpha = sampleOfChannel(target.description(), kAlphaChannel)) {
        std::memset(target.data() + *alpha * target.planeBytes(), 0xFF, target.bytesOfPlane());
    }
}

/// Splits into the planes of the target with wide vectors.
void splitRows(const PixelView& source, const PixelView& target) {
    std::array<unsigned char*, 4> planes{};
    for (unsigned k = 0; k < source.description().channels; ++k) {
        const auto place = sampleOfChannel(target.description(), source.description().channelOfSample[k]);
        planes[k] = place ? target.data() + *place * target.planeBytes() : nullptr;
    }
    splitWidely(source.data(), source.description().channels, source.pixelCount(), source.bytesPerSample(), planes);
}

/// Splits into the planes of the target; a plane that the target lacks goes into @p unwanted, the size of one band.
void splitBand(const PixelView& source, const PixelView& target, unsigned char* unwanted) {
    std::array<cv::Mat, 4> planes;
    for (unsigned k = 0; k < source.description().channels; ++k) {
        const auto place = sampleOfChannel(target.description(), source.description().channelOfSample[k]);
        planes[k] = place ? target.plane(*place)
                          : cv::Mat(source.height(), source.width(), CV_MAKETYPE(source.depth(), 1), unwanted);
    }
    cv::split(source.pixels(), planes.data());
}

/// Merges the planes in the order of the target; @p alpha, with as many samples, replaces a plane that the source
/// lacks.
void mergeRows(const PixelView& source, const PixelView& target, const unsigned char* alpha) {
    const FormatDescription& order = target.description();
    std::array<const unsigned char*, 4> planes{};
    for (unsigned k = 0; k < order.channels; ++k) {
        const auto place = sampleOfChannel(source.description(), order.channelOfSample[k]);
        planes[k] = place ? source.data() + *place * source.planeBytes() : alpha;
    }
    interleave(planes, order.channels, source.pixelCount(), source.bytesPerSample(), target.data());
}

// --- One function per pair of layouts ---

void greyToInterleaved(const PixelView& source, const PixelView& target) {
    convertPixelwise(source, target, target.description().channels == 4 ? cv::COLOR_GRAY2BGRA : cv::COLOR_GRAY2BGR);
}

void greyToPlanar(const PixelView& source, const PixelView& target) {
    forEachBand(source, target, source.rowBytes(), [](const PixelView& sourceRows, const PixelView& targetRows) {
        for (unsigned channel = 0; channel < kAlphaChannel; ++channel) {
            std::memcpy(targetRows.data() + channel * targetRows.planeBytes(), sourceRows.data(),
                        sourceRows.bytesOfPlane());
        }
    });
    fillAlphaPlane(target);
}

/// Demosaics with our own kernel if that is faster than OpenCV; returns false if it did nothing.
bool demosaicsByKernel(const PixelView& source, const PixelView& target) {
    const Vectors vectors = widestVectors();
    if (!demosaicsFaster(source, target.description(), vectors)) {
        return false;
    }
    demosaic(source, target, vectors);
    return true;
}

/// Whether the kernel, with wide vectors, computes greys of bytes as OpenCV does. Its vectors round them roughly, and
/// need not do so in every version.
bool kernelGivesOpenCvsGreys() {
    static const bool gives = widestVectors() == Vectors::Wide && [] {
        constexpr int kWidth = 67, kHeight = 8;
        std::array<unsigned char, std::size_t{kWidth} * kHeight> sites{};
        auto theirs = sites, ours = sites;
        unsigned number = 1;
        for (unsigned char& site : sites) {
            number = number * 1664525 + 1013904223;
            site = static_cast<unsigned char>(number >> 24);
        }
        for (int pattern = 0; pattern < 4; ++pattern) {
            const auto view = [&](auto& pixels, IMAGE_FORMAT format) {
                return PixelView(pixels.data(), kWidth, kHeight, CV_8U, pixels.size(), describe(format));
            };
            const auto format = static_cast<IMAGE_FORMAT>(static_cast<int>(IMAGE_FORMAT::BAYER_RGGB) + pattern);
            const PixelView source = view(sites, format);
            demosaicByOpenCv(source, view(theirs, IMAGE_FORMAT::MONO), bayerCodes(source.description()).toGrey);
            demosaic(source, view(ours, IMAGE_FORMAT::MONO), Vectors::Wide);
            if (ours != theirs) {
                return false;
            }
        }
        return true;
    }();
    return gives;
}

void mosaicToGrey(const PixelView& source, const PixelView& target) {
    if ((source.depth() == CV_8U && !kernelGivesOpenCvsGreys()) || !demosaicsByKernel(source, target)) {
        demosaicByOpenCv(source, target, bayerCodes(source.description()).toGrey);
    }
}

void interleavedToInterleaved(const PixelView& source, const PixelView& target) {
    convertPixelwise(source, target, reorderCode(source.description(), target.description()));
}

/// The three-channel format that a mosaic is demosaiced to on the way to @p target, in the order of the target.
const FormatDescription& demosaicedFormat(const FormatDescription& target) {
    const bool rgb = target.channelOfSample[0] == 0;
    return describe(rgb ? IMAGE_FORMAT::RGB : IMAGE_FORMAT::BGR);
}

/// Demosaics into interleaved samples in scratch memory, and converts these.
void demosaicByTheWay(const PixelView& source, const PixelView& target);

void mosaicToInterleaved(const PixelView& source, const PixelView& target) {
    if (demosaicsByKernel(source, target)) {
        return;
    }
    const BayerCodes& codes = bayerCodes(source.description());
    const bool rgb = target.description().channelOfSample[0] == 0;
    if (target.description().channels == 3) {
        demosaicByOpenCv(source, target, rgb ? codes.toRgb : codes.toBgr);
    } else if (std::min(source.width(), source.height()) >= kSmallestDemosaiced) {
        demosaicByOpenCv(source, target, rgb ? codes.toRgba : codes.toBgra);
    } else {
        demosaicByTheWay(source, target);
    }
}

void demosaicByTheWay(const PixelView& source, const PixelView& target) {
    const FormatDescription& format = demosaicedFormat(target.description());
    const std::size_t planeBytes = source.bytesOfPlane();
    ScratchBuffer scratch(planeBytes * format.channels);
    const PixelView colors(scratch.data(), source.width(), source.height(), source.depth(), planeBytes, format);
    mosaicToInterleaved(source, colors);
    convertPixels(colors, target);
}

void interleavedToPlanar(const PixelView& source, const PixelView& target) {
    if (source.description().channels < target.description().channels) {
        fillAlphaPlane(target);
    }
    if (widestVectors() == Vectors::Wide) {
        splitRows(source, target);
    } else if (source.description().channels > target.description().channels) {
        const std::size_t rowBytes = target.rowBytes();
        ScratchBuffer unwanted(std::max(kBandBytes, rowBytes));
        forEachBand(source, target, rowBytes, [&](const PixelView& sourceRows, const PixelView& targetRows) {
            splitBand(sourceRows, targetRows, unwanted.data());
        });
    } else {
        splitBand(source, target, nullptr);
    }
}

void mosaicToPlanar(const PixelView& source, const PixelView& target) {
    if (demosaicsByKernel(source, target)) {
        fillAlphaPlane(target);
    } else {
        demosaicByTheWay(source, target);
    }
}

void interleavedToGrey(const PixelView& source, const PixelView& target) {
    if (source.depth() == CV_8U && widestVectors() == Vectors::Wide) { // of words, OpenCV is faster
        mixBytesWidely(source.data(), source.description().channels, source.description().channelOfSample[0] == 0,
                       source.pixelCount(), target.data());
    } else {
        convertPixelwise(source, target, greyCode(source.description()));
    }
}

void planarToInterleaved(const PixelView& source, const PixelView& target) {
    if (source.description().channels >= target.description().channels) {
        mergeRows(source, target, nullptr);
        return;
    }
    const std::size_t rowBytes = source.rowBytes();
    const std::vector<unsigned char> alpha(std::max(kBandBytes, rowBytes), 0xFF);
    forEachBand(source, target, rowBytes, [&](const PixelView& sourceRows, const PixelView& targetRows) {
        mergeRows(sourceRows, targetRows, alpha.data());
    });
}

void planarToGrey(const PixelView& source, const PixelView& target) {
    const auto plane = [&](unsigned channel) {
        return source.data() + *sampleOfChannel(source.description(), channel) * source.planeBytes();
    };
    greyOfPlanes(plane(0), plane(1), plane(2), source.bytesOfPlane() / source.bytesPerSample(), source.bytesPerSample(),
                 target.data());
}

void planarToPlanar(const PixelView& source, const PixelView& target) {
    for (unsigned k = 0; k < target.description().channels; ++k) {
        const auto place = sampleOfChannel(source.description(), target.description().channelOfSample[k]);
        if (place) {
            std::memcpy(target.data() + k * target.planeBytes(), source.data() + *place * source.planeBytes(),
                        target.bytesOfPlane());
        } else {
            fillAlphaPlane(target);
        }
    }
}

using Converter = void (*)(const PixelView&, const PixelView&);

/// By the layout of the source and of the target: grey, mosaic, interleaved, planar.
constexpr Converter kConverters[4][4] = {
    {nullptr, nullptr, greyToInterleaved, greyToPlanar},
    {mosaicToGrey, nullptr, mosaicToInterleaved, mosaicToPlanar},
    {interleavedToGrey, nullptr, interleavedToInterleaved, interleavedToPlanar},
    {planarToGrey, nullptr, planarToInterleaved, planarToPlanar},
};

} // namespace

bool computesWithSamples(const FormatDescription& source, const FormatDescription& target) {
    return source.layout == Layout::Mosaic || target.layout == Layout::Grey;
}

void convertPixels(const PixelView& source, const PixelView& target) {
    const Converter converter = kConverters[static_cast<std::size_t>(source.description().layout)]
                                           [static_cast<std::size_t>(target.description().layout)];
    if (source.description().layout == Layout::Mosaic) { // needs the rows around a band, and divides the work itself
        converter(source, target);
        return;
    }
    forRowBands({0, source.height()}, source.bytes() + target.bytes(), [&](const cv::Range& rows) {
        converter(source.rows(rows.start, rows.end), target.rows(rows.start, rows.end));
    });
}

} // namespace Imaging
