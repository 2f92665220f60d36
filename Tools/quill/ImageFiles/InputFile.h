// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace QuillTool {

/// The largest accepted file or image, so that a damaged header cannot exhaust the memory: 2 GiB, a thousand million
/// grey pixels of 16 bits.
constexpr std::uint64_t kLargestInput = std::uint64_t{1} << 31;

/// Reads a file, pipe or device to its end.
/// @throws std::system_error  reason of the operating system
/// @throws std::runtime_error  larger than kLargestInput
std::vector<unsigned char> readInputFile(const std::string& path);

/// Reads standard input to its end. Throws what readInputFile() throws.
std::vector<unsigned char> readStandardInput();

/// Returns the size of an image in bytes.
/// @throws std::runtime_error  no pixels, or larger than kLargestInput
std::size_t checkedImageBytes(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel);

} // namespace QuillTool
