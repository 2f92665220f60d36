// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>

namespace TestSupport {

/// Allocations of at least as many bytes fail, in all libraries of this process; 0: none does.
extern std::atomic<std::size_t> failingSize;

} // namespace TestSupport
