// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace GenICamAdapter {

/// Bytes of an expanded description; those of real cameras have at most a tenth.
constexpr std::size_t kLargestXml = std::size_t{64} << 20;

/// Looks for what Aravis would not survive in a description: it follows references without a limit, and takes any
/// length for the length of a register.
///
/// Not everything can be seen here: what is computed from registers, such as the least integer divided by -1.
/// @return bytes of the document, after which some cameras send others
/// @throws std::runtime_error  says why the description is refused
std::size_t checkDescription(const std::string& xml);

} // namespace GenICamAdapter
