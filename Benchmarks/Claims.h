// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "Support/RatioBenchmark.h"

namespace Benchmarks {

/// The extent of the measurements.
enum class Scope { Short, Full };

std::vector<Claim> conversionClaims(Scope scope);
std::vector<Claim> coresClaims(Scope scope);
std::vector<Claim> unpackingClaims(Scope scope);
std::vector<Claim> bufferClaims(Scope scope);
std::vector<Claim> exportClaims(Scope scope);
std::vector<Claim> cameraListClaims(Scope scope);
std::vector<Claim> propertyClaims(Scope scope);
std::vector<Claim> hashClaims(Scope scope);
std::vector<Claim> firmwareClaims(Scope scope);
std::vector<Claim> processClaims(Scope scope);
std::vector<Claim> streamClaims(Scope scope);
std::vector<Claim> sdkCameraClaims(Scope scope);
std::vector<Claim> pipelineClaims(Scope scope);
std::vector<Claim> manyCamerasClaims(Scope scope);
#ifdef QUILL_BENCHMARK_TOOL
std::vector<Claim> toolClaims(Scope scope);
#endif

} // namespace Benchmarks
