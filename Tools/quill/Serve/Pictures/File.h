// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include <Quill.h>

#include "ImageFiles/ImageFile.h"

namespace QuillTool::Serve {

/// A file that a client downloads.
struct File {
    std::string name;
    std::string mediaType;
    std::string bytes;
};

/// Encodes an image as "png", "tiff", "dng" or "jpeg" in memory; the name has the extension, "NAME.png".
/// @throws Refusal  400 unknown format, 422 a layout that the format cannot hold
File encodeFile(const std::unique_ptr<Imaging::Image>& image, const std::string& format, const std::string& name,
                const ImageOrigin& origin);

/// The header of a file in a tar archive (POSIX ustar), 512 bytes; the bytes follow, padded with zeros to a multiple of
/// 512; two blocks of zeros end the archive.
/// @param size  bytes, less than 8 GiB
std::string tarHeader(const std::string& name, std::uint64_t size, std::int64_t modificationTime);
/// The zeros that follow a file of this size.
std::string tarPadding(std::uint64_t size);
constexpr std::size_t kTarEndSize = 1024;

} // namespace QuillTool::Serve
