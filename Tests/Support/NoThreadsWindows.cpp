// SPDX-License-Identifier: Apache-2.0

#include "Support/NoThreads.h"

namespace TestSupport {

const bool NoThreads::isPossible = false;

NoThreads::NoThreads() = default;
NoThreads::~NoThreads() = default;

} // namespace TestSupport
