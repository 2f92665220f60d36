// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Serve/Pictures/PictureMaker.h"

namespace QuillTool::Serve {

/// Encodes pictures as JPEG, whose colours have half of the columns and rows. Keeps its memory from one picture to the
/// next.
class JpegEncoder {
public:
    /// @throws std::runtime_error  reason of the encoder
    JpegEncoder();

    /// @param quality  1 to 100
    /// @throws std::runtime_error  reason of the encoder: more than 65500 columns or rows
    std::string encode(const Bitmap& bitmap, unsigned quality);

private:
    std::unique_ptr<void, int (*)(void*)> m_Handle;
    std::unique_ptr<unsigned char, void (*)(unsigned char*)> m_Buffer;
    std::size_t m_Capacity = 0;
};

} // namespace QuillTool::Serve
