// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace GenICamAdapter {

/// Bytes of an expanded description; those of real cameras have at most a tenth.
constexpr std::size_t kLargestXml = std::size_t{64} << 20;

/// Where the parts of a description are.
struct CheckedDescription {
    std::size_t headSize = 0; ///< bytes before the end of its first tag: "<RegisterDescription VendorName=..."
    std::size_t size = 0;     ///< bytes of the document, after which some cameras send others
};

/// Looks for what Aravis would not survive in a description: it follows references without a limit, and takes any
/// length for the length of a register.
///
/// Not everything can be seen here: what is computed from registers, such as the least integer divided by -1.
/// @throws std::runtime_error  says why the description is refused
CheckedDescription checkDescription(const std::string& xml);

} // namespace GenICamAdapter
