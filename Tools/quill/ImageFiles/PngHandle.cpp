// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/PngHandle.h"

#include <new>
#include <string_view>

namespace QuillTool {

namespace {

constexpr png_uint_32 kLargestSide = 1'000'000;
/// Limits of ancillary chunks, such as a colour profile: bytes of a chunk, and number of chunks.
constexpr png_alloc_size_t kLargestChunk = 8'000'000;
constexpr png_uint_32 kMostChunks = 100;

} // namespace

PngHandle::PngHandle(Use use) : m_Use(use) {
    const auto create = use == Use::Reading ? &png_create_read_struct : &png_create_write_struct;
    m_Png = create(PNG_LIBPNG_VER_STRING, &m_Message, &onError, &onWarning);
    m_Info = m_Png == nullptr ? nullptr : png_create_info_struct(m_Png);
    if (m_Info == nullptr) {
        destroy();
        throw std::bad_alloc();
    }
    png_set_user_limits(m_Png, kLargestSide, kLargestSide);
    png_set_chunk_malloc_max(m_Png, kLargestChunk);
    png_set_chunk_cache_max(m_Png, kMostChunks);
}

PngHandle::~PngHandle() {
    destroy();
}

void PngHandle::destroy() {
    if (m_Use == Use::Reading) {
        png_destroy_read_struct(&m_Png, &m_Info, nullptr);
    } else {
        png_destroy_write_struct(&m_Png, &m_Info);
    }
}

void PngHandle::onError(png_structp png, png_const_charp text) {
    auto& message = *static_cast<Message*>(png_get_error_ptr(png));
    const std::size_t length = std::string_view(text).copy(message.data(), message.size() - 1);
    message[length] = '\0';
    png_longjmp(png, 1);
}

void PngHandle::onWarning(png_structp /*png*/, png_const_charp /*text*/) {}

} // namespace QuillTool
