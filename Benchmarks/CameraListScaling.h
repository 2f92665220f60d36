// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "Support/Report.h"

namespace Benchmarks {

/// Runs those measurements of enumeration and disconnect check, with 10 to 10,000 cameras, whose names match @p filter.
void measureCameraListScaling(const std::string& filter, const std::function<void(ScalingResult)>& use);

} // namespace Benchmarks
