// SPDX-License-Identifier: Apache-2.0

#include "Camera/FrameWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Camera/ComputedColor.h"
#include "Terminal/Output.h"
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

bool isRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

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
    // As much as a pipe that has space takes at once, so that an interrupt ends the wait for a reader that reads no
    // more.
    const std::size_t piece = isRegularFile(STDOUT_FILENO) ? image.getImageSize() : PIPE_BUF;
    const unsigned char* bytes = image.getDataAddress();
    for (std::size_t left = image.getImageSize(); left > 0;) {
        if (!waitWritable()) {
            return false;
        }
        const ssize_t count = ::write(STDOUT_FILENO, bytes, std::min(left, piece));
        if (count < 0 && errno == EPIPE) {
            throw OutputClosed{};
        }
        if (count < 0 && errno != EINTR) {
            throw ToolError(ExitCode::Failed,
                            fmt::format("cannot write the frames: {}", std::generic_category().message(errno)));
        }
        bytes += std::max<ssize_t>(count, 0);
        left -= static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return true;
}

bool FrameWriter::waitWritable() const {
    std::array<pollfd, 3> waiting{pollfd{m_Interrupt.descriptor(), POLLIN, 0},
                                  pollfd{m_Abandoned.descriptor(), POLLIN, 0}, pollfd{STDOUT_FILENO, POLLOUT, 0}};
    while (poll(waiting.data(), waiting.size(), -1) <= 0) {
    }
    return waiting[0].revents == 0 && waiting[1].revents == 0;
}

} // namespace QuillTool
