// SPDX-License-Identifier: Apache-2.0

#include "Support/Frames.h"

#include "Imaging/FormatTable.h"

namespace Benchmarks {

using namespace Imaging;

int FrameKind::samples() const {
    return static_cast<int>(describe(format).samplesPerPixel());
}

std::size_t FrameKind::bytes() const {
    return static_cast<std::size_t>(size.width * size.height * samples()) * (bitDepth == 8 ? 1 : 2);
}

std::unique_ptr<Image> randomFrame(const FrameKind& kind) {
    auto image = createImage(static_cast<unsigned>(kind.size.width), static_cast<unsigned>(kind.size.height),
                             std::vector<unsigned char>(kind.bytes()), kind.bitDepth, true, kind.format);
    cv::Mat samples = matrixOf(*image);
    cv::randu(samples, cv::Scalar::all(0), cv::Scalar::all(1 << kind.bitDepth));
    return image;
}

cv::Mat matrixOf(Image& image) {
    const FormatDescription& format = describe(image.getFormat());
    const int depth = image.getBytesPerChannel() == 1 ? CV_8U : CV_16U;
    const auto height = static_cast<int>(image.getHeight() * format.planes);
    const auto channels = static_cast<int>(format.samplesPerPixel() / format.planes);
    return {height, static_cast<int>(image.getWidth()), CV_MAKETYPE(depth, channels), image.getDataAddress()};
}

} // namespace Benchmarks
