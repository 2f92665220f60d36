// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/InputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <fmt/format.h>

#include "ImageFiles/FileAccess.h"

namespace QuillTool {

namespace {

constexpr std::size_t kFirstChunk = std::size_t{64} * 1024;

void requireReadable(std::uintmax_t size) {
    if (size > kLargestInput) {
        throw std::runtime_error("the file is larger than 2 GiB");
    }
}

/// @param chunk  number of bytes that are read first
std::vector<unsigned char> readToEnd(std::FILE* file, std::size_t chunk) {
    std::vector<unsigned char> bytes;
    std::size_t used = 0;
    do {
        bytes.resize(used + chunk);
        used += std::fread(&bytes[used], 1, chunk, file);
        if (std::ferror(file) != 0) {
            throw std::system_error(errno, std::generic_category());
        }
        requireReadable(used);
        chunk = std::max(used, kFirstChunk);
    } while (std::feof(file) == 0);
    bytes.resize(used);
    return bytes;
}

} // namespace

std::vector<unsigned char> readInputFile(const std::string& path) {
    const FileHandle file = openHandle(path, "rb");
    if (!file) {
        throw std::system_error(errno, std::generic_category());
    }
    std::error_code notRegular;
    const std::uintmax_t size = std::filesystem::file_size(pathOf(path), notRegular);
    if (!notRegular) {
        requireReadable(size);
    }
    // One byte more than the size of a regular file, so that one read finds its end.
    return readToEnd(file.get(), notRegular ? kFirstChunk : size + 1);
}

std::vector<unsigned char> readStandardInput() {
    return readToEnd(stdin, kFirstChunk);
}

std::size_t checkedImageBytes(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel) {
    if (width == 0 || height == 0) {
        throw std::runtime_error("an image needs a width and a height");
    }
    if (width > kLargestInput / bytesPerPixel / height) {
        throw std::runtime_error(fmt::format("an image of {} x {} pixels is larger than 2 GiB", width, height));
    }
    return width * height * bytesPerPixel;
}

} // namespace QuillTool
