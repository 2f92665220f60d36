// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace QuillTool {

/// Files and images larger than this are refused, so that a damaged header cannot exhaust the memory: 2 GiB, which is a
/// thousand million grey pixels of 16 bits.
constexpr std::uint64_t kLargestInput = std::uint64_t{1} << 31;

/// The bytes of a file, or all that a pipe or device delivers.
/// @throws std::system_error  the operating system's reason
/// @throws std::runtime_error  larger than kLargestInput
std::vector<unsigned char> readInputFile(const std::string& path);

/// Bytes that an image takes.
/// @throws std::runtime_error  no pixels, or larger than kLargestInput
std::size_t checkedImageBytes(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel);

} // namespace QuillTool
