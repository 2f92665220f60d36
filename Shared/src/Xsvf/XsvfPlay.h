// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "Utilities/Xsvf.h"
#include "Xsvf/JtagPort.h"
#include "Xsvf/XsvfPlayer.h"

namespace Utilities {

/// Plays an XSVF file through a transport, without regard to other plays.
/// @param isCameraGone called whenever transfers have failed; the play ends if it returns true. May be empty
void runXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfPlayer::Comparison comparison,
             XsvfReport& report, const std::function<void(double)>& progress,
             const std::function<bool()>& isCameraGone);

/// The same with actual comparisons; one play at a time in the process.
/// @return XsvfReport::succeeded()
/// @throws KestrelException "WouldWaitForItself"  called by the progress function of another play
bool playXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfReport& report,
              const std::function<void(double)>& progress, const std::function<bool()>& isCameraGone = {});

} // namespace Utilities
