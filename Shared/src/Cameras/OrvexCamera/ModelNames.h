// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace OrvexAdapter {

/// The designation of a model; empty for an unknown id.
std::string getModelNameFromCameraId(std::uint32_t cameraId);

} // namespace OrvexAdapter
