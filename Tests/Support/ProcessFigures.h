// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace TestSupport {

// The present resources of this process.
std::size_t residentBytes();
std::size_t threadsOfProcess();
std::size_t openDescriptors();
/// Bytes that are allocated and not freed; 0 where nobody counts them, such as under AddressSanitizer.
std::size_t allocatedBytes();

} // namespace TestSupport
