// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/TiffHandle.h"

#include <cstdio>
#include <new>
#include <stdexcept>

namespace QuillTool {

namespace {

constexpr auto kNoLimit = std::uint64_t{0};

TiffHandle& handleOf(void* self) {
    return *static_cast<TiffHandle*>(self);
}

} // namespace

TiffHandle::TiffHandle(TiffBytes& bytes, const char* mode, std::uint64_t largestBlock)
    : m_Bytes(bytes), m_Tiff(nullptr, &TIFFClose) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               &TIFFOpenOptionsFree);
    if (!options) {
        throw std::bad_alloc();
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &onWarning, this);
    if (largestBlock != kNoLimit) {
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(largestBlock));
    }
    m_Tiff.reset(TIFFClientOpenExt("TIFF", mode, this, &onRead, &onWrite, &onSeek, &onClose, &onSize, nullptr, nullptr,
                                   options.get()));
    require(m_Tiff != nullptr);
}

void TiffHandle::require(bool done) const {
    if (!done) {
        throw std::runtime_error(m_Message.front() == '\0' ? "the TIFF file is incomplete" : m_Message.data());
    }
}

tmsize_t TiffHandle::onRead(thandle_t self, void* bytes, tmsize_t size) {
    TiffHandle& handle = handleOf(self);
    const std::size_t done = handle.m_Bytes.read(handle.m_Position, bytes, static_cast<std::size_t>(size));
    handle.m_Position += done;
    return static_cast<tmsize_t>(done);
}

tmsize_t TiffHandle::onWrite(thandle_t self, void* bytes, tmsize_t size) {
    TiffHandle& handle = handleOf(self);
    const std::size_t done = handle.m_Bytes.write(handle.m_Position, bytes, static_cast<std::size_t>(size));
    handle.m_Position += done;
    return static_cast<tmsize_t>(done);
}

toff_t TiffHandle::onSeek(thandle_t self, toff_t offset, int origin) {
    TiffHandle& handle = handleOf(self);
    const std::uint64_t from = origin == SEEK_CUR ? handle.m_Position : origin == SEEK_END ? handle.m_Bytes.size() : 0;
    return handle.m_Position = from + offset;
}

toff_t TiffHandle::onSize(thandle_t self) {
    return handleOf(self).m_Bytes.size();
}

int TiffHandle::onClose(thandle_t /*self*/) {
    return 0;
}

int TiffHandle::onError(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format, va_list values) {
    auto& message = handleOf(self).m_Message;
    if (message.front() == '\0') {
        static_cast<void>(std::vsnprintf(message.data(), message.size(), format, values));
    }
    return 1; // do not print it
}

int TiffHandle::onWarning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/, const char* /*format*/,
                          va_list /*values*/) {
    return 1;
}

} // namespace QuillTool
