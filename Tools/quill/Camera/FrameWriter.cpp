// SPDX-License-Identifier: Apache-2.0

#include "Camera/FrameWriter.h"

#include <algorithm>
#include <array>
#include <optional>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "Camera/ComputedColor.h"
#include "Terminal/StandardStreams.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

using Imaging::IMAGE_FORMAT;

namespace {

/// ffmpeg's names for bytes and for 16-bit words. To the latter it adds the byte order.
struct RawVideoName {
    IMAGE_FORMAT format;
    const char* bytes;
    const char* words;
};

constexpr std::array<RawVideoName, 9> kRawVideoNames{{
    {IMAGE_FORMAT::MONO, "gray", "gray16"},
    {IMAGE_FORMAT::BAYER_RGGB, "bayer_rggb8", "bayer_rggb16"},
    {IMAGE_FORMAT::BAYER_GRBG, "bayer_grbg8", "bayer_grbg16"},
    {IMAGE_FORMAT::BAYER_GBRG, "bayer_gbrg8", "bayer_gbrg16"},
    {IMAGE_FORMAT::BAYER_BGGR, "bayer_bggr8", "bayer_bggr16"},
    {IMAGE_FORMAT::RGB, "rgb24", "rgb48"},
    {IMAGE_FORMAT::RGBA, "rgba", "rgba64"},
    {IMAGE_FORMAT::BGR, "bgr24", "bgr48"},
    {IMAGE_FORMAT::BGRA, "bgra", "bgra64"},
}};

} // namespace

std::string rawVideoFormat(const Imaging::Image& image) {
    const PixelLayout layout =
        findComputedColor(image.getBitDepth()).value_or(PixelLayout{image.getFormat(), image.getBitDepth()});
    const auto* const row = std::find_if(kRawVideoNames.begin(), kRawVideoNames.end(),
                                         [&](const RawVideoName& name) { return name.format == layout.format; });
    if (row == kRawVideoNames.end()) {
        return "";
    }
    return layout.bitDepth <= 8 ? row->bytes : fmt::format("{}{}", row->words, image.isLittleEndian() ? "le" : "be");
}

FrameWriter::FrameWriter(const Interrupt& interrupt, CameraInterface::FrameQueue queue, std::uint64_t frames,
                         Callback onEnd)
    : m_Interrupt(interrupt), m_Queue(std::move(queue)), m_Limit(frames), m_OnEnd(std::move(onEnd)),
      m_Thread([this] { run(); }) {}

FrameWriter::~FrameWriter() {
    m_Queue.close();
    m_Abandoned.wake();
    if (m_Thread.joinable()) {
        m_Thread.join();
    }
}

void FrameWriter::finish() {
    m_Thread.join();
    if (m_Failure) {
        std::rethrow_exception(m_Failure);
    }
}

void FrameWriter::run() {
    try {
        for (const CameraInterface::Frame& frame : m_Queue) {
            if (!write(*frame.image) || ++m_Written == m_Limit) {
                break;
            }
        }
    } catch (...) {
        m_Failure = std::current_exception();
    }
    for (const CameraInterface::StreamCounter& counter : m_Queue.getCounters()) {
        if (counter.name == "Dropped") {
            m_Dropped = counter.value;
        }
    }
    m_Queue.close(); // what comes now is not lost
    m_OnEnd();
}

bool FrameWriter::write(const Imaging::Image& image) {
    const unsigned char* bytes = image.getDataAddress();
    for (std::size_t left = image.getImageSize(); left > 0;) {
        std::optional<std::size_t> written;
        try {
            written = writeOutput(bytes, left, {&m_Interrupt.waker(), &m_Abandoned});
        } catch (const std::system_error& failure) {
            throw ToolError(ExitCode::Failed, fmt::format("cannot write the frames: {}", failure.code().message()));
        }
        if (!written) {
            return false;
        }
        bytes += *written;
        left -= *written;
    }
    return true;
}

} // namespace QuillTool
