// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/JpegEncoder.h"

#include <new>
#include <stdexcept>

#include <fmt/format.h>
#include <turbojpeg.h>

namespace QuillTool::Serve {

namespace {

/// By Bitmap::Layout.
constexpr TJPF kPixelFormats[] = {TJPF_GRAY, TJPF_RGB, TJPF_BGR, TJPF_RGBX, TJPF_BGRX};

} // namespace

JpegEncoder::JpegEncoder() : m_Handle(tjInitCompress(), &tjDestroy), m_Buffer(nullptr, &tjFree) {
    if (!m_Handle) {
        throw std::runtime_error(fmt::format("The encoder of JPEG does not start: {}.", tjGetErrorStr2(nullptr)));
    }
}

std::string JpegEncoder::encode(const Bitmap& bitmap, unsigned quality) {
    const TJPF format = kPixelFormats[static_cast<std::size_t>(bitmap.layout)];
    const TJSAMP sampling = format == TJPF_GRAY ? TJSAMP_GRAY : TJSAMP_420;
    const auto width = static_cast<int>(bitmap.width);
    const auto height = static_cast<int>(bitmap.height);
    const unsigned long most = tjBufSize(width, height, sampling);
    if (most == static_cast<unsigned long>(-1)) {
        throw std::runtime_error(
            fmt::format("A picture of {} x {} pixels is too large for JPEG.", bitmap.width, bitmap.height));
    }
    if (most > m_Capacity) {
        m_Capacity = 0;
        m_Buffer.reset();
        m_Buffer.reset(tjAlloc(static_cast<int>(most)));
        if (!m_Buffer) {
            throw std::bad_alloc();
        }
        m_Capacity = most;
    }
    unsigned char* bytes = m_Buffer.get();
    unsigned long size = m_Capacity;
    if (tjCompress2(m_Handle.get(), bitmap.pixels, width, 0, height, format, &bytes, &size, sampling,
                    static_cast<int>(quality), TJFLAG_FASTDCT | TJFLAG_NOREALLOC) != 0) {
        throw std::runtime_error(fmt::format("The picture cannot become a JPEG: {}.", tjGetErrorStr2(m_Handle.get())));
    }
    return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace QuillTool::Serve
