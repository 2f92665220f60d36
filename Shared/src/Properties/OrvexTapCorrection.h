#pragma once

#include <cstdint>

namespace OrvexAdapter {

/// Number of the SDK's property of which both corrections are flags.
constexpr unsigned long kTapCorrection = 109;
constexpr std::uint32_t kSoftwareTapCorrectionFlag = 0x08000000;
constexpr std::uint32_t kHardwareTapCorrectionFlag = 0x20000000;

} // namespace OrvexAdapter
